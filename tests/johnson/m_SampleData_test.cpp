// Sample data: what is read from pasted text, the sample moments against a
// long-double two-pass computation.
#include "johnson/m_SampleData.h"

#include "tests/helpers/TestSupport.h"

#include <cmath>

namespace {

using testing_support::RelErr;

struct ParseRow {
    const char* Name;
    const char* Text;
    char Decimal;
    std::vector<double> Values;
    const char* Problem;
};

const ParseRow kParseRows[] = {
    {"header_blanks_separators",
     "Size\r\n\r\n1.5;2\t3 4;;\r\n\n\t3e1;",
     '.',
     {1.5, 2, 3, 4, 30},
     ""},
    {"decimal_comma", "1,5;2,25\n3.5\n", ',', {1.5, 2.25, 3.5}, ""},
    {"comma_in_a_point_locale", "x\n1,5\n", '.', {}, "line 2: \"1,5\" is not a number"},
    {"no_thousands_separator", "x\n1.234,5\n", ',', {}, "line 2: \"1.234,5\" is not a number"},
    {"bad_line", "value\n1\n2\nabc\n5\n", '.', {}, "line 4: \"abc\" is not a number"},
};

class SampleParse : public testing_support::RecordingTest,
                    public ::testing::WithParamInterface<ParseRow> {};

TEST_P(SampleParse, ReadsValuesOrNamesTheBadLine) {
    const ParseRow& r = GetParam();
    const m_SampleData::Parsed p = m_SampleData::Parse(r.Text, r.Decimal);
    EXPECT_EQ(p.Values, r.Values);
    EXPECT_EQ(p.Problem, r.Problem);
}

INSTANTIATE_TEST_SUITE_P(Rows, SampleParse, ::testing::ValuesIn(kParseRows),
                         [](const auto& info) { return std::string(info.param.Name); });

class SampleData : public testing_support::RecordingTest {};

// Skewed measurements far from zero: the exponential's quantiles on an offset.
std::vector<double> Skewed(int n, double offset) {
    std::vector<double> v;
    for (int i = 1; i <= n; ++i)
        v.push_back(offset - std::log1p(-(i - 0.5) / n));
    return v;
}

TEST_F(SampleData, MomentsMatchATwoPassLongDoubleComputation) {
    const std::vector<double> v = Skewed(1000, 1e6);
    long double mean = 0, c2 = 0, c3 = 0, c4 = 0;
    for (double x : v)
        mean += x;
    mean /= v.size();
    for (double x : v) {
        const long double d = x - mean;
        c2 += d * d, c3 += d * d * d, c4 += d * d * d * d;
    }
    const long double n = v.size(), m2 = c2 / n;
    m_SampleData::Summary s;
    ASSERT_EQ(m_SampleData::Describe(v, s), "");
    EXPECT_LE(RelErr(s.Mean, mean), 4e-15);
    EXPECT_LE(RelErr(s.StDev, std::sqrt(c2 / (n - 1))), 1e-9); // the offset costs digits
    EXPECT_LE(RelErr(s.Skewness, c3 / n / (m2 * std::sqrt(m2))), 1e-7);
    EXPECT_LE(RelErr(s.Kurtosis, c4 / n / (m2 * m2)), 1e-7);
}

TEST_F(SampleData, RefusalsAreClearAndShort) {
    EXPECT_LT(m_SampleData::Parse("x\n" + std::string(5000, 'z')).Problem.size(), 120u);
    m_SampleData::Summary s;
    EXPECT_EQ(m_SampleData::Describe({1, 2, 3}, s), "At least 4 values are needed; found 3.");
    EXPECT_EQ(m_SampleData::Describe({2, 2, 2, 2, 2}, s),
              "All 5 values are equal; a curve needs values that vary.");
    EXPECT_EQ(s.N, 0u);
    EXPECT_TRUE(Rec().AllErrors().empty());
}

} // namespace
