// Parametric bootstrap of the capability figures (Efron & Tibshirani 1993,
// ch. 6 and 13): draw n values from the fitted curve, refit by the row's own
// estimator, recompute; the interval runs between the replicates' alpha/2 and
// 1 - alpha/2 quantiles. A sample whose refit fails is drawn again from the
// next numbers of its stream, as the simulated p does, so R counts fitted
// replicates.
#include "stats/m_Bootstrap.h"

#include "engine/Families.h"
#include "stats/m_Fits.h"
#include "stats/m_Simulate.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <thread>
#include <vector>

namespace m_Bootstrap {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// Below this share of replicates with a figure, the figure has no interval.
constexpr double kEnough = 0.99;

// The five figures of one replicate, NaN where it has none.
enum { kPp, kPpk, kZPp, kZPpk, kPpm, kFigureCount };

double Or(const std::optional<double>& v) {
    return v.value_or(kNaN);
}

// False when the replicate gave up (too many failed refits).
bool RunReplicate(int row, const m_Curves::Curve& fitted, std::size_t n, std::optional<double> lsl,
                  std::optional<double> usl, std::uint64_t seed, int r, double* out, int& redraws) {
    m_Simulate::Stream stream(seed, row, r);
    std::vector<double> x(n);
    for (int attempt = 0; attempt < m_Simulate::kAttempts; ++attempt) {
        m_Simulate::Draw(fitted, stream, x);
        m_Fits::Fit f;
        try {
            f = m_Fits::FitRow(row, m_Fits::Prepare(x));
        } catch (const std::exception&) { // out of memory
            return false;
        }
        if (!f.Status.empty()) {
            ++redraws;
            continue;
        }
        const CurveFigures c = FiguresOf(f.C, lsl, usl);
        out[kPp] = Or(c.Percentile.Pp);
        out[kPpk] = Or(c.Percentile.Ppk);
        out[kZPp] = Or(c.ZScore.Pp);
        out[kZPpk] = Or(c.ZScore.Ppk);
        out[kPpm] = Or(c.Ppm);
        return true;
    }
    return false;
}

// The percentile interval of the finite values (linear between order statistics).
std::optional<m_Capability::Interval> PercentileInterval(std::vector<double> v, double level) {
    const std::size_t total = v.size();
    v.erase(std::remove_if(v.begin(), v.end(), [](double d) { return !std::isfinite(d); }),
            v.end());
    if (v.size() < 2 || static_cast<double>(v.size()) < kEnough * static_cast<double>(total))
        return std::nullopt;
    std::sort(v.begin(), v.end());
    auto at = [&](double p) {
        const double pos = p * static_cast<double>(v.size() - 1);
        const std::size_t i = static_cast<std::size_t>(pos);
        if (i + 1 >= v.size()) return v.back();
        return v[i] + (pos - static_cast<double>(i)) * (v[i + 1] - v[i]);
    };
    const double alpha = 1 - level;
    return m_Capability::Interval{at(alpha / 2), at(1 - alpha / 2)};
}

} // namespace

std::optional<m_Curves::Curve> CurveOf(int code, const double (&p)[4]) {
    using m_Curves::Kind;
    switch (code) {
    case 1:
        return m_Curves::Curve{Kind::Normal, {p[0], p[1], 0, 0}};
    case 3:
        return m_Curves::Curve{Kind::Exponential, {p[0], p[1], 0, 0}};
    case 4:
        return m_Curves::Curve{Kind::LogNormal, {p[0], p[1], p[2], 0}};
    case 5:
        return m_Curves::Curve{Kind::Weibull, {p[0], p[1], p[2], 0}};
    case 7:
        return m_Curves::Curve{Kind::JohnsonSB, {p[0], p[1], p[2], p[3]}};
    case 8:
        return m_Curves::Curve{Kind::JohnsonSU, {p[0], p[1], p[2], p[3]}};
    case 9:
        return m_Curves::Curve{Kind::JohnsonSL, {p[0], p[1], p[2], p[3]}};
    case 2: // Triangular and Uniform are never fitted
    case 6:
        return std::nullopt;
    default: // the Johnson normal form z = gamma + delta x
        if (!(p[0] > 0)) return std::nullopt;
        return m_Curves::Curve{Kind::Normal, {-p[1] / p[0], 1 / p[0], 0, 0}};
    }
}

CurveFigures FiguresOf(const m_Curves::Curve& c, std::optional<double> lsl,
                       std::optional<double> usl) {
    CurveFigures out;
    const int code = m_Curves::Code(c.K);
    const double p[4] = {c.P[0], c.P[1], c.P[2], c.P[3]};
    const Families::Family& family = Families::ByCode(code);
    if (family.Refusal(p)) return out;
    const double below = lsl ? family.Tail(p, *lsl, false) : 0;
    double above = usl ? family.Tail(p, *usl, true) : 0;
    if (lsl && usl && *lsl <= *usl && above > 1 - below) above = 1 - below; // as the PNC boxes
    const double total = below + above;
    out.Below = below, out.Above = above;
    if (const auto x = m_Capability::PercentilePoints(code, p[0], p[1], p[2], p[3]))
        out.Percentile = m_Capability::Indices(*x, lsl, usl, total);
    out.ZScore = m_Capability::ZScoreFigures(code, p, lsl, usl, total);
    if (lsl || usl) out.Ppm = total * 1e6;
    return out;
}

Result Intervals(int row, const m_Curves::Curve& fitted, std::size_t n, std::optional<double> lsl,
                 std::optional<double> usl, const Options& o) {
    Result result;
    const int total = std::max(o.Replicates, 0);
    if (total == 0 || n < m_Fits::kMinValues || !(o.Level > 0 && o.Level < 1)) return result;
    std::vector<double> figures(static_cast<std::size_t>(total) * kFigureCount, kNaN);
    const int threads = std::clamp(o.Threads, 1, 64);
    std::vector<int> redraws(threads, 0);
    std::atomic<int> done{0};
    std::atomic<bool> gaveUp{false};
    auto stopped = [&] { return gaveUp.load() || (o.Cancel && o.Cancel->load()); };
    auto work = [&](int t) {
        for (int r = t; r < total && !stopped(); r += threads) {
            if (!RunReplicate(row, fitted, n, lsl, usl, o.Seed, r,
                              &figures[static_cast<std::size_t>(r) * kFigureCount], redraws[t]))
                gaveUp = true;
            const int now = ++done;
            if (o.Progress) o.Progress(now, total);
        }
    };
    m_Simulate::OnThreads(threads, work);
    if (o.Cancel && o.Cancel->load()) {
        result.Cancelled = true;
        return result;
    }
    for (int r : redraws)
        result.Redraws += r;
    if (gaveUp) return result;
    auto column = [&](int k) {
        std::vector<double> v(static_cast<std::size_t>(total));
        for (int r = 0; r < total; ++r)
            v[static_cast<std::size_t>(r)] =
                figures[static_cast<std::size_t>(r) * kFigureCount + k];
        return PercentileInterval(std::move(v), o.Level);
    };
    result.Percentile = {column(kPp), column(kPpk)};
    result.ZScore = {column(kZPp), column(kZPpk)};
    result.Ppm = column(kPpm);
    return result;
}

} // namespace m_Bootstrap
