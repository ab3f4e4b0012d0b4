// Fitting Johnson curves by their first four moments: AS 99's JNSN, SUFIT, SBFIT
// and MOM (Hill, Hill & Holder 1976), with this program's tolerances and limits.
// Where SUFIT's or SBFIT's answer falls short, the SU solve and the SB
// continuation finish it, and where MOM's series cannot finish, exact SB moment
// rules stand in (see JohnsonDistFit.h for the files).
//
// The published constants are kept digit for digit; the tolerances and limits
// are this program's own (tighter than published) and are marked where used.
#include "johnson/JohnsonDistFit.h"

#include "johnson/JohnsonDist.h"

#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <cfenv>
#include <cmath>
#include <initializer_list>
#include <vector>

using m_NumRecipes::kernel::RequireFinite;
using support::ck;
using namespace JohnsonDistFit;

JohnsonDistFit::LognormalPoint JohnsonDistFit::LognormalLine(double rb1, double b1) {
    const double x = 0.5 * b1 + 1;
    const double y = ck(std::fabs(rb1) * std::sqrt(0.25 * b1 + 1));
    const double u = ck(std::pow(x + y, 1.0 / 3));
    const double w = ck(u + 1 / u - 1);
    return {w, ck(w * w * (3 + w * (2 + w)) - 3)};
}

namespace {
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
            // Kept: the fault flag goes to sbfit by value, so a failed SB fit is
            // never swapped for the published SL, normal or ST fit (nor fault 3);
            // sbfit finishes the fit itself where AS 99's iteration stops, and a
            // fit it cannot finish writes no parameters.
            sbfit(xm, s, rb1, b2, gamma, delta, xlam, xi, false);
            return xlam > 0 ? 0 : kNoCurve;
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

// exact: MOM's printed 10-digit constants put its
// moments about 1e-10 from the integral, unevenly across the six; close to the
// normal (small skewness, delta in the tens) beta2 is a difference of raw
// moments some 1e9 times smaller than they are, and that bias swamps it.
bool JohnsonDistFit::ShapeAt(double g, double d, SbShape& out, bool exact, bool* seriesAbandoned) {
    double hmu[6];
    bool fault = true;
    out.M2 = 1;
    if (exact)
        JohnsonDist::MOMExact(g, d, hmu, fault);
    else
        JohnsonDist::SbMoments(g, d, hmu, fault, seriesAbandoned);
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

namespace {

using Exit = JohnsonDist::SbfitTrace::Exit;

// A point (gamma, delta) of the SB iteration.
struct SbPoint {
    double G = 0, D = 0;
};

// AS 99's starting values for |skewness| rb1 (b1 = rb1^2): delta from where
// beta2 lies between the lower boundary and the lognormal line (e, and w of
// the line), then gamma from delta and beta1.
SbPoint SbStart(double rb1, double b1, double w, double e) {
    // Starting-value constants A1..A22 of AS 99, with 0.485 (A6) and 1.7973 (A17).
    constexpr double a1 = 0.0124, a2 = 0.0623, a3 = 0.4043, a4 = 0.408, a5 = 0.479, a6 = 0.485,
                     a7 = 0.5291, a8 = 0.5955, a9 = 0.626, a10 = 0.64, a11 = 0.7077, a12 = 0.7466,
                     a13 = 0.8, a14 = 0.9281, a15 = 1.0614, a16 = 1.25, a17 = 1.7973, a18 = 1.8,
                     a19 = 2.163, a20 = 2.5, a21 = 8.5245, a22 = 11.346;
    const double tt = kTol;  // beta1 threshold for a starting gamma
    const double tol = kTol; // |rb1| threshold for the starting delta (published 0.01)

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

    double g = 0;
    if (b1 >= tt) {
        if (d <= 1) {
            g = ck((a12 * std::pow(d, a17) + a8) * std::pow(b1, a6));
        } else {
            const double u = d <= a20 ? a2 : a1;
            const double y = d <= a20 ? a3 : a7;
            g = ck(std::pow(b1, u * d + y) * (a14 + d * (a15 * d - a11)));
        }
    }
    return {g, d};
}

// How AS 99's Newton iteration ended.
struct SbNewton {
    Exit Stop = Exit::None;       // None: converged
    SbPoint At;                   // the last iterate, after its update
    double StepG = 0, StepD = 0;  // that update (subtracted)
    SbShape Shape;                // the shape before it
    bool SeriesAbandoned = false; // MOM's series given up for this fit (see SbMoments)
};

// AS 99's Newton iteration on (gamma, delta) for |skewness| rb1 and beta2 b2,
// with this program's limit and its own guard against a runaway.
SbNewton SbIterate(double rb1, double b1, double b2, SbPoint start,
                   JohnsonDist::SbfitTrace* trace) {
    const double tt = kTol; // the Newton-step test
    const int limit = 500;  // published 50

    SbNewton run;
    double g = start.G, d = start.D;
    SbShape& shape = run.Shape;
    double bestMiss = INFINITY;
    int m = 0, bestRound = 0;
    for (;;) {
        ++m;
        if (m > limit) {
            run.Stop = Exit::IterationLimit;
            break;
        }
        if (!ShapeAt(g, d, shape, false, &run.SeriesAbandoned)) {
            run.Stop = shape.M2 <= 0 ? Exit::NonPositiveVariance : Exit::MomFault;
            break;
        }
        // Where AS 99's iteration converges it does so in a few rounds (at most
        // 14 over the whole SB region); one that has not come nearer for 25
        // rounds is wandering, and would only spend its 500.
        const double missNow = Miss(shape, rb1, b2);
        if (!(missNow >= bestMiss)) {
            bestMiss = missNow;
            bestRound = m;
        } else if (m - bestRound > 25) {
            run.Stop = Exit::Runaway;
            break;
        }
        if (trace) trace->Rounds.push_back({g, d, shape.Rb, shape.B2, shape.Mu1, shape.M2});
        // Newton step; AS 99 has no guard against a singular Jacobian.
        const double* deriv = shape.J;
        const double det = deriv[0] * deriv[3] - deriv[1] * deriv[2];
        const double t = 1 / det;
        const double u = (deriv[3] * (shape.Rb - rb1) - deriv[1] * (shape.B2 - b2)) * t;
        const double y = (deriv[0] * (shape.B2 - b2) - deriv[2] * (shape.Rb - rb1)) * t;
        run.StepG = u;
        run.StepD = y;
        g = g - u;
        if (b1 == 0 || g < 0) g = 0;
        d = d - y;
        // An iterate that leaves the curves (delta <= 0) or the numbers has run away.
        if (!std::isfinite(t) || !std::isfinite(g) || !(d > 0 && std::isfinite(d))) {
            run.Stop = Exit::Runaway;
            break;
        }
        if (std::fabs(u) > tt || std::fabs(y) > tt) continue;
        break;
    }
    run.At = {g, d};
    // Steps below the tolerance where the Jacobian is huge (delta near 0, or
    // far up the lognormal line) can stop the iteration far from the shape
    // wanted (skewness 9e12 for 19.5): that is no convergence.
    if (run.Stop == Exit::None && (std::fabs(shape.Rb - rb1) > 0.01 * std::max(rb1, 0.01) ||
                                   std::fabs(shape.B2 - b2) > 0.01 * b2))
        run.Stop = Exit::Runaway;
    return run;
}

// The SB shape of a fit and the mean and variance of its standard variable,
// from which lamda and xi are built.
struct SbAnswer {
    SbPoint At;
    double Mu1 = 0, M2 = 0;
};

// The answer of a converged iteration: the updated gamma and delta, with lamda
// and xi from the moments of the last round (before the update), but for the
// two places where that answer is known to fall short.
// Kept: the pre-update moments, as published; elsewhere they miss the mean and
// sd by up to 4e-4 of the sd while the shape is within 1e-4.
SbAnswer SbConverged(double rb1, double b2, SbNewton& run, JohnsonDist::SbfitTrace* trace) {
    if (trace) trace->Outcome = Exit::Converged;
    const SbPoint at = run.At;
    // Close to the normal (delta above 3, small skewness) MOM's uneven 1e-10
    // bias is amplified in beta2 and the skewness by up to 1e6, and the
    // iteration can settle on the wrong curve (skewness 0.0056 off by 2 %,
    // beta2 by 5e-4): there the shape is checked with the exact moments, and
    // finished from where it stands if it misses.
    SbShape exact;
    if (at.D > 3 && ShapeAt(at.G, at.D, exact, true) &&
        (std::fabs(exact.Rb - rb1) > 1e-5 * rb1 + 1e-8 || std::fabs(exact.B2 - b2) > 1e-5 * b2)) {
        SbAnswer finished{at};
        bool unfinished = true;
        JohnsonDist::SbContinue(rb1, b2, false, finished.At.G, finished.At.D, finished.Mu1,
                                finished.M2, unfinished);
        if (!unfinished) {
            if (trace) trace->Outcome = Exit::Continued;
            return finished;
        }
    }
    // Far up the lognormal line the mean and variance of the standard variable
    // move by 300 times the step in delta, and the published pre-update moments
    // would miss the mean and sd by up to 6e-3 of the sd: where the last step
    // moves them by more than 2.5e-4 of it, they are taken at the updated values.
    const SbShape& shape = run.Shape;
    SbAnswer answer{at, shape.Mu1, shape.M2};
    const double dMu1 = shape.DMu1[0] * run.StepG + shape.DMu1[1] * run.StepD;
    const double dM2 = shape.DM2[0] * run.StepG + shape.DM2[1] * run.StepD;
    SbShape updated;
    if ((std::fabs(dMu1) > 2.5e-4 * std::sqrt(shape.M2) || std::fabs(dM2) > 5e-4 * shape.M2) &&
        ShapeAt(at.G, at.D, updated, false, &run.SeriesAbandoned)) {
        answer.Mu1 = updated.Mu1;
        answer.M2 = updated.M2;
    }
    return answer;
}

} // namespace

void JohnsonDist::sbfit(double xbar, double sigma, double rtb1, double b2, double& gamma,
                        double& delta, double& xlam, double& xi, bool fault, SbfitTrace* trace) {
    support::Trap({kModule, __func__}, [&] {
        if (trace) *trace = SbfitTrace{};
        // The fit is for the positive skewness; the sign comes in at the end.
        const double rb1 = std::fabs(rtb1);
        const double b1 = ck(rb1 * rb1);
        const bool neg = rtb1 < 0;

        // 1. AS 99's start, from where beta2 lies between the lower boundary (0)
        // and the lognormal line (1).
        const LognormalPoint line = LognormalLine(rb1, b1);
        const double e = ck((b2 - (b1 + 1)) / (line.B2 - (b1 + 1)));
        const SbPoint start = SbStart(rb1, b1, line.W, e);
        if (trace) {
            trace->Gamma0 = start.G;
            trace->Delta0 = start.D;
        }

        // 2. AS 99's iteration.
        SbNewton run = SbIterate(rb1, b1, b2, start, trace);
        SbAnswer answer;
        if (run.Stop == Exit::None) {
            answer = SbConverged(rb1, b2, run, trace);
        } else {
            // 3. AS 99 stops here with its fault flag up. Its last iterate is no
            // answer: near the lognormal line it can be a wild curve. The
            // continuation finishes the fit.
            std::feclearexcept(FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID); // the runaway's arithmetic
            fault = true;
            if (trace) trace->Outcome = run.Stop;
            if (!ContinueSb(rb1, b2, e, line.W, start.G, start.D, answer.At.G, answer.At.D,
                            answer.Mu1, answer.M2))
                support::Raise(support::kErrInvalidCall, support::kAppTitle,
                               "The SB fit did not converge.");
            if (trace) {
                trace->Outcome = Exit::Continued;
                trace->Gamma = answer.At.G;
                trace->Delta = answer.At.D;
            }
        }

        // 4. The curve: lamda and xi from the standard variable's mean and
        // variance. Mirrored, the curve's mean sits at the far end of its range,
        // and beyond a range of 1e11 sd xi = xbar - lamda (1 - mu1) has rounded
        // it away: no curve these parameters can carry.
        if (neg && 1 / std::sqrt(answer.M2) > 1e11)
            support::Raise(support::kErrInvalidCall, support::kAppTitle,
                           "The SB curve lies beyond the arithmetic.");
        // All four or none: a fault part-way must not leave a curve behind.
        const double lam = ck(sigma / std::sqrt(answer.M2));
        const double at = ck(xbar - lam * (neg ? 1 - answer.Mu1 : answer.Mu1));
        delta = answer.At.D;
        gamma = neg ? -answer.At.G : answer.At.G;
        xlam = lam;
        xi = at;
    });
    (void)fault; // Kept: by value, whatever sbfit decided stays here (see jnsn)
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
    const double rttwo = kMomRootTwo;
    const double rrtpi = kMomInvRootPi;
    const double expa = kMomExpGuard;
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
                // Kept: exact comparisons, as published: the series stops when
                // terms no longer count.
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
