// Log-gamma (six-term Lanczos series) and the gamma function, plus the small
// numeric kernels the density and probability code shares.
#pragma once

#include <initializer_list>

namespace m_NumRecipes {

double gammln(double xx);
double Gamma(double x);

// ---- Kernels ----------------------------------------------------------------
// These run inside their caller's error trap and have none of their own: a
// genuine overflow reaches the caller's trap, but for finite arguments they
// never raise a floating-point flag on the way to a representable answer.
namespace kernel {

inline constexpr double kInvSqrt2Pi = 0.398942280401432677939946059934381868;
// |z| beyond this has a normal tail probability of exactly 0 in double precision.
inline constexpr double kZFar = 1e150;

// NaN and infinity pass through arithmetic without raising a floating-point
// flag, so the entry points refuse them as an invalid argument (error 5).
void RequireFinite(std::initializer_list<double> values);

double NormalCdf(double z);   // P(Z <= z)
double NormalUpper(double z); // P(Z > z), computed directly so small tails keep their digits

// phi(z) * (num...) / (den...) for positive finite factors, without a spurious
// overflow or underflow in the intermediate products. A value beyond the double
// range overflows, unless it lies next to a pole of the density (the ends of a
// Johnson SB or SL curve with a small delta): then it is 0, as at the pole itself.
double PhiScaled(double z, std::initializer_list<double> num, std::initializer_list<double> den,
                 bool nearPole = false);

// a * b, a / b (b > 0) and gamma + delta * t, clamped to +-kZFar where the exact
// value is beyond it (there every probability is already 0 or 1).
double MulZ(double a, double b);
double DivZ(double a, double b);
double LinearZ(double gamma, double delta, double t);

// ln(a / b) and ln(a b) for a, b > 0, also where a / b or a b itself would
// overflow or underflow.
double LogRatio(double a, double b);
double LogProduct(double a, double b);

// asinh(d / lamda) for lamda > 0, also where d / lamda would overflow.
double AsinhRatio(double d, double lamda);

} // namespace kernel
} // namespace m_NumRecipes
