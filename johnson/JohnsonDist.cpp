// The Johnson curve object and its routines.
//
// Sources: Hill, Hill & Holder (1976), AS 99 "Fitting Johnson curves by moments"
// (JNSN, SUFIT, SBFIT, MOM); Hill (1976), AS 100 "Normal-Johnson and
// Johnson-normal transformations" (AJV, SNV); Beasley & Springer (1977), AS 111
// "The percentage points of the normal distribution" (PPND). The constants of
// the published routines are kept digit for digit; the tolerances and limits are
// this program's own (tighter than published), and they are marked where used.
#include "johnson/JohnsonDist.h"

#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

using m_NumRecipes::kernel::RequireFinite;
using support::ck;

namespace {
constexpr const char* kCalculate = "Pondera.JohnsonDist.Calculate";
constexpr const char* kJohnsontoNormal = "Pondera.JohnsonDist.JohnsontoNormal";
constexpr const char* kNormaltoJohnson = "Pondera.JohnsonDist.NormaltoJohnson";
constexpr const char* kCalculateFromData = "Pondera.JohnsonDist.CalculateFromData";
constexpr const char* kJnsn = "Pondera.JohnsonDist.jnsn";
constexpr const char* kSUFIT = "Pondera.JohnsonDist.SUFIT";
constexpr const char* kSbfit = "Pondera.JohnsonDist.sbfit";
constexpr const char* kMOM = "Pondera.JohnsonDist.MOM";
constexpr const char* kSNV = "Pondera.JohnsonDist.SNV";
constexpr const char* kAJV = "Pondera.JohnsonDist.AJV";
constexpr const char* kJohnson5ToNormal = "Pondera.JohnsonDist.Johnson5ToNormal";
constexpr const char* kPPND = "Pondera.JohnsonDist.PPND";
constexpr const char* kSign = "Pondera.JohnsonDist.sign";
constexpr const char* kMOMENT = "Pondera.JohnsonDist.MOMENT";
constexpr const char* kMinofArray = "Pondera.JohnsonDist.MinofArray";
constexpr const char* kMaxofArray = "Pondera.JohnsonDist.MaxofArray";
constexpr const char* kFitSB3 = "Pondera.JohnsonDist.FitSB3";
constexpr const char* kSB3Moments = "Pondera.JohnsonDist.SB3Moments";
constexpr const char* kFitMessage = "Pondera.JohnsonDist.FitMessage";
constexpr const char* kFixedEndpointMessage = "Pondera.JohnsonDist.FixedEndpointMessage";

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

// ---------------------------------------------------------------------------
// The object
// ---------------------------------------------------------------------------

void JohnsonDist::Calculate(double mean, double stDev, double skewness, double kurtosis) {
    Calculate(mean, stDev, skewness, kurtosis, nullptr, nullptr);
}

void JohnsonDist::Calculate(double mean, double stDev, double skewness, double kurtosis,
                            const double* xLower, const double* xUpper) {
    support::Trap(kCalculate, [&] {
        if (!xLower && !xUpper) {
            int itype = 0;
            double gamma = 0, delta = 0, xlam = 0, xi = 0;
            int16_t fault = 0;
            jnsn(mean, stDev, skewness, kurtosis, itype, gamma, delta, xlam, xi, fault);
            if (fault == 1 || fault == 2) {
                Delta = Lamda = Gamma = Xi = Alpha = 0;
                JDistribution = "Error";
                Reflected = false;
            } else if (fault == 0) {
                Delta = delta;
                Lamda = xlam;
                Gamma = gamma;
                Xi = xi;
                Alpha = 0;
                Reflected = false;
                switch (itype) {
                case kST:
                    JDistribution = "ST";
                    break;
                case kNormal:
                    JDistribution = "Normal";
                    break;
                case kSL:
                    JDistribution = "SL";
                    break;
                case kSU:
                    JDistribution = "SU";
                    break;
                case kSB:
                    JDistribution = "SB";
                    break;
                default:
                    break; // kept as it was
                }
            }
            // Fault 3 (a replaced SB fit) leaves the curve as it was; jnsn never
            // returns it, the branch stays for the message.
            CalcError = FitMessage(fault);
            return;
        }
        // Exactly one end point, or one that is not a number: nothing happens.
        if (!xLower || !xUpper || !std::isfinite(*xLower) || !std::isfinite(*xUpper)) return;

        double params[3] = {0, 0, 0};
        bool reflected = false;
        int16_t fault = 0;
        FitSB3(3, *xLower, *xUpper, mean, stDev, skewness, 1e-20, params, reflected, fault);
        if (fault != 0) {
            Delta = Gamma = Alpha = Lamda = Xi = 0;
            JDistribution = "Error";
            Reflected = false;
        } else {
            Delta = params[0];
            Gamma = params[1];
            Alpha = params[2];
            Lamda = ck(*xUpper - *xLower);
            Xi = *xLower;
            JDistribution = "SB3";
            Reflected = reflected;
        }
        CalcError = FixedEndpointMessage(fault);
    });
}

const char* JohnsonDist::FitMessage(int16_t fault) {
    const char* text = "";
    support::Trap(kFitMessage, [&] {
        switch (fault) {
        case 0:
            text = "Success";
            break;
        case 1:
            text = "Error: standard deviation less than zero.";
            break;
        case 2:
            text = "Error: Kurtosis < SQRT(Skewness) + 1";
            break;
        case 3:
            text = "Warning: SB Fit has failed to converge, so a SL or ST fita has been made "
                   "intead.  Check that the SL or ST fit is adequate.";
            break;
        default:
            break;
        }
    });
    return text;
}

const char* JohnsonDist::FixedEndpointMessage(int16_t fault) {
    const char* text = "";
    support::Trap(kFixedEndpointMessage, [&] {
        switch (fault) {
        case 0:
            text = "Success";
            break;
        case 1:
            text = "Error: Input error in Xlower or XUpper or number of moments.";
            break;
        case 2:
            text = "Error: Input error in moments.";
            break;
        case 3:
            text = "Error: Parameter values out of bounds during the iteration process.";
            break;
        case 4:
            text = "Error: breakdown of Newton-Rhapson process.";
            break;
        case 5:
            text = "Error: indicates a failure to converge in 1000 iterations.";
            break;
        default:
            break;
        }
    });
    return text;
}

double JohnsonDist::JohnsontoNormal(double data, double delta, double gamma, double lamda,
                                    double xi, int jDist) {
    double result = 0;
    support::Trap(kJohnsontoNormal, [&] {
        if (jDist >= kSL && jDist <= kST) {
            result = SNV(data, jDist, gamma, delta, lamda, xi);
        } else if (jDist == kSB3 || jDist == kSB3Mirrored) {
            int16_t fault = 0;
            result = Johnson5ToNormal(data, delta, gamma, lamda, xi, Alpha, Reflected, fault);
        }
    });
    return result;
}

double JohnsonDist::NormaltoJohnson(double data, double delta, double gamma, double lamda,
                                    double xi, int jDist) {
    double result = 0;
    support::Trap(kNormaltoJohnson, [&] { result = AJV(data, jDist, gamma, delta, lamda, xi); });
    return result;
}

void JohnsonDist::CalculateFromData(const std::vector<double>& data, bool fixedEndpoints) {
    support::Trap(kCalculateFromData, [&] {
        double ave = 0, sdev = 0, skew = 0, curt = 0;
        bool fault = true;
        MOMENT(data, ave, sdev, skew, curt, fault);
        if (fault) return;
        Mean = ave;
        StDev = sdev;
        Skewness = skew;
        Kurtosis = curt;
        if (!fixedEndpoints) {
            Calculate(Mean, StDev, Skewness, Kurtosis);
        } else {
            const double xLower = MinofArray(data);
            const double xUpper = MaxofArray(data);
            Calculate(Mean, StDev, Skewness, Kurtosis, &xLower, &xUpper);
        }
    });
}

// ---------------------------------------------------------------------------
// AS 99: fitting by moments
// ---------------------------------------------------------------------------

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

// ---------------------------------------------------------------------------
// AS 100 and AS 111: transforms and normal quantiles
// ---------------------------------------------------------------------------

double JohnsonDist::SNV(double x, int itype, double gamma, double delta, double xlam, double xi) {
    double result = 0;
    support::Trap(kSNV, [&] {
        RequireFinite({x, gamma, delta, xlam, xi});
        // Outside the support SL and SB give 0 and no fault; callers rely on it.
        const double d = x - xi;
        double w;
        switch (itype) {
        case kSL:
            // xlam is the +-1 of the SL fit, so this covers both orientations.
            w = ck(d * xlam);
            if (w <= 0) return;
            result = ck((std::log(w) * delta + gamma) * xlam);
            break;
        case kSU:
            w = ck(d / xlam);
            // Far in the left tail w + sqrt(w^2 + 1) cancels; -0.5/w is its limit.
            if (w <= -63)
                w = -0.5 / w;
            else
                w = ck(std::sqrt(w * w + 1) + w);
            result = ck(std::log(w) * delta + gamma);
            break;
        case kSB: {
            w = ck(d);
            const double v = ck(xlam - w);
            if (w <= 0 || v <= 0) return;
            result = ck(std::log(w / v) * delta + gamma);
            break;
        }
        case kNormal:
            result = ck(x * delta + gamma);
            break;
        default:
            break;
        }
    });
    return result;
}

double JohnsonDist::AJV(double z, int itype, double gamma, double delta, double xlam, double xi) {
    double result = 0;
    support::Trap(kAJV, [&] {
        if (itype < kSL || itype > kNormal) return;
        RequireFinite({z, gamma, delta, xlam, xi});
        const double w = ck((z - gamma) / delta);
        double v;
        switch (itype) {
        case kSL:
            result = ck(xlam * std::exp(w) + xi);
            break;
        case kSU:
            v = ck(std::exp(w));
            result = ck(xlam * 0.5 * (v - 1 / v) + xi);
            break;
        case kSB:
            v = std::exp(-std::fabs(w));
            v = (1 - v) / (1 + v);
            result = ck(0.5 * xlam * (sign(v, w) + 1) + xi);
            break;
        case kNormal:
            result = w;
            break;
        default:
            break;
        }
    });
    return result;
}

double JohnsonDist::Johnson5ToNormal(double x, double delta, double gamma, double xlam, double xi,
                                     double alpha, bool mirrored, int16_t& fault) {
    double result = 0;
    support::Trap(kJohnson5ToNormal, [&] {
        fault = 0;
        RequireFinite({x, delta, gamma, xlam, xi, alpha});
        if (delta != 0 && xlam != 0) {
            double u = ck((x - xi) / xlam);
            if (mirrored) u = 1 - u;
            const double p = ck(std::pow(u, 1 / alpha));
            result = ck(std::log(p / (1 - p)) * delta + gamma);
        } else {
            fault = 1;
        }
    });
    return result;
}

double JohnsonDist::PPND(double p, int16_t& ifault) {
    double result = 0;
    support::Trap(kPPND, [&] {
        constexpr double split = 0.42;
        constexpr double a0 = 2.50662823884, a1 = -18.61500062529, a2 = 41.39119773534,
                         a3 = -25.44106049637;
        constexpr double b1 = -8.47351093090, b2 = 23.08336743743, b3 = -21.06224101826,
                         b4 = 3.13082909833;
        constexpr double c0 = -2.78718931138, c1 = -2.29796479134, c2 = 4.85014127135,
                         c3 = 2.32121276858;
        constexpr double d1 = 3.54388924762, d2 = 1.63706781897;

        ifault = 0;
        const double q = p - 0.5;
        if (std::fabs(q) <= split) {
            const double r = q * q;
            result = ck(q * (((a3 * r + a2) * r + a1) * r + a0) /
                        ((((b4 * r + b3) * r + b2) * r + b1) * r + 1));
            return;
        }
        double r = p;
        if (q > 0) r = 1 - p;
        if (r <= 0) {
            ifault = 1;
            return;
        }
        r = ck(std::sqrt(-std::log(r)));
        double z = ck((((c3 * r + c2) * r + c1) * r + c0) / ((d2 * r + d1) * r + 1));
        if (q < 0) z = -z;
        result = z;
    });
    return result;
}

double JohnsonDist::sign(double a, double b) {
    double result = 0;
    support::Trap(kSign, [&] { result = b >= 0 ? std::fabs(a) : -std::fabs(a); });
    return result;
}

// ---------------------------------------------------------------------------
// Sample moments
// ---------------------------------------------------------------------------

void JohnsonDist::MOMENT(const std::vector<double>& data, double& ave, double& sdev, double& skew,
                         double& curt, bool& fault) {
    support::Trap(kMOMENT, [&] {
        fault = true;
        const std::size_t n = data.size();
        if (n < 2) return;
        double sum = 0;
        for (double x : data)
            sum += x;
        const double mean = ck(sum / n);
        // Second pass about the mean; ep corrects the round-off in the mean.
        double ep = 0, s2 = 0, s3 = 0, s4 = 0;
        for (double x : data) {
            const double d = x - mean;
            const double d2 = d * d;
            ep += d;
            s2 += d2;
            s3 += d2 * d;
            s4 += d2 * d2;
        }
        ck(s4);
        const double ss = ck(s2 - ep * ep / n);
        if (!(ss > 0)) return; // no spread
        // Standard deviation with the divisor n - 1 (the sample estimate); skewness
        // and kurtosis from the central moments with divisor n, so that a sample's
        // own shape always satisfies beta2 >= beta1 + 1.
        const double m2 = ss / n;
        ave = mean;
        sdev = ck(std::sqrt(ss / (n - 1)));
        skew = ck((s3 / n) / (m2 * std::sqrt(m2)));
        curt = ck((s4 / n) / (m2 * m2));
        fault = false;
    });
}

double JohnsonDist::MinofArray(const std::vector<double>& data) {
    double result = 0;
    support::Trap(kMinofArray, [&] {
        if (!data.empty()) result = ck(*std::min_element(data.begin(), data.end()));
    });
    return result;
}

double JohnsonDist::MaxofArray(const std::vector<double>& data) {
    double result = 0;
    support::Trap(kMaxofArray, [&] {
        if (!data.empty()) result = ck(*std::max_element(data.begin(), data.end()));
    });
    return result;
}

// ---------------------------------------------------------------------------
// The fixed-end-point SB fit
// ---------------------------------------------------------------------------
//
// With xi and lamda fixed by the end points, V = (X - xi) / lamda (or 1 - that
// when mirrored) is p^alpha with p = 1 / (1 + exp(-(Z - gamma) / delta)). Its
// moments are integrals over the standard normal Z, taken by the trapezoid rule
// on a fine grid: the integrands are analytic in a strip of half-width
// pi * delta about the real axis, so a step of delta / 2 (at most 0.5) puts the
// error near round-off.
//
// The fit runs in three stages, every Newton step counted against the limit:
//   1. for a given alpha, delta and gamma that give the mean and sd (Newton on two
//      equations);
//   2. alpha, on a log scale, that gives the skewness too: stepping out from
//      alpha = 1 until the skewness error changes sign, then bisecting, with
//      stage 1 re-solved at each alpha;
//   3. Newton on all three equations until the squared error is within the
//      tolerance.

namespace {

struct Sb3Shape {
    double Mean = 0, Sd = 0, Skew = 0;
    // Derivatives with respect to delta, gamma, alpha (filled when asked for).
    double DMean[3] = {0, 0, 0}, DSd[3] = {0, 0, 0}, DSkew[3] = {0, 0, 0};
};

// Shape of V; false when V is too narrow or too close to an end to measure in
// double precision (or to lie within the grid).
bool Sb3Evaluate(double delta, double gamma, double alpha, bool derivatives, Sb3Shape& out) {
    constexpr double kZMax = 10; // the normal tail beyond carries < 1e-23
    // A large alpha makes V = exp(alpha ln p) vary faster off the real axis,
    // which narrows the strip; the step shrinks with ln alpha to keep ~1e-14.
    const double h = std::min(0.5, 0.25 * delta) / std::max(1.0, std::log(alpha) / 1.5);
    const int n = static_cast<int>(std::ceil(kZMax / h));
    const double c = h / std::sqrt(2 * 3.14159265358979323846);
    // Per-node values, kept for the second pass.
    thread_local std::vector<double> wt, val, dv0, dv1, dv2;
    const std::size_t count = 2 * static_cast<std::size_t>(n) + 1;
    wt.resize(count);
    val.resize(count);
    if (derivatives) {
        dv0.resize(count);
        dv1.resize(count);
        dv2.resize(count);
    }
    double m1 = 0, dm1[3] = {0, 0, 0};
    for (std::size_t j = 0; j < count; ++j) {
        const double z = (static_cast<double>(j) - n) * h;
        const double weight = c * std::exp(-0.5 * z * z);
        const double t = (z - gamma) / delta;
        // ln p and q = 1 - p without overflow on either side.
        double lnp, q;
        if (t >= 0) {
            const double e = std::exp(-t);
            lnp = -std::log1p(e);
            q = e / (1 + e);
        } else {
            const double e = std::exp(t);
            lnp = t - std::log1p(e);
            q = 1 / (1 + e);
        }
        const double v = std::exp(alpha * lnp);
        wt[j] = weight;
        val[j] = v;
        m1 += weight * v;
        if (derivatives) {
            const double k = v * alpha * q / delta; // -dV/dgamma
            dv0[j] = -k * t;                        // dV/ddelta
            dv1[j] = -k;                            // dV/dgamma
            dv2[j] = v * lnp;                       // dV/dalpha
            dm1[0] += weight * dv0[j];
            dm1[1] += weight * dv1[j];
            dm1[2] += weight * dv2[j];
        }
    }
    double c1 = 0, c2 = 0, c3 = 0;
    double dc2[3] = {0, 0, 0}, dc3[3] = {0, 0, 0};
    for (std::size_t j = 0; j < count; ++j) {
        const double e = val[j] - m1;
        const double we = wt[j] * e;
        c1 += we;
        c2 += we * e;
        c3 += we * e * e;
        if (derivatives) {
            const double dvs[3] = {dv0[j], dv1[j], dv2[j]};
            for (int i = 0; i < 3; ++i) {
                dc2[i] += 2 * we * dvs[i];
                dc3[i] += 3 * we * e * dvs[i];
            }
        }
    }
    // A mean this close to an end puts V's mass in the normal tail beyond the
    // grid; a variance this small leaves no digits for the skewness.
    if (!(m1 > 1e-10 && m1 < 1 - 1e-10) || !(c2 > 1e-24)) return false;
    const double sd = std::sqrt(c2);
    const double c2_15 = c2 * sd;
    out.Mean = m1;
    out.Sd = sd;
    out.Skew = c3 / c2_15;
    if (derivatives) {
        for (int i = 0; i < 3; ++i) {
            // d/dtheta of the central sums, with the mean moving too.
            const double d2 = dc2[i] - 2 * c1 * dm1[i];
            const double d3 = dc3[i] - 3 * c2 * dm1[i];
            out.DMean[i] = dm1[i];
            out.DSd[i] = d2 / (2 * sd);
            out.DSkew[i] = (d3 - 1.5 * c3 * d2 / c2) / c2_15;
        }
    }
    return true;
}

// Bounds of the fixed-end-point fit's parameters: beyond them the curve is too
// narrow for the quadrature, or flat to the last digit.
constexpr double kMinDelta = 0.02, kMaxDelta = 1e6;
constexpr double kMinAlpha = 1.0 / 256, kMaxAlpha = 256;
constexpr double kMaxGamma = 1e6;
constexpr int kMaxNewton = 1000;

bool InBounds(const double (&p)[3]) {
    return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]) && p[0] >= kMinDelta &&
           p[0] <= kMaxDelta && std::fabs(p[1]) <= kMaxGamma && p[2] >= kMinAlpha &&
           p[2] <= kMaxAlpha;
}

// Solves the leading n x n block of J x = f by elimination with partial
// pivoting; false when singular.
bool SolveLinear(int n, double (&j)[3][3], double (&f)[3], double (&x)[3]) {
    int row[3] = {0, 1, 2};
    for (int col = 0; col < n; ++col) {
        int best = col;
        for (int r = col + 1; r < n; ++r)
            if (std::fabs(j[row[r]][col]) > std::fabs(j[row[best]][col])) best = r;
        std::swap(row[col], row[best]);
        const double pivot = j[row[col]][col];
        if (!(std::fabs(pivot) > 1e-300)) return false;
        for (int r = col + 1; r < n; ++r) {
            const double m = j[row[r]][col] / pivot;
            for (int k = col; k < n; ++k)
                j[row[r]][k] -= m * j[row[col]][k];
            f[row[r]] -= m * f[row[col]];
        }
    }
    for (int col = n - 1; col >= 0; --col) {
        double s = f[row[col]];
        for (int k = col + 1; k < n; ++k)
            s -= j[row[col]][k] * x[k];
        x[col] = s / j[row[col]][col];
        if (!std::isfinite(x[col])) return false;
    }
    return true;
}

// One orientation's fit: the wanted mean, sd and skewness of V, and the Newton
// steps spent so far.
class Sb3Fit {
  public:
    Sb3Fit(double mean, double sd, double skew, double tol)
        : mean_(mean), sd_(sd), skew_(skew), tol_(tol) {}

    // Returns the fault code; p holds delta, gamma, alpha on success.
    int16_t Run(double (&p)[3]) {
        Start(1, p);
        if (!MatchMeanSd(p)) return fault_;
        double e0;
        if (!SkewError(p, e0)) return fault_;
        if (std::fabs(e0) > 1e-7 && !FindAlpha(p, e0)) return fault_;
        return Newton(3, tol_, p) ? 0 : fault_;
    }

  private:
    // Residuals in units that make one tolerance fit all three: mean and sd errors
    // relative to the wanted sd, the skewness error as it is.
    bool Residuals(const double (&p)[3], bool derivatives, double (&f)[3],
                   double (&jac)[3][3]) const {
        Sb3Shape s;
        if (!Sb3Evaluate(p[0], p[1], p[2], derivatives, s)) return false;
        f[0] = (s.Mean - mean_) / sd_;
        f[1] = (s.Sd - sd_) / sd_;
        f[2] = s.Skew - skew_;
        for (int i = 0; derivatives && i < 3; ++i) {
            jac[0][i] = s.DMean[i] / sd_;
            jac[1][i] = s.DSd[i] / sd_;
            jac[2][i] = s.DSkew[i];
        }
        return std::isfinite(f[0]) && std::isfinite(f[1]) && std::isfinite(f[2]);
    }

    // Starting delta and gamma for this alpha: the median of V at the wanted
    // mean, and the delta-method spread there at the wanted sd.
    void Start(double alpha, double (&p)[3]) const {
        const double pm = std::clamp(std::pow(mean_, 1 / alpha), 1e-300, 1 - 0x1p-53);
        p[0] = std::clamp(alpha * mean_ * (1 - pm) / sd_, 2 * kMinDelta, kMaxDelta / 2);
        p[1] = -p[0] * std::log(pm / (1 - pm));
        p[2] = alpha;
        if (!InBounds(p)) p[1] = std::clamp(p[1], -kMaxGamma / 2, kMaxGamma / 2);
    }

    // Damped Newton on the first n equations in the first n parameters.
    bool Newton(int n, double tol, double (&p)[3]) {
        double f[3], jac[3][3];
        if (!Residuals(p, true, f, jac)) return Fail(3);
        double ss = 0;
        for (int i = 0; i < n; ++i)
            ss += f[i] * f[i];
        while (ss > tol) {
            if (++steps_ > kMaxNewton) return Fail(5);
            double step[3] = {0, 0, 0};
            double rhs[3] = {f[0], f[1], f[2]};
            if (!SolveLinear(n, jac, rhs, step)) return Fail(4);
            // Halve the step until it stays in bounds and lowers the error.
            bool accepted = false, outOfBounds = false;
            double scale = 1;
            for (int half = 0; half < 40 && !accepted; ++half, scale *= 0.5) {
                double trial[3] = {p[0], p[1], p[2]};
                for (int i = 0; i < n; ++i)
                    trial[i] -= scale * step[i];
                double ft[3], jt[3][3];
                outOfBounds = !InBounds(trial) || !Residuals(trial, true, ft, jt);
                if (outOfBounds) continue;
                double sst = 0;
                for (int i = 0; i < n; ++i)
                    sst += ft[i] * ft[i];
                if (sst < ss) {
                    accepted = true;
                    std::copy(trial, trial + 3, p);
                    std::copy(ft, ft + 3, f);
                    std::copy(&jt[0][0], &jt[0][0] + 9, &jac[0][0]);
                    ss = sst;
                }
            }
            if (!accepted) return Fail(outOfBounds ? 3 : 4);
        }
        return true;
    }

    // Stage 1 at the alpha in p[2], from the delta and gamma in p.
    bool MatchMeanSd(double (&p)[3]) { return Newton(2, 1e-22, p); }

    bool SkewError(const double (&p)[3], double& e) {
        Sb3Shape s;
        if (!Sb3Evaluate(p[0], p[1], p[2], false, s)) return Fail(3);
        e = s.Skew - skew_;
        return true;
    }

    // Stage 2: steps of sqrt(2) in alpha either way from 1 until the skewness
    // error changes sign, then bisection on log alpha.
    bool FindAlpha(double (&p)[3], double e0) {
        const double kStep = 0.5 * std::log(2.0);
        double lo = 0, hi = 0, plo[3], phi[3], elo = e0;
        bool found = false;
        for (int dir : {1, -1}) {
            double at = 0, e = e0, q[3] = {p[0], p[1], p[2]};
            for (int k = 1; k <= 16; ++k) {
                double next[3] = {q[0], q[1], std::exp(at + dir * kStep)};
                double en;
                if (!MatchMeanSd(next) || !SkewError(next, en)) {
                    // Try from a fresh start before giving this side up.
                    if (fault_ == 5) return false;
                    Start(std::exp(at + dir * kStep), next);
                    if (!MatchMeanSd(next) || !SkewError(next, en)) break;
                }
                if ((en > 0) != (e > 0)) {
                    lo = at;
                    hi = at + dir * kStep;
                    std::copy(q, q + 3, plo);
                    std::copy(next, next + 3, phi);
                    elo = e;
                    found = true;
                    break;
                }
                at += dir * kStep;
                e = en;
                std::copy(next, next + 3, q);
            }
            if (found) break;
        }
        if (!found) {
            if (fault_ == 5) return false;
            return Fail(3); // the skewness is out of reach within the bounds on alpha
        }
        fault_ = 0;
        for (int it = 0; it < 60; ++it) {
            const double mid = 0.5 * (lo + hi);
            double q[3] = {plo[0], plo[1], std::exp(mid)};
            double e;
            if (!MatchMeanSd(q) || !SkewError(q, e)) return false;
            std::copy(q, q + 3, p);
            if (std::fabs(e) <= 1e-7) break;
            if ((e > 0) == (elo > 0)) {
                lo = mid;
                elo = e;
                std::copy(q, q + 3, plo);
            } else {
                hi = mid;
                std::copy(q, q + 3, phi);
            }
        }
        return true;
    }

    bool Fail(int16_t code) {
        fault_ = code;
        return false;
    }

    double mean_, sd_, skew_, tol_;
    int steps_ = 0;
    int16_t fault_ = 0;
};

} // namespace

void JohnsonDist::SB3Moments(double delta, double gamma, double alpha, double& mean, double& sd,
                             double& skew) {
    support::Trap(kSB3Moments, [&] {
        const double p[3] = {delta, gamma, alpha};
        if (!InBounds(p)) return;
        Sb3Shape s;
        if (!Sb3Evaluate(delta, gamma, alpha, false, s)) return;
        mean = s.Mean;
        sd = s.Sd;
        skew = s.Skew;
    });
}

void JohnsonDist::FitSB3(int nmom, double xLower, double xUpper, double mean, double sd,
                         double skew, double tol, double (&params)[3], bool& reflected,
                         int16_t& fault) {
    support::Trap(kFitSB3, [&] {
        fault = 1;
        params[0] = params[1] = params[2] = 0;
        reflected = false;
        if (nmom != 3 || !std::isfinite(xLower) || !std::isfinite(xUpper) || !(xUpper > xLower) ||
            !(tol > 0))
            return;
        const double range = ck(xUpper - xLower);
        fault = 2;
        if (!std::isfinite(mean) || !std::isfinite(sd) || !std::isfinite(skew) || !(sd > 0)) return;
        const double m = ck((mean - xLower) / range);
        const double s = ck(sd / range);
        // A variable on (0, 1) with mean m has a variance below m (1 - m).
        if (!(m > 0 && m < 1) || !(s * s < m * (1 - m))) return;

        // From here a run-time error is a breakdown of the iteration.
        fault = 4;
        // The orientation in which the skewness is not negative first; if that
        // fails, the other one.
        int16_t firstFault = 0;
        for (int attempt = 0; attempt < 2; ++attempt) {
            const bool mirror = (skew < 0) != (attempt == 1);
            double p[3] = {0, 0, 0};
            Sb3Fit fit(mirror ? 1 - m : m, s, mirror ? -skew : skew, tol);
            const int16_t code = fit.Run(p);
            support::CheckFp();
            if (code == 0) {
                params[0] = p[0];
                params[1] = p[1];
                params[2] = p[2];
                reflected = mirror;
                fault = 0;
                return;
            }
            if (attempt == 0) firstFault = code;
        }
        fault = firstFault;
    });
}
