// The SB continuation this program adds to AS 99: where SBFIT's Newton
// iteration stops without an answer (its cap, a moment fault, a variance <= 0,
// or a runaway), its last iterate is no curve to report. A damped Newton
// iteration (SbContinue) from a sounder start finishes the fit, and a nested
// one-dimensional solve (SbSolve) where that cannot. Both take the exact
// moments.
#include "johnson/JohnsonDist.h"
#include "johnson/JohnsonDistFit.h"

#include "support/ErrorTrap.h"

#include <algorithm>
#include <cfenv>
#include <cmath>

using JohnsonDistFit::LognormalLine;
using JohnsonDistFit::Miss;
using JohnsonDistFit::SbShape;
using JohnsonDistFit::ShapeAt;

void JohnsonDist::SbContinue(double rb1, double b2, bool nearLine, double& g, double& d,
                             double& mu1, double& m2, bool& fault) {
    fault = true;
    support::Trap({kModule, __func__}, [&] {
        // Newton on (gamma, delta), or near the lognormal line on (q, delta) with
        // q = exp(-gamma / delta): there gamma runs off to infinity while beta1 and
        // beta2 move nearly in proportion to q (the SB curve is a lognormal one
        // plus terms in q), so the iteration in gamma diverges and the one in q
        // does not. Near the lower boundary gamma / delta reaches hundreds and q
        // would have to shrink by as many powers of e: there gamma serves.
        // Each step is halved until the miss shrinks; delta, and q, are kept above a
        // quarter of their last values, so they stay positive, and gamma >= 0
        // (0 for a symmetric curve). Converged when the shape is within 1e-7 of
        // the one wanted: well inside the 1e-4 promised.
        constexpr int kMaxShapes = 60;  // moment evaluations, so a hopeless start ends soon
        constexpr double kDone = 1e-14; // the squared miss
        if (!(d > 0) || !(g >= 0)) return;
        SbShape at;
        if (!ShapeAt(g, d, at, true)) return;
        double miss = Miss(at, rb1, b2);
        int shapes = 1;
        while (miss > kDone && shapes < kMaxShapes) {
            // Columns of the Jacobian in the coordinates used. In q:
            // d/dq = -(delta / q) d/dg; d/ddelta at fixed q = d/ddelta + (g / delta) d/dg.
            const double q = std::exp(-g / d);
            const double c0 = nearLine ? -d / q : 1, c1 = nearLine ? g / d : 0;
            const double j00 = c0 * at.J[0], j10 = c0 * at.J[2];
            const double j01 = at.J[1] + c1 * at.J[0], j11 = at.J[3] + c1 * at.J[2];
            const double e1 = at.Rb - rb1, e2 = at.B2 - b2;
            const double det = j00 * j11 - j01 * j10;
            const double dx = rb1 == 0 ? 0 : (j11 * e1 - j01 * e2) / det;
            const double dd = rb1 == 0 ? e2 / j11 : (j00 * e2 - j10 * e1) / det;
            if (!std::isfinite(dx) || !std::isfinite(dd)) {
                std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID);
                return;
            }
            bool better = false;
            for (double scale = 1; !better && shapes < kMaxShapes; scale *= 0.5) {
                const double dn = d - scale * dd;
                double gn;
                if (nearLine) {
                    const double qn = std::min(1.0, q - scale * dx);
                    if (!(qn > 0.25 * q)) continue;
                    gn = -dn * std::log(qn);
                } else {
                    gn = rb1 == 0 ? 0 : std::max(0.0, g - scale * dx);
                }
                if (!(dn > 0.25 * d)) continue;
                SbShape trial;
                ++shapes;
                if (!ShapeAt(gn, dn, trial, true)) continue;
                const double tm = Miss(trial, rb1, b2);
                if (tm < miss) {
                    better = true;
                    g = gn, d = dn, at = trial, miss = tm;
                }
            }
            if (!better) return;
        }
        if (miss > kDone) return;
        mu1 = at.Mu1;
        m2 = at.M2;
        fault = false;
    });
}

namespace {

// The gamma >= 0 at which the SB curve with this delta has skewness rb1, from
// the gamma given: at fixed delta the skewness rises from 0 (gamma = 0) towards
// the lognormal value of that delta, so a bracket kept around Newton's steps
// always closes. False when delta is past the lognormal line or the moments fail.
bool GammaForSkewness(double rb1, double d, double& g, SbShape& at, int& shapes) {
    constexpr int kMaxShapes = 80;
    if (rb1 == 0) {
        g = 0;
        ++shapes;
        return ShapeAt(0, d, at, true);
    }
    double lo = 0, hi = INFINITY;
    for (int k = 0; k < kMaxShapes; ++k) {
        ++shapes;
        if (!ShapeAt(g, d, at, true)) {
            // Past the numbers far up the line: come back down.
            if (g == 0) return false;
            hi = g;
            g = std::isfinite(hi) ? 0.5 * (lo + hi) : g;
            continue;
        }
        const double miss = at.Rb - rb1;
        if (std::fabs(miss) <= 1e-11 * rb1) return true;
        (miss < 0 ? lo : hi) = g;
        if (std::isfinite(hi) && hi - lo <= 1e-14 * hi) return std::fabs(miss) <= 1e-7 * rb1;
        double gn = g - miss / at.J[0];
        if (!(gn > lo && gn < hi)) gn = std::isfinite(hi) ? 0.5 * (lo + hi) : 2 * g + 1;
        g = gn;
    }
    return false;
}

} // namespace

void JohnsonDist::SbSolve(double rb1, double b2, double& g, double& d, double& mu1, double& m2,
                          bool& fault) {
    fault = true;
    support::Trap({kModule, __func__}, [&] {
        // One unknown at a time. Along a line of constant skewness beta2 rises
        // with delta from the lower boundary (delta -> 0) to the lognormal line
        // (delta -> the lognormal delta of that skewness); at each delta gamma is
        // found by GammaForSkewness. Safeguarded Newton on delta with the total
        // derivative along the line, inside a bracket that only shrinks, so it
        // converges wherever the moments can be had; slower than the iterations
        // before it, hence the last resort.
        constexpr int kMaxShapes = 600;
        const double b1 = rb1 * rb1;
        double lo = 0, hi = INFINITY;
        if (rb1 > 0) hi = 1 / std::sqrt(std::log(LognormalLine(rb1, b1).W));
        if (!(d > lo && d < hi)) d = std::isfinite(hi) ? 0.5 * hi : 1;
        if (!(g >= 0) || !std::isfinite(g)) g = 0;
        int shapes = 0;
        SbShape at;
        while (shapes < kMaxShapes) {
            if (!GammaForSkewness(rb1, d, g, at, shapes)) {
                // Nothing to be had at this delta: close in from the side that
                // failed, which is the lognormal one (gamma runs off there).
                hi = d;
                d = lo > 0 ? std::sqrt(lo * hi) : 0.5 * hi;
                continue;
            }
            const double miss = at.B2 - b2;
            if (std::fabs(miss) <= 1e-11 * b2) break;
            (miss < 0 ? lo : hi) = d;
            if (std::isfinite(hi) && hi - lo <= 1e-14 * hi) {
                if (std::fabs(miss) > 1e-7 * b2) return;
                break;
            }
            const double slope = rb1 > 0 ? at.J[3] - at.J[2] * at.J[1] / at.J[0] : at.J[3];
            double dn = d - miss / slope;
            if (!(dn > lo && dn < hi))
                dn = !std::isfinite(hi) ? 2 * d : lo > 0 ? std::sqrt(lo * hi) : 0.25 * hi;
            // Gamma moves with delta along the line of constant skewness.
            if (rb1 > 0) {
                const double gn = g - (dn - d) * at.J[1] / at.J[0];
                if (gn >= 0 && std::isfinite(gn)) g = gn;
            }
            d = dn;
        }
        if (shapes >= kMaxShapes) return;
        std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID); // the rejected trials
        mu1 = at.Mu1;
        m2 = at.M2;
        fault = false;
    });
}

bool JohnsonDistFit::ContinueSb(double rb1, double b2, double e, double lineW, double g0, double d0,
                                double& g, double& d, double& mu1, double& m2) {
    // Near the line the answer is close to the lognormal of this skewness
    // with q = exp(-gamma / delta) small, about in proportion to the distance
    // (1 - e): that start is sounder than AS 99's. Elsewhere, and should that
    // fail, AS 99's start in (gamma, delta).
    bool unfinished = true;
    g = 0, d = 0, mu1 = 0, m2 = 0;
    if (e > 0.5 && rb1 > kTol) {
        d = 1 / std::sqrt(std::log(lineW));
        // q / (1 - e) measured over the region: 0.8 at skewness 1.35, 0.2 at
        // 2.1, 0.024 at 3.95 (and above 1 below skewness 1, where the cap holds).
        const double q = (1 - e) * std::min(1.0, std::exp(1.55 - 1.34 * rb1));
        g = -d * std::log(std::clamp(q, 1e-12, 0.5));
        JohnsonDist::SbContinue(rb1, b2, true, g, d, mu1, m2, unfinished);
    }
    if (unfinished) {
        g = g0, d = d0;
        JohnsonDist::SbContinue(rb1, b2, false, g, d, mu1, m2, unfinished);
    }
    if (unfinished) {
        g = g0, d = d0;
        JohnsonDist::SbSolve(rb1, b2, g, d, mu1, m2, unfinished);
    }
    return !unfinished;
}
