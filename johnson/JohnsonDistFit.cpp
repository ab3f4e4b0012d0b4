// Fitting Johnson curves by their first four moments: AS 99's JNSN, SUFIT, SBFIT
// and MOM (Hill, Hill & Holder 1976), with this program's tolerances and limits,
// and what the SB and SU fits need beyond them to finish wherever a curve exists.
//
// The published constants are kept digit for digit; the tolerances and limits
// are this program's own (tighter than published) and are marked where used.
#include "johnson/JohnsonDist.h"

#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <numbers>
#include <vector>

using m_NumRecipes::kernel::RequireFinite;
using support::ck;

namespace {

constexpr const char* kModule = "Pondera.JohnsonDist";

// The program's tolerance for the moment fit (the published value is 0.01).
constexpr double kTol = 0.0001;

// Where this beta1 meets the lognormal line: w = exp(delta^-2) of the lognormal
// with that skewness, and the line's beta2. Runs inside its caller's trap.
struct LognormalPoint {
    double W, B2;
};
LognormalPoint LognormalLine(double rb1, double b1) {
    const double x = 0.5 * b1 + 1;
    const double y = ck(std::fabs(rb1) * std::sqrt(0.25 * b1 + 1));
    const double u = ck(std::pow(x + y, 1.0 / 3));
    const double w = ck(u + 1 / u - 1);
    return {w, ck(w * w * (3 + w * (2 + w)) - 3)};
}

// SUFIT has no cap in AS 99; this one is only ever reached when it cycles.
constexpr long kSufitMaxPasses = 2000;
// Passes SUFIT may take to settle a negative m once beta1 has converged.
constexpr long kSufitSettlePasses = 50;
} // namespace

void JohnsonDist::jnsn(double xbar, double sd, double rb1, double bb2, int& itype, double& gamma,
                       double& delta, double& xlam, double& xi, int16_t& ifault) {
    support::Trap({kModule, __func__}, [&] {
        const double tols = kTol; // skewness tests
        const double tolb = kTol; // kurtosis tests

        ifault = 1;
        // A moment that is not a finite number leaves no curve (fault 1 stands)
        // and goes to the error path.
        RequireFinite({xbar, sd, rb1, bb2});
        if (sd < 0) return;
        // No curve until one is complete: a fault trapped on the way (here or in
        // SUFIT or sbfit) must not end as a success with parameters of 0.
        ifault = kNoCurve;
        xi = 0;
        xlam = 0;
        gamma = 0;
        delta = 0;
        if (sd == 0) {
            itype = kST;
            xi = xbar;
            ifault = 0;
            return;
        }
        const double b1 = ck(rb1 * rb1);

        // The curve for mean xm and sd s; the shape depends on rb1 and bb2 alone.
        // Returns the fault code.
        auto fitAt = [&](double xm, double s) -> int16_t {
            double b2 = bb2;
            auto normal = [&] {
                itype = kNormal;
                delta = ck(1 / sd);
                gamma = ck(-xbar / sd);
            };
            // The two-point limit on beta2 = beta1 + 1: probability delta at the
            // upper point xlam, 1 - delta at the lower point xi.
            auto twoPoint = [&] {
                double y = ck(0.5 + 0.5 * std::sqrt(1 - 4 / (b1 + 4)));
                if (rb1 > 0) y = 1 - y;
                const double x = ck(s / std::sqrt(y * (1 - y)));
                xi = ck(xm - y * x);
                xlam = ck(xi + x);
                delta = y;
                itype = kST;
            };
            // The lognormal family; w = exp(delta^-2) of the lognormal with this beta1.
            auto lognormal = [&](double w) {
                itype = kSL;
                xlam = sign(1, rb1);
                const double u = ck(xlam * xm);
                const double x = ck(1 / std::sqrt(std::log(w)));
                delta = x;
                const double y = ck(0.5 * x * std::log(w * (w - 1) / (s * s)));
                gamma = y;
                xi = ck(xlam * (u - std::exp((0.5 / x - y) / x)));
            };

            if (bb2 >= 0) {
                if (b2 > b1 + tolb + 1) {
                    if (std::fabs(rb1) <= tols && std::fabs(b2 - 3) <= tolb) {
                        normal();
                        return 0;
                    }
                } else if (b2 < b1 + 1) {
                    return 2;
                } else {
                    twoPoint();
                    return 0;
                }
            } else if (std::fabs(rb1) <= tols) {
                // A negative kurtosis asks for the lognormal (the normal when symmetric).
                normal();
                return 0;
            }

            const LognormalPoint line = LognormalLine(rb1, b1);
            const double w = line.W;
            if (b2 < 0) b2 = line.B2;
            const double x = ck(line.B2 - b2);

            if (std::fabs(x) <= tolb) {
                lognormal(w);
                return 0;
            }
            // SUFIT and sbfit write all their parameters or none.
            if (x <= 0) {
                itype = kSU;
                SUFIT(xm, s, rb1, b2, gamma, delta, xlam, xi);
                return xlam > 0 ? 0 : kNoCurve;
            }
            itype = kSB;
            // The flag goes by value, so sbfit can never report a failure here and
            // the type stays SB, never the published fallback. Deliberate; keep
            // it. sbfit finishes the fit itself where AS 99's iteration stops; a fit
            // it cannot finish writes no parameters.
            const bool sbFault = false;
            sbfit(xm, s, rb1, b2, gamma, delta, xlam, xi, sbFault);
            if (!sbFault) return xlam > 0 ? 0 : kNoCurve;
            // The published fallback after a failed SB fit (never reached here).
            if (b2 > b1 + 2) {
                if (std::fabs(rb1) <= tols)
                    normal();
                else
                    lognormal(w);
            } else {
                twoPoint();
            }
            return 3;
        };

        // Far from 1 the sd's powers leave the doubles (sd^2 in the lognormal
        // fit, 1e168 squared) before the curve does: there the curve is fitted
        // for mean 0 and sd 1 and moved and stretched after, as its shape
        // depends on skewness and kurtosis alone.
        if (sd >= 1e-100 && sd <= 1e100) {
            ifault = fitAt(xbar, sd);
            return;
        }
        const int16_t code = fitAt(0, 1);
        if (code != 0) {
            ifault = code;
            return;
        }
        switch (itype) {
        case kSB:
        case kSU:
            xlam = ck(xlam * sd);
            xi = ck(xbar + xi * sd);
            break;
        case kSL: // Z = gamma + delta ln(lamda (X - xi)), lamda = +-1
            gamma = ck(gamma - delta * std::log(sd));
            xi = ck(xbar + xi * sd);
            break;
        case kST: // two points
            xi = ck(xbar + xi * sd);
            xlam = ck(xbar + xlam * sd);
            break;
        default: // the normal was fitted to the moments as they are
            break;
        }
        ifault = 0;
    });
}

namespace {

// A root of f on [a, b], f(a) < 0 < f(b), by the Illinois form of regula falsi
// (bracketed, so it cannot run off; superlinear, so it is quick). f may return
// NaN where it cannot be evaluated (past the numbers, on the far side of the
// root): such a point counts as above the root.
template <class F> bool Illinois(F&& f, double a, double fa, double b, double fb, double& x) {
    int side = 0;
    for (int k = 0; k < 200; ++k) {
        x = (fa * b - fb * a) / (fa - fb);
        if (!(x > a && x < b)) x = 0.5 * (a + b);
        const double fx = f(x);
        if (fx == 0 || b - a <= 4e-16 * std::fabs(x)) return std::isfinite(fx);
        if (std::isnan(fx) || fx > 0) {
            b = x, fb = std::isnan(fx) ? 1 : fx;
            if (side == 1) fa *= 0.5;
            side = 1;
        } else {
            a = x, fa = fx;
            if (side == -1) fb *= 0.5;
            side = -1;
        }
    }
    return false;
}

// beta1 and beta2 of the SU curve sinh(Z / delta - om) with t = 1 / delta^2 =
// ln w (Johnson 1949), om >= 0. Written with every hyperbolic term divided by its
// largest exponential and the powers of w taken out, so that it holds from the
// normal (t -> 0) out to where beta2 leaves the doubles.
struct SuShapeValue {
    double B1, B2;
};
SuShapeValue SuShape(double t, double om) {
    const double w = std::exp(t), wm1 = std::expm1(t);
    const double e2 = std::exp(-2 * om), e4 = e2 * e2;
    // sinh(3 om), sinh(om), cosh(2 om), cosh(4 om) over e^{3 om}, e^{om}, e^{2 om}, e^{4 om}, / 2.
    const double s3 = -std::expm1(-6 * om), s1 = -std::expm1(-2 * om);
    const double a = (1 + 2 / w) * s3 + 3 * s1 * e2 / (w * w);
    const double c = (1 + e4) + 2 * e2 / w;
    const double b = (1 + (2 + (3 - 3 / (w * w)) / w) / w) * (1 + e4 * e4) +
                     4 * (1 + 2 / w) / (w * w * w) * e2 * (1 + e4) +
                     6 * (2 + 1 / w) / (w * w * w * w * w) * e4;
    // Johnson's beta1 = w (w - 1) A^2 / (2 C^3) and beta2 = B / (2 C^2) with
    // A = w^2 a e^{3 om} / 2, C = w c e^{2 om} / 2, B = w^6 b e^{4 om} / 2: the
    // exponentials cancel.
    return {w * w * wm1 * a * a / (c * c * c), w * w * w * w * b / (c * c)};
}

// The SU shape (t = ln w, om >= 0) with beta1 = b1 and beta2 = b2, nested: at
// fixed w beta1 rises with om from 0 to the lognormal value of that w, and along
// a line of constant beta1 beta2 rises with w from the lognormal line. False
// where the arithmetic gives out first.
bool SuSolve(double b1, double b2, double tLine, double& t, double& om) {
    auto omegaAt = [&](double tt, double& o) {
        if (b1 == 0) {
            o = 0;
            return true;
        }
        auto f = [&](double x) {
            const double v = SuShape(tt, x).B1;
            return std::isfinite(v) ? (v - b1) / (v + b1) : std::nan("");
        };
        double hi = 1, fhi = f(hi);
        while (!(fhi > 0)) {
            if (hi > 300) return false;
            hi *= 2, fhi = f(hi);
        }
        return Illinois(f, 0, -1, hi, fhi, o);
    };
    auto g = [&](double tt) {
        double o = 0;
        if (!omegaAt(tt, o)) return std::nan("");
        const double v = SuShape(tt, o).B2;
        return std::isfinite(v) ? (v - b2) / (v + b2) : std::nan("");
    };
    const double line = tLine > 0 ? SuShape(tLine, 300).B2 : 3; // the lognormal's beta2
    double step = 1, hi = tLine + step, fhi = g(hi);
    while (!(fhi > 0)) {
        if (hi > 700) return false;
        step *= 2, hi = tLine + step, fhi = g(hi);
    }
    if (!Illinois(g, tLine, (line - b2) / (line + b2), hi, fhi, t)) return false;
    return omegaAt(t, om);
}

// True when the SU curve with this w and SUFIT's y has |skewness| and beta2
// within 1e-4 of rb1 and b2 (relative), or when they cannot be told.
bool SuMeets(double rb1, double b2, double w, double y) {
    const SuShapeValue v = SuShape(std::log(w), std::fabs(y));
    if (!std::isfinite(v.B1) || !std::isfinite(v.B2)) return true;
    const double rb = std::sqrt(v.B1);
    return (std::fabs(rb1) <= kTol || std::fabs(rb - std::fabs(rb1)) <= 1e-4 * std::fabs(rb1)) &&
           std::fabs(v.B2 - b2) <= 1e-4 * b2;
}

} // namespace

void JohnsonDist::SUFIT(double xbar, double sd, double rb1, double b2, double& gamma, double& delta,
                        double& xlam, double& xi, long* rounds) {
    support::Trap({kModule, __func__}, [&] {
        const double tol = kTol; // published 0.01
        if (rounds) *rounds = 0;
        const double b1 = ck(rb1 * rb1);
        const double b3 = ck(b2 - 3);
        // First estimate of w = exp(delta^-2).
        double w = std::sqrt(std::sqrt(2 * b2 - 2.8 * b1 - 2) - 1);
        double y = 0;
        if (std::fabs(rb1) > tol) {
            // Johnson's iteration, y standing for his m (m / w = sinh^2 of the
            // SU shape, so never negative). Just above the lognormal line m grows
            // without bound and is very sensitive to w: there the published stop,
            // which watches only beta1, can leave m negative, which is no curve at
            // all, so a few more passes settle it. It converges in a handful of
            // passes wherever the arithmetic holds, but for a kurtosis beyond
            // about 1e11 rounding makes |b1 - z| wander above the tolerance for
            // ever; the cap hands those to the solver below.
            double z;
            long pass = 0;
            do {
                if (++pass > kSufitMaxPasses) {
                    y = std::nan("");
                    break;
                }
                const double w1 = w + 1;
                const double wm1 = w - 1;
                z = w1 * b3;
                double v = w * (6 + w * (3 + w));
                const double a = 8 * (wm1 * (3 + w * (7 + v)) - z);
                const double b = 16 * (wm1 * (6 + v) - b3);
                y = (std::sqrt(a * a - 2 * b * (wm1 * (3 + w * (9 + w * (10 + v))) - 2 * w1 * z)) -
                     a) /
                    b;
                const double c = 4 * (w + 2) * y + 3 * w1 * w1;
                const double e = 2 * y + w1;
                z = y * wm1 * c * c / (2 * e * e * e);
                v = w * w;
                w = std::sqrt(
                    std::sqrt(1 - 2 * (1.5 - b2 + (b1 * (b2 - 1.5 - v * (1 + 0.5 * v))) / z)) - 1);
                if (rounds) ++*rounds;
                if (!std::isfinite(w) || !std::isfinite(z)) break;
            } while (std::fabs(b1 - z) > tol || (y < 0 && pass < kSufitSettlePasses));
            y = y / w;
            y = std::log(std::sqrt(y) + std::sqrt(y + 1));
            if (rb1 > 0) y = -y;
        }
        // AS 99 stops on |beta1 - z| <= 1e-4, loose for a small skewness (0.0185
        // came out 10 % low), and its arithmetic breaks down far out (a kurtosis
        // of 3e15, or just above the lognormal line at skewness 24): where its
        // answer misses the moments by more than 1e-4, or there is none, the
        // nested solve finds the shape.
        const bool brokeDown = std::fetestexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID) ||
                               !std::isfinite(w) || !std::isfinite(y) || !(w > 1);
        std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID);
        if (brokeDown || !SuMeets(rb1, b2, w, y)) {
            std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID);
            const double tLine = b1 == 0 ? 0 : std::log(LognormalLine(rb1, b1).W);
            double t = 0, om = 0;
            if (!SuSolve(std::fabs(rb1) <= tol ? 0 : b1, b2, tLine, t, om))
                support::Raise(support::kErrInvalidCall, support::kAppTitle,
                               "The SU fit did not converge.");
            std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID); // its trials
            w = std::exp(t);
            y = rb1 > 0 ? -om : om;
        }
        // All four or none: a fault part-way must not leave a curve behind.
        const double x = ck(std::sqrt(1 / std::log(w)));
        const double g = ck(y * x);
        y = ck(std::exp(y));
        const double z = ck(y * y);
        const double lam = ck(sd / std::sqrt(0.5 * (w - 1) * (0.5 * w * (z + 1 / z) + 1)));
        const double at = ck((0.5 * std::sqrt(w) * (y - 1 / y)) * lam + xbar);
        delta = x;
        gamma = g;
        xlam = lam;
        xi = at;
    });
}

namespace {

// The standard SB curve's mean mu1 and variance m2, its rb = sqrt(beta1) and
// beta2, and their derivatives J = {drb/dg, drb/dd, db2/dg, db2/dd}, from its
// six raw moments, in AS 99's arrangement.
struct SbShape {
    double Mu1 = 0, M2 = 0, Rb = 0, B2 = 0, J[4] = {0, 0, 0, 0};
    double DMu1[2] = {0, 0}, DM2[2] = {0, 0}; // d mu1 and d m2 by gamma, delta
};

// False when the moments fail or the variance is not positive (M2 then <= 0).
// exact: by MOMExact alone. MOM's printed 10-digit constants put its
// moments about 1e-10 from the integral, unevenly across the six; close to the
// normal (small skewness, delta in the tens) beta2 is a difference of raw
// moments some 1e9 times smaller than they are, and that bias swamps it.
bool ShapeAt(double g, double d, SbShape& out, bool exact = false, bool* momFaulted = nullptr) {
    double hmu[6];
    bool fault = true;
    out.M2 = 1;
    if (exact)
        JohnsonDist::MOMExact(g, d, hmu, fault);
    else
        JohnsonDist::SbMoments(g, d, hmu, fault, momFaulted);
    if (fault) return false;
    double s = hmu[0] * hmu[0];
    const double h2 = hmu[1] - s;
    out.M2 = h2;
    out.Mu1 = hmu[0];
    if (h2 <= 0) return false;
    double t = std::sqrt(h2);
    const double h2a = t * h2;
    const double h2b = h2 * h2;
    const double h3 = hmu[2] - hmu[0] * (3 * hmu[1] - 2 * s);
    out.Rb = h3 / h2a;
    const double h4 = hmu[3] - hmu[0] * (4 * hmu[2] - hmu[0] * (6 * hmu[1] - 3 * s));
    out.B2 = h4 / h2b;
    // Analytic derivatives of rb (J[j]) and beta2 (J[j + 2]) with respect to
    // gamma (j = 0) and delta (j = 1).
    const double w = g * d;
    const double u = d * d;
    double dd[4];
    for (int j = 0; j < 2; ++j) {
        for (int k = 1; k <= 4; ++k) {
            t = k;
            if (j == 0)
                s = hmu[k] - hmu[k - 1];
            else
                s = ((w - t) * (hmu[k - 1] - hmu[k]) + (t + 1) * (hmu[k] - hmu[k + 1])) / u;
            dd[k - 1] = t * s / d;
        }
        t = 2 * hmu[0] * dd[0];
        s = hmu[0] * dd[1];
        const double y = dd[1] - t;
        out.DMu1[j] = dd[0];
        out.DM2[j] = y;
        out.J[j] = (dd[2] - 3 * (s + hmu[1] * dd[0] - t * hmu[0]) - 1.5 * h3 * y / h2) / h2a;
        out.J[j + 2] = (dd[3] - 4 * (dd[2] * hmu[0] + dd[0] * hmu[2]) +
                        6 * (hmu[1] * t + hmu[0] * (s - t * hmu[0])) - 2 * h4 * y / h2) /
                       h2b;
    }
    if (std::isfinite(out.Rb) && std::isfinite(out.B2) && std::isfinite(out.J[0]) &&
        std::isfinite(out.J[1]) && std::isfinite(out.J[2]) && std::isfinite(out.J[3]))
        return true;
    std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID); // a curve past the numbers
    return false;
}

// How far a shape is from the wanted one: skewness as it is, beta2 relative.
double Miss(const SbShape& s, double rb1, double b2) {
    const double e1 = s.Rb - rb1, e2 = (s.B2 - b2) / b2;
    return e1 * e1 + e2 * e2;
}

} // namespace

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

void JohnsonDist::sbfit(double xbar, double sigma, double rtb1, double b2, double& gamma,
                        double& delta, double& xlam, double& xi, bool fault, SbfitTrace* trace) {
    support::Trap({kModule, __func__}, [&] {
        // Starting-value constants A1..A22 of AS 99, with 0.485 (A6) and 1.7973 (A17).
        constexpr double a1 = 0.0124, a2 = 0.0623, a3 = 0.4043, a4 = 0.408, a5 = 0.479, a6 = 0.485,
                         a7 = 0.5291, a8 = 0.5955, a9 = 0.626, a10 = 0.64, a11 = 0.7077,
                         a12 = 0.7466, a13 = 0.8, a14 = 0.9281, a15 = 1.0614, a16 = 1.25,
                         a17 = 1.7973, a18 = 1.8, a19 = 2.163, a20 = 2.5, a21 = 8.5245,
                         a22 = 11.346;
        const double tt = kTol;  // beta1 threshold for a starting gamma; Newton-step test
        const double tol = kTol; // |rb1| threshold for the starting delta (published 0.01)
        const int limit = 500;   // published 50

        if (trace) *trace = SbfitTrace{};
        const double rb1 = std::fabs(rtb1);
        const double b1 = ck(rb1 * rb1);
        const bool neg = rtb1 < 0;

        // d: first estimate of delta, from where beta2 lies between the lower
        // boundary and the lognormal line.
        const LognormalPoint line = LognormalLine(rb1, b1);
        double w = line.W;
        const double e = ck((b2 - (b1 + 1)) / (line.B2 - (b1 + 1)));
        double f;
        double d;
        if (std::fabs(rb1) > tol) {
            d = ck(1 / std::sqrt(std::log(w)));
            if (d < a10)
                f = a16 * d;
            else
                f = ck(2 - a21 / (d * (d * (d - a19) + a22)));
        } else {
            f = 2;
        }
        f = ck(e * f + 1);
        if (f < a18)
            d = ck(a13 * (f - 1));
        else
            d = ck((a9 * f - a4) * std::pow(3 - f, -a5));

        // g: first estimate of gamma.
        double u = 0, y = 0;
        double g = 0;
        if (b1 >= tt) {
            if (d <= 1) {
                g = ck((a12 * std::pow(d, a17) + a8) * std::pow(b1, a6));
            } else {
                if (d <= a20) {
                    u = a2;
                    y = a3;
                } else {
                    u = a1;
                    y = a7;
                }
                g = ck(std::pow(b1, u * d + y) * (a14 + d * (a15 * d - a11)));
            }
        }
        if (trace) {
            trace->Gamma0 = g;
            trace->Delta0 = d;
        }
        const double g0 = g, d0 = d;

        auto assemble = [&](double gg, double dd, double mu1, double m2) {
            // Mirrored, the curve's mean sits at the far end of its range, and
            // beyond a range of 1e11 sd xi = xbar - lamda (1 - mu1) has rounded
            // it away: no curve these parameters can carry.
            if (neg && 1 / std::sqrt(m2) > 1e11)
                support::Raise(support::kErrInvalidCall, support::kAppTitle,
                               "The SB curve lies beyond the arithmetic.");
            // All four or none: a fault part-way must not leave a curve behind.
            const double lam = ck(sigma / std::sqrt(m2));
            const double at = ck(xbar - lam * (neg ? 1 - mu1 : mu1));
            delta = dd;
            gamma = neg ? -gg : gg;
            xlam = lam;
            xi = at;
        };

        using Exit = SbfitTrace::Exit;
        Exit stop = Exit::None;
        SbShape shape;
        double h2 = 0, lastMu1 = 0, bestMiss = INFINITY;
        int m = 0, bestRound = 0;
        bool momFaulted = false;
        for (;;) {
            ++m;
            if (m > limit) {
                stop = Exit::IterationLimit;
                break;
            }
            if (!ShapeAt(g, d, shape, false, &momFaulted)) {
                stop = shape.M2 <= 0 ? Exit::NonPositiveVariance : Exit::MomFault;
                break;
            }
            h2 = shape.M2;
            lastMu1 = shape.Mu1;
            // Where AS 99's iteration converges it does so in a few rounds (at most
            // 14 over the whole SB region); one that has not come nearer for 25
            // rounds is wandering, and would only spend its 500.
            const double missNow = Miss(shape, rb1, b2);
            if (!(missNow >= bestMiss)) {
                bestMiss = missNow;
                bestRound = m;
            } else if (m - bestRound > 25) {
                stop = Exit::Runaway;
                break;
            }
            if (trace) trace->Rounds.push_back({g, d, shape.Rb, shape.B2, shape.Mu1, shape.M2});
            // Newton step; AS 99 has no guard against a singular Jacobian.
            const double* deriv = shape.J;
            const double det = deriv[0] * deriv[3] - deriv[1] * deriv[2];
            const double t = 1 / det;
            u = (deriv[3] * (shape.Rb - rb1) - deriv[1] * (shape.B2 - b2)) * t;
            y = (deriv[0] * (shape.B2 - b2) - deriv[2] * (shape.Rb - rb1)) * t;
            g = g - u;
            if (b1 == 0 || g < 0) g = 0;
            d = d - y;
            // An iterate that leaves the curves (delta <= 0) or the numbers has run away.
            if (!std::isfinite(t) || !std::isfinite(g) || !(d > 0 && std::isfinite(d))) {
                stop = Exit::Runaway;
                break;
            }
            if (std::fabs(u) > tt || std::fabs(y) > tt) continue;
            break;
        }
        // Steps below the tolerance where the Jacobian is huge (delta near 0, or
        // far up the lognormal line) can stop the iteration far from the shape
        // wanted (skewness 9e12 for 19.5): that is no convergence.
        if (stop == Exit::None && (std::fabs(shape.Rb - rb1) > 0.01 * std::max(rb1, 0.01) ||
                                   std::fabs(shape.B2 - b2) > 0.01 * b2))
            stop = Exit::Runaway;
        if (stop == Exit::None) {
            // Converged: the updated gamma and delta, with lamda and xi from the
            // moments of the last round (before the update), as published.
            if (trace) trace->Outcome = Exit::Converged;
            // Close to the normal (delta above 3, small skewness) MOM's uneven
            // 1e-10 bias is amplified in beta2 and the skewness by up to 1e6, and
            // the iteration can settle on the wrong curve (skewness 0.0056 off by
            // 2 %, beta2 by 5e-4): there the shape is checked with the exact
            // moments, and finished from where it stands if it misses.
            SbShape exact;
            if (d > 3 && ShapeAt(g, d, exact, true) &&
                (std::fabs(exact.Rb - rb1) > 1e-5 * rb1 + 1e-8 ||
                 std::fabs(exact.B2 - b2) > 1e-5 * b2)) {
                double gc = g, dc = d, mu1 = 0, m2 = 0;
                bool unfinished = true;
                SbContinue(rb1, b2, false, gc, dc, mu1, m2, unfinished);
                if (!unfinished) {
                    if (trace) trace->Outcome = Exit::Continued;
                    assemble(gc, dc, mu1, m2);
                    return;
                }
            }
            // Far up the lognormal line the mean and variance of the standard
            // variable move by 300 times the step in delta, and the published
            // pre-update moments would miss the mean and sd by up to 6e-3 of the
            // sd: where the last step moves them by more than 2.5e-4 of it, they
            // are taken at the updated values.
            const double dMu1 = shape.DMu1[0] * u + shape.DMu1[1] * y;
            const double dM2 = shape.DM2[0] * u + shape.DM2[1] * y;
            SbShape updated;
            if ((std::fabs(dMu1) > 2.5e-4 * std::sqrt(h2) || std::fabs(dM2) > 5e-4 * h2) &&
                ShapeAt(g, d, updated, false, &momFaulted)) {
                lastMu1 = updated.Mu1;
                h2 = updated.M2;
            }
            assemble(g, d, lastMu1, h2);
            return;
        }
        // AS 99 stops here (and the published JNSN then swaps in another type).
        // Its last iterate is no answer: near the lognormal line it can be a wild
        // curve. A damped iteration from a sounder start finishes the fit.
        std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID); // the runaway's arithmetic
        fault = true;
        if (trace) trace->Outcome = stop;
        // Near the line the answer is close to the lognormal of this skewness
        // with q = exp(-gamma / delta) small, about in proportion to the distance
        // (1 - e): that start is sounder than AS 99's. Elsewhere, and should that
        // fail, AS 99's start in (gamma, delta).
        double gc = 0, dc = 0, mu1 = 0, m2 = 0;
        bool unfinished = true;
        if (e > 0.5 && rb1 > tol) {
            dc = 1 / std::sqrt(std::log(line.W));
            // q / (1 - e) measured over the region: 0.8 at skewness 1.35, 0.2 at
            // 2.1, 0.024 at 3.95 (and above 1 below skewness 1, where the cap holds).
            const double q = (1 - e) * std::min(1.0, std::exp(1.55 - 1.34 * rb1));
            gc = -dc * std::log(std::clamp(q, 1e-12, 0.5));
            SbContinue(rb1, b2, true, gc, dc, mu1, m2, unfinished);
        }
        if (unfinished) {
            gc = g0, dc = d0;
            SbContinue(rb1, b2, false, gc, dc, mu1, m2, unfinished);
        }
        if (unfinished) {
            gc = g0, dc = d0;
            SbSolve(rb1, b2, gc, dc, mu1, m2, unfinished);
        }
        if (unfinished)
            support::Raise(support::kErrInvalidCall, support::kAppTitle,
                           "The SB fit did not converge.");
        if (trace) {
            trace->Outcome = Exit::Continued;
            trace->Gamma = gc;
            trace->Delta = dc;
        }
        assemble(gc, dc, mu1, m2);
    });
    (void)fault; // by value: whatever sbfit decided stays here
}

namespace {

// One running sum of MOM's series, in AS 99's double.
struct PlainSum {
    double S = 0;
    void Set(double v) { S = v; }
    double Value() const { return S; }
    // Adds t; false when the sum did not change (the series' exact test).
    bool Add(double t) {
        const double before = S;
        S = S + t;
        return S != before;
    }
    double Diff(const PlainSum& old) const { return S - old.S; }
};

// AS 99's MOM: Goodwin's sum for the six moments, step h halved until two
// passes agree. Returns false on a fault (a[] is then meaningless).
bool GoodwinSeries(double g, double d, double (&a)[6], int* passes) {
    // Published constants, 10 digits as printed; changing them moves the moments
    // by about 1e-10.
    const double rttwo = 1.414213562;
    const double rrtpi = 0.5641895835;
    const double expa = 80.0;
    const double expb = 23.7;
    const int limit = 500;
    // Relative tolerances of the outer (step halving) and inner (series) loops,
    // the program's 0.0001^3 and 0.0001^4 (published 1e-5 and 1e-8).
    const double zz = std::pow(kTol, 3);
    const double vv = std::pow(kTol, 4);

    if (passes) *passes = 0;
    PlainSum sum[6], b[6];
    double c[6] = {0, 0, 0, 0, 0, 0};
    const double w = ck(g / d);
    if (w > expa) return false;
    const double e = ck(std::exp(w) + 1);
    const double r = ck(rttwo / d);
    double h = 0.75;
    if (d < 3) h = 0.25 * d;
    int k = 1;
    for (;;) {
        // One pass of Goodwin's sum with step h.
        double t = w;
        double u = t;
        double y = h * h;
        const double x = 2 * y;
        double start = 1 / e;
        sum[0].Set(start);
        for (int i = 1; i < 6; ++i) {
            start = start / e;
            sum[i].Set(start);
        }
        double v = y;
        const double f = r * h;
        int m = 0;
        double s = 0;
        for (;;) {
            ++m;
            if (m > limit) {
                support::CheckFp();
                return false;
            }
            for (int i = 0; i < 6; ++i)
                b[i] = sum[i];
            u = u - f;
            double z = 1;
            if (u > -expb) z = std::exp(u) + z;
            t = t + f;
            bool l = t > expb;
            if (!l) s = std::exp(t) + 1;
            double p = std::exp(-v);
            double q = p;
            for (int i = 0; i < 6; ++i) {
                p = p / z;
                // Exact comparisons: the series stops when terms no longer count.
                if (!sum[i].Add(p)) break;
                if (!l) {
                    q = q / s;
                    l = !sum[i].Add(q);
                }
            }
            y = y + x;
            v = v + y;
            bool more = false;
            for (int i = 0; i < 6; ++i) {
                const double ai = sum[i].Value();
                if (ai == 0) {
                    support::CheckFp();
                    return false;
                }
                if (std::fabs(sum[i].Diff(b[i]) / ai) > vv) {
                    more = true;
                    break;
                }
            }
            if (!more) break;
        }
        // Once a pass, not once a round: the flags stay raised until read, and
        // reading them every round cost a tenth of the series' time.
        support::CheckFp();
        v = rrtpi * h;
        for (int i = 0; i < 6; ++i)
            a[i] = v * sum[i].Value();
        if (passes) *passes = k;
        bool converged = true;
        for (int i = 0; i < 6; ++i) {
            if (a[i] == 0) return false;
            if (std::fabs((a[i] - c[i]) / a[i]) > zz) {
                converged = false;
                break;
            }
        }
        if (converged) {
            support::CheckFp();
            return true;
        }
        // No convergence yet: halve h and start the sums again.
        ++k;
        if (k > limit) return false;
        for (int i = 0; i < 6; ++i)
            c[i] = a[i];
        h = 0.5 * h;
    }
}

} // namespace

void JohnsonDist::MOM(double g, double d, double (&a)[6], bool& fault, int* passes) {
    // Set until the moments are in: a run-time error cut short must not pass for
    // a result.
    fault = true;
    support::Trap({kModule, __func__}, [&] { fault = !GoodwinSeries(g, d, a, passes); });
}

namespace {

// Gauss-Kronrod 7/15 on [lo, hi] for the six moment integrands phi(z) Y(z)^k,
// all six from the same nodes (a library rule integrates one function at a
// time and would evaluate each node six times).
struct Panel {
    double Lo, Hi, Value[6], Err[6];
};

void Kronrod(double g, double d, Panel& p) {
    static constexpr double xk[8] = {
        0.991455371120812639206854697526329, 0.949107912342758524526189684047851,
        0.864864423359769072789712788640926, 0.741531185599394439863864773280788,
        0.586087235467691130294144845693013, 0.405845151377397166906606412076961,
        0.207784955007898467600689403773245, 0.0};
    static constexpr double wk[8] = {
        0.022935322010529224963732008058970, 0.063092092629978553290700663189204,
        0.104790010322250183839876322541518, 0.140653259715525918745189590510238,
        0.169004726639267902826583426598550, 0.190350578064785409913256402421014,
        0.204432940075298892414161999234649, 0.209482141084727828012999174891714};
    // The 7-point Gauss weights of the odd Kronrod nodes.
    static constexpr double wg[4] = {
        0.129484966168869693270611432679082, 0.279705391489276667901467771423780,
        0.381830050505118944950369775488975, 0.417959183673469387755102040816327};
    constexpr double kInvSqrt2Pi = 0.398942280401432677939946059934382;
    const double c = 0.5 * (p.Lo + p.Hi), h = 0.5 * (p.Hi - p.Lo);
    double k15[6] = {0, 0, 0, 0, 0, 0}, g7[6] = {0, 0, 0, 0, 0, 0};
    auto add = [&](double z, double wK, double wG) {
        const double t = (z - g) / d;
        // Y = 1 / (1 + exp(-t)) without overflow on either side.
        const double y = t >= 0 ? 1 / (1 + std::exp(-t)) : std::exp(t) / (1 + std::exp(t));
        double f = kInvSqrt2Pi * std::exp(-0.5 * z * z);
        for (int k = 0; k < 6; ++k) {
            f *= y;
            k15[k] += wK * f;
            g7[k] += wG * f;
        }
    };
    add(c, wk[7], wg[3]);
    for (int j = 0; j < 7; ++j) {
        const double wG = (j % 2 == 1) ? wg[j / 2] : 0;
        add(c - h * xk[j], wk[j], wG);
        add(c + h * xk[j], wk[j], wG);
    }
    for (int k = 0; k < 6; ++k) {
        p.Value[k] = h * k15[k];
        p.Err[k] = std::fabs(h * (k15[k] - g7[k]));
    }
}

} // namespace

void JohnsonDist::MOMQuadrature(double g, double d, double (&a)[6], bool& fault) {
    fault = true;
    support::Trap({kModule, __func__}, [&] {
        if (!(d > 0) || !std::isfinite(g) || !std::isfinite(d)) return;
        // Any delta > 0: Goodwin's series needs more than its 500 terms below
        // delta = 0.09, and a fixed Gauss-Hermite rule is off by up to 47 % at
        // delta = 0.1; adaptive panels follow the logistic step at g, however
        // narrow. Beyond 10 from both 0 and g the normal weight is below 1e-22
        // of what is left. Nor beyond 10 above 6 / delta when g lies further up:
        // below g, phi(z) Y^k peaks at z = k / delta, and past that peak (and at
        // g itself) the integrand is below e^-50 of its moment; trimming that
        // empty span halves the cost of a call near the lognormal line, where
        // g / delta runs to tens. The tolerance bounds |K15 - G7|, the error of
        // the 7-point rule: the 15-point sums kept are good to about 1e-13.
        constexpr double kReach = 10, kTolerance = 1e-7;
        constexpr int kMaxPanels = 400;
        const double lo = std::min(0.0, g) - kReach,
                     hi = std::max(0.0, std::min(g, 6 / d)) + kReach;
        double cuts[9] = {lo,        g,          g - 2 * d,  g + 2 * d, g - 8 * d,
                          g + 8 * d, g - 32 * d, g + 32 * d, hi};
        std::sort(cuts, cuts + 9);
        thread_local std::vector<Panel> panels;
        panels.clear();
        for (int i = 0; i + 1 < 9; ++i) {
            const double l = std::max(lo, cuts[i]), r = std::min(hi, cuts[i + 1]);
            if (r > l) {
                panels.push_back({l, r, {}, {}});
                Kronrod(g, d, panels.back());
            }
        }
        for (;;) {
            double total[6] = {0, 0, 0, 0, 0, 0}, err[6] = {0, 0, 0, 0, 0, 0};
            for (const Panel& p : panels)
                for (int k = 0; k < 6; ++k) {
                    total[k] += p.Value[k];
                    err[k] += p.Err[k];
                }
            // A moment below the double range belongs to no curve worth fitting.
            if (!(total[5] > 0)) return;
            bool done = true;
            for (int k = 0; k < 6; ++k)
                done = done && err[k] <= kTolerance * total[k];
            if (done) {
                for (int k = 0; k < 6; ++k)
                    a[k] = ck(total[k]);
                fault = false;
                return;
            }
            if (static_cast<int>(panels.size()) >= kMaxPanels) return;
            // Split the panel that holds the most relative error in any moment.
            std::size_t worst = 0;
            double worstShare = -1;
            for (std::size_t i = 0; i < panels.size(); ++i)
                for (int k = 0; k < 6; ++k) {
                    const double share = panels[i].Err[k] / total[k];
                    if (share > worstShare) worstShare = share, worst = i;
                }
            Panel right = panels[worst];
            const double mid = 0.5 * (right.Lo + right.Hi);
            panels[worst].Hi = mid;
            right.Lo = mid;
            Kronrod(g, d, panels[worst]);
            Kronrod(g, d, right);
            panels.push_back(right);
        }
    });
}

namespace {

// Fixed nodes for the moments of a narrow step (small delta), in t = |z - g| / delta:
// Gauss-Legendre panels on [0, 44], beyond which the integrands are below e^-44
// of the step's own weight. The panels widen as the integrands decay (they fall
// like e^-t; near t = 0 their scale is the logistic's poles at +-i pi).
// The 8-point Gauss-Legendre rule on [-1, 1]: nodes +-X[i] with weights W[i].
struct Legendre8 {
    static constexpr int kHalf = 4;
    static constexpr double X[kHalf] = {
        0.183434642495649804939476142360184, 0.525532409916328985817739049189246,
        0.796666477413626739591553936475830, 0.960289856497536231683560868569473};
    static constexpr double W[kHalf] = {
        0.362683783378361982965150449277196, 0.313706645877887287337962201986601,
        0.222381034453374470544355994426241, 0.101228536290376259152531354309962};
    // Node j = 0..7 of the rule on [c - h, c + h], and its weight.
    static double Node(int j, double c, double h) {
        return j < kHalf ? c - h * X[j] : c + h * X[j - kHalf];
    }
    static double Weight(int j, double h) { return h * W[j % kHalf]; }
};

struct NarrowRule {
    static constexpr int kOrder = 2 * Legendre8::kHalf;
    static constexpr double kEdges[] = {0, 1, 2.5, 4.5, 7, 10, 14, 19, 25, 33, 44};
    static constexpr int kNodes = kOrder * (std::size(kEdges) - 1);
    double T[kNodes], W[kNodes];
    // For each node: s^k and 1 - (1 - s)^k, s = 1 / (1 + e^t), k = 1..6.
    double Below[kNodes][6], Above[kNodes][6];

    NarrowRule() {
        int k = 0;
        for (std::size_t p = 0; p + 1 < std::size(kEdges); ++p) {
            const double c = 0.5 * (kEdges[p] + kEdges[p + 1]),
                         h = 0.5 * (kEdges[p + 1] - kEdges[p]);
            for (int i = 0; i < kOrder; ++i, ++k) {
                T[k] = Legendre8::Node(i, c, h);
                W[k] = Legendre8::Weight(i, h);
                const double e = std::exp(-T[k]), s = e / (1 + e), lp = std::log1p(e);
                double sk = 1;
                for (int j = 0; j < 6; ++j) {
                    sk *= s;
                    Below[k][j] = sk;
                    Above[k][j] = -std::expm1(-(j + 1) * lp);
                }
            }
        }
    }
};

} // namespace

void JohnsonDist::MOMNarrow(double g, double d, double (&a)[6], bool& fault) {
    fault = true;
    support::Trap({kModule, __func__}, [&] {
        // With u = (z - g) / d the moments are E[L(u)^k], L the logistic: split
        // L^k into the unit step at u = 0, whose expectation is P(Z > g), and the
        // rest, which decays like e^-|u| and is smooth on each side; the rest is
        // a fixed rule in |u| whose logistic factors are tabled once, so a call
        // costs two exp() a node. Good to about 1e-15 of the moments for delta
        // up to 0.25 and g up to 5 (checked against MOMQuadrature).
        if (!(d > 0 && d <= kNarrowDelta) || !(std::fabs(g) <= kNarrowGamma)) return;
        static const NarrowRule rule;
        constexpr double kInvSqrt2Pi = 0.398942280401432677939946059934382;
        double below[6] = {0, 0, 0, 0, 0, 0}, above[6] = {0, 0, 0, 0, 0, 0};
        for (int i = 0; i < NarrowRule::kNodes; ++i) {
            const double dt = d * rule.T[i];
            const double zl = g - dt, zr = g + dt;
            const double fl = rule.W[i] * std::exp(-0.5 * zl * zl);
            const double fr = rule.W[i] * std::exp(-0.5 * zr * zr);
            for (int k = 0; k < 6; ++k) {
                below[k] += fl * rule.Below[i][k];
                above[k] += fr * rule.Above[i][k];
            }
        }
        const double step = 0.5 * std::erfc(g / std::numbers::sqrt2);
        for (int k = 0; k < 6; ++k) {
            a[k] = step + kInvSqrt2Pi * d * (below[k] - above[k]);
            if (!(a[k] > 0)) return;
        }
        fault = false;
    });
}

void JohnsonDist::SbMoments(double g, double d, double (&a)[6], bool& fault, bool* momFaulted) {
    // MOM first, so that every fit that converged with it alone stays the same.
    // Its series cannot finish in its 500 rounds below delta = 0.0915, nor start
    // with g / d above its guard of 80, nor finish from g / d = 14 up for delta
    // between 0.16 and 3 (a scan of 280,000 such points found none). Once it has
    // failed in a fit, or could not have finished, AS 99's iteration alone would
    // have stopped there and no earlier result is at stake: the rest of the fit
    // takes the exact moments, which cost less than one series pass and a
    // fraction of a failing series (that halves its step up to its cap: 60 to 90 us).
    fault = true;
    const bool fallen = momFaulted && *momFaulted;
    const bool hopeless = d < 0.085 || g / d > 80 || (d >= 0.16 && d < 3 && g / d > 14);
    if (!fallen && !hopeless) {
        if (g / d < 4) {
            MOM(g, d, a, fault);
            if (!fault) return;
        } else {
            // From g / d = 4 up rounding noise in the small high moments defeats
            // MOM's 1e-12 test. What it converges to where
            // it finishes, its printed constants included: its sum is rrtpi times
            // the integral of exp(-x^2) Y(rttwo x / d - g / d), that is sqrt(pi)
            // rrtpi times the moments at (g, d) / c with c = rttwo / sqrt(2). So
            // computed it agrees with MOM to 1e-11, without the noise, at a third
            // of the cost of summing the series with compensation.
            const double c = 1.414213562 / std::numbers::sqrt2;
            const double kappa = 0.5641895835 * std::sqrt(std::numbers::pi);
            MOMExact(g / c, d / c, a, fault);
            for (double& v : a)
                v *= kappa;
            return;
        }
    }
    if (momFaulted) *momFaulted = true;
    MOMExact(g, d, a, fault);
}

namespace {

// The moments for a wide step (delta 1.2 to 3) by fixed Gauss-Legendre panels in z.
// The integrand is smooth on the scale of 1 there (the logistic's poles lie pi
// delta off the axis), and its mass lies within 9.5 of 0 and of min(g, 6 /
// delta) (see MOMQuadrature): 8 nodes a panel of width 1.25 hold each moment to
// 2e-13 (checked against a fine long-double sum), at half the cost of the
// adaptive panels.
bool WideStep(double g, double d, double (&a)[6]) {
    constexpr double kReach = 9.5, kWidth = 1.25;
    constexpr double kInvSqrt2Pi = 0.398942280401432677939946059934382;
    const double lo = std::min(0.0, g) - kReach, hi = std::max(0.0, std::min(g, 6 / d)) + kReach;
    const int panels = static_cast<int>(std::ceil((hi - lo) / kWidth));
    if (panels > 32) return false; // far from the fit's ground: the adaptive rule
    const double h = 0.5 * (hi - lo) / panels;
    double sum[6] = {0, 0, 0, 0, 0, 0};
    for (int p = 0; p < panels; ++p) {
        const double c = lo + (2 * p + 1) * h;
        for (int i = 0; i < 2 * Legendre8::kHalf; ++i) {
            const double z = Legendre8::Node(i, c, h), t = (z - g) / d;
            const double y = t >= 0 ? 1 / (1 + std::exp(-t)) : std::exp(t) / (1 + std::exp(t));
            double f = Legendre8::Weight(i, 1) * std::exp(-0.5 * z * z);
            for (int k = 0; k < 6; ++k) {
                f *= y;
                sum[k] += f;
            }
        }
    }
    for (int k = 0; k < 6; ++k) {
        a[k] = kInvSqrt2Pi * h * sum[k];
        if (!(a[k] > 0) || !std::isfinite(a[k])) return false;
    }
    return true;
}

} // namespace

void JohnsonDist::MOMExact(double g, double d, double (&a)[6], bool& fault) {
    // The fixed rule is four times cheaper where it holds (the lower band of
    // the SB region, where the fit takes the moments 2 to 13 times).
    if (d <= kNarrowDelta && std::fabs(g) <= kNarrowGamma) {
        MOMNarrow(g, d, a, fault);
    } else if (d >= 1.2 && d <= 3 && std::isfinite(g)) {
        // Not above delta = 3: close to the normal beta2 is a difference of raw
        // moments a million times smaller than they are, and only the adaptive
        // rule's deeper convergence keeps it to 1e-4.
        fault = !WideStep(g, d, a);
        if (fault) MOMQuadrature(g, d, a, fault);
    } else {
        MOMQuadrature(g, d, a, fault);
    }
}
