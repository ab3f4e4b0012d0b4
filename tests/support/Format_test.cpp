#include "support/Format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

TEST(Format, PatternsMatchTheOldRuntime) {
    struct Row {
        double Value;
        const char* Pattern;
        const char* Expected;
    };
    const Row rows[] = {
        // Fixed.
        {0.00134990, "0.0000", "0.0013"},
        {2.5, "0", "2"},                // exact tie: the binary value decides
        {-1.005, "0.00", "-1.00"},      // -1.00499999999999989...
        {-0.0, "0.000000", "0.000000"}, // never "-0.00"
        {0.5, ".00", ".50"},
        // Scientific.
        {0.00134990, "0.0000E+00", "1.3499E-03"},
        {9.999, "0.00E+00", "1.00E+01"},
        {1e-300, "0.0E+00", "1.0E-300"},
        {1e5, "0.0E-00", "1.0E05"},
        // General (empty pattern).
        {0.00001, "", "1E-05"},
        {123456789012345, "", "123456789012345"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(support::Format(r.Value, r.Pattern), r.Expected)
            << r.Value << " with " << r.Pattern;
    for (double v : {NAN, INFINITY, -INFINITY})
        for (const char* pattern : {"", "0.00", "0.00E+00"}) {
            const std::string text = support::Format(v, pattern);
            EXPECT_TRUE(text.find("nan") == text.npos && text.find("inf") == text.npos) << text;
        }
}

TEST(ParseNumber, OneRuleForEveryInputField) {
    const std::pair<const char*, double> numbers[] = {
        {"  -1.5  ", -1.5}, {".5", 0.5}, {"5.", 5}, {"1E-3", 0.001}, {"1e-400", 0}, {"-0", -0.0}};
    for (const auto& [text, value] : numbers) {
        const auto parsed = support::ParseNumber(text);
        ASSERT_TRUE(parsed.has_value()) << '"' << text << '"';
        EXPECT_EQ(*parsed, value) << '"' << text << '"';
    }
    for (const char* text : {"", "abc", "nan", "-infinity", "0x10", "1e309", "1.2.3", "1e", ".",
                             "+-1", "1 2", "12abc"})
        EXPECT_FALSE(support::ParseNumber(text).has_value()) << '"' << text << '"';
    // Beyond the double range the size of the number decides, not the exponent's sign:
    // 1e399 written with 400 digits is too large, 1e-396 written with 400 zeros is 0.
    const std::string huge = "1" + std::string(400, '0') + "e-1";
    EXPECT_FALSE(support::ParseNumber(huge).has_value());
    const std::string tiny = "0." + std::string(400, '0') + "1e5";
    EXPECT_EQ(support::ParseNumber(tiny), 0.0);
    EXPECT_EQ(support::Val("abc"), 0); // Val reads what is not a number as 0
}

} // namespace

// The user's separator comes from the numeric locale; the point is always
// understood too, and nothing is taken for a thousands separator.
TEST(DecimalSeparator, ParseAndDisplayUnderTheUsersLocale) {
    struct Row {
        const char* Locale;
        char Separator;
        bool CommaIsNumber; // "1,5"
        const char* Scientific;
        const char* Fixed;
    };
    const Row rows[] = {
        {"C", '.', false, "1.500000E+00", "-0.25"},
        {"en_US.UTF-8", '.', false, "1.500000E+00", "-0.25"},
        {"de_DE.UTF-8", ',', true, "1,500000E+00", "-0,25"},
    };
    for (const Row& row : rows) {
        if (!std::setlocale(LC_NUMERIC, row.Locale)) {
            std::setlocale(LC_NUMERIC, "C");
            GTEST_SKIP() << row.Locale << " is not generated (scripts/install-deps.sh does it)";
        }
        const char sep = support::LocaleDecimalSeparator();
        std::setlocale(LC_NUMERIC, "C");
        EXPECT_EQ(sep, row.Separator) << row.Locale;
        EXPECT_EQ(support::ParseNumber("1.5", sep), 1.5) << row.Locale;
        EXPECT_EQ(support::ParseNumber("1,5", sep).has_value(), row.CommaIsNumber) << row.Locale;
        for (const char* text : {"1,234.5", "1.234,5", "1,2,3", ",", "1 234"})
            EXPECT_FALSE(support::ParseNumber(text, sep).has_value()) << row.Locale << " " << text;
        EXPECT_EQ(support::Format(1.5, "0.000000E+00", sep), row.Scientific);
        EXPECT_EQ(support::Format(-0.25, "0.00", sep), row.Fixed);
    }
    // The program-wide setting is what the one-argument forms use.
    support::SetDecimalSeparator(',');
    EXPECT_EQ(support::Format(2.5, ""), "2,5");
    EXPECT_EQ(support::Val("2,5"), 2.5);
    support::SetDecimalSeparator('.');
    EXPECT_FALSE(support::IsNumeric("2,5"));
}

TEST(TickLabels, FewestDecimalsThatTellNeighboursApartElseScientific) {
    using Labels = std::vector<std::string>;
    struct Row {
        const char* Name;
        std::vector<double> Ticks;
        Labels Expected;
    };
    const Row rows[] = {
        {"two decimals suffice",
         {-2.6, -1.56, -0.52, 0.52, 1.56, 2.6},
         {"-2.60", "-1.56", "-0.52", "0.52", "1.56", "2.60"}},
        {"a bore in mm: four decimals",
         {4.9988, 4.99934, 4.99988, 5.00042, 5.00096, 5.0015},
         {"4.9988", "4.9993", "4.9999", "5.0004", "5.0010", "5.0015"}},
        {"three decimals", {0, 0.005, 0.01, 0.015}, {"0.000", "0.005", "0.010", "0.015"}},
        {"around 1e300",
         {7.4e299, 8.44e299, 9.48e299, 1.052e300, 1.156e300, 1.26e300},
         {"7.40E+299", "8.44E+299", "9.48E+299", "1.05E+300", "1.16E+300", "1.26E+300"}},
        {"densities near 1e-301, no longer all 0.00",
         {0, 8e-302, 1.6e-301, 2.4e-301},
         {"0.00E+00", "8.00E-302", "1.60E-301", "2.40E-301"}},
        {"more mantissa decimals",
         {1e6, 1.0001e6, 1.0002e6},
         {"1.0000E+06", "1.0001E+06", "1.0002E+06"}},
        {"a rounding residue of zero",
         {-2e300, -1e300, 1.2e284, 1e300},
         {"-2.00E+300", "-1.00E+300", "0.00E+00", "1.00E+300"}},
    };
    for (const Row& r : rows)
        EXPECT_EQ(support::TickLabels(r.Ticks), r.Expected) << r.Name;
    // Nothing finite to tell apart still ends.
    const std::vector<double> odd = {NAN, NAN, INFINITY};
    EXPECT_EQ(support::TickLabels(odd).size(), 3u);
}
