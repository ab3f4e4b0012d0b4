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
