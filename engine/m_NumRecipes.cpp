// ln Gamma by the six-term Lanczos series (gamma = 5) as published in Numerical
// Recipes; and the numeric kernels of the density and probability code.
// Kept: the series' coefficients to the 15 digits the program has always used.
#include "engine/m_NumRecipes.h"

#include "support/ErrorTrap.h"

#include <cmath>

namespace m_NumRecipes {

namespace {
constexpr const char* kModule = "Pondera.m_NumRecipes";

constexpr double kCof[6] = {76.1800917294715,  -86.5053203294168,   24.0140982408309,
                            -1.23173957245015, 0.00120865097386618, -5.395239384953E-06};
constexpr double kSerStart = 1.00000000019001;
constexpr double kSqrt2PiFactor = 2.506628274631;
} // namespace

double gammln(double xx) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        kernel::RequireFinite({xx});
        const double x = xx;
        double y = xx;
        double tmp = x + 5.5;
        tmp = support::ck(tmp - (x + 0.5) * std::log(tmp));
        double ser = kSerStart;
        for (double c : kCof) {
            y = y + 1;
            ser = ser + c / y;
        }
        // x = 0 divides by zero here; x < 0 takes the logarithm of a negative number.
        const double arg = support::ck(kSqrt2PiFactor * ser / x);
        return support::ck(-tmp + std::log(arg));
    });
}

double Gamma(double x) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        kernel::RequireFinite({x});
        // No reflection formula: arguments <= 0 are not supported. The series
        // divides by x, which overflows below about 6e-307. Refusing both here
        // keeps Gamma from turning gammln's failure (0) into exp(0) = 1.
        if (!(x > 0)) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
        if (x < 1e-306) support::Raise(support::kErrOverflow, support::kAppTitle, "");
        return support::ck(std::exp(gammln(x)));
    });
}

namespace kernel {

namespace {
constexpr double kLogSqrt2Pi = 0.918938533204672741780329736406;
constexpr double kSqrtHalf = 0.707106781186547524400844362104849;
constexpr double kLn2 = 0.693147180559945309417232121458;
} // namespace

void RequireFinite(std::initializer_list<double> values) {
    for (double v : values)
        if (!std::isfinite(v)) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
}

double NormalCdf(double z) {
    return 0.5 * std::erfc(-z * kSqrtHalf);
}

double NormalUpper(double z) {
    return 0.5 * std::erfc(z * kSqrtHalf);
}

double PhiScaled(double z, std::initializer_list<double> num, std::initializer_list<double> den,
                 bool nearPole) {
    if (!(std::fabs(z) < kZFar)) return 0;
    const double e = -0.5 * z * z;
    // Plain product while every piece stays well inside the double range; the
    // logarithmic form otherwise (a few ulps of the exponent, only in far tails
    // or at extreme scales).
    bool direct = e > -400;
    for (double f : num)
        direct = direct && f >= 1e-30 && f <= 1e30;
    for (double f : den)
        direct = direct && f >= 1e-30 && f <= 1e30;
    if (direct) {
        double factor = 1;
        for (double f : num)
            factor *= f;
        for (double f : den)
            factor /= f;
        return std::exp(e) * kInvSqrt2Pi * factor;
    }
    double le = e - kLogSqrt2Pi;
    for (double f : num)
        le += std::log(f);
    for (double f : den)
        le -= std::log(f);
    if (le < -746) return 0;
    if (nearPole && le > 709.7) return 0;
    return std::exp(le); // an overflow here is genuine: the density is beyond the double range
}

double MulZ(double a, double b) {
    const double fa = std::fabs(a), fb = std::fabs(b);
    if (fa <= 1 || fb <= kZFar / fa) return a * b;
    return (a < 0) != (b < 0) ? -kZFar : kZFar;
}

double DivZ(double a, double b) {
    if (b >= 1 || std::fabs(a) <= kZFar * b) return a / b;
    return a < 0 ? -kZFar : kZFar;
}

double LinearZ(double gamma, double delta, double t) {
    const double u = MulZ(delta, t);
    const double half = 0.5 * gamma + 0.5 * u;
    if (std::fabs(half) >= 0.5 * kZFar) return half > 0 ? kZFar : -kZFar;
    return gamma + u;
}

double LogRatio(double a, double b) {
    if (a >= 1e-150 && a <= 1e150 && b >= 1e-150 && b <= 1e150) return std::log(a / b);
    return std::log(a) - std::log(b);
}

double LogProduct(double a, double b) {
    if (a >= 1e-150 && a <= 1e150 && b >= 1e-150 && b <= 1e150) return std::log(a * b);
    return std::log(a) + std::log(b);
}

double AsinhRatio(double d, double lamda) {
    if (lamda >= 1 || std::fabs(d) <= 1e300 * lamda) return std::asinh(d / lamda);
    const double s = LogRatio(std::fabs(d), lamda) + kLn2; // asinh(w) = ln 2|w| for huge |w|
    return d < 0 ? -s : s;
}

} // namespace kernel
} // namespace m_NumRecipes
