// Fraction nonconforming below the LSL and above the USL for the current distribution.
#pragma once

#include <cstdint>
#include <string>

namespace m_PercentCertainty {

// Program-wide current values, written by CalcPercent and read here and by the
// distribution calculator (which learns the Johnson form from CurrentDistribution).
extern int CurrentDistribution; // distribution code 1..9
extern double Param1, Param2, Param3, Param4;
extern double LSL, USL;
extern int16_t DecPlaces;

// Calculator key for the current code: the six classical keys, "Johnson" for 7, 8, 9 and any other.
std::string CalculatorName(int code);

double CalcLSLPNC(); // P(X < LSL)
double CalcUSLPNC(); // P(X > USL)

// The upper figure to show beside the lower one when both limits are ticked. The
// two tails are computed apart, so with LSL <= USL they may overlap by a rounding
// error; the upper figure then gives way, and lower + upper never exceeds 1.
double CapUpperPNC(double lower, double upper);

} // namespace m_PercentCertainty
