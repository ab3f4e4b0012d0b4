// Limits from a probability: the x that leaves a given fraction of a curve in
// its lower tail (P(X <= x) = p) or its upper tail (P(X > x) = p), for every
// family of the catalogue, the Johnson forms included. Each tail is worked
// from its own side, so a tail of 1e-300 keeps its digits: the engine's own
// tail at the answer gives p back to the precision of its PNC.
#pragma once

#include <string>

namespace m_Quantile {

// Why there is no limit; the window and the command line show these.
inline constexpr const char* kOutsideZeroOne =
    "The probability must be greater than 0 and less than 1.";
inline constexpr const char* kNoSpread =
    "This curve has all its probability at one point: no limit gives a fraction of it.";
inline constexpr const char* kBeyondRange =
    "The limit for so small a tail lies beyond the range of numbers.";
inline constexpr const char* kUnreachable =
    "No limit gives that tail on this curve: it would fall between two neighbouring numbers "
    "(too near the curve's end, or the curve too steep there).";

struct Limit {
    bool Found = false;
    double X = 0;
    std::string Message; // when not found: one of the texts above or the family's own rule
};

// The limit for `probability` in the lower or upper tail of the curve with
// distribution code `code` (0 or any other code: the Johnson normal form,
// z = gamma + delta x) and Param1..Param4. Traps its own faults.
Limit FromTail(int code, const double (&params)[4], double probability, bool upper);

// The standard normal z with P(Z <= z) = p, or P(Z > z) = p when `upper`, for
// 0 < p < 1: to the last digits of the engine's own normal tails.
double NormalQuantile(double p, bool upper);

} // namespace m_Quantile
