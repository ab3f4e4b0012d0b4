// The families, one block each, then the table.
//
// Moments: the standard closed forms (Johnson, Kotz & Balakrishnan, Continuous
// Univariate Distributions), in the algebraically equal forms that avoid
// cancellation and spurious overflow: the triangular spread as half the sum of
// squared differences, exp(s^2) - 1 as expm1, and the log-normal variance as
// exp(mu + s^2/2)^2 (exp(s^2) - 1) without forming exp(2 mu + s^2).
//
// Densities and tails in the parameterisation of the catalogue; every tail is
// computed on its own side (erfc, expm1, complements written as sums of
// positive terms), so a probability of 1e-300 keeps its digits whichever side
// it lies on. The Johnson forms follow the AS 100 transform, CDF = Phi(z):
//   SB  z = gamma + delta ln((x - xi) / (xi + lamda - x))   on (xi, xi + lamda)
//   SU  z = gamma + delta asinh((x - xi) / lamda)
//   SL  z = gamma + delta ln((x - xi) / lamda)             where (x - xi) / lamda > 0;
//       a negative lamda (the fitted -1 of a negative skew) mirrors the curve
//       about xi, and there CDF = Phi(-z)
//   normal form  z = gamma + delta x.
//
// Quantiles, each from the smaller of its two tails so both keep their digits:
// normal mu + sigma z; log-normal min + exp(mu + sigma z); exponential (Param1
// a rate) min + H / rate and Weibull min + scale H^(1/shape) with the
// cumulative hazard H = -ln(1 - p); uniform and triangular by inverting their
// piecewise cumulative functions, the far side of the likeliest value written
// without cancellation; the Johnson forms by AS 100's inverse transform with
// w = (z - gamma) / delta: SB xi + lamda / (1 + e^-w), SU xi + lamda sinh w,
// SL xi + lamda e^w (z negated for the mirrored curve), normal form w.
// A quantile beyond the double range comes out infinite; the caller clears
// the overflow it raised.
#include "engine/Families.h"

#include "engine/m_Distributions.h"
#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

namespace Families {

namespace {

using namespace m_NumRecipes::kernel;
using support::ck;

constexpr double kLn2 = 0.693147180559945309417232121458;

// Quiet comparisons: a NaN breaks the rule instead of raising an
// invalid-operation fault.
inline bool Gt(double a, double b) {
    return std::isgreater(a, b);
}
inline bool Le(double a, double b) {
    return std::islessequal(a, b);
}

// Halves first, so no difference of two finite numbers can overflow.
inline double HalfDiff(double a, double b) {
    return 0.5 * a - 0.5 * b;
}

// x - origin, or the largest double of its sign where the exact difference lies
// beyond the double range (a limit at 1e308 against a threshold at -1e308): such
// a point is beyond every support, and the tails say 0 or 1 without a fault.
inline double Gap(double x, double origin) {
    const double half = HalfDiff(x, origin);
    if (std::fabs(half) < 0.5 * DBL_MAX) return x - origin;
    return half > 0 ? DBL_MAX : -DBL_MAX;
}

inline double NormalTail(double z, bool upper) {
    return upper ? NormalUpper(z) : NormalCdf(z);
}

// The cumulative hazard -ln(1 - p) from whichever tail is the smaller.
inline double Hazard(double lower, double upper) {
    return lower < upper ? -std::log1p(-lower) : -std::log(upper);
}

// ---- The grid ------------------------------------------------------------------
// The quick forms hold while every piece is well inside the double range; any
// other point goes through the family's density, which handles the extremes.
inline bool Moderate(double v) {
    return v >= 1e-100 && v <= 1e100;
}
inline bool ModerateWide(double v) {
    return v >= 1e-150 && v <= 1e150;
}
constexpr double kQuickZ = 37; // exp(-z^2/2) stays a normal number

template <class F> double DensityOf(const Params& p, double x) {
    if (std::isinf(x)) return 0;
    return F::Density(p, x);
}

// The points of m_Distributions::GridX, with the step taken once. `quick`
// answers the points it can and returns false for the others.
template <class F, class Quick>
void Fill(const Params& p, double low, double high, int n, double* out, Quick quick) {
    const bool plain = std::fabs(low) < 8e307 && std::fabs(high) < 8e307;
    const double step = plain ? (high - low) / n : 0;
    for (int i = 1; i <= n; ++i) {
        const double x = plain ? low + (i - 1) * step : m_Distributions::GridX(low, high, n, i);
        double v;
        if (!quick(x, v)) v = DensityOf<F>(p, x);
        out[i - 1] = v;
    }
}

// A grid without a quick path.
template <class F> void PlainGrid(const Params& p, double low, double high, int n, double* out) {
    Fill<F>(p, low, high, n, out, [](double, double&) { return false; });
}

// ---- Normal: mean p1, standard deviation p2 -------------------------------------
struct Normal {
    static double Mean(double p1, double, double) { return ck(p1); }
    static double StDev(double, double p2, double) { return ck(p2); }
    static double Skewness(double, double, double) { return 0; }
    static double Kurtosis(double, double, double) { return 3; }
    static double Density(const Params& p, double x) {
        return PhiScaled(DivZ(Gap(x, p[0]), p[1]), {}, {p[1]});
    }
    static double Tail(const Params& p, double x, bool upper) {
        return NormalTail(DivZ(Gap(x, p[0]), p[1]), upper);
    }
    static void Grid(const Params& p, double low, double high, int n, double* out) {
        const double p1 = p[0], p2 = p[1];
        if (!Moderate(p2) || !(std::fabs(p1) < 1e300))
            return PlainGrid<Normal>(p, low, high, n, out);
        const double c = kInvSqrt2Pi / p2;
        Fill<Normal>(p, low, high, n, out, [&](double x, double& v) {
            const double z = (x - p1) / p2;
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z);
            return true;
        });
    }
    static double Quantile(const Params& p, double z, double, double) { return p[0] + p[1] * z; }
};

// ---- LogNormal: mean p1 and standard deviation p2 of ln(x - p3) -----------------
struct LogNormal {
    static double Mean(double p1, double p2, double p3) {
        return ck(std::exp(p1 + std::pow(p2, 2) / 2) + p3);
    }
    static double StDev(double p1, double p2, double) {
        const double s2 = ck(std::pow(p2, 2));
        return ck(std::exp(p1 + s2 / 2) * std::sqrt(std::expm1(s2)));
    }
    static double Skewness(double, double p2, double) {
        const double s2 = ck(std::pow(p2, 2));
        const double wm1 = ck(std::expm1(s2)); // w - 1, w = exp(s^2)
        return ck((wm1 + 3) * std::sqrt(wm1));
    }
    static double Kurtosis(double, double p2, double) {
        const double s2 = ck(std::pow(p2, 2));
        const double wm1 = ck(std::expm1(s2));
        const double w = wm1 + 1;
        return ck((std::pow(w, 3) + 3 * std::pow(w, 2) + 6 * w + 6) * wm1 + 3);
    }
    static double Density(const Params& p, double x) {
        const double d = Gap(x, p[2]);
        if (!(d > 0)) return 0;
        return PhiScaled(DivZ(std::log(d) - p[0], p[1]), {}, {p[1], d});
    }
    static double Tail(const Params& p, double x, bool upper) {
        const double d = Gap(x, p[2]);
        if (!(d > 0)) return upper ? 1 : 0;
        return NormalTail(DivZ(std::log(d) - p[0], p[1]), upper);
    }
    static void Grid(const Params& p, double low, double high, int n, double* out) {
        const double p1 = p[0], p2 = p[1], p3 = p[2];
        if (!Moderate(p2) || !(std::fabs(p1) < 1e300) || !(std::fabs(p3) < 1e300))
            return PlainGrid<LogNormal>(p, low, high, n, out);
        const double c = kInvSqrt2Pi / p2;
        Fill<LogNormal>(p, low, high, n, out, [&](double x, double& v) {
            const double d = x - p3;
            if (!ModerateWide(d)) return false;
            const double z = (std::log(d) - p1) / p2;
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / d;
            return true;
        });
    }
    static double Quantile(const Params& p, double z, double, double) {
        return p[2] + std::exp(p[0] + p[1] * z);
    }
};

// ---- Exponential: rate p1 (labelled "Scale:"), minimum p2 -----------------------
struct Exponential {
    static double Mean(double p1, double p2, double) { return ck(1 / p1 + p2); }
    // sqrt(1 / lambda^2): positive even for a negative rate.
    static double StDev(double p1, double, double) { return ck(std::fabs(1 / p1)); }
    static double Skewness(double, double, double) { return 2; }
    static double Kurtosis(double, double, double) { return 9; }
    static double Density(const Params& p, double x) {
        const double d = Gap(x, p[1]);
        if (d < 0) return 0;
        return p[0] * std::exp(-MulZ(p[0], d));
    }
    static double Tail(const Params& p, double x, bool upper) {
        const double d = Gap(x, p[1]);
        if (!(d > 0)) return upper ? 1 : 0;
        const double t = MulZ(p[0], d);
        return upper ? std::exp(-t) : -std::expm1(-t);
    }
    static double Quantile(const Params& p, double, double lower, double upper) {
        return p[1] + Hazard(lower, upper) / p[0];
    }
};

// ---- Weibull: shape p1, scale p2, minimum p3 -------------------------------------
// Gamma(1 + n/k) for the moments, afresh on every call.
double WeibullG(int n, double k) {
    const double g = m_NumRecipes::Gamma(ck(n / k) + 1);
    // Gamma has reported its own failure and given 0 (never a value of Gamma);
    // the moment fails with it rather than show a figure built on that 0.
    if (g == 0) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
    return g;
}

// ln(d / eta) for d, eta > 0, also where d / eta leaves the double range; near
// 1 from the exact difference d - eta, so a steep curve (shape in the
// thousands) keeps its digits there.
inline double WeibullLogRatio(double d, double eta) {
    if (d >= 0.5 * eta && d <= 2 * eta) return std::log1p((d - eta) / eta);
    return LogRatio(d, eta);
}

// True when d / eta is a normal double and u^k surely lies below e^700, so the
// quotient and the exact power serve.
inline bool WeibullPlainPower(double d, double eta, double k, double& u) {
    const int de = std::ilogb(d) - std::ilogb(eta);
    if (de < -1000 || de > 1000) return false;
    u = d / eta;
    // |ln u| < (|ilogb u| + 1) ln 2, so this bounds |ln u^k| without a logarithm.
    const int e = std::ilogb(u);
    return k <= 700 / (((e < 0 ? -e : e) + 1) * kLn2);
}

// (d / eta)^k for d, eta, k > 0: the exact power where it is representable, else
// through logarithms, a value large or small enough that exp(-t) and expm1(-t)
// come out right.
inline double WeibullPower(double d, double eta, double k) {
    double u;
    if (WeibullPlainPower(d, eta, k, u)) return std::pow(u, k);
    const double lt = MulZ(k, WeibullLogRatio(d, eta));
    if (lt > 700) return kZFar;
    return std::exp(lt); // below e^-700: the power itself is what the lower tail needs
}

struct Weibull {
    static double Mean(double p1, double p2, double p3) { return ck(WeibullG(1, p1) * p2 + p3); }
    static double StDev(double p1, double p2, double) {
        const double g1 = WeibullG(1, p1), g2 = WeibullG(2, p1);
        return ck(std::sqrt(g2 - std::pow(g1, 2)) * std::fabs(p2));
    }
    static double Skewness(double p1, double, double) {
        const double g1 = WeibullG(1, p1), g2 = WeibullG(2, p1), g3 = WeibullG(3, p1);
        return ck((g3 - 3 * g1 * g2 + 2 * std::pow(g1, 3)) / std::pow(g2 - std::pow(g1, 2), 1.5));
    }
    static double Kurtosis(double p1, double, double) {
        const double g1 = WeibullG(1, p1), g2 = WeibullG(2, p1), g3 = WeibullG(3, p1),
                     g4 = WeibullG(4, p1);
        return ck((g4 - 4 * g1 * g3 + 6 * std::pow(g1, 2) * g2 - 3 * std::pow(g1, 4)) /
                  std::pow(g2 - std::pow(g1, 2), 2));
    }
    static double Density(const Params& p, double x) {
        const double k = p[0], eta = p[1], d = Gap(x, p[2]);
        if (d < 0) return 0;
        if (d == 0) return k == 1 ? 1 / eta : 0; // a pole (k < 1) is drawn as 0
        double u;
        if (WeibullPlainPower(d, eta, k, u) && u >= 1e-100 && u <= 1e100 && k >= 1e-50 &&
            k <= 1e50 && eta >= 1e-50 && eta <= 1e50 && k * std::fabs(std::log(u)) <= 200) {
            const double t = std::pow(u, k); // below e^200
            return (k / eta) * (t / u) * std::exp(-t);
        }
        const double lu = WeibullLogRatio(d, eta);
        const double lt = MulZ(k, lu);
        if (lt > 200) return 0; // u^k > 7e86: exp(-u^k) is 0
        const double t = lt < -700 ? 0.0 : std::exp(lt);
        const double le = std::log(k) - std::log(eta) + MulZ(k - 1, lu) - t;
        if (le < -746) return 0;
        if (le > 709.7 && k < 1) return 0; // so close to the pole it is drawn as the pole
        return std::exp(le);
    }
    static double Tail(const Params& p, double x, bool upper) {
        const double d = Gap(x, p[2]);
        if (!(d > 0)) return upper ? 1 : 0;
        const double t = WeibullPower(d, p[1], p[0]);
        return upper ? std::exp(-t) : -std::expm1(-t);
    }
    static void Grid(const Params& p, double low, double high, int n, double* out) {
        const double k = p[0], eta = p[1], min = p[2];
        if (!(k >= 1e-50 && k <= 1e50) || !(eta >= 1e-50 && eta <= 1e50) ||
            !(std::fabs(min) < 1e300))
            return PlainGrid<Weibull>(p, low, high, n, out);
        const double c = k / eta, inv = 1 / eta;
        if (k == std::floor(k) && k <= 8) {
            // Whole shapes (the default is 2): the power by multiplication, one exp a point.
            const int whole = static_cast<int>(k);
            return Fill<Weibull>(p, low, high, n, out, [&](double x, double& v) {
                const double u = (x - min) * inv;
                if (!(u >= 1e-30 && u <= 1e30)) return false;
                double t = u;
                for (int j = 1; j < whole; ++j)
                    t *= u;
                v = c * (t / u) * std::exp(-t);
                return true;
            });
        }
        Fill<Weibull>(p, low, high, n, out, [&](double x, double& v) {
            const double u = (x - min) * inv;
            if (!Moderate(u)) return false;
            const double lu = std::log(u);
            const double lt = k * lu; // ln u^k, |ln u| < 231
            if (!(std::fabs(lt) <= 200)) return false;
            const double t = std::exp(lt);
            v = c * std::exp(lt - lu - t); // (k/eta) u^(k-1) exp(-u^k)
            return true;
        });
    }
    static double Quantile(const Params& p, double, double lower, double upper) {
        const double k = p[0], eta = p[1], h = Hazard(lower, upper);
        const double d = eta * std::pow(h, 1 / k);
        if (std::isfinite(d) && d >= DBL_MIN) return p[2] + d;
        // H^(1/k) or the product leaves the double range: in logarithms.
        return p[2] + std::exp(std::log(eta) + std::log(h) / k);
    }
};

// ---- Uniform: minimum p1, maximum p2 -----------------------------------------------
struct Uniform {
    static double Mean(double p1, double p2, double) { return ck((p1 + p2) / 2); }
    static double StDev(double p1, double p2, double) {
        return ck(std::fabs(p2 - p1) / std::sqrt(12.0));
    }
    static double Skewness(double, double, double) { return 0; }
    static double Kurtosis(double, double, double) { return 1.8; }
    static bool NoSpread(const Params& p) { return p[0] == p[1]; }
    static double Density(const Params& p, double x) {
        if (x < p[0] || x > p[1]) return 0;
        return 0.5 / HalfDiff(p[1], p[0]);
    }
    static double Tail(const Params& p, double x, bool upper) {
        if (x <= p[0]) return upper ? 1 : 0;
        if (x >= p[1]) return upper ? 0 : 1;
        const double hw = HalfDiff(p[1], p[0]);
        return upper ? HalfDiff(p[1], x) / hw : HalfDiff(x, p[0]) / hw;
    }
    static double Quantile(const Params& p, double, double lower, double upper) {
        const double hw = HalfDiff(p[1], p[0]);
        if (lower < upper) return p[0] + lower * hw + lower * hw;
        return p[1] - upper * hw - upper * hw;
    }
};

// ---- Triangular: minimum p1, likeliest p2, maximum p3 ---------------------------
// Half the sum of the squared differences: a^2 + c^2 + b^2 - ac - cb - ab
// without its cancellation.
double TriangularSpread(double a, double c, double b) {
    return ck((std::pow(a - b, 2) + std::pow(b - c, 2) + std::pow(c - a, 2)) / 2);
}

struct Triangular {
    static double Mean(double p1, double p2, double p3) { return ck((p1 + p2 + p3) / 3); }
    static double StDev(double p1, double p2, double p3) {
        return ck(std::sqrt(TriangularSpread(p1, p2, p3) / 18));
    }
    static double Skewness(double a, double c, double b) {
        // Scale-free, so the differences are taken relative to the largest one.
        // With no spread at all (a point) there is no skewness: NaN, shown as undefined.
        const double s = std::max({std::fabs(a - b), std::fabs(b - c), std::fabs(c - a)});
        if (!(s > 0)) return std::numeric_limits<double>::quiet_NaN();
        const double u = (a - b) / s, v = (c - b) / s, w = (a - c) / s;
        const double q = (std::pow(u, 2) + std::pow(v, 2) + std::pow(w, 2)) / 2;
        return ck(std::sqrt(2.0) * (u + v) * (w + u) * (w - v) / (5 * std::pow(q, 1.5)));
    }
    static double Kurtosis(double a, double, double b) {
        return a == b ? std::numeric_limits<double>::quiet_NaN() : 2.4; // a point: undefined
    }
    static bool NoSpread(const Params& p) { return p[0] == p[2]; }
    static double Density(const Params& p, double x) {
        const double a = p[0], c = p[1], b = p[2];
        if (x < a || x > b) return 0;
        const double hw = HalfDiff(b, a);
        if (x < c) return (HalfDiff(x, a) / HalfDiff(c, a)) / hw;
        if (x > c) return (HalfDiff(b, x) / HalfDiff(b, c)) / hw;
        return 1 / hw;
    }
    static double Tail(const Params& p, double x, bool upper) {
        const double a = p[0], c = p[1], b = p[2];
        if (x <= a) return upper ? 1 : 0;
        if (x >= b) return upper ? 0 : 1;
        const double hw = HalfDiff(b, a), hca = HalfDiff(c, a), hbc = HalfDiff(b, c);
        // The near side is a product of two ratios below 1; the far side is
        // 1 - s r^2 written as (1 - s) + s (1 - r)(1 + r), a sum of positive terms.
        if (x <= c) {
            const double r = HalfDiff(x, a) / hca, s = hca / hw;
            if (!upper) return r * r * s;
            return hbc / hw + s * (HalfDiff(c, x) / hca) * (1 + r);
        }
        const double r = HalfDiff(b, x) / hbc, s = hbc / hw;
        if (upper) return r * r * s;
        return hca / hw + s * (HalfDiff(x, c) / hbc) * (1 + r);
    }
    // F = left r^2 below the likeliest value (r = (x - a) / (c - a)), 1 - right r^2
    // above it; the side is chosen by the smaller tail, which alone is exact, and
    // past the likeliest value 1 - sqrt(t) is written as (1 - t) / (1 + sqrt(t)).
    static double Quantile(const Params& p, double, double lower, double upper) {
        const double a = p[0], c = p[1], b = p[2];
        if (a == b) return a;
        const double hw = HalfDiff(b, a), hca = HalfDiff(c, a), hbc = HalfDiff(b, c);
        const double left = hca / hw, right = hbc / hw; // the shares below and above c
        if (lower <= upper) {
            if (lower <= left) {
                const double q = hw * std::sqrt(lower * left);
                return a + q + q;
            }
            const double q = hbc * ((lower - left) / right) / (1 + std::sqrt(upper / right));
            return c + q + q;
        }
        if (upper <= right) {
            const double q = hw * std::sqrt(upper * right);
            return b - q - q;
        }
        const double q = hca * ((upper - right) / left) / (1 + std::sqrt(lower / left));
        return c - q - q;
    }
};

// ---- Johnson forms: delta p1, gamma p2, lamda p3, xi p4 --------------------------
// The normal deviate's Johnson counterpart w = (z - gamma) / delta.
inline double JohnsonW(const Params& p, double z) {
    return (z - p[1]) / p[0];
}

struct JohnsonSB {
    static double Density(const Params& p, double x) {
        const double delta = p[0], gamma = p[1], lamda = p[2], d = Gap(x, p[3]), v = Gap(lamda, d);
        if (!(d > 0) || !(v > 0)) return 0;
        return PhiScaled(LinearZ(gamma, delta, LogRatio(d, v)), {delta, lamda}, {d, v}, true);
    }
    static double Tail(const Params& p, double x, bool upper) {
        const double d = Gap(x, p[3]), v = Gap(p[2], d);
        if (!(d > 0)) return upper ? 1 : 0;
        if (!(v > 0)) return upper ? 0 : 1;
        return NormalTail(LinearZ(p[1], p[0], LogRatio(d, v)), upper);
    }
    static double Quantile(const Params& p, double z, double, double) {
        const double w = JohnsonW(p, z), lamda = p[2], xi = p[3];
        // From the nearer end, so a point next to either end keeps its distance to it.
        if (w <= 0) {
            const double r = std::exp(w);
            return xi + lamda * (r / (1 + r));
        }
        const double r = std::exp(-w);
        return (xi + lamda) - lamda * (r / (1 + r));
    }
    static void Grid(const Params& p, double low, double high, int n, double* out) {
        const double delta = p[0], gamma = p[1], lamda = p[2], xi = p[3];
        if (!Moderate(delta) || !Moderate(lamda) || !(std::fabs(gamma) < 1e100) ||
            !(std::fabs(xi) < 1e300))
            return PlainGrid<JohnsonSB>(p, low, high, n, out);
        const double c = kInvSqrt2Pi * delta * lamda;
        Fill<JohnsonSB>(p, low, high, n, out, [&](double x, double& v) {
            const double d = x - xi, w = lamda - d;
            if (!Moderate(d) || !Moderate(w)) return false;
            const double z = gamma + delta * std::log(d / w);
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / (d * w);
            return true;
        });
    }
};

struct JohnsonSU {
    static double Density(const Params& p, double x) {
        const double delta = p[0], gamma = p[1], lamda = p[2], d = Gap(x, p[3]);
        return PhiScaled(LinearZ(gamma, delta, AsinhRatio(d, lamda)), {delta},
                         {std::hypot(d, lamda)});
    }
    static double Tail(const Params& p, double x, bool upper) {
        return NormalTail(LinearZ(p[1], p[0], AsinhRatio(Gap(x, p[3]), p[2])), upper);
    }
    static double Quantile(const Params& p, double z, double, double) {
        return p[3] + p[2] * std::sinh(JohnsonW(p, z));
    }
    static void Grid(const Params& p, double low, double high, int n, double* out) {
        const double delta = p[0], gamma = p[1], lamda = p[2], xi = p[3];
        if (!Moderate(delta) || !Moderate(lamda) || !(std::fabs(gamma) < 1e100) ||
            !(std::fabs(xi) < 1e300))
            return PlainGrid<JohnsonSU>(p, low, high, n, out);
        const double c = kInvSqrt2Pi * delta / lamda, inv = 1 / lamda;
        Fill<JohnsonSU>(p, low, high, n, out, [&](double x, double& v) {
            const double w = (x - xi) * inv;
            if (!(std::fabs(w) < 1e100)) return false;
            // asinh by its logarithm, on the positive side so nothing cancels.
            const double s = std::sqrt(w * w + 1);
            const double a = std::log(std::fabs(w) + s);
            const double z = gamma + delta * (w < 0 ? -a : a);
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / s;
            return true;
        });
    }
};

struct JohnsonSL {
    static double Density(const Params& p, double x) {
        const double delta = p[0], gamma = p[1], lamda = p[2], d = Gap(x, p[3]);
        if (!((lamda > 0 && d > 0) || (lamda < 0 && d < 0))) return 0;
        const double ad = std::fabs(d);
        return PhiScaled(LinearZ(gamma, delta, LogRatio(ad, std::fabs(lamda))), {delta}, {ad},
                         true);
    }
    static double Tail(const Params& p, double x, bool upper) {
        const double lamda = p[2], d = Gap(x, p[3]);
        if (lamda > 0 && !(d > 0)) return upper ? 1 : 0;
        if (lamda < 0 && !(d < 0)) return upper ? 0 : 1;
        const double z = LinearZ(p[1], p[0], LogRatio(std::fabs(d), std::fabs(lamda)));
        return NormalTail(lamda > 0 ? z : -z, upper); // mirrored: x falls as z rises
    }
    static double Quantile(const Params& p, double z, double, double) {
        const double lamda = p[2];
        return p[3] + lamda * std::exp(JohnsonW(p, lamda > 0 ? z : -z));
    }
    static void Grid(const Params& p, double low, double high, int n, double* out) {
        const double delta = p[0], gamma = p[1], lamda = p[2], xi = p[3];
        if (!Moderate(delta) || !Moderate(std::fabs(lamda)) || !(std::fabs(gamma) < 1e100) ||
            !(std::fabs(xi) < 1e300))
            return PlainGrid<JohnsonSL>(p, low, high, n, out);
        const double c = kInvSqrt2Pi * delta, inv = 1 / lamda;
        Fill<JohnsonSL>(p, low, high, n, out, [&](double x, double& v) {
            const double d = x - xi, w = d * inv;
            if (!ModerateWide(w) || !Moderate(std::fabs(d))) return false;
            const double z = gamma + delta * std::log(w);
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / std::fabs(d);
            return true;
        });
    }
};

struct JohnsonNormal {
    static double Density(const Params& p, double x) {
        return PhiScaled(LinearZ(p[1], p[0], x), {p[0]}, {});
    }
    static double Tail(const Params& p, double x, bool upper) {
        return NormalTail(LinearZ(p[1], p[0], x), upper);
    }
    static double Quantile(const Params& p, double z, double, double) { return JohnsonW(p, z); }
};

// ---- The table ----------------------------------------------------------------------
// Fills a row's functions from its family's block.
template <class F> Family With(Family f) {
    if constexpr (requires { &F::Mean; }) {
        f.Mean = F::Mean;
        f.StDev = F::StDev;
        f.Skewness = F::Skewness;
        f.Kurtosis = F::Kurtosis;
    }
    f.Quantile = F::Quantile;
    f.Density = DensityOf<F>;
    f.Tail = F::Tail;
    if constexpr (requires { &F::Grid; })
        f.Grid = F::Grid;
    else
        f.Grid = PlainGrid<F>;
    if constexpr (requires { &F::NoSpread; }) f.NoSpread = F::NoSpread;
    return f;
}

constexpr Rule kStDevRule = {2, [](const Params& p) { return Gt(p[1], 0); },
                             "Standard deviation must be greater than zero."};
// The Johnson parameters have no window check: these are the calculator's alone.
constexpr Rule kDeltaRule = {0, [](const Params& p) { return Gt(p[0], 0); },
                             "Delta must be greater than zero for a Johnson distribution."};
constexpr Rule kUniformRule = {1, [](const Params& p) { return Le(p[0], p[1]); },
                               "Minimum must be less than Maximum for a Uniform distribution."};

} // namespace

const std::array<Family, 10>& All() {
    using namespace m_Distributions; // the codes
    // One record per family: the nine of the distribution list, then the normal form.
    static const std::array<Family, 10> table = {
        With<Normal>({.Name = "Normal",
                      .Code = kNormal,
                      .CalculatorKey = "Normal",
                      .Classical = true,
                      .SlotCount = 2,
                      .Slots = {{{"Mean:", "0"}, {"Std. Deviation:", "1"}}},
                      .ListItem = 1,
                      .MomentsListItem = 4,
                      .Picture = {-3.2, 3.2, {0, 1}},
                      .Rules = {kStDevRule},
                      .MeanArgs = 2,
                      .MomentArgs = 2}),
        With<LogNormal>({.Name = "LogNormal",
                         .Code = kLogNormal,
                         .CalculatorKey = "Lognormal", // Kept: the calculator's own spelling
                         .Classical = true,
                         .SlotCount = 3,
                         .Slots = {{{"Mean:", "0"}, {"Std. Deviation:", "1"}, {"Minimum:", "0"}}},
                         .MinimumSlot = 3,
                         .ListItem = 3,
                         .Picture = {0.02, 3.6, {0, 0.5}},
                         .Rules = {kStDevRule},
                         .MeanArgs = 3,
                         .MomentArgs = 2}),
        With<Exponential>(
            {.Name = "Exponential",
             .Code = kExponential,
             .CalculatorKey = "Exponential",
             .Classical = true,
             .SlotCount = 2,
             .Slots = {{{"Scale:", "1"}, {"Minimum:", "0"}}},
             .MinimumSlot = 2,
             .ListItem = 2,
             .Picture = {0, 4, {1, 0}},
             .Rules =
                 {{{1, [](const Params& p) { return Gt(p[0], 0); },
                    "Scale parameter for an Exponential distribution must be greater than zero."}}},
             .MeanArgs = 2,
             .MomentArgs = 1}),
        With<Weibull>(
            {.Name = "Weibull",
             .Code = kWeibull,
             .CalculatorKey = "Weibull",
             .Classical = true,
             .SlotCount = 3,
             .Slots = {{{"Shape:", "2"}, {"Scale:", "10"}, {"Minimum:", "0"}}},
             .MinimumSlot = 3,
             .ListItem = 6,
             .Picture = {0, 2.6, {2, 1}},
             .Rules = {{{1, [](const Params& p) { return Gt(p[0], 0); },
                         "Shape parameter for a Weibull distribution must be greater than zero."},
                        {2, [](const Params& p) { return Gt(p[1], 0); },
                         "Scale parameter for a Weibull distribution must be greater than zero."}}},
             .MeanArgs = 3,
             .MomentArgs = 3}),
        With<Uniform>(
            {.Name = "Uniform",
             .Code = kUniform,
             .CalculatorKey = "Uniform",
             .Classical = true,
             .SlotCount = 2,
             .Slots = {{{"Minimum:", "-1"}, {"Maximum:", "1"}}},
             .ListItem = 4,
             .Picture = {-1.6, 1.6, {-1, 1}},
             // Kept: equal ends pass, whatever the words say, and the second
             // text says the reverse of what it guards.
             .Rules = {{kUniformRule,
                        {2, kUniformRule.Holds,
                         "Maximum must be less than Minimum for a Uniform distribution."}}},
             .MeanArgs = 2,
             .MomentArgs = 2}),
        With<Triangular>(
            {.Name = "Triangular",
             .Code = kTriangular,
             .CalculatorKey = "Triangular",
             .Classical = true,
             .SlotCount = 3,
             .Slots = {{{"Minimum:", "-1"}, {"Likeliest:", "0.5"}, {"Maximum:", "1"}}},
             .ListItem = 5,
             .Picture = {-1.2, 1.2, {-1, 0.5, 1}},
             // The likeliest may equal either end. The third rule repeats the first in
             // other words: it is reached only when CheckParam3 is called on its own.
             .Rules = {{{1, [](const Params& p) { return Le(p[0], p[2]); },
                         "Minimum must be less than Maximum for a Triangular distribution."},
                        {2, [](const Params& p) { return Le(p[0], p[1]) && Le(p[1], p[2]); },
                         "Likeliest value must be between Minimum and Maximum for a Triangular "
                         "distribution."},
                        {3, [](const Params& p) { return Le(p[0], p[2]); },
                         "Maximum must be greater than Minimum for a Triangular distribution."}}},
             .MeanArgs = 3,
             .MomentArgs = 3}),
        With<JohnsonSB>(
            {.Name = "Johnson SB",
             .Code = kJohnsonSB,
             .CalculatorKey = "Johnson",
             .SlotCount = 4,
             .Slots = kJohnsonSlots,
             .As99Type = 3,
             .ListItem = 7,
             .MomentsListItem = 1,
             // Clear of the end points, where the density is 0 anyway.
             .Picture = {0.01, 0.99, {1.1, 0.6, 1}},
             .FittedType = "SB",
             .FitItem = "Johnson SB",
             .EngineDensity = m_Distributions::JohnsonSB_PDF,
             .Rules = {{kDeltaRule,
                        {0, [](const Params& p) { return Gt(p[2], 0); },
                         "Lamda must be greater than zero for a Johnson SB distribution."}}}}),
        With<JohnsonSL>({.Name = "Johnson SL",
                         .Code = kJohnsonSL,
                         .CalculatorKey = "Johnson",
                         .SlotCount = 4,
                         .Slots = kJohnsonSlots,
                         .As99Type = 1,
                         .ListItem = 8,
                         .MomentsListItem = 2,
                         .Picture = {0.02, 4, {1.6, 0.4, 1}},
                         .FittedType = "SL",
                         .FitItem = "Johnson SL",
                         .EngineDensity = m_Distributions::JohnsonSL_PDF,
                         .Rules = {{kDeltaRule,
                                    {0, [](const Params& p) { return p[2] != 0; },
                                     "Lamda must not be zero for a Johnson SL distribution."}}}}),
        With<JohnsonSU>(
            {.Name = "Johnson SU",
             .Code = kJohnsonSU,
             .CalculatorKey = "Johnson",
             .SlotCount = 4,
             .Slots = kJohnsonSlots,
             .As99Type = 2,
             .ListItem = 9,
             .MomentsListItem = 3,
             .Picture = {-3, 5, {1.4, -0.9, 1}},
             .FittedType = "SU",
             .FitItem = "Johnson SU",
             .EngineDensity = m_Distributions::JohnsonSU_PDF,
             .Rules = {{kDeltaRule,
                        {0, [](const Params& p) { return Gt(p[2], 0); },
                         "Lamda must be greater than zero for a Johnson SU distribution."}}}}),
        // What the calculator's "Johnson" means for any code without a form of its
        // own: the normal fit of the moments view, z = gamma + delta x.
        With<JohnsonNormal>({.CalculatorKey = "Johnson",
                             .SlotCount = 4,
                             .Slots = kJohnsonSlots,
                             .As99Type = 4,
                             // A normal fit is shown as the list's "Normal".
                             .FittedType = "Normal",
                             .FitItem = "Normal",
                             .Rules = {kDeltaRule}}),
    };
    return table;
}

const Rule* Family::Refusal(const Params& p) const {
    for (const Rule& r : Rules)
        if (r.Holds && !r.Holds(p)) return &r;
    return nullptr;
}

const Family* ByName(const std::string& name) {
    for (const Family& f : All())
        if (f.Name && name == f.Name) return &f;
    return nullptr;
}

const Family* ByFittedType(const std::string& type) {
    for (const Family& f : All())
        if (f.FittedType && type == f.FittedType) return &f;
    return nullptr;
}

std::vector<std::string> ListOrder(bool byMoments) {
    std::vector<std::pair<int, const char*>> items;
    for (const Family& f : All())
        if (const int at = byMoments ? f.MomentsListItem : f.ListItem)
            items.emplace_back(at, f.Name);
    std::sort(items.begin(), items.end());
    std::vector<std::string> names;
    for (const auto& item : items)
        names.emplace_back(item.second);
    return names;
}

const Family& ByCode(int code) {
    for (const Family& f : All())
        if (f.Code == code) return f;
    return All().back();
}

const Family* ForCalculator(const std::string& key, int form) {
    const Family *first = nullptr, *current = nullptr, *codeless = nullptr;
    for (const Family& f : All()) {
        if (key != f.CalculatorKey) continue;
        if (!first) first = &f;
        if (f.Code == form) current = &f;
        if (f.Code == 0) codeless = &f;
    }
    return current ? current : codeless ? codeless : first;
}

} // namespace Families
