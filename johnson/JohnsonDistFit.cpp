// Fitting Johnson curves by their first four moments: AS 99's JNSN, SUFIT, SBFIT
// and MOM (Hill, Hill & Holder 1976), with this program's tolerances and limits,
// and what the SB fit needs beyond them to finish wherever an SB curve exists.
//
// The published constants are kept digit for digit; the tolerances and limits
// are this program's own (tighter than published) and are marked where used.
#include "johnson/JohnsonDist.h"

#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

using m_NumRecipes::kernel::RequireFinite;
using support::ck;

namespace {
constexpr const char* kJnsn = "Pondera.JohnsonDist.jnsn";
constexpr const char* kSUFIT = "Pondera.JohnsonDist.SUFIT";
constexpr const char* kSbfit = "Pondera.JohnsonDist.sbfit";
constexpr const char* kMOM = "Pondera.JohnsonDist.MOM";

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
constexpr long kSufitMaxPasses = 100000;
// Passes SUFIT may take to settle a negative m once beta1 has converged.
constexpr long kSufitSettlePasses = 50;
} // namespace

void JohnsonDist::jnsn(double xbar, double sd, double rb1, double bb2, int& itype, double& gamma,
                       double& delta, double& xlam, double& xi, int16_t& ifault) {
    support::Trap(kJnsn, [&] {
        const double tols = kTol; // skewness tests
        const double tolb = kTol; // kurtosis tests

        ifault = 1;
        // A moment that is not a finite number leaves no curve (fault 1 stands)
        // and goes to the error path.
        RequireFinite({xbar, sd, rb1, bb2});
        if (sd < 0) return;
        ifault = 0;
        xi = 0;
        xlam = 0;
        gamma = 0;
        delta = 0;
        if (sd == 0) {
            itype = kST;
            xi = xbar;
            return;
        }
        const double b1 = ck(rb1 * rb1);
        double b2 = bb2;

        auto normal = [&] {
            itype = kNormal;
            delta = ck(1 / sd);
            gamma = ck(-xbar / sd);
        };
        // The two-point limit on beta2 = beta1 + 1: probability delta at the upper
        // point xlam, 1 - delta at the lower point xi.
        auto twoPoint = [&] {
            double y = ck(0.5 + 0.5 * std::sqrt(1 - 4 / (b1 + 4)));
            if (rb1 > 0) y = 1 - y;
            const double x = ck(sd / std::sqrt(y * (1 - y)));
            xi = ck(xbar - y * x);
            xlam = ck(xi + x);
            delta = y;
            itype = kST;
        };
        // The lognormal family; w = exp(delta^-2) of the lognormal with this beta1.
        auto lognormal = [&](double w) {
            itype = kSL;
            xlam = sign(1, rb1);
            const double u = ck(xlam * xbar);
            const double x = ck(1 / std::sqrt(std::log(w)));
            delta = x;
            const double y = ck(0.5 * x * std::log(w * (w - 1) / (sd * sd)));
            gamma = y;
            xi = ck(xlam * (u - std::exp((0.5 / x - y) / x)));
        };

        if (bb2 >= 0) {
            if (b2 > b1 + tolb + 1) {
                if (std::fabs(rb1) <= tols && std::fabs(b2 - 3) <= tolb) {
                    normal();
                    return;
                }
            } else if (b2 < b1 + 1) {
                ifault = 2;
                return;
            } else {
                twoPoint();
                return;
            }
        } else if (std::fabs(rb1) <= tols) {
            // A negative kurtosis asks for the lognormal (the normal when symmetric).
            normal();
            return;
        }

        const LognormalPoint line = LognormalLine(rb1, b1);
        const double w = line.W;
        if (b2 < 0) b2 = line.B2;
        const double x = ck(line.B2 - b2);

        if (std::fabs(x) <= tolb) {
            lognormal(w);
            return;
        }
        if (x <= 0) {
            itype = kSU;
            SUFIT(xbar, sd, rb1, b2, gamma, delta, xlam, xi);
            return;
        }
        itype = kSB;
        // The flag goes by value, so sbfit can never report a failure here and an
        // unconverged SB fit is returned as it stands. Deliberate; keep it.
        const bool sbFault = false;
        sbfit(xbar, sd, rb1, b2, gamma, delta, xlam, xi, sbFault);
        if (!sbFault) return;
        // The published fallback after a failed SB fit (never reached here).
        ifault = 3;
        if (b2 > b1 + 2) {
            if (std::fabs(rb1) <= tols)
                normal();
            else
                lognormal(w);
        } else {
            twoPoint();
        }
    });
}

void JohnsonDist::SUFIT(double xbar, double sd, double rb1, double b2, double& gamma, double& delta,
                        double& xlam, double& xi, long* rounds) {
    support::Trap(kSUFIT, [&] {
        const double tol = kTol; // published 0.01
        if (rounds) *rounds = 0;
        const double b1 = ck(rb1 * rb1);
        const double b3 = ck(b2 - 3);
        // First estimate of w = exp(delta^-2).
        double w = ck(std::sqrt(std::sqrt(2 * b2 - 2.8 * b1 - 2) - 1));
        double y = 0;
        if (std::fabs(rb1) > tol) {
            // Johnson's iteration, y standing for his m (m / w = sinh^2 of the
            // SU shape, so never negative). Just above the lognormal line m grows
            // without bound and is very sensitive to w: there the published stop,
            // which watches only beta1, can leave m negative, which is no curve at
            // all (the square root below fails), so a few more passes settle it.
            // A negative m that persists (a skewness near 0 with a kurtosis beyond
            // about 1e7) still ends in that reported error.
            // The iteration converges in a handful of passes wherever the
            // arithmetic holds, but for a kurtosis beyond about 1e11 rounding makes
            // |b1 - z| wander above the tolerance for ever; the cap turns that
            // into a reported error instead of a hang.
            double z;
            long pass = 0;
            do {
                if (++pass > kSufitMaxPasses)
                    support::Raise(support::kErrInvalidCall, support::kAppTitle,
                                   "The SU fit did not converge in 100000 passes.");
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
                ck(w);
                ck(z);
                if (rounds) ++*rounds;
            } while (std::fabs(b1 - z) > tol || (y < 0 && pass < kSufitSettlePasses));
            y = ck(y / w);
            y = ck(std::log(std::sqrt(y) + std::sqrt(y + 1)));
            if (rb1 > 0) y = -y;
        }
        const double x = ck(std::sqrt(1 / std::log(w)));
        delta = x;
        gamma = ck(y * x);
        y = ck(std::exp(y));
        const double z = ck(y * y);
        xlam = ck(sd / std::sqrt(0.5 * (w - 1) * (0.5 * w * (z + 1 / z) + 1)));
        xi = ck((0.5 * std::sqrt(w) * (y - 1 / y)) * xlam + xbar);
    });
}

void JohnsonDist::sbfit(double xbar, double sigma, double rtb1, double b2, double& gamma,
                        double& delta, double& xlam, double& xi, bool fault, SbfitTrace* trace) {
    support::Trap(kSbfit, [&] {
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

        // The last iterate whose moments were computed, for the fault exits.
        bool haveIterate = false;
        double lastG = 0, lastD = 0, lastMu1 = 0, lastM2 = 0;
        auto assemble = [&](double gg, double dd, double mu1, double m2) {
            delta = dd;
            xlam = ck(sigma / std::sqrt(m2));
            if (neg) {
                gamma = -gg;
                mu1 = 1 - mu1;
            } else {
                gamma = gg;
            }
            xi = ck(xbar - xlam * mu1);
        };
        // A failed fit returns the last iterate that had moments, or leaves the
        // parameters as the caller set them when even the start failed.
        auto faultExit = [&](SbfitTrace::Exit why) {
            fault = true;
            if (trace) trace->Outcome = why;
            if (haveIterate) assemble(lastG, lastD, lastMu1, lastM2);
        };

        double hmu[6];
        double deriv[4];
        double dd[4];
        double h2 = 0;
        int m = 0;
        for (;;) {
            ++m;
            if (m > limit) {
                faultExit(SbfitTrace::Exit::IterationLimit);
                return;
            }
            bool momFault = true;
            MOM(g, d, hmu, momFault);
            if (momFault) {
                faultExit(SbfitTrace::Exit::MomFault);
                return;
            }
            double s = hmu[0] * hmu[0];
            h2 = hmu[1] - s;
            if (h2 <= 0) {
                faultExit(SbfitTrace::Exit::NonPositiveVariance);
                return;
            }
            double t = std::sqrt(h2);
            const double h2a = t * h2;
            const double h2b = h2 * h2;
            const double h3 = hmu[2] - hmu[0] * (3 * hmu[1] - 2 * s);
            const double rbet = ck(h3 / h2a);
            const double h4 = hmu[3] - hmu[0] * (4 * hmu[2] - hmu[0] * (6 * hmu[1] - 3 * s));
            const double bet2 = ck(h4 / h2b);
            haveIterate = true;
            lastG = g;
            lastD = d;
            lastMu1 = hmu[0];
            lastM2 = h2;
            if (trace) trace->Rounds.push_back({g, d, rbet, bet2, hmu[0], h2});

            // Analytic derivatives of rbet (deriv[j]) and bet2 (deriv[j + 2]) with
            // respect to gamma (j = 0) and delta (j = 1).
            w = g * d;
            u = d * d;
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
                y = dd[1] - t;
                deriv[j] =
                    (dd[2] - 3 * (s + hmu[1] * dd[0] - t * hmu[0]) - 1.5 * h3 * y / h2) / h2a;
                deriv[j + 2] = (dd[3] - 4 * (dd[2] * hmu[0] + dd[0] * hmu[2]) +
                                6 * (hmu[1] * t + hmu[0] * (s - t * hmu[0])) - 2 * h4 * y / h2) /
                               h2b;
            }
            // Newton step; no guard against a singular Jacobian, as published.
            t = ck(1 / (deriv[0] * deriv[3] - deriv[1] * deriv[2]));
            u = ck((deriv[3] * (rbet - rb1) - deriv[1] * (bet2 - b2)) * t);
            y = ck((deriv[0] * (bet2 - b2) - deriv[2] * (rbet - rb1)) * t);
            g = g - u;
            if (b1 == 0 || g < 0) g = 0;
            d = d - y;
            if (std::fabs(u) > tt || std::fabs(y) > tt) continue;
            break;
        }
        // Converged: the updated gamma and delta, with lamda and xi from the
        // moments of the last MOM call (before the update), as published.
        if (trace) trace->Outcome = SbfitTrace::Exit::Converged;
        assemble(g, d, lastMu1, h2);
    });
    (void)fault; // by value: whatever sbfit decided stays here
}

void JohnsonDist::MOM(double g, double d, double (&a)[6], bool& fault, int* passes) {
    support::Trap(kMOM, [&] {
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

        // Set until the moments are in: a run-time error cut short must not pass
        // for a result.
        fault = true;
        if (passes) *passes = 0;
        double b[6];
        double c[6] = {0, 0, 0, 0, 0, 0};
        const double w = ck(g / d);
        if (w > expa) return;
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
            a[0] = 1 / e;
            for (int i = 1; i < 6; ++i)
                a[i] = a[i - 1] / e;
            double v = y;
            const double f = r * h;
            int m = 0;
            double s = 0;
            for (;;) {
                ++m;
                if (m > limit) return;
                for (int i = 0; i < 6; ++i)
                    b[i] = a[i];
                u = u - f;
                double z = 1;
                if (u > -expb) z = std::exp(u) + z;
                t = t + f;
                bool l = t > expb;
                if (!l) s = std::exp(t) + 1;
                double p = std::exp(-v);
                double q = p;
                for (int i = 0; i < 6; ++i) {
                    double aa = a[i];
                    p = p / z;
                    double ab = aa;
                    aa = aa + p;
                    // Exact comparisons: the series stops when terms no longer count.
                    if (aa == ab) break;
                    if (!l) {
                        q = q / s;
                        ab = aa;
                        aa = aa + q;
                        l = aa == ab;
                    }
                    a[i] = aa;
                }
                y = y + x;
                v = v + y;
                support::CheckFp();
                bool more = false;
                for (int i = 0; i < 6; ++i) {
                    if (a[i] == 0) return;
                    if (std::fabs((a[i] - b[i]) / a[i]) > vv) {
                        more = true;
                        break;
                    }
                }
                if (!more) break;
            }
            v = rrtpi * h;
            for (int i = 0; i < 6; ++i)
                a[i] = v * a[i];
            if (passes) *passes = k;
            bool converged = true;
            for (int i = 0; i < 6; ++i) {
                if (a[i] == 0) return;
                if (std::fabs((a[i] - c[i]) / a[i]) > zz) {
                    converged = false;
                    break;
                }
            }
            if (converged) {
                support::CheckFp();
                fault = false;
                return;
            }
            // No convergence yet: halve h and start the sums again.
            ++k;
            if (k > limit) return;
            for (int i = 0; i < 6; ++i)
                c[i] = a[i];
            h = 0.5 * h;
        }
    });
}
