#include "support/Format.h"
#include "support/m_Interface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct FormatCase {
    double value;
    const char* pattern;
    const char* expected;
};

class FormatTable : public ::testing::TestWithParam<FormatCase> {};

TEST_P(FormatTable, MatchesTheOldRuntime) {
    const auto& c = GetParam();
    EXPECT_EQ(support::Format(c.value, c.pattern), c.expected)
        << c.value << " with \"" << c.pattern << "\"";
}

INSTANTIATE_TEST_SUITE_P(
    Fixed, FormatTable,
    ::testing::Values(FormatCase{0.00134990, "0.0000", "0.0013"},
                      FormatCase{0.0027, "0.0000", "0.0027"},
                      FormatCase{2.5, "0", "2"},          // exact tie: the binary value decides
                      FormatCase{2.51, "0", "3"},
                      FormatCase{-1.005, "0.00", "-1.00"}, // -1.00499999999999989...
                      FormatCase{-0.0001, "0.00", "0.00"}, // never "-0.00"
                      FormatCase{-0.0, "0.000000", "0.000000"},
                      FormatCase{123456.789, "0.0", "123456.8"},
                      FormatCase{1e20, "0.00", "100000000000000000000.00"},
                      FormatCase{0.5, ".00", ".50"}));

INSTANTIATE_TEST_SUITE_P(
    Scientific, FormatTable,
    ::testing::Values(FormatCase{0.00134990, "0.0000E+00", "1.3499E-03"},
                      FormatCase{0.00134990, "0.00E+00", "1.35E-03"},
                      FormatCase{1.128588e-19, "0.000000E+00", "1.128588E-19"},
                      FormatCase{0, "0.00E+00", "0.00E+00"},
                      FormatCase{-0.0, "0.0E+00", "0.0E+00"},
                      FormatCase{9.999, "0.00E+00", "1.00E+01"},
                      FormatCase{-12345, "0E+00", "-1E+04"},
                      FormatCase{1e-300, "0.0E+00", "1.0E-300"},
                      FormatCase{1e5, "0.0E-00", "1.0E05"}));

INSTANTIATE_TEST_SUITE_P(
    General, FormatTable,
    ::testing::Values(FormatCase{0, "", "0"}, FormatCase{0.0001, "", "0.0001"},
                      FormatCase{0.00001, "", "1E-05"}, FormatCase{1e15, "", "1E+15"},
                      FormatCase{123456789012345, "", "123456789012345"},
                      FormatCase{1.0 / 3.0, "", "0.333333333333333"},
                      FormatCase{-2.5, "", "-2.5"}, FormatCase{1.5e-300, "", "1.5E-300"}));

TEST(Format, NonFiniteValuesNeverShowAsNanOrInf) {
    for (double v : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<double>::infinity()}) {
        for (const char* pattern : {"", "0.00", "0.00E+00"}) {
            const std::string text = support::Format(v, pattern);
            EXPECT_EQ(text.find("nan"), std::string::npos);
            EXPECT_EQ(text.find("inf"), std::string::npos);
        }
    }
}

TEST(FormatDec, PatternsForZeroToSixPlacesAndEmptyOtherwise) {
    const char* expected[] = {"0", "0.0", "0.00", "0.000", "0.0000", "0.00000", "0.000000"};
    for (int16_t places = 0; places <= 6; ++places)
        EXPECT_EQ(m_Interface::FormatDec(places), expected[places]);
    EXPECT_EQ(m_Interface::FormatDec(7), "");
    EXPECT_EQ(m_Interface::FormatDec(-1), "");
}

TEST(NumericHelpers, MaxMinPi) {
    EXPECT_EQ(m_Interface::Max(2, 2), 2);
    EXPECT_EQ(m_Interface::Min(2, 2), 2);
    EXPECT_EQ(m_Interface::Max(-1, 3), 3);
    EXPECT_EQ(m_Interface::Min(-1, 3), -1);
    EXPECT_DOUBLE_EQ(m_Interface::Pi(), 3.14159265358979323846);
}

struct ParseCase {
    const char* text;
    bool isNumber;
    double value;
};

class ParseTable : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ParseTable, OneRuleForEveryInputField) {
    const auto& c = GetParam();
    const auto parsed = support::ParseNumber(c.text);
    ASSERT_EQ(parsed.has_value(), c.isNumber) << '"' << c.text << '"';
    if (c.isNumber) {
        EXPECT_EQ(*parsed, c.value) << '"' << c.text << '"';
    }
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, ParseTable,
    ::testing::Values(ParseCase{"0", true, 0}, ParseCase{"  -1.5  ", true, -1.5},
                      ParseCase{"+2", true, 2}, ParseCase{".5", true, 0.5},
                      ParseCase{"5.", true, 5}, ParseCase{"1e3", true, 1000},
                      ParseCase{"1E-3", true, 0.001}, ParseCase{"-2.5e+2", true, -250},
                      ParseCase{"1e308", true, 1e308}, ParseCase{"1e-320", true, 1e-320},
                      ParseCase{"1e-400", true, 0}, ParseCase{"-0", true, -0.0},
                      ParseCase{"", false, 0}, ParseCase{"   ", false, 0},
                      ParseCase{"abc", false, 0}, ParseCase{"nan", false, 0},
                      ParseCase{"inf", false, 0}, ParseCase{"-infinity", false, 0},
                      ParseCase{"0x10", false, 0}, ParseCase{"1e309", false, 0},
                      ParseCase{"1.2.3", false, 0}, ParseCase{"1e", false, 0},
                      ParseCase{"e5", false, 0}, ParseCase{".", false, 0},
                      ParseCase{"+-1", false, 0}, ParseCase{"1 2", false, 0},
                      ParseCase{"1,5", false, 0}, ParseCase{"12abc", false, 0}));

TEST(Val, NotANumberReadsAsZero) {
    EXPECT_EQ(support::Val("abc"), 0);
    EXPECT_EQ(support::Val(" 4.25 "), 4.25);
}

} // namespace
