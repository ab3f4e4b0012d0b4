// Fraction nonconforming below the LSL and above the USL. Pnc is the whole
// computation: a family, its parameters and the ticked limits in, the three
// figures out. The window and the command line call it; CalcLSLPNC,
// CalcUSLPNC and CapUpperPNC are the same steps on the program-wide current
// values, for code that sets those and asks one figure at a time.
#pragma once

#include "engine/Families.h"

#include <cstdint>
#include <optional>
#include <string>

namespace m_PercentCertainty {

// Below LSL, above USL and their sum; 0 for an unticked (absent) limit.
struct Figures {
    double Lower = 0, Upper = 0, Total = 0;
};

// The figures for one family: P(X < LSL), P(X > USL), and with both limits the
// upper one capped (CapUpperPNC). A refusal of the parameters puts the
// family's message into the status bar and leaves the figure 0.
Figures Pnc(const Families::Family& family, const Families::Params& p, std::optional<double> lsl,
            std::optional<double> usl);

// Program-wide current values, read by the three wrappers below.
extern int CurrentDistribution; // distribution code 1..9
extern double Param1, Param2, Param3, Param4;
extern double LSL, USL;
extern int16_t DecPlaces; // the display's decimals; no figure depends on it

// Calculator key for a code: the six classical keys, "Johnson" for 7, 8, 9 and any other.
std::string CalculatorName(int code);

double CalcLSLPNC(); // P(X < LSL)
double CalcUSLPNC(); // P(X > USL)

// The upper figure to show beside the lower one when both limits are ticked. The
// two tails are computed apart, so with LSL <= USL they may overlap by a rounding
// error; the upper figure then gives way, and lower + upper never exceeds 1.
double CapUpperPNC(double lower, double upper);

} // namespace m_PercentCertainty
