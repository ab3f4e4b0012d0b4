// Sample data: what is read from a text or file, and the sample moments against
// exact values and a long-double two-pass computation.
#include "stats/m_SampleData.h"

#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

using testing_support::RelErr;
using namespace std::string_literals;

struct ReadRow {
    const char* Name;
    std::string Text;
    char Decimal;
    const char* Column;
    std::vector<double> Values;
    const char* Problem;
    std::vector<std::string> Names = {};
    const char* Chosen = "";
};

const ReadRow kReadRows[] = {
    {"header_blanks_crlf",
     "Size\r\n\r\n1.5\r\n  2\n\n\t3e1\n",
     '.',
     "",
     {1.5, 2, 30},
     "",
     {"Size"},
     "Size"},
    {"no_header_one_column",
     "\xEF\xBB\xBF"
     "1\n2\n",
     '.',
     "",
     {1, 2},
     "",
     {"1"},
     ""},
    {"semicolons_never_pooled",
     "Sample;Diameter\n1;30,2\n2;30,4\n",
     ',',
     "Diameter",
     {30.2, 30.4},
     "",
     {"Sample", "Diameter"},
     "Diameter"},
    {"commas_separate_with_a_point",
     "Part,Diameter\n1,9.9894\n2,10.5\n",
     '.',
     "2",
     {9.9894, 10.5},
     "",
     {"Part", "Diameter"},
     "Diameter"},
    {"quoted_names_and_text_columns",
     "\"Dia, mm\",Note\n1.5,ok\n2.5,\"a, b\"\n",
     '.',
     "Dia, mm",
     {1.5, 2.5},
     "",
     {"Dia, mm", "Note"},
     "Dia, mm"},
    {"spaces_by_number", "1  10\n2 20 \n", '.', "2", {10, 20}, "", {"1", "2"}, "2"},
    {"tabs_keep_empty_cells",
     "a\tb\n1\t\n",
     '.',
     "b",
     {},
     "line 2: no value in column \"b\"",
     {"a", "b"}},
    {"several_columns_refused",
     "Sample;Diameter\n1;2\n",
     '.',
     "",
     {},
     "2 columns (\"Sample\", \"Diameter\"): choose one",
     {"Sample", "Diameter"}},
    {"unknown_column",
     "a,b\n1,2\n",
     '.',
     "c",
     {},
     "there is no column \"c\"; the columns are \"a\", \"b\"",
     {"a", "b"}},
    {"more_fields_than_columns",
     "x\n1\n2 3\n",
     '.',
     "",
     {},
     "line 3: 2 fields where the header has 1",
     {"x"},
     "x"},
    {"malformed_first_value", "1.5.2\n2\n", '.', "", {}, "line 1: \"1.5.2\" is not a number"},
    {"malformed_first_line_not_a_header",
     "1x\n2\n3\n",
     '.',
     "",
     {},
     "line 1: \"1x\" is not a number",
     {"1"}},
    {"first_of_two_columns", "1,5\n2\n", '.', "1", {1, 2}, "", {"1", "2"}, "1"},
    {"decimal_comma", "1,5\n2,25\n3.5\n", ',', "", {1.5, 2.25, 3.5}, ""},
    {"no_thousands_separator", "x\n1.234,5\n", ',', "", {}, "line 2: \"1.234,5\" is not a number"},
    {"bad_line", "value\n1\n2\nabc\n5\n", '.', "", {}, "line 4: \"abc\" is not a number"},
    {"utf16",
     "\xFF\xFE"
     "1\0\n\0"s,
     '.',
     "",
     {},
     "not UTF-8 text (UTF-16?)"},
    {"utf16_without_mark", "1\0\n\0"s, '.', "", {}, "not UTF-8 text (UTF-16?)"},
    {"nul_inside_a_line",
     "x\n1\n2\0"
     "3\n"s,
     '.',
     "",
     {},
     "line 3: a NUL byte; this is not a text file"},
    {"endless_field",
     "x\n" + std::string((1 << 20) + 10, '7'),
     '.',
     "",
     {},
     "line 2: a field of more than 1 MiB is not a number"},
};

class SampleRead : public testing_support::RecordingTest,
                   public ::testing::WithParamInterface<ReadRow> {};

TEST_P(SampleRead, ReadsTheColumnOrNamesTheProblem) {
    const ReadRow& r = GetParam();
    const m_SampleData::Parsed p = m_SampleData::Parse(r.Text, {r.Decimal, r.Column});
    EXPECT_EQ(p.Values, r.Values);
    EXPECT_EQ(p.Problem, r.Problem);
    if (!r.Names.empty()) {
        EXPECT_EQ(p.ColumnNames, r.Names);
    }
    if (!r.Values.empty()) {
        EXPECT_EQ(p.Column, r.Chosen);
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Rows, SampleRead, ::testing::ValuesIn(kReadRows),
                         [](const auto& row) { return std::string(row.param.Name); });

class SampleData : public testing_support::RecordingTest {};

TEST_F(SampleData, FilesStreamInPiecesAndRefusalsSayWhy) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "pondera_sample";
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "many.csv").string();
    {
        // Lines across the reader's 1 MiB pieces: every value arrives whole.
        std::ofstream out(path);
        out << "Part,Diameter\n";
        for (int i = 1; i <= 200000; ++i)
            out << i << "," << i % 7 << ".25\n";
    }
    const m_SampleData::Parsed p = m_SampleData::ReadFile(path, {'.', "Diameter"});
    ASSERT_EQ(p.Problem, "");
    ASSERT_EQ(p.Values.size(), 200000u);
    EXPECT_EQ(p.Values[131071], 131072 % 7 + 0.25);
    EXPECT_EQ(m_SampleData::ReadFile(dir.string()).Problem,
              "\"" + dir.string() + "\" is a folder, not a file");
    EXPECT_EQ(m_SampleData::ReadFile((dir / "none").string()).Problem.rfind("cannot read", 0), 0u);
    const m_SampleData::Head head = m_SampleData::ReadHead(path, 3, 1 << 16);
    EXPECT_EQ(head.Text, "Part,Diameter\n1,1.25\n2,2.25\n");
    EXPECT_FALSE(head.Whole);
    std::filesystem::remove_all(dir);
    EXPECT_TRUE(Rec().AllErrors().empty());
}

// Exact moments of a sample: the pattern {0, 0, 0, 4} times a scale, shifted,
// repeated. Deviations -1, -1, -1, 3 (times the scale): m2 = 3, m3 = 6, m4 = 21,
// so skewness 6 / 3^1.5 and kurtosis 21 / 9. Powers of two keep every value exact.
struct MomentRow {
    const char* Name;
    double Offset, Scale;
    int Repeats;
};

const MomentRow kMomentRows[] = {
    {"far_from_zero", 1e12, 1, 25000},
    {"tiny_spread_far_from_zero", 1e9, 0x1p-23, 25}, // spread of about 1e-6 at 1e9
    {"subnormal_fourth_powers", 0, 0x1p-270, 1},     // spread about 1e-81
    {"overflowing_squares", 0, 0x1p1000, 1},
};

class SampleMoments : public testing_support::RecordingTest,
                      public ::testing::WithParamInterface<MomentRow> {};

TEST_P(SampleMoments, MatchExactValues) {
    const MomentRow& r = GetParam();
    std::vector<double> v;
    for (int i = 0; i < r.Repeats; ++i)
        for (double k : {0, 0, 0, 4})
            v.push_back(r.Offset + k * r.Scale);
    m_SampleData::Summary s;
    ASSERT_EQ(m_SampleData::Describe(v, s), "");
    const double n = static_cast<double>(v.size());
    EXPECT_LE(RelErr(s.Mean, r.Offset + r.Scale), 1e-15);
    EXPECT_LE(RelErr(s.StDev, r.Scale * std::sqrt(3 * n / (n - 1))), 1e-14);
    EXPECT_LE(RelErr(s.Skewness, 6 / std::pow(3, 1.5)), 1e-14);
    EXPECT_LE(RelErr(s.Kurtosis, 21.0 / 9), 1e-14);
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Rows, SampleMoments, ::testing::ValuesIn(kMomentRows),
                         [](const auto& row) { return std::string(row.param.Name); });

// Two values a few units in the last place apart, far from zero: a symmetric
// sample, skewness 0 and kurtosis 1 exactly.
TEST_F(SampleData, TwoLevelsCloseTogetherAreSymmetric) {
    std::vector<double> v(50, 1e9);
    v.resize(100, 1e9 + 1e-6);
    m_SampleData::Summary s;
    ASSERT_EQ(m_SampleData::Describe(v, s), "");
    EXPECT_EQ(s.Skewness, 0);
    EXPECT_EQ(s.Kurtosis, 1);
}

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
    auto asDouble = [](long double reference) { return static_cast<double>(reference); };
    EXPECT_LE(RelErr(s.Mean, asDouble(mean)), 4e-15);
    EXPECT_LE(RelErr(s.StDev, asDouble(std::sqrt(c2 / (n - 1)))), 1e-12);
    EXPECT_LE(RelErr(s.Skewness, asDouble(c3 / n / (m2 * std::sqrt(m2)))), 1e-10);
    EXPECT_LE(RelErr(s.Kurtosis, asDouble(c4 / n / (m2 * m2))), 1e-10);
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
