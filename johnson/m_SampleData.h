// Measurements pasted or read from a text file, and their sample moments, for
// fitting a Johnson curve to data.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace m_SampleData {

// What was read: the values in order, or the first problem (then no values).
struct Parsed {
    std::vector<double> Values;
    std::string Problem; // e.g. line 4: "abc" is not a number
    int Line = 0;        // the line of the problem, 0 when it has none
};

// One value per line, or several separated by tabs, semicolons or spaces; blank
// lines are skipped and a first line that does not start with a number is a
// header. `decimal` is the decimal separator of the user's locale; "." is always
// accepted too, thousands separators never.
Parsed Parse(std::string_view text, char decimal = '.');
// The same for a file ("-" is standard input).
Parsed ReadFile(const std::string& path, char decimal = '.');

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
