// Limits from a probability. The normal quantile starts from Abramowitz &
// Stegun 26.2.23 (|error| < 4.5e-4) for the smaller tail q and is polished by
// Newton's method on ln Phi(z) = ln q with the engine's own Phi, so the PNC
// of the answer gives q back to its last digits; ln Phi is concave, so the
// steps settle from above without overshooting. The family's record then
// turns z (and both tails, the requested one exact) into x.
#include "engine/m_Quantile.h"

#include "engine/Families.h"
#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <cfenv>
#include <cmath>

namespace m_Quantile {

namespace {
constexpr const char* kModule = "Pondera.m_Quantile";
// The answer's own tail must come within this of the request; further off, the
// curve cannot give it (its end is nearer than the doubles can resolve).
constexpr double kReached = 1e-3;

// z <= 0 with Phi(z) = q, 0 < q <= 0.5.
double LowerZ(double q) {
    using m_NumRecipes::kernel::NormalCdf;
    const double t = std::sqrt(-2 * std::log(q));
    double z = -(t - (2.515517 + 0.802853 * t + 0.010328 * t * t) /
                         (1 + 1.432788 * t + 0.189269 * t * t + 0.001308 * t * t * t));
    const double lq = std::log(q);
    double last = HUGE_VAL;
    for (int i = 0; i < 60; ++i) {
        const double f = NormalCdf(z);
        const double phi = m_NumRecipes::kernel::kInvSqrt2Pi * std::exp(-0.5 * z * z);
        if (!(f > 0) || !(phi > 0)) break; // past the subnormal end: keep the last z
        const double step = (std::log(f) - lq) * (f / phi);
        z -= step;
        const double size = std::fabs(step);
        if (size <= 1e-17 * std::fabs(z) || size >= last) break; // settled
        last = size;
    }
    return z;
}
} // namespace

double NormalQuantile(double p, bool upper) {
    // Phi(-z) = 1 - Phi(z), and 1 - p is exact for p >= 0.5.
    const bool small = p <= 0.5;
    const double z = LowerZ(small ? p : 1 - p);
    const double lower = small ? z : -z;
    return upper ? -lower : lower;
}

Limit FromTail(int code, const double (&params)[4], double probability, bool upper) {
    Limit limit;
    support::Trap({kModule, __func__}, [&] {
        if (!(std::isgreater(probability, 0) && std::isless(probability, 1))) { // quiet for NaN
            limit.Message = kOutsideZeroOne;
            return;
        }
        const Families::Family& family = Families::ByCode(code);
        for (int i = 0; i < family.SlotCount; ++i)
            if (!std::isfinite(params[i])) {
                limit.Message = "The parameters must be finite numbers.";
                return;
            }
        if (const Families::Rule* broken = family.Refusal(params)) {
            limit.Message = broken->Message;
            return;
        }
        if (family.NoSpread && family.NoSpread(params)) {
            limit.Message = kNoSpread;
            return;
        }
        const double z = NormalQuantile(probability, upper);
        const double other = 1 - probability; // only the requested tail need be exact
        const double x =
            family.Quantile(params, z, upper ? other : probability, upper ? probability : other);
        // A limit beyond the double range is a message, not a fault.
        std::feclearexcept(FE_ALL_EXCEPT);
        if (!std::isfinite(x)) {
            limit.Message = kBeyondRange;
            return;
        }
        // The closed forms land within an ulp or two: of the neighbours, the one
        // whose tail comes nearest is the answer.
        auto miss = [&](double at) {
            return std::fabs(family.Tail(params, at, upper) - probability);
        };
        double best = x, nearest = miss(x);
        for (double toward : {HUGE_VAL, -HUGE_VAL})
            for (double y = std::nextafter(best, toward); std::isfinite(y) && miss(y) < nearest;
                 y = std::nextafter(y, toward)) {
                best = y;
                nearest = miss(y);
            }
        if (!(nearest <= kReached * probability)) {
            limit.Message = kUnreachable;
            return;
        }
        limit.Found = true;
        limit.X = best;
    });
    return limit;
}

} // namespace m_Quantile
