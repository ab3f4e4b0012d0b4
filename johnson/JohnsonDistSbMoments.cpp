// The moments of the standard SB variable beyond AS 99's MOM: three rules
// exact to about 1e-13 for any delta > 0 (adaptive Gauss-Kronrod, a fixed rule
// for a narrow step, fixed Gauss-Legendre panels for a wide one), MOMExact
// picking among them, and SbMoments, the policy that decides when sbfit takes
// MOM's series and when the exact moments.
//
// Each moment is E[Y^k], Y = 1 / (1 + exp(-(Z - g) / d)), the integral of
// phi(z) Y(z)^k over z.
#include "johnson/JohnsonDist.h"
#include "johnson/JohnsonDistFit.h"

#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <vector>

using m_NumRecipes::kernel::kInvSqrt2Pi;
using support::ck;

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

namespace {

// The moments for a wide step (delta 1.2 to 3) by fixed Gauss-Legendre panels in z.
// The integrand is smooth on the scale of 1 there (the logistic's poles lie pi
// delta off the axis), and its mass lies within 9.5 of 0 and of min(g, 6 /
// delta) (see MOMQuadrature): 8 nodes a panel of width 1.25 hold each moment to
// 2e-13 (checked against a fine long-double sum), at half the cost of the
// adaptive panels.
bool WideStep(double g, double d, double (&a)[6]) {
    constexpr double kReach = 9.5, kWidth = 1.25;
    const double lo = std::min(0.0, g) - kReach, hi = std::max(0.0, std::min(g, 6 / d)) + kReach;
    const int panels = static_cast<int>(std::ceil((hi - lo) / kWidth));
    if (panels > 32) return false; // declined: far from the fit's ground
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
        if (fault) MOMQuadrature(g, d, a, fault); // where the wide panels decline
    } else {
        MOMQuadrature(g, d, a, fault);
    }
}

void JohnsonDist::SbMoments(double g, double d, double (&a)[6], bool& fault,
                            bool* seriesAbandoned) {
    // MOM first, so that every fit that converged with it alone stays the same.
    // Its series cannot finish in its 500 rounds below delta = 0.0915, nor start
    // with g / d above its guard, nor finish from g / d = 14 up for delta
    // between 0.16 and 3 (a scan of 280,000 such points found none). Once it has
    // failed in a fit, or could not have finished, AS 99's iteration alone would
    // have stopped there and no earlier result is at stake: the series is
    // abandoned for the rest of the fit, which takes the exact moments; they cost
    // less than one series pass and a fraction of a failing series (that halves
    // its step up to its cap: 60 to 90 us).
    using JohnsonDistFit::kMomExpGuard, JohnsonDistFit::kMomInvRootPi, JohnsonDistFit::kMomRootTwo;
    fault = true;
    const bool abandoned = seriesAbandoned && *seriesAbandoned;
    const bool cannotFinish =
        d < 0.085 || g / d > kMomExpGuard || (d >= 0.16 && d < 3 && g / d > 14);
    if (!abandoned && !cannotFinish) {
        if (g / d < 4) {
            MOM(g, d, a, fault);
            if (!fault) return;
        } else {
            // From g / d = 4 up rounding noise in the small high moments defeats
            // MOM's 1e-12 test. What it converges to where it finishes, its
            // printed constants included: its sum is 1 / sqrt(pi) (as printed)
            // times the integral of exp(-x^2) Y(sqrt(2) x / d - g / d) (sqrt(2)
            // as printed), that is sqrt(pi) / sqrt(pi) times the moments at
            // (g, d) / c with c = sqrt(2) / sqrt(2), each first one as printed.
            // So computed it agrees with MOM to 1e-11, without the noise, at a
            // third of the cost of summing the series with compensation.
            const double c = kMomRootTwo / std::numbers::sqrt2;
            const double kappa = kMomInvRootPi * std::sqrt(std::numbers::pi);
            MOMExact(g / c, d / c, a, fault);
            for (double& v : a)
                v *= kappa;
            return;
        }
    }
    if (seriesAbandoned) *seriesAbandoned = true;
    MOMExact(g, d, a, fault);
}
