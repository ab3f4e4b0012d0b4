// Probability paper: Benard's median ranks (Hazen and mean ranks as options),
// the normal paper for the normal-based rows and the smallest-extreme-value
// paper (ln x against ln(-ln(1 - p))) for the Weibull and exponential rows.
// The band is the delta method with the inverse observed information, the
// Hessian of the log-likelihood at the row's parameters by central differences
// (Meeker & Escobar, Statistical Methods for Reliability Data, 1998, ch. 8).
#include "stats/m_ProbabilityPlot.h"

#include "support/Format.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <boost/math/distributions/normal.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace m_ProbabilityPlot {

namespace {

using m_Curves::Curve;
using m_Curves::Kind;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Threshold(const Curve& c) {
    switch (c.K) {
    case Kind::LogNormal:
    case Kind::Weibull:
        return c.P[2];
    case Kind::Exponential:
        return c.P[1];
    default:
        return 0;
    }
}

// The open interval the curve gives density to.
std::pair<double, double> Support(const Curve& c) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    switch (c.K) {
    case Kind::LogNormal:
    case Kind::Weibull:
    case Kind::Exponential:
        return {Threshold(c), inf};
    case Kind::JohnsonSB:
        return {c.P[3], c.P[3] + c.P[2]};
    case Kind::JohnsonSL:
        return c.P[2] > 0 ? std::pair{c.P[3], inf} : std::pair{-inf, c.P[3]};
    default:
        return {-inf, inf};
    }
}

// The curve's standard variate (z, or the cumulative hazard t) at a height on its paper.
double StandardAt(const Curve& c, double v) {
    return m_Curves::NormalBased(c.K) ? v : std::exp(v);
}

double QuantileAt(const Curve& c, double v) {
    return m_Curves::FromStandard(c, StandardAt(c, v));
}

// du/dx of the value axis at x.
double AxisSlope(const Curve& c, double x) {
    const double* p = c.P;
    switch (c.K) {
    case Kind::Normal:
        return 1;
    case Kind::LogNormal:
    case Kind::Weibull:
    case Kind::Exponential:
        return 1 / (x - Threshold(c));
    case Kind::JohnsonSU: {
        const double y = (x - p[3]) / p[2];
        return p[0] / (p[2] * std::sqrt(1 + y * y));
    }
    case Kind::JohnsonSB:
        return p[0] * p[2] / ((x - p[3]) * (p[3] + p[2] - x));
    case Kind::JohnsonSL:
        return p[0] / std::fabs(x - p[3]);
    }
    return kNaN;
}

// The parameter slots a row estimates, with the step for differencing in each.
struct Free {
    int Slot;
    double Step;
};

bool ThresholdRow(int row) {
    return row == m_Fits::kLogNormal3P || row == m_Fits::kWeibull3P ||
           row == m_Fits::kExponential2P;
}

// Steps are a ten-thousandth of each slot's own size, and of the gap between a
// threshold and the smallest value: the likelihood is steep there.
std::vector<Free> FreeSlots(int row, const Curve& c, double lowest) {
    const double* p = c.P;
    const auto rel = [](double v, double ref) { return 1e-4 * std::max(std::fabs(v), ref); };
    std::vector<Free> f;
    switch (c.K) {
    case Kind::Normal:
    case Kind::LogNormal:
        f = {{0, rel(p[0], p[1])}, {1, rel(p[1], 0)}};
        break;
    case Kind::Exponential:
        f = {{0, rel(p[0], 0)}};
        break;
    case Kind::Weibull:
        f = {{0, rel(p[0], 0)}, {1, rel(p[1], 0)}};
        break;
    case Kind::JohnsonSB:
    case Kind::JohnsonSU:
    case Kind::JohnsonSL:
        // Neither Johnson row is a likelihood fit, and on a small sample the
        // curvature in all four slots says little about their spread: the band
        // is that of the normal the curve makes of the sample, with the bounds
        // (xi, lamda) held where the fit put them.
        f = {{0, rel(p[0], 0)}, {1, rel(p[1], 1)}};
        break;
    }
    if (ThresholdRow(row)) {
        const int slot = c.K == Kind::Exponential ? 1 : 2;
        f.push_back({slot, 1e-4 * (lowest - p[slot])});
    }
    return f;
}

// ln L over the sample, or over an even subsample of the order statistics
// (weighted up) when the sample is large: the information is a sum over the
// sample, and an even subsample of a sorted sample estimates it closely.
struct LogLik {
    const std::vector<double>& X;
    std::size_t Stride = 1;
    double Weight = 1;
    double operator()(const Curve& c) const {
        const m_Curves::Evaluator at(c);
        double sum = 0;
        for (std::size_t i = Stride / 2; i < X.size(); i += Stride) {
            const m_Curves::Point pt = at(X[i]);
            if (!pt.Inside) return -std::numeric_limits<double>::infinity();
            sum += pt.LogDensity;
        }
        return Weight * sum;
    }
};

// The inverse observed information over the free slots, or an empty matrix
// when the Hessian is not that of a maximum.
Eigen::MatrixXd InverseInformation(const Curve& c, const std::vector<Free>& free,
                                   const LogLik& ll) {
    const int k = static_cast<int>(free.size());
    const auto at = [&](int a, double da, int b, double db) {
        Curve d = c;
        d.P[free[a].Slot] += da * free[a].Step;
        if (b >= 0) d.P[free[b].Slot] += db * free[b].Step;
        return ll(d);
    };
    const double l0 = ll(c);
    Eigen::MatrixXd info(k, k);
    for (int a = 0; a < k; ++a) {
        const double ha = free[a].Step;
        info(a, a) = -(at(a, 1, -1, 0) - 2 * l0 + at(a, -1, -1, 0)) / (ha * ha);
        for (int b = 0; b < a; ++b) {
            const double hb = free[b].Step;
            info(a, b) = info(b, a) =
                -(at(a, 1, b, 1) - at(a, 1, b, -1) - at(a, -1, b, 1) + at(a, -1, b, -1)) /
                (4 * ha * hb);
        }
    }
    if (!info.allFinite()) return {};
    Eigen::LLT<Eigen::MatrixXd> llt(info);
    if (llt.info() != Eigen::Success) return {};
    return llt.solve(Eigen::MatrixXd::Identity(k, k));
}

void MakeBand(Plot& plot, const std::vector<double>& x, int row, const Curve& c, double level) {
    std::vector<Free> free = FreeSlots(row, c, x.front());
    // A step lost in the rounding of its slot differences nothing.
    for (const Free& f : free)
        if (!(f.Step > 1e-9 * std::fabs(c.P[f.Slot])) || !std::isfinite(f.Step)) return;
    constexpr std::size_t kInformationValues = 20000;
    LogLik ll{x};
    if (x.size() > kInformationValues) {
        ll.Stride = x.size() / kInformationValues;
        ll.Weight = static_cast<double>(x.size()) /
                    static_cast<double>((x.size() - ll.Stride / 2 + ll.Stride - 1) / ll.Stride);
    }
    Eigen::MatrixXd cov = InverseInformation(c, free, ll);
    // A threshold at the edge of regularity (a Weibull shape near 1) leaves no
    // maximum in all slots: the band then holds the threshold at its estimate.
    if (cov.size() == 0 && ThresholdRow(row)) {
        free.pop_back();
        cov = InverseInformation(c, free, ll);
    }
    if (cov.size() == 0) return;
    const double z = boost::math::quantile(boost::math::normal(), 0.5 + level / 2);
    constexpr int kHeights = 61;
    const int k = static_cast<int>(free.size());
    const bool threshold = ThresholdRow(row);
    const double offLeft = plot.ULow - (plot.UHigh - plot.ULow);
    Eigen::VectorXd g(k);
    for (int h = 0; h < kHeights; ++h) {
        const double v = plot.VLow + (plot.VHigh - plot.VLow) * h / (kHeights - 1);
        const double xp = QuantileAt(c, v);
        // The quantile moves with the parameters; the axis stays where it is drawn.
        for (int a = 0; a < k; ++a) {
            Curve up = c, down = c;
            up.P[free[a].Slot] += free[a].Step;
            down.P[free[a].Slot] -= free[a].Step;
            g(a) = (QuantileAt(up, v) - QuantileAt(down, v)) / (2 * free[a].Step);
        }
        if (threshold) {
            // Near an estimated threshold ln(x - threshold) magnifies the
            // threshold's own spread without bound: the band is taken on x and
            // its edges placed on the axis (a lower edge below the threshold
            // runs off the plot).
            const double half = z * std::sqrt(g.dot(cov * g));
            const double low = ToAxis(c, xp - half), high = ToAxis(c, xp + half);
            if (!std::isfinite(high)) continue;
            plot.BandV.push_back(v);
            plot.BandLow.push_back(std::isfinite(low) ? low : offLeft);
            plot.BandHigh.push_back(high);
            continue;
        }
        g *= AxisSlope(c, xp);
        const double u = ToAxis(c, xp);
        const double half = z * std::sqrt(g.dot(cov * g));
        if (!std::isfinite(u) || !std::isfinite(half)) continue;
        plot.BandV.push_back(v);
        plot.BandLow.push_back(u - half);
        plot.BandHigh.push_back(u + half);
    }
}

// The indices to draw: all of them, or those that move a point by a visible
// step along either axis (about MaxPoints / 2 steps each way), ends included.
std::vector<std::size_t> Thinned(const std::vector<double>& x, const Curve& c, Paper paper,
                                 const Options& o) {
    const std::size_t n = x.size();
    std::vector<std::size_t> keep;
    if (n <= o.MaxPoints) {
        keep.resize(n);
        for (std::size_t i = 0; i < n; ++i)
            keep[i] = i;
        return keep;
    }
    const std::size_t steps = std::max<std::size_t>(o.MaxPoints / 2, 2);
    const double v0 = ToPaper(paper, Position(1, n, o.Rule));
    const double v1 = ToPaper(paper, Position(n, n, o.Rule));
    // Position(i) = (i - a) / (n + b), so i = p (n + b) + a.
    const double a = o.Rule == Positions::Benard ? 0.3 : o.Rule == Positions::Hazen ? 0.5 : 0;
    const double b = o.Rule == Positions::Benard ? 0.4 : o.Rule == Positions::Hazen ? 0 : 1;
    const auto clampIndex = [&](double i) {
        return static_cast<std::size_t>(std::clamp(std::round(i), 1.0, static_cast<double>(n))) - 1;
    };
    keep.push_back(0);
    keep.push_back(n - 1);
    for (std::size_t s = 0; s <= steps; ++s) {
        const double v = v0 + (v1 - v0) * static_cast<double>(s) / static_cast<double>(steps);
        keep.push_back(clampIndex(FromPaper(paper, v) * (static_cast<double>(n) + b) + a));
    }
    const double u0 = ToAxis(c, x.front()), u1 = ToAxis(c, x.back());
    if (std::isfinite(u0) && std::isfinite(u1)) {
        for (std::size_t s = 0; s <= steps; ++s) {
            const double u = u0 + (u1 - u0) * static_cast<double>(s) / static_cast<double>(steps);
            const auto it = std::lower_bound(x.begin(), x.end(), FromAxis(c, u));
            keep.push_back(std::min<std::size_t>(static_cast<std::size_t>(it - x.begin()), n - 1));
        }
    }
    std::sort(keep.begin(), keep.end());
    keep.erase(std::unique(keep.begin(), keep.end()), keep.end());
    return keep;
}

// 1, 2 or 5 times a power of ten, the largest not above d.
double NiceStepBelow(double d) {
    const double p = std::pow(10.0, std::floor(std::log10(d)));
    for (double m : {5.0, 2.0, 1.0})
        if (m * p <= d) return m * p;
    return p;
}

// About six value ticks at round values, evenly spread along the value axis.
std::vector<double> ValueTicks(const Curve& c, Axis axis, double uLow, double uHigh) {
    std::vector<double> ticks;
    if (axis == Axis::Linear) {
        const double step = NiceStepBelow((uHigh - uLow) / 4);
        const double first = std::ceil(uLow / step);
        // Counted, not stepped: a step below the values' own resolution must not loop.
        for (int k = 0; k < 12; ++k) {
            const double t = (first + k) * step;
            if (!(t <= uHigh)) break;
            if (ticks.empty() || t > ticks.back())
                ticks.push_back(std::fabs(t) < step * 1e-9 ? 0 : t);
        }
        return ticks;
    }
    constexpr int kCount = 6;
    const double du = (uHigh - uLow) / kCount;
    double lastU = -std::numeric_limits<double>::infinity();
    for (int k = 0; k < kCount; ++k) {
        const double u = uLow + (k + 0.5) * du;
        const double spread = FromAxis(c, u + du / 2) - FromAxis(c, u - du / 2);
        if (!(spread > 0) || !std::isfinite(spread)) continue;
        // The roundest value near the target: coarse steps first, down to the local spread.
        double t = 0, at = kNaN;
        double step = 10 * NiceStepBelow(spread);
        for (int tries = 0; tries < 6 && !std::isfinite(at); ++tries) {
            step = NiceStepBelow(step * 0.99);
            t = std::round(FromAxis(c, u) / step) * step;
            at = ToAxis(c, t);
            if (std::fabs(at - u) > du / 3) at = kNaN;
        }
        // Beside a bound of a Johnson curve the values crowd: a label of a
        // dozen digits would tell the reader nothing.
        if (step < 1e-5 * std::fabs(t)) continue;
        if (!std::isfinite(at) || at < uLow || at > uHigh || at - lastU < du / 2) continue;
        ticks.push_back(t);
        lastU = at;
    }
    return ticks;
}

} // namespace

double Position(std::size_t i, std::size_t n, Positions rule) {
    const double di = static_cast<double>(i), dn = static_cast<double>(n);
    switch (rule) {
    case Positions::Hazen:
        return (di - 0.5) / dn;
    case Positions::MeanRank:
        return di / (dn + 1);
    case Positions::Benard:
        break;
    }
    return (di - 0.3) / (dn + 0.4);
}

Paper PaperOf(Kind k) {
    return m_Curves::NormalBased(k) ? Paper::Normal : Paper::ExtremeValue;
}

Axis AxisOf(Kind k) {
    switch (k) {
    case Kind::Normal:
        return Axis::Linear;
    case Kind::LogNormal:
    case Kind::Exponential:
    case Kind::Weibull:
        return Axis::Log;
    default:
        // A Johnson curve is straight only against its own standard variate.
        return Axis::Standard;
    }
}

double ToPaper(Paper paper, double p) {
    if (!(p > 0 && p < 1)) return kNaN;
    if (paper == Paper::ExtremeValue) return std::log(-std::log1p(-p));
    return boost::math::quantile(boost::math::normal(), p);
}

double FromPaper(Paper paper, double v) {
    if (paper == Paper::ExtremeValue) return -std::expm1(-std::exp(v));
    return boost::math::cdf(boost::math::normal(), v);
}

double ToAxis(const Curve& c, double x) {
    switch (AxisOf(c.K)) {
    case Axis::Linear:
        return x;
    case Axis::Log:
        return x > Threshold(c) ? std::log(x - Threshold(c)) : kNaN;
    case Axis::Standard:
        break;
    }
    return m_Curves::ToStandard(c, x);
}

double FromAxis(const Curve& c, double u) {
    switch (AxisOf(c.K)) {
    case Axis::Linear:
        return u;
    case Axis::Log:
        return Threshold(c) + std::exp(u);
    case Axis::Standard:
        break;
    }
    return m_Curves::FromStandard(c, u);
}

Plot Make(const std::vector<double>& ascending, int row, const m_Fits::Fit& fit, const Options& o) {
    Plot plot;
    if (row >= 0 && row < m_Fits::kRowCount) plot.Name = m_Fits::Info(row).Name;
    plot.N = ascending.size();
    plot.Level = o.Level;
    if (!fit.Status.empty()) {
        plot.Status = fit.Status;
        return plot;
    }
    if (ascending.size() < 2) {
        plot.Status = m_Fits::kTooFew;
        return plot;
    }
    std::vector<double> sorted;
    const std::vector<double>* x = &ascending;
    if (!std::is_sorted(ascending.begin(), ascending.end())) {
        sorted = ascending;
        std::sort(sorted.begin(), sorted.end());
        x = &sorted;
    }
    const Curve& c = fit.C;
    plot.Prob = PaperOf(c.K);
    plot.Value = AxisOf(c.K);
    const std::size_t n = x->size();

    for (std::size_t i : Thinned(*x, c, plot.Prob, o)) {
        const double u = ToAxis(c, (*x)[i]);
        const double v = ToPaper(plot.Prob, Position(i + 1, n, o.Rule));
        if (!std::isfinite(u) || !std::isfinite(v)) continue;
        plot.U.push_back(u);
        plot.V.push_back(v);
    }
    const auto [lo, hi] = Support(c);
    plot.Outside =
        static_cast<std::size_t>((std::upper_bound(x->begin(), x->end(), lo) - x->begin()) +
                                 (x->end() - std::lower_bound(x->begin(), x->end(), hi)));
    if (plot.U.empty()) {
        plot.Status = m_Fits::kOutside;
        return plot;
    }

    // The paper runs at least from 1 % to 99 %, further where the sample does.
    const double vLow = std::min(plot.V.front(), ToPaper(plot.Prob, 0.01));
    const double vHigh = std::max(plot.V.back(), ToPaper(plot.Prob, 0.99));
    constexpr int kLinePoints = 33;
    double uLow = std::min(plot.U.front(), plot.U.back());
    double uHigh = std::max(plot.U.front(), plot.U.back());
    for (int h = 0; h < kLinePoints; ++h) {
        const double v = vLow + (vHigh - vLow) * h / (kLinePoints - 1);
        const double u = ToAxis(c, QuantileAt(c, v));
        if (!std::isfinite(u)) continue;
        plot.LineU.push_back(u);
        plot.LineV.push_back(v);
        uLow = std::min(uLow, u);
        uHigh = std::max(uHigh, u);
    }
    if (!(uHigh > uLow)) uLow -= 1, uHigh += 1;
    const double vPad = 0.04 * (vHigh - vLow), uPad = 0.05 * (uHigh - uLow);
    plot.VLow = vLow - vPad;
    plot.VHigh = vHigh + vPad;
    plot.ULow = uLow - uPad;
    plot.UHigh = uHigh + uPad;

    MakeBand(plot, *x, row, c, o.Level);

    static const struct {
        double P;
        const char* Label;
    } kProbTicks[] = {{1e-6, "0.0001"}, {1e-5, "0.001"}, {1e-4, "0.01"}, {0.001, "0.1"},
                      {0.01, "1"},      {0.05, "5"},     {0.1, "10"},    {0.5, "50"},
                      {0.9, "90"},      {0.99, "99"},    {0.999, "99.9"}};
    for (const auto& t : kProbTicks) {
        const double v = ToPaper(plot.Prob, t.P);
        if (v >= plot.VLow && v <= plot.VHigh) plot.ProbTicks.push_back({v, t.Label});
    }
    const std::vector<double> values = ValueTicks(c, plot.Value, plot.ULow, plot.UHigh);
    // Round values need no fixed decimals: the general form shows 20 and 0.3 as such.
    for (double t : values)
        plot.ValueTicks.push_back(
            {plot.Value == Axis::Linear ? t : ToAxis(c, t), support::Format(t, "")});
    return plot;
}

} // namespace m_ProbabilityPlot
