// The Johnson curve object, the AS 100 transforms, AS 111 and the fixed-end-point
// SB fit (the fit by moments: JohnsonDistFit.h lists its files).
//
// Sources: Hill (1976), AS 100 "Normal-Johnson and Johnson-normal
// transformations" (AJV, SNV); Beasley & Springer (1977), AS 111 "The percentage
// points of the normal distribution" (PPND), constants digit for digit.
#include "johnson/JohnsonDist.h"

#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

using m_NumRecipes::kernel::RequireFinite;
using support::ck;

// ---------------------------------------------------------------------------
// The object
// ---------------------------------------------------------------------------

void JohnsonDist::Calculate(double mean, double stDev, double skewness, double kurtosis) {
    Calculate(mean, stDev, skewness, kurtosis, nullptr, nullptr);
}

void JohnsonDist::Calculate(double mean, double stDev, double skewness, double kurtosis,
                            const double* xLower, const double* xUpper) {
    support::Trap({kModule, __func__}, [&] {
        if (!xLower && !xUpper) {
            int itype = 0;
            double gamma = 0, delta = 0, xlam = 0, xi = 0;
            int16_t fault = 0;
            jnsn(mean, stDev, skewness, kurtosis, itype, gamma, delta, xlam, xi, fault);
            if (fault == 1 || fault == 2 || fault == kNoCurve) {
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
                    break; // Kept: any other code leaves the type as it was
                }
            }
            // Kept: fault 3 (a replaced SB fit) leaves the curve as it was; jnsn
            // never returns it, the branch stays for the message.
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

// Kept: the status texts word for word, "fita", "intead", the double blank and
// "Newton-Rhapson" included.
const char* JohnsonDist::FitMessage(int16_t fault) {
    return support::TrapValue({kModule, __func__}, "", [&]() -> const char* {
        switch (fault) {
        case 0:
            return "Success";
        case 1:
            return "Error: standard deviation less than zero.";
        case 2:
            return "Error: Kurtosis < SQRT(Skewness) + 1";
        case 3:
            return "Warning: SB Fit has failed to converge, so a SL or ST fita has been made "
                   "intead.  Check that the SL or ST fit is adequate.";
        case kNoCurve:
            return "Error: the fit failed; no curve was found for these moments.";
        default:
            return "";
        }
    });
}

const char* JohnsonDist::FixedEndpointMessage(int16_t fault) {
    return support::TrapValue({kModule, __func__}, "", [&]() -> const char* {
        switch (fault) {
        case 0:
            return "Success";
        case 1:
            return "Error: Input error in Xlower or XUpper or number of moments.";
        case 2:
            return "Error: Input error in moments.";
        case 3:
            return "Error: Parameter values out of bounds during the iteration process.";
        case 4:
            return "Error: breakdown of Newton-Rhapson process.";
        case 5:
            return "Error: indicates a failure to converge in 1000 iterations.";
        default:
            return "";
        }
    });
}

double JohnsonDist::JohnsontoNormal(double data, double delta, double gamma, double lamda,
                                    double xi, int jDist) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        if (jDist >= kSL && jDist <= kST) return SNV(data, jDist, gamma, delta, lamda, xi);
        if (jDist == kSB3 || jDist == kSB3Mirrored) {
            int16_t fault = 0;
            return Johnson5ToNormal(data, delta, gamma, lamda, xi, Alpha, Reflected, fault);
        }
        return 0.0;
    });
}

double JohnsonDist::NormaltoJohnson(double data, double delta, double gamma, double lamda,
                                    double xi, int jDist) {
    return support::TrapValue({kModule, __func__}, 0.0,
                              [&] { return AJV(data, jDist, gamma, delta, lamda, xi); });
}

void JohnsonDist::CalculateFromData(const std::vector<double>& data, bool fixedEndpoints) {
    support::Trap({kModule, __func__}, [&] {
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
// AS 100 and AS 111: transforms and normal quantiles
// ---------------------------------------------------------------------------

double JohnsonDist::SNV(double x, int itype, double gamma, double delta, double xlam, double xi) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        RequireFinite({x, gamma, delta, xlam, xi});
        // Outside the support SL and SB give 0 and no fault; callers rely on it.
        const double d = x - xi;
        double w;
        switch (itype) {
        case kSL:
            // xlam is the +-1 of the SL fit, so this covers both orientations.
            w = ck(d * xlam);
            if (w <= 0) return 0.0;
            return ck((std::log(w) * delta + gamma) * xlam);
        case kSU:
            w = ck(d / xlam);
            // Far in the left tail w + sqrt(w^2 + 1) cancels; -0.5/w is its limit.
            if (w <= -63)
                w = -0.5 / w;
            else
                w = ck(std::sqrt(w * w + 1) + w);
            return ck(std::log(w) * delta + gamma);
        case kSB: {
            w = ck(d);
            const double v = ck(xlam - w);
            if (w <= 0 || v <= 0) return 0.0;
            return ck(std::log(w / v) * delta + gamma);
        }
        case kNormal:
            return ck(x * delta + gamma);
        default:
            return 0.0;
        }
    });
}

double JohnsonDist::AJV(double z, int itype, double gamma, double delta, double xlam, double xi) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        if (itype < kSL || itype > kNormal) return 0.0;
        RequireFinite({z, gamma, delta, xlam, xi});
        const double w = ck((z - gamma) / delta);
        double v;
        switch (itype) {
        case kSL:
            return ck(xlam * std::exp(w) + xi);
        case kSU:
            v = ck(std::exp(w));
            return ck(xlam * 0.5 * (v - 1 / v) + xi);
        case kSB:
            v = std::exp(-std::fabs(w));
            v = (1 - v) / (1 + v);
            return ck(0.5 * xlam * (sign(v, w) + 1) + xi);
        case kNormal:
            return w;
        default:
            return 0.0;
        }
    });
}

double JohnsonDist::Johnson5ToNormal(double x, double delta, double gamma, double xlam, double xi,
                                     double alpha, bool mirrored, int16_t& fault) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        fault = 0;
        RequireFinite({x, delta, gamma, xlam, xi, alpha});
        if (delta == 0 || xlam == 0) {
            fault = 1;
            return 0.0;
        }
        double u = ck((x - xi) / xlam);
        if (mirrored) u = 1 - u;
        const double p = ck(std::pow(u, 1 / alpha));
        return ck(std::log(p / (1 - p)) * delta + gamma);
    });
}

double JohnsonDist::PPND(double p, int16_t& ifault) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
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
            return ck(q * (((a3 * r + a2) * r + a1) * r + a0) /
                      ((((b4 * r + b3) * r + b2) * r + b1) * r + 1));
        }
        double r = p;
        if (q > 0) r = 1 - p;
        if (r <= 0) {
            ifault = 1;
            return 0.0;
        }
        r = ck(std::sqrt(-std::log(r)));
        double z = ck((((c3 * r + c2) * r + c1) * r + c0) / ((d2 * r + d1) * r + 1));
        if (q < 0) z = -z;
        return z;
    });
}

double JohnsonDist::sign(double a, double b) {
    return support::TrapValue({kModule, __func__}, 0.0,
                              [&] { return b >= 0 ? std::fabs(a) : -std::fabs(a); });
}

// ---------------------------------------------------------------------------
// Sample moments
// ---------------------------------------------------------------------------

void JohnsonDist::MOMENT(const std::vector<double>& data, double& ave, double& sdev, double& skew,
                         double& curt, bool& fault) {
    support::Trap({kModule, __func__}, [&] {
        fault = true;
        const std::size_t n = data.size();
        if (n < 2) return;
        // Sums with Neumaier's compensation: the rounding of each addition is
        // carried along, so a million values lose no more than a few.
        struct Sum {
            double S = 0, C = 0;
            void Add(double x) {
                const double t = S + x;
                C += std::fabs(S) >= std::fabs(x) ? (S - t) + x : (x - t) + S;
                S = t;
            }
            double Value() const { return S + C; }
        };
        // The central moments are taken about an accurate mean, on deviations
        // scaled by a power of two near the largest: a shifted sample keeps its
        // shape however far it sits from zero, and the fourth powers of a tiny
        // spread neither underflow nor those of a huge one overflow.
        double largest = 0;
        for (double x : data)
            largest = std::max(largest, std::fabs(x));
        if (!std::isfinite(largest)) return;
        // Room for the sum of n values: scale by 2^-k when the largest is near the top.
        const int k = largest > 0 ? std::max(0, std::ilogb(largest) + 64 - 1000) : 0;
        Sum total;
        for (double x : data)
            total.Add(std::ldexp(x, -k));
        const double first = std::ldexp(total.Value() / static_cast<double>(n), k);
        Sum shift;
        double spread = 0;
        for (double x : data) {
            shift.Add(x - first);
            spread = std::max(spread, std::fabs(x - first));
        }
        const double correction = shift.Value() / static_cast<double>(n);
        spread += std::fabs(correction);
        if (!(spread > 0) || !std::isfinite(spread)) return; // no spread
        const int e = std::ilogb(spread);
        Sum s2, s3, s4;
        for (double x : data) {
            const double u = std::ldexp((x - first) - correction, -e);
            const double u2 = u * u;
            s2.Add(u2);
            s3.Add(u2 * u);
            s4.Add(u2 * u2);
        }
        const double ss = s2.Value();
        if (!(ss > 0)) return;
        // Standard deviation with the divisor n - 1 (the sample estimate); skewness
        // and kurtosis from the central moments with divisor n, so that a sample's
        // own shape always satisfies beta2 >= beta1 + 1.
        const double m2 = ss / static_cast<double>(n);
        ave = ck(first + correction);
        sdev = ck(std::ldexp(std::sqrt(ss / static_cast<double>(n - 1)), e));
        skew = ck((s3.Value() / static_cast<double>(n)) / (m2 * std::sqrt(m2)));
        curt = ck((s4.Value() / static_cast<double>(n)) / (m2 * m2));
        fault = false;
    });
}

double JohnsonDist::MinofArray(const std::vector<double>& data) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        return data.empty() ? 0.0 : ck(*std::min_element(data.begin(), data.end()));
    });
}

double JohnsonDist::MaxofArray(const std::vector<double>& data) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        return data.empty() ? 0.0 : ck(*std::max_element(data.begin(), data.end()));
    });
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
    support::Trap({kModule, __func__}, [&] {
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
    support::Trap({kModule, __func__}, [&] {
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
