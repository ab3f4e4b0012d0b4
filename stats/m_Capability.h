// Process performance figures beside the fraction nonconforming, by the
// percentile method of ISO 22514-2 (the curve's own quantiles stand in for
// mean +- 3 standard deviations, so a skewed curve is judged by its tails) and
// by the Z-score method (each limit's tail turned into a normal z); observed
// ppm of a sample; the normal curve's confidence intervals.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace m_Capability {

// The curve's quantiles at the normal probabilities of -3, 0 and +3 standard
// deviations (0.135 %, 50 %, 99.865 %).
struct Percentiles {
    double X0135 = 0, X50 = 0, X99865 = 0;
};

// For a distribution code (1..9 as in the catalogue; any other code the Johnson
// normal form z = gamma + delta x, as the calculator takes it) and Param1..Param4.
// Closed forms for the six classical families, the AS 100 transform for the
// Johnson ones. Empty when the parameters describe no curve.
std::optional<Percentiles> PercentilePoints(int code, double p1, double p2, double p3, double p4);

struct Figures {
    std::optional<double> Pp, Ppl, Ppu, Ppk;
    std::optional<double> Ppm; // the total fraction nonconforming in parts per million
};

// Pp = (USL - LSL) / (X99.865 - X0.135), Ppu = (USL - X50) / (X99.865 - X50),
// Ppl = (X50 - LSL) / (X50 - X0.135), Ppk the smaller of those defined. A figure
// that needs a missing limit, or a curve without spread on its side, is empty;
// so is Ppm when neither limit is given.
Figures Indices(const Percentiles& x, std::optional<double> lsl, std::optional<double> usl,
                double pncTotal = 0);

// The Z-score method: Z_L = Phi^-1(F(LSL)), Z_U = Phi^-1(F(USL)); Pp = (Z_U - Z_L) / 6,
// Ppl = -Z_L / 3, Ppu = Z_U / 3, Ppk the smaller. Each limit comes as its two
// exact tails (below, above); Phi^-1 is taken of the smaller one, so a tail of
// 1e-300 keeps its digits. A limit with an empty tail (no figure) leaves its
// figures empty; one with the whole curve on its wrong side leaves Pp and Ppk
// empty as well.
struct Tails {
    double Below = 0, Above = 0;
};
Figures ZScoreIndices(std::optional<Tails> lsl, std::optional<Tails> usl, double pncTotal = 0);

// Two-sided confidence interval at `level` (0 < level < 1) for the normal curve
// fitted to n values: the exact chi-square interval for Pp, Bissell's (1990)
// normal approximation for Ppk. Empty for n < 2 or a level outside (0, 1).
struct Interval {
    double Low = 0, High = 0;
};
std::optional<Interval> NormalPpInterval(double pp, int n, double level);
std::optional<Interval> NormalPpkInterval(double ppk, int n, double level);

// Which figures the window shows; both are always computed.
enum class Method { Percentile, ZScore };
// As the user reads it beside the figures: "percentile (ISO 22514-2)", "Z-score".
const char* MethodName(Method m);
// As pondera-cli writes it: "percentile", "z-score".
const char* MethodKey(Method m);

// The Z-score figures of a distribution code and Param1..Param4: each limit's
// two tails from the family record, then ZScoreIndices. Empty when the
// parameters describe no curve.
Figures ZScoreFigures(int code, const double (&p)[4], std::optional<double> lsl,
                      std::optional<double> usl, double pncTotal = 0);

// Parts per million below the LSL, above the USL and in all; an absent limit
// counts 0.
struct Ppm {
    double Below = 0, Above = 0, Total = 0;
};
// The sample's own: values below the LSL and above the USL, per million values.
Ppm Observed(const std::vector<double>& values, std::optional<double> lsl,
             std::optional<double> usl);

} // namespace m_Capability
