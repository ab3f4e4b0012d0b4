// Measurements pasted or read from a text or CSV file, and their sample
// moments, for fitting a curve to data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace m_SampleData {

struct ReadOptions {
    char Decimal = '.'; // the user's decimal separator; "." is always accepted too
    // "" = the only column; "3" = the third (1-based); else a header's name. A
    // header name matches before a number does.
    std::string Column;
};

// What was read: the chosen column's values in order, or the first problem
// (then no values).
struct Parsed {
    std::vector<double> Values;
    std::string Problem; // e.g. line 4: "abc" is not a number
    int Line = 0;        // the line of the problem, 0 when it has none
    // The header's names, or "1", "2", ... without a header; kept with a problem
    // once they are known, so a caller can offer the choice.
    std::vector<std::string> ColumnNames;
    std::string Column; // the chosen column's name; empty for one unnamed column
};

// Fields are separated by tabs, semicolons, commas (when the decimal separator
// is ".") or runs of spaces: the first of those found in the first two lines
// with text. Quoted fields ("Diameter, mm") are read as CSV. Blank lines are
// skipped; the first line with text is a header when it does not start like a
// number. Columns are never pooled: several without a choice are refused.
Parsed Parse(std::string_view text, const ReadOptions& options = {});
// The same for a file ("-" is standard input), read in pieces: any size up to
// kMaxInput bytes. A read that fails or runs out of memory is a problem.
Parsed ReadFile(const std::string& path, const ReadOptions& options = {});

inline constexpr std::uint64_t kMaxInput = std::uint64_t{1} << 31; // bytes, per input and line

// The start of a file for showing it: at most `lines` whole lines and `bytes`
// bytes. Whole when that is the entire file.
struct Head {
    std::string Text;
    bool Whole = false;
    std::uint64_t Size = 0; // of the file, in bytes
    std::string Problem;
};
Head ReadHead(const std::string& path, std::size_t lines, std::size_t bytes);

// The sample as JohnsonDist::MOMENT sees it: standard deviation with divisor
// n - 1, skewness and kurtosis (beta2) from the central moments with divisor n.
struct Summary {
    std::size_t N = 0;
    double Mean = 0, StDev = 0, Skewness = 0, Kurtosis = 0;
};

// Empty on success, else why the values cannot be fitted (too few, no spread).
std::string Describe(const std::vector<double>& values, Summary& out);

inline constexpr std::size_t kMinValues = 4;

} // namespace m_SampleData
