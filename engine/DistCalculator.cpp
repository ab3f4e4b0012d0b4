// The distribution calculator. Densities and tails in the parameterisation of the
// distribution catalogue; every tail is computed on its own side (erfc, expm1,
// complements written as sums of positive terms), so a probability of 1e-300
// keeps its digits whichever side it lies on.
#include "engine/DistCalculator.h"

#include "engine/m_Distributions.h"
#include "engine/m_NumRecipes.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

using namespace m_NumRecipes::kernel;
using Family = DistCalculator::Family;

namespace {

constexpr const char* kSource = "DistCalculator";
constexpr double kLn2 = 0.693147180559945309417232121458;

[[noreturn]] void Fail(int32_t number, const std::string& description = "") {
    support::Raise(number, kSource, description);
}

Family Resolve(const std::string& key) {
    if (key == "Normal") return Family::Normal;
    if (key == "Lognormal") return Family::Lognormal;
    if (key == "Exponential") return Family::Exponential;
    if (key == "Weibull") return Family::Weibull;
    if (key == "Uniform") return Family::Uniform;
    if (key == "Triangular") return Family::Triangular;
    if (key == "Johnson") {
        switch (m_PercentCertainty::CurrentDistribution) {
        case 7:
            return Family::JohnsonSB;
        case 8:
            return Family::JohnsonSU;
        case 9:
            return Family::JohnsonSL;
        default:
            return Family::JohnsonNormal;
        }
    }
    return Family::None;
}

int UsedSlots(Family f) {
    switch (f) {
    case Family::Normal:
    case Family::Exponential:
    case Family::Uniform:
        return 2;
    case Family::Lognormal:
    case Family::Weibull:
    case Family::Triangular:
        return 3;
    case Family::None:
        return 0;
    default:
        return 4;
    }
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

// u^k for u > 0, k > 0: the exact power where it is representable, else a value
// large or small enough that exp(-t) and expm1(-t) come out right.
inline double WeibullPower(double u, double k) {
    if (u == 0) return 0; // d / eta below the double range
    // |ln u| < (|ilogb u| + 1) ln 2, so this bounds |ln u^k| without a logarithm.
    const int e = std::ilogb(u);
    if (k <= 700 / (((e < 0 ? -e : e) + 1) * kLn2)) return std::pow(u, k);
    const double lt = MulZ(k, std::log(u));
    if (lt > 0) return kZFar;
    return std::exp(lt); // below e^-700: the power itself is what the lower tail needs
}

} // namespace

void DistCalculator::SetParam(int slot, double value) {
    if (slot < 1 || slot > 4) Fail(9);
    p_[slot - 1] = value;
    ready_ = false;
}

bool DistCalculator::Prepare() {
    message_.clear();
    ready_ = false;
    pointMass_ = false;
    family_ = Resolve(key_);
    const double p1 = p_[0], p2 = p_[1], p3 = p_[2];
    auto refuse = [&](const char* text) {
        message_ = text;
        return false;
    };
    if (family_ == Family::None) {
        message_ = "Unknown distribution \"" + key_ + "\".";
        return false;
    }
    for (int i = 0; i < UsedSlots(family_); ++i)
        if (!std::isfinite(p_[i])) return refuse("The parameters must be finite numbers.");
    // Written as !(valid) so that nothing unusable slips through.
    switch (family_) {
    case Family::Normal:
    case Family::Lognormal:
        if (!(p2 > 0)) return refuse("Standard deviation must be greater than zero.");
        break;
    case Family::Exponential:
        if (!(p1 > 0))
            return refuse(
                "Scale parameter for an Exponential distribution must be greater than zero.");
        break;
    case Family::Weibull:
        if (!(p1 > 0))
            return refuse("Shape parameter for a Weibull distribution must be greater than zero.");
        if (!(p2 > 0))
            return refuse("Scale parameter for a Weibull distribution must be greater than zero.");
        break;
    case Family::Uniform:
        if (!(p1 <= p2))
            return refuse("Minimum must be less than Maximum for a Uniform distribution.");
        pointMass_ = p1 == p2;
        break;
    case Family::Triangular:
        if (!(p1 <= p3))
            return refuse("Minimum must be less than Maximum for a Triangular distribution.");
        if (!(p1 <= p2 && p2 <= p3))
            return refuse("Likeliest value must be between Minimum and Maximum for a Triangular "
                          "distribution.");
        pointMass_ = p1 == p3;
        break;
    case Family::JohnsonSB:
    case Family::JohnsonSU:
    case Family::JohnsonSL:
    case Family::JohnsonNormal:
        if (!(p1 > 0)) return refuse("Delta must be greater than zero for a Johnson distribution.");
        if (family_ == Family::JohnsonSB && !(p3 > 0))
            return refuse("Lamda must be greater than zero for a Johnson SB distribution.");
        if (family_ == Family::JohnsonSU && !(p3 > 0))
            return refuse("Lamda must be greater than zero for a Johnson SU distribution.");
        if (family_ == Family::JohnsonSL && p3 == 0)
            return refuse("Lamda must not be zero for a Johnson SL distribution.");
        break;
    case Family::None:
        break;
    }
    return true;
}

bool DistCalculator::ComputeDensities(double low, double high) {
    density_.clear();
    if (!Prepare()) return false;
    if (!std::isfinite(low) || !std::isfinite(high)) {
        message_ = "The range must be finite.";
        return false;
    }
    const int n = n_ > 0 ? n_ : 0;
    density_.assign(static_cast<size_t>(n), 0.0);
    if (pointMass_) return true; // no spread, no density to draw
    FillGrid(low, high, n);
    // A fault anywhere on the grid goes to the caller before it copies a value.
    support::CheckFp();
    return true;
}

namespace {
// The grid loop's quick forms hold while every piece is well inside the double
// range; any other point goes through DensityAt, which handles the extremes.
inline bool Moderate(double v) {
    return v >= 1e-100 && v <= 1e100;
}
inline bool ModerateWide(double v) {
    return v >= 1e-150 && v <= 1e150;
}
constexpr double kQuickZ = 37; // exp(-z^2/2) stays a normal number
} // namespace

void DistCalculator::FillGrid(double low, double high, int n) {
    // The points of m_Distributions::GridX, with the step taken once.
    const bool plain = std::fabs(low) < 8e307 && std::fabs(high) < 8e307;
    const double step = plain ? (high - low) / n : 0;
    auto fill = [&](auto quick) {
        for (int i = 1; i <= n; ++i) {
            const double x = plain ? low + (i - 1) * step : m_Distributions::GridX(low, high, n, i);
            double v;
            if (!quick(x, v)) v = DensityAt(x);
            density_[static_cast<size_t>(i - 1)] = v;
        }
    };
    auto none = [](double, double&) { return false; };
    const double p1 = p_[0], p2 = p_[1], p3 = p_[2], p4 = p_[3];
    switch (family_) {
    case Family::Normal: {
        if (!Moderate(p2) || !(std::fabs(p1) < 1e300)) return fill(none);
        const double c = kInvSqrt2Pi / p2;
        return fill([&](double x, double& v) {
            const double z = (x - p1) / p2;
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z);
            return true;
        });
    }
    case Family::Lognormal: {
        if (!Moderate(p2) || !(std::fabs(p1) < 1e300) || !(std::fabs(p3) < 1e300))
            return fill(none);
        const double c = kInvSqrt2Pi / p2;
        return fill([&](double x, double& v) {
            const double d = x - p3;
            if (!ModerateWide(d)) return false;
            const double z = (std::log(d) - p1) / p2;
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / d;
            return true;
        });
    }
    case Family::Weibull: {
        const double k = p1, eta = p2, min = p3;
        if (!(k >= 1e-50 && k <= 1e50) || !(eta >= 1e-50 && eta <= 1e50) ||
            !(std::fabs(min) < 1e300))
            return fill(none);
        const double c = k / eta, inv = 1 / eta;
        if (k == std::floor(k) && k <= 8) {
            // Whole shapes (the default is 2): the power by multiplication, one exp a point.
            const int whole = static_cast<int>(k);
            return fill([&](double x, double& v) {
                const double u = (x - min) * inv;
                if (!(u >= 1e-30 && u <= 1e30)) return false;
                double t = u;
                for (int j = 1; j < whole; ++j)
                    t *= u;
                v = c * (t / u) * std::exp(-t);
                return true;
            });
        }
        return fill([&](double x, double& v) {
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
    case Family::JohnsonSB: {
        const double delta = p1, gamma = p2, lamda = p3, xi = p4;
        if (!Moderate(delta) || !Moderate(lamda) || !(std::fabs(gamma) < 1e100) ||
            !(std::fabs(xi) < 1e300))
            return fill(none);
        const double c = kInvSqrt2Pi * delta * lamda;
        return fill([&](double x, double& v) {
            const double d = x - xi, w = lamda - d;
            if (!Moderate(d) || !Moderate(w)) return false;
            const double z = gamma + delta * std::log(d / w);
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / (d * w);
            return true;
        });
    }
    case Family::JohnsonSU: {
        const double delta = p1, gamma = p2, lamda = p3, xi = p4;
        if (!Moderate(delta) || !Moderate(lamda) || !(std::fabs(gamma) < 1e100) ||
            !(std::fabs(xi) < 1e300))
            return fill(none);
        const double c = kInvSqrt2Pi * delta / lamda, inv = 1 / lamda;
        return fill([&](double x, double& v) {
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
    case Family::JohnsonSL: {
        const double delta = p1, gamma = p2, lamda = p3, xi = p4;
        if (!Moderate(delta) || !Moderate(std::fabs(lamda)) || !(std::fabs(gamma) < 1e100) ||
            !(std::fabs(xi) < 1e300))
            return fill(none);
        const double c = kInvSqrt2Pi * delta, inv = 1 / lamda;
        return fill([&](double x, double& v) {
            const double d = x - xi, w = d * inv;
            if (!ModerateWide(w) || !Moderate(std::fabs(d))) return false;
            const double z = gamma + delta * std::log(w);
            if (!(std::fabs(z) < kQuickZ)) return false;
            v = c * std::exp(-0.5 * z * z) / std::fabs(d);
            return true;
        });
    }
    default:
        return fill(none);
    }
}

double DistCalculator::DensityValue(int i) const {
    if (i < 1 || i > static_cast<int>(density_.size())) Fail(9);
    return density_[static_cast<size_t>(i - 1)];
}

bool DistCalculator::Calculate() {
    if (!Prepare()) return false;
    ready_ = true;
    return true;
}

// Each side is computed on its own, and a sum of rounded terms may stray an ulp
// past 1 (a triangular limit just below the maximum); a probability stays in [0, 1].
double DistCalculator::CumulativeProbability(double x) const {
    return std::clamp(support::ck(Tail(x, false)), 0.0, 1.0);
}

double DistCalculator::UpperTailProbability(double x) const {
    return std::clamp(support::ck(Tail(x, true)), 0.0, 1.0);
}

double DistCalculator::Density(double x) const {
    if (!ready_) Fail(support::kErrInvalidCall, "The distribution has not been calculated.");
    if (std::isnan(x)) Fail(support::kErrInvalidCall);
    if (pointMass_) return 0; // no spread, no density to draw
    return support::ck(DensityAt(x));
}

double DistCalculator::DensityAt(double x) const {
    return FamilyDensity(family_, p_, x);
}

double DistCalculator::FamilyDensity(Family family, const double (&p)[4], double x) {
    if (std::isinf(x)) return 0;
    const double p1 = p[0], p2 = p[1], p3 = p[2], p4 = p[3];
    switch (family) {
    case Family::Normal:
        return PhiScaled(DivZ(Gap(x, p1), p2), {}, {p2});
    case Family::Lognormal: {
        const double d = Gap(x, p3);
        if (!(d > 0)) return 0;
        return PhiScaled(DivZ(std::log(d) - p1, p2), {}, {p2, d});
    }
    case Family::Exponential: {
        const double d = Gap(x, p2);
        if (d < 0) return 0;
        return p1 * std::exp(-MulZ(p1, d));
    }
    case Family::Weibull: {
        const double k = p1, eta = p2, d = Gap(x, p3);
        if (d < 0) return 0;
        if (d == 0) return k == 1 ? 1 / eta : 0; // a pole (k < 1) is drawn as 0
        const double u = DivZ(d, eta);
        if (u == 0) return k == 1 ? 1 / eta : 0; // d / eta below the double range
        const int e = std::ilogb(u);
        if (k <= 200 / (((e < 0 ? -e : e) + 1) * kLn2) && u >= 1e-100 && u <= 1e100 && k >= 1e-50 &&
            k <= 1e50 && eta >= 1e-50 && eta <= 1e50) {
            const double t = std::pow(u, k); // below e^200
            return (k / eta) * (t / u) * std::exp(-t);
        }
        const double lu = std::log(u);
        const double lt = MulZ(k, lu);
        if (lt > 200) return 0; // u^k > 7e86: exp(-u^k) is 0
        const double t = lt < -700 ? 0.0 : std::exp(lt);
        const double le = std::log(k) - std::log(eta) + MulZ(k - 1, lu) - t;
        if (le < -746) return 0;
        if (le > 709.7 && k < 1) return 0; // so close to the pole it is drawn as the pole
        return std::exp(le);
    }
    case Family::Uniform: {
        if (x < p1 || x > p2) return 0;
        return 0.5 / HalfDiff(p2, p1);
    }
    case Family::Triangular: {
        const double a = p1, c = p2, b = p3;
        if (x < a || x > b) return 0;
        const double hw = HalfDiff(b, a);
        if (x < c) return (HalfDiff(x, a) / HalfDiff(c, a)) / hw;
        if (x > c) return (HalfDiff(b, x) / HalfDiff(b, c)) / hw;
        return 1 / hw;
    }
    case Family::JohnsonSB: {
        const double delta = p1, gamma = p2, lamda = p3, d = Gap(x, p4), v = Gap(lamda, d);
        if (!(d > 0) || !(v > 0)) return 0;
        return PhiScaled(LinearZ(gamma, delta, LogRatio(d, v)), {delta, lamda}, {d, v}, true);
    }
    case Family::JohnsonSU: {
        const double delta = p1, gamma = p2, lamda = p3, d = Gap(x, p4);
        return PhiScaled(LinearZ(gamma, delta, AsinhRatio(d, lamda)), {delta},
                         {std::hypot(d, lamda)});
    }
    case Family::JohnsonSL: {
        const double delta = p1, gamma = p2, lamda = p3, d = Gap(x, p4);
        if (!((lamda > 0 && d > 0) || (lamda < 0 && d < 0))) return 0;
        const double ad = std::fabs(d);
        return PhiScaled(LinearZ(gamma, delta, LogRatio(ad, std::fabs(lamda))), {delta}, {ad},
                         true);
    }
    case Family::JohnsonNormal:
        return PhiScaled(LinearZ(p2, p1, x), {p1}, {});
    case Family::None:
        break;
    }
    return 0;
}

double DistCalculator::Tail(double x, bool upper) const {
    if (!ready_) Fail(support::kErrInvalidCall, "The distribution has not been calculated.");
    if (std::isnan(x)) Fail(support::kErrInvalidCall);
    if (std::isinf(x)) return (x > 0) == upper ? 0.0 : 1.0;
    const double p1 = p_[0], p2 = p_[1], p3 = p_[2], p4 = p_[3];
    const double below = upper ? 1.0 : 0.0; // the answer for x below the support
    const double above = upper ? 0.0 : 1.0; // ... and above it
    auto normal = [upper](double z) { return upper ? NormalUpper(z) : NormalCdf(z); };
    // Minimum = maximum: all the probability sits at that point, so the
    // cumulative is a step; a limit on the point leaves nothing beyond it.
    if (pointMass_) return upper ? (x < p1 ? 1.0 : 0.0) : (x > p1 ? 1.0 : 0.0);
    switch (family_) {
    case Family::Normal:
        return normal(DivZ(Gap(x, p1), p2));
    case Family::Lognormal: {
        const double d = Gap(x, p3);
        if (!(d > 0)) return below;
        return normal(DivZ(std::log(d) - p1, p2));
    }
    case Family::Exponential: {
        const double d = Gap(x, p2);
        if (!(d > 0)) return below;
        const double t = MulZ(p1, d);
        return upper ? std::exp(-t) : -std::expm1(-t);
    }
    case Family::Weibull: {
        const double d = Gap(x, p3);
        if (!(d > 0)) return below;
        const double t = WeibullPower(DivZ(d, p2), p1);
        return upper ? std::exp(-t) : -std::expm1(-t);
    }
    case Family::Uniform: {
        if (x <= p1) return below;
        if (x >= p2) return above;
        const double hw = HalfDiff(p2, p1);
        return upper ? HalfDiff(p2, x) / hw : HalfDiff(x, p1) / hw;
    }
    case Family::Triangular: {
        const double a = p1, c = p2, b = p3;
        if (x <= a) return below;
        if (x >= b) return above;
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
    case Family::JohnsonSB: {
        const double d = Gap(x, p4), v = Gap(p3, d);
        if (!(d > 0)) return below;
        if (!(v > 0)) return above;
        return normal(LinearZ(p2, p1, LogRatio(d, v)));
    }
    case Family::JohnsonSU:
        return normal(LinearZ(p2, p1, AsinhRatio(Gap(x, p4), p3)));
    case Family::JohnsonSL: {
        const double lamda = p3, d = Gap(x, p4);
        if (lamda > 0 && !(d > 0)) return below;
        if (lamda < 0 && !(d < 0)) return above;
        const double z = LinearZ(p2, p1, LogRatio(std::fabs(d), std::fabs(lamda)));
        return normal(lamda > 0 ? z : -z); // mirrored: x falls as z rises
    }
    case Family::JohnsonNormal:
        return normal(LinearZ(p2, p1, x));
    case Family::None:
        break;
    }
    return 0;
}
