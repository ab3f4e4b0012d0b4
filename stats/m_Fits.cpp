// The estimators of the nine rows.
//
// Normal and LogNormal report s with divisor n - 1 (of x, of ln x), as the
// capability packages do; every other row is maximum likelihood, except the
// Exponential 2P pair, whose likelihood peaks on the boundary min = x(1), so the
// unbiased pair scale* = n (mean - x(1)) / (n - 1), min* = x(1) - scale*/n is
// reported instead.
//
// Three-parameter rows (Harter & Moore 1966; Cohen & Whitten 1980): the
// likelihood grows without bound as the threshold reaches x(1), so the estimate
// is the interior local maximum of the profile l(theta) below x(1), searched in
// u with theta = x(1) - e^u (the profile is smooth in u): a grid brackets it,
// Brent's method refines it. No interior maximum: no estimate, never theta = x(1).
//   LogNormal: mu, sigma^2 of ln(x - theta) (divisor n),
//     l = -n ln sigma - sum ln(x - theta) - n/2 (1 + ln 2 pi).
//   Weibull: l(theta) is the two-parameter maximum on x - theta. Its shape k
//     solves sum x^k ln x / sum x^k - 1/k - mean ln x = 0 (increasing in k);
//     Newton safeguarded by bisection, on y = ln(x / max x) so that nothing
//     overflows; then scale = max x (mean e^(k y))^(1/k) and
//     l = n (ln k - ln max x - ln mean e^(k y) + (k - 1) mean y - 1).
//
// Johnson from percentiles (Slifker & Shapiro 1980, on the z grid of Chou,
// Polansky & Mason 1998): for each z the sample quantiles x-3, x-1, x1, x3 at
// Phi(-3z), Phi(-z), Phi(z), Phi(3z) give m = x3 - x1, n = x-1 - x-3,
// p = x1 - x-1; m n / p^2 below 1 is SB, above 1 SU, about 1 SL, and the
// curve's transform maps the four quantiles exactly onto -3z, -z, z, 3z:
//   SU  delta = 2z / acosh((m/p + n/p)/2),
//       gamma = delta asinh((n/p - m/p) / (2 sqrt(m n/p^2 - 1))),
//       lamda = 2p sqrt(m n/p^2 - 1) / ((m/p + n/p - 2) sqrt(m/p + n/p + 2)),
//       xi = (x1 + x-1)/2 + p (n/p - m/p) / (2 (m/p + n/p - 2));
//   SB  with a = (1 + p/m)(1 + p/n), b = p^2/(m n) - 1:
//       delta = z / acosh(sqrt(a)/2),
//       gamma = delta asinh((p/n - p/m) sqrt(a - 4) / (2b)),
//       lamda = p sqrt((a - 2)^2 - 4) / b,
//       xi = (x1 + x-1)/2 - lamda/2 + p (p/n - p/m) / (2b);
//   SL  delta = 2z / ln(m/p), gamma = delta ln((m/p - 1) / (p sqrt(m/p))),
//       lamda = 1, xi = (x1 + x-1)/2 - (p/2)(m/p + 1)/(m/p - 1); a sample
//       skewed to the left is fitted mirrored (lamda = -1).
// A z whose curve leaves out a value is skipped; of the others the one whose
// transformed sample looks most normal (smallest A2 with its own mean and s,
// hence the largest table p) is kept.
#include "stats/m_Fits.h"

#include "johnson/JohnsonDist.h"
#include "stats/m_GoodnessOfFit.h"
#include "stats/m_SampleData.h"

#include <boost/math/tools/minima.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <optional>

namespace m_Fits {

namespace {

using m_Curves::Curve;
using m_Curves::Kind;

constexpr double kLog2Pi = 1.83787706640934548356;
// Below this spread relative to the location, a curve's variate has no digits left.
constexpr double kResolution = 1e-13;
// Past this many values the threshold searches start on a condensed stand-in and
// the percentile z search runs on evenly spaced order statistics; the final
// answers use every value.
constexpr std::size_t kSearchValues = 20000;

const RowInfo kRows[kRowCount] = {
    {"Normal", 2, -1},
    {"LogNormal", 2, -1},
    {"LogNormal 3P", 3, kLogNormal},
    {"Exponential", 1, -1},
    {"Exponential 2P", 2, kExponential},
    {"Weibull", 2, -1},
    {"Weibull 3P", 3, kWeibull},
    {"Johnson (moments)", 4, -1},
    {"Johnson (percentiles)", 4, -1},
};

Fit Failed(const char* why) {
    Fit f;
    f.Status = why;
    return f;
}

// Mean and standard deviation (divisor n - 1) of f(x) over the sample, two passes.
template <class F> void MeanSd(const std::vector<double>& x, F f, double& mean, double& sd) {
    long double sum = 0;
    for (double v : x)
        sum += f(v);
    mean = static_cast<double>(sum / x.size());
    long double ss = 0;
    for (double v : x) {
        const double d = f(v) - mean;
        ss += d * d;
    }
    sd = std::sqrt(static_cast<double>(ss / (x.size() - 1)));
}

// Every order statistic when there are few, else kSearchValues evenly spaced
// ones, always with the smallest and the largest.
std::vector<double> SearchValues(const std::vector<double>& sorted) {
    const std::size_t n = sorted.size();
    if (n <= kSearchValues) return sorted;
    std::vector<double> out(kSearchValues);
    for (std::size_t i = 0; i < kSearchValues; ++i)
        out[i] = sorted[static_cast<std::size_t>(std::llround(
            static_cast<double>(i) * static_cast<double>(n - 1) / (kSearchValues - 1)))];
    return out;
}

// A big sample's stand-in for a threshold search: its lowest and highest
// values each as they are (the lowest decide where a threshold can lie), and
// in between the middle value of each of evenly sized runs, weighted by the
// run's length. Empty weights: the values are the sample.
struct Weighted {
    std::vector<double> X, W;
};

Weighted Condensed(const std::vector<double>& sorted) {
    const std::size_t n = sorted.size();
    if (n <= kSearchValues) return {sorted, {}};
    constexpr std::size_t low = kSearchValues / 4, high = kSearchValues / 20;
    constexpr std::size_t runs = kSearchValues - low - high;
    Weighted c;
    c.X.reserve(kSearchValues), c.W.reserve(kSearchValues);
    for (std::size_t i = 0; i < low; ++i)
        c.X.push_back(sorted[i]), c.W.push_back(1);
    const std::size_t middle = n - low - high;
    for (std::size_t r = 0; r < runs; ++r) {
        const std::size_t from = low + r * middle / runs, to = low + (r + 1) * middle / runs;
        c.X.push_back(sorted[(from + to) / 2]), c.W.push_back(static_cast<double>(to - from));
    }
    for (std::size_t i = n - high; i < n; ++i)
        c.X.push_back(sorted[i]), c.W.push_back(1);
    return c;
}

const std::vector<double> kUnweighted;

// The weight of value i: 1 when there are none.
inline double WeightOf(const std::vector<double>& w, std::size_t i) {
    return w.empty() ? 1.0 : w[i];
}

// Sums over i < n of the N terms f(i, s) adds to s: in double within blocks of
// 1024 values (quick), the blocks' sums in long double (accurate for millions).
template <std::size_t N, class F> std::array<long double, N> BlockSums(std::size_t n, F f) {
    constexpr std::size_t kBlock = 1024;
    std::array<long double, N> total{};
    for (std::size_t from = 0; from < n; from += kBlock) {
        std::array<double, N> s{};
        for (std::size_t i = from, to = std::min(n, from + kBlock); i < to; ++i)
            f(i, s);
        for (std::size_t j = 0; j < N; ++j)
            total[j] += s[j];
    }
    return total;
}

// x - x(1) of the sorted sample.
std::vector<double> Gaps(const Sample& s) {
    std::vector<double> gaps(s.X.size());
    for (std::size_t i = 0; i < gaps.size(); ++i)
        gaps[i] = s.X[i] - s.X.front();
    return gaps;
}

// ---- Weibull ---------------------------------------------------------------

// Shape by Newton on the score, kept inside a bracket that bisection narrows.
// Converged, k is the last point the sums were taken at, and sumE their sum e^(k y).
bool SolveShape(const std::vector<double>& y, const std::vector<double>& weight, double ybar,
                double& k, double& sumE) {
    double lo = 0, hi = std::numeric_limits<double>::infinity();
    for (int it = 0; it < 200; ++it) {
        double a0 = 0, a1 = 0, a2 = 0;
        for (std::size_t i = 0; i < y.size(); ++i) {
            const double v = y[i], e = WeightOf(weight, i) * std::exp(k * v);
            a0 += e;
            a1 += v * e;
            a2 += v * v * e;
        }
        const double m1 = a1 / a0, g = m1 - 1 / k - ybar, slope = a2 / a0 - m1 * m1 + 1 / (k * k);
        if (g < 0)
            lo = k;
        else
            hi = k;
        double next = k - g / slope;
        if (!(next > lo && next < hi)) next = std::isinf(hi) ? 2 * k : 0.5 * (lo + hi);
        if (std::fabs(next - k) <= 1e-11 * k || g == 0) { // past this, rounding in the sums
            sumE = a0;
            return std::isfinite(k) && k > 0;
        }
        k = next;
    }
    return false;
}

// The two-parameter fit on d = gap + c (gap >= 0 ascending, c > 0): the profile
// of the threshold x(1) - c, or the plain fit with c = x(1) and gap = x - x(1).
struct WeibullResult {
    bool Ok = false;
    double Shape = 0, Scale = 0, LogLik = -std::numeric_limits<double>::infinity();
};

WeibullResult WeibullOnGaps(const std::vector<double>& gap, double c, double shapeStart,
                            std::vector<double>& y,
                            const std::vector<double>& weight = kUnweighted) {
    WeibullResult r;
    const std::size_t size = gap.size();
    const double dmax = gap.back() + c;
    y.resize(size);
    long double sum = 0, total = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const double w = WeightOf(weight, i);
        y[i] = std::log((gap[i] + c) / dmax);
        sum += w * y[i];
        total += w;
    }
    const double n = static_cast<double>(total);
    const double ybar = static_cast<double>(sum / total);
    if (!(ybar < 0)) return r; // no spread left at this threshold
    double k = shapeStart;
    if (!(k > 0)) { // pi / sqrt(6) over the sd of ln x: the extreme-value moment estimate
        double mean = 0, sd = 0;
        MeanSd(
            y, [](double v) { return v; }, mean, sd);
        k = sd > 0 ? 1.2825 / sd : 1;
    }
    double sumE = 0;
    if (!SolveShape(y, weight, ybar, k, sumE)) return r;
    const double meanE = sumE / n;
    r.Shape = k;
    r.Scale = dmax * std::pow(meanE, 1 / k);
    r.LogLik = n * (std::log(k) - std::log(dmax) - std::log(meanE) + (k - 1) * ybar - 1);
    r.Ok = std::isfinite(r.LogLik) && std::isfinite(r.Scale) && r.Scale > 0;
    return r;
}

// ---- Profile search ----------------------------------------------------------

template <class F> double Refine(F&& f, double lo, double hi) {
    std::uintmax_t iterations = 200;
    const auto r = boost::math::tools::brent_find_minima(
        [&](double u) {
            const double v = f(u);
            return std::isfinite(v) ? -v : std::numeric_limits<double>::max();
        },
        lo, hi, 20, iterations); // u to about 1e-6: the profile is flat at its top
    return r.first;
}

// The condensed stand-in's maximum lies this close to the full one, in u.
constexpr double kStartStep = 0.005;

// A profile's slope and curvature in u at a point.
struct Slope {
    double D1 = std::numeric_limits<double>::quiet_NaN(), D2 = D1;
};

// On all of a big sample the maximum is where the profile's slope in u
// vanishes: Newton's method from the stand-in's maximum u0, each step a pass
// over every value. A step that leaves what the slopes seen so far bracket, or
// that the curvature does not point to, is replaced by bisection, or before a
// bracket by a growing step uphill. Ends when a step is below 1e-8 (the gap to
// 1e-8 of itself); nothing when the slope never turns.
template <class Profile>
std::optional<double> SlopeRoot(Profile& all, double u0, double lo, double hi) {
    constexpr double kTolerance = 1e-8;
    constexpr double kInf = std::numeric_limits<double>::infinity();
    double u = u0, rise = -kInf, fall = kInf, uphill = kStartStep;
    for (int steps = 0; steps < 60; ++steps) {
        if (!(u > lo && u < hi)) return std::nullopt;
        const Slope s = all.Slope(u);
        if (!std::isfinite(s.D1)) return std::nullopt;
        if (s.D1 == 0) return u;
        // The newest side wins: slopes that rise again beyond a fall (a dip
        // between) leave only the nearer top bracketed.
        if (s.D1 > 0)
            rise = u, fall = fall < u ? kInf : fall;
        else
            fall = u, rise = rise > u ? -kInf : rise;
        double next = u - s.D1 / s.D2;
        if (!(s.D2 < 0 && next > rise && next < fall)) {
            if (std::isfinite(rise) && std::isfinite(fall)) {
                next = 0.5 * (rise + fall);
            } else {
                next = u + std::copysign(uphill, s.D1);
                uphill *= 4;
            }
        }
        if (std::fabs(next - u) <= kTolerance || fall - rise <= kTolerance) return next;
        u = next;
    }
    return std::nullopt;
}

// Profile maximum over theta = x(1) - e^u: the gap e^u, or nothing when the
// profile has no interior maximum. A Profile on gaps (x - x(1); `all`, fresh,
// holds every one) gives l(u) by its call and dl/du by Slope. A grid brackets
// the maximum and Brent refines it, on every value of a small sample; a big
// one's condensed stand-in gives the start of SlopeRoot on every value.
template <class Profile>
std::optional<double> ThresholdGap(const std::vector<double>& gaps, Profile& all) {
    const double range = gaps.back();
    const Weighted search = Condensed(gaps);
    const double lo = std::log(range) - 18.5, hi = std::log(range) + 9.5;
    const int points = 40;
    const double step = (hi - lo) / (points - 1);
    Profile condensed(search.X, search.W);
    std::vector<double> v(points);
    for (int j = 0; j < points; ++j)
        v[j] = condensed(lo + step * j);
    int best = -1;
    for (int j = 1; j + 1 < points; ++j)
        if (std::isfinite(v[j - 1]) && std::isfinite(v[j + 1]) && v[j] > v[j - 1] &&
            v[j] >= v[j + 1] && (best < 0 || v[j] > v[best]))
            best = j;
    if (best < 0) return std::nullopt;
    const bool sampled = !search.W.empty();
    Profile& refined = sampled ? condensed : all;
    double u = Refine(refined, lo + step * (best - 1), lo + step * (best + 1));
    if (!(refined(u) >= v[best])) u = lo + step * best; // Brent never did worse than the grid
    if (!sampled) return std::exp(u);
    all.Follow(condensed);
    const std::optional<double> root = SlopeRoot(all, u, lo, hi);
    if (!root) return std::nullopt;
    return std::exp(*root);
}

// ---- Rows ----------------------------------------------------------------------

Fit NormalRow(const Sample& s) {
    if (!(s.Sd > kResolution * std::max(std::fabs(s.X.front()), std::fabs(s.X.back()))))
        return Failed(kTooNarrow);
    Fit f;
    f.C = {Kind::Normal, {s.Mean, s.Sd, 0, 0}};
    return f;
}

Fit LogNormalRow(const Sample& s) {
    if (!s.Positive) return Failed(kNeedsPositive);
    double mu = 0, sd = 0;
    MeanSd(
        s.X, [](double v) { return std::log(v); }, mu, sd);
    if (!(sd > kResolution * std::max(1.0, std::fabs(mu)))) return Failed(kTooNarrow);
    Fit f;
    f.C = {Kind::LogNormal, {mu, sd, 0, 0}};
    const double n = static_cast<double>(s.X.size());
    long double sumLog = 0;
    for (double v : s.X)
        sumLog += std::log(v);
    const double sigmaMl = sd * std::sqrt((n - 1) / n);
    f.MaxLogLik = static_cast<double>(-n * std::log(sigmaMl) - sumLog - 0.5 * n * (1 + kLog2Pi));
    return f;
}

// The log-normal profile on ln(gap + c): Welford's running mean and variance.
// With w = 1/(gap + c) its slope is dl/du = -c (sum (y - mean) w / sigma^2 + sum w).
class LogNormalProfile {
  public:
    explicit LogNormalProfile(const std::vector<double>& gaps,
                              const std::vector<double>& weight = kUnweighted)
        : gaps_(gaps), weight_(weight) {}

    double operator()(double u) const {
        const double c = std::exp(u);
        double mean = 0, m2 = 0, total = 0;
        long double sumLog = 0;
        for (std::size_t i = 0; i < gaps_.size(); ++i) {
            const double w = WeightOf(weight_, i), l = std::log(gaps_[i] + c);
            sumLog += w * l;
            total += w;
            const double d = l - mean;
            mean += w * d / total;
            m2 += w * d * (l - mean);
        }
        const double sigma = std::sqrt(m2 / total);
        if (!(sigma > 0)) return -std::numeric_limits<double>::infinity();
        return static_cast<double>(-total * std::log(sigma) - sumLog - 0.5 * total * (1 + kLog2Pi));
    }

    // On the values alone: it runs on every value of a big sample. Sums of l
    // = ln d - l0 (l0 near the middle, so that little cancels), w = 1/d; with
    // A = sum (l - mean) w and V = sigma^2, dl/dc = -(A/V + sum w) and
    // d2l/dc2 = sum w^2 - (sum w^2 - (sum w)^2/n - sum (l - mean) w^2)/V + 2A^2/(n V^2).
    m_Fits::Slope Slope(double u) const {
        const double c = std::exp(u), l0 = std::log(gaps_[gaps_.size() / 2] + c);
        const auto [sumL, sumL2, sumW, sumLW, sumW2, sumLW2] =
            BlockSums<6>(gaps_.size(), [&](std::size_t i, std::array<double, 6>& s) {
                const double w = 1 / (gaps_[i] + c), l = std::log(gaps_[i] + c) - l0, w2 = w * w;
                s[0] += l, s[1] += l * l, s[2] += w, s[3] += l * w, s[4] += w2, s[5] += l * w2;
            });
        const long double n = static_cast<long double>(gaps_.size()), mean = sumL / n;
        const long double v = sumL2 / n - mean * mean, a = sumLW - mean * sumW;
        if (!(v > 0)) return {};
        const long double dc = -(a / v + sumW);
        const long double dcc = sumW2 - (sumW2 - sumW * sumW / n - (sumLW2 - mean * sumW2)) / v +
                                2 * a * a / (n * v * v);
        return {static_cast<double>(c * dc), static_cast<double>(c * c * dcc + c * dc)};
    }

    void Follow(const LogNormalProfile&) {} // nothing carries over

  private:
    const std::vector<double>& gaps_;
    const std::vector<double>& weight_;
};

Fit LogNormal3PRow(const Sample& s) {
    const std::vector<double> gaps = Gaps(s);
    LogNormalProfile profile(gaps);
    const std::optional<double> c = ThresholdGap(gaps, profile);
    const double theta = c ? s.X.front() - *c : 0;
    // A gap below the resolution of x(1) cannot be written as a threshold.
    if (!c || !(std::fabs((s.X.front() - theta) - *c) <= 1e-6 * *c)) return Failed(kNoThreshold);
    double mu = 0, sd = 0;
    MeanSd(
        gaps, [&](double g) { return std::log(g + *c); }, mu, sd);
    const double n = static_cast<double>(s.X.size());
    Fit f;
    f.C = {Kind::LogNormal, {mu, sd * std::sqrt((n - 1) / n), theta, 0}};
    f.MaxLogLik = profile(std::log(*c));
    return f;
}

Fit ExponentialRow(const Sample& s) {
    if (!s.Positive) return Failed(kNeedsPositive);
    Fit f;
    f.C = {Kind::Exponential, {1 / s.Mean, 0, 0, 0}};
    f.MaxLogLik = -static_cast<double>(s.X.size()) * (std::log(s.Mean) + 1);
    return f;
}

Fit Exponential2PRow(const Sample& s) {
    const double n = static_cast<double>(s.X.size());
    const double spread = s.Mean - s.X.front();
    if (!(spread > kResolution * std::fabs(s.X.front()))) return Failed(kTooNarrow);
    const double scale = n * spread / (n - 1);
    Fit f;
    f.C = {Kind::Exponential, {1 / scale, s.X.front() - scale / n, 0, 0}};
    f.MaxLogLik = -n * (std::log(spread) + 1); // at min = x(1), rate 1/(mean - x(1))
    return f;
}

Fit WeibullRow(const Sample& s) {
    if (!s.Positive) return Failed(kNeedsPositive);
    const std::vector<double> gaps = Gaps(s);
    std::vector<double> y;
    // A big sample's shape starts from its condensed stand-in's: a pass or two
    // on every value then, instead of a cold start's several.
    double start = 0;
    if (const Weighted search = Condensed(gaps); !search.W.empty())
        start = WeibullOnGaps(search.X, s.X.front(), 0, y, search.W).Shape;
    const WeibullResult w = WeibullOnGaps(gaps, s.X.front(), start, y);
    if (!w.Ok) return Failed(kTooNarrow);
    Fit f;
    f.C = {Kind::Weibull, {w.Shape, w.Scale, 0, 0}};
    f.MaxLogLik = w.LogLik;
    return f;
}

// The Weibull profile: the two-parameter maximum on gap + c, each solve
// started from the shape of the one before.
//
// On every value of a big sample a pass does not solve the shape: it takes one
// joint Newton step in (k, u) on l(k, c) = n ln k - n ln sum d^k + (k - 1)
// sum ln d + const, d = gap + c, with (D0, D1, D2) = sum d^k (1, ln d, ln^2 d),
// P1 = sum d^(k-1), P1L = sum d^(k-1) ln d, P2 = sum d^(k-2), W1 = sum 1/d,
// W2 = sum 1/d^2:
//   l_k  = n/k - n D1/D0 + sum ln d,   l_kk = -n/k^2 - n (D2/D0 - (D1/D0)^2),
//   l_c  = (k - 1) W1 - n k P1/D0,     l_cc = n k (k P1^2/D0^2 - (k - 1) P2/D0) - (k - 1) W2,
//   l_kc = W1 - n (P1/D0 + k P1L/D0 - k P1 D1/D0^2).
// The profile's slope and curvature in u are then l_u - l_ku l_k / l_kk and
// l_uu - l_ku^2 / l_kk (they are exact once l_k = 0), and the shape that goes
// with a next u is k - (l_k + l_ku (u' - u)) / l_kk. Sums are on y = ln(d / max d).
class WeibullProfile {
  public:
    explicit WeibullProfile(const std::vector<double>& gaps,
                            const std::vector<double>& weight = kUnweighted)
        : gaps_(gaps), weight_(weight) {}

    double operator()(double u) { return Solve(std::exp(u)).LogLik; }

    m_Fits::Slope Slope(double u) {
        const double c = std::exp(u), k = Shape(u), dmax = gaps_.back() + c;
        const auto [s0, s1, s2, sumY, w1, w2, t1, t1y, t2] =
            BlockSums<9>(gaps_.size(), [&](std::size_t i, std::array<double, 9>& s) {
                const double d = gaps_[i] + c, w = 1 / d, y = std::log(d / dmax),
                             e = std::exp(k * y), ew = e * w;
                s[0] += e, s[1] += e * y, s[2] += e * y * y, s[3] += y;
                s[4] += w, s[5] += w * w;
                s[6] += ew, s[7] += ew * y, s[8] += ew * w;
            });
        const long double n = static_cast<long double>(gaps_.size()), m1 = s1 / s0, p1 = t1 / s0;
        const long double lk = n / k - n * m1 + sumY, lkk = -n / (k * k) - n * (s2 / s0 - m1 * m1);
        const long double lc = (k - 1) * w1 - n * k * p1;
        const long double lcc = n * k * (k * p1 * p1 - (k - 1) * t2 / s0) - (k - 1) * w2;
        const long double lkc = w1 - n * (p1 + k * (t1y / s0 - p1 * m1));
        const long double lu = c * lc, luu = c * c * lcc + c * lc, lku = c * lkc;
        if (!(std::isfinite(static_cast<double>(lk + lu + luu + lku)) && lkk < 0)) return {};
        step_ = {u, k, static_cast<double>(lk), static_cast<double>(lku), static_cast<double>(lkk)};
        return {static_cast<double>(lu - lku * lk / lkk),
                static_cast<double>(luu - lku * lku / lkk)};
    }

    // The shape to go with u: after a pass on every value, as that pass's Newton
    // step predicts it (kept within a factor 2); before, the last solve's.
    double Shape(double u) const {
        if (!step_) return shape_;
        const double k = step_->K - (step_->Lk + step_->Lku * (u - step_->U)) / step_->Lkk;
        return std::clamp(k, 0.5 * step_->K, 2 * step_->K);
    }

    // A big sample's passes start from the stand-in's shape.
    void Follow(const WeibullProfile& standIn) { shape_ = standIn.shape_; }

  private:
    WeibullResult Solve(double c) {
        WeibullResult w = WeibullOnGaps(gaps_, c, shape_, y_, weight_);
        if (w.Ok)
            shape_ = w.Shape;
        else
            w.LogLik = -std::numeric_limits<double>::infinity();
        return w;
    }

    struct Step {
        double U, K, Lk, Lku, Lkk;
    };
    const std::vector<double>& gaps_;
    const std::vector<double>& weight_;
    std::vector<double> y_;
    double shape_ = 0;
    std::optional<Step> step_;
};

Fit Weibull3PRow(const Sample& s) {
    const std::vector<double> gaps = Gaps(s);
    WeibullProfile profile(gaps);
    const std::optional<double> c = ThresholdGap(gaps, profile);
    const double theta = c ? s.X.front() - *c : 0;
    if (!c || !(std::fabs((s.X.front() - theta) - *c) <= 1e-6 * *c)) return Failed(kNoThreshold);
    std::vector<double> y;
    const WeibullResult w = WeibullOnGaps(gaps, *c, profile.Shape(std::log(*c)), y);
    if (!w.Ok) return Failed(kNoThreshold);
    Fit f;
    f.C = {Kind::Weibull, {w.Shape, w.Scale, theta, 0}};
    f.MaxLogLik = w.LogLik;
    return f;
}

Fit JohnsonMomentsRow(const Sample& s) {
    // The Johnson routines report through the program's one error path, which is
    // not made for several threads at once.
    static std::mutex lock;
    std::lock_guard<std::mutex> hold(lock);
    m_SampleData::Summary m;
    if (!m_SampleData::Describe(s.X, m).empty()) return Failed(kNoMomentFit);
    JohnsonDist fit;
    fit.Calculate(m.Mean, m.StDev, m.Skewness, m.Kurtosis);
    if (fit.CalcError != "Success") return Failed(kNoMomentFit);
    Fit f;
    f.Type = fit.JDistribution;
    if (fit.JDistribution == "Normal") {
        if (!(fit.Delta > 0)) return Failed(kNoMomentFit);
        f.C = {Kind::Normal, {-fit.Gamma / fit.Delta, 1 / fit.Delta, 0, 0}};
    } else if (fit.JDistribution == "SB") {
        f.C = {Kind::JohnsonSB, {fit.Delta, fit.Gamma, fit.Lamda, fit.Xi}};
    } else if (fit.JDistribution == "SU") {
        f.C = {Kind::JohnsonSU, {fit.Delta, fit.Gamma, fit.Lamda, fit.Xi}};
    } else if (fit.JDistribution == "SL") {
        f.C = {Kind::JohnsonSL, {fit.Delta, fit.Gamma, fit.Lamda, fit.Xi}};
    } else {
        return Failed(kNoMomentFit); // the two-point limit has no density
    }
    return f;
}

double Phi(double z) {
    return 0.5 * std::erfc(-z / std::sqrt(2.0));
}

// The Slifker-Shapiro curve through the four quantiles (q[0..3] at -3z, -z, z, 3z).
std::optional<Fit> PercentileCurve(const double (&q)[4], double z) {
    const double m = q[3] - q[2], n = q[1] - q[0], p = q[2] - q[1];
    if (!(m > 0 && n > 0 && p > 0)) return std::nullopt;
    const double ratio = m * n / (p * p), mid = 0.5 * (q[1] + q[2]);
    Fit f;
    f.Z = z;
    if (std::fabs(ratio - 1) <= 1e-6) {
        const bool mirrored = m < n; // skewed to the left: fit -x
        const double mp = (mirrored ? n : m) / p;
        if (!(mp > 1)) return std::nullopt;
        const double delta = 2 * z / std::log(mp);
        const double gamma = delta * std::log((mp - 1) / (p * std::sqrt(mp)));
        const double xi = (mirrored ? -mid : mid) - 0.5 * p * (mp + 1) / (mp - 1);
        f.Type = "SL";
        f.C = {Kind::JohnsonSL, {delta, gamma, mirrored ? -1.0 : 1.0, mirrored ? -xi : xi}};
    } else if (ratio > 1) {
        const double mp = m / p, np = n / p, root = std::sqrt(ratio - 1);
        const double delta = 2 * z / std::acosh(0.5 * (mp + np));
        const double gamma = delta * std::asinh((np - mp) / (2 * root));
        const double lamda = 2 * p * root / ((mp + np - 2) * std::sqrt(mp + np + 2));
        const double xi = mid + p * (np - mp) / (2 * (mp + np - 2));
        f.Type = "SU";
        f.C = {Kind::JohnsonSU, {delta, gamma, lamda, xi}};
    } else {
        const double pm = p / m, pn = p / n, a = (1 + pm) * (1 + pn), b = pm * pn - 1;
        const double delta = z / std::acosh(0.5 * std::sqrt(a));
        const double gamma = delta * std::asinh((pn - pm) * std::sqrt(a - 4) / (2 * b));
        const double lamda = p * std::sqrt((a - 2) * (a - 2) - 4) / b;
        const double xi = mid - 0.5 * lamda + p * (pn - pm) / (2 * b);
        f.Type = "SB";
        f.C = {Kind::JohnsonSB, {delta, gamma, lamda, xi}};
    }
    for (double v : f.C.P)
        if (!std::isfinite(v)) return std::nullopt;
    if (!(f.C.P[0] > 0) || (f.Type != "SL" && !(f.C.P[2] > 0))) return std::nullopt;
    return f;
}

Fit JohnsonPercentilesRow(const Sample& s) {
    const std::vector<double> search = SearchValues(s.X);
    std::optional<Fit> best;
    double bestA2 = std::numeric_limits<double>::infinity();
    std::vector<double> z(search.size());
    for (int j = 0; j <= 100; ++j) {
        const double zz = (25 + j) / 100.0; // 0.25, 0.26, ... as typed
        const double q[4] = {Quantile(s.X, Phi(-3 * zz)), Quantile(s.X, Phi(-zz)),
                             Quantile(s.X, Phi(zz)), Quantile(s.X, Phi(3 * zz))};
        std::optional<Fit> f = PercentileCurve(q, zz);
        if (!f) continue;
        // The transform rises with x, so the transformed values stay sorted.
        bool covered = true;
        for (std::size_t i = 0; i < search.size() && covered; ++i) {
            z[i] = m_Curves::ToStandard(f->C, search[i]);
            covered = std::isfinite(z[i]);
        }
        if (!covered) continue;
        double mean = 0, sd = 0;
        MeanSd(
            z, [](double v) { return v; }, mean, sd);
        if (!(sd > 0)) continue;
        const double a2 = m_GoodnessOfFit::A2({Kind::Normal, {mean, sd, 0, 0}}, z);
        if (a2 < bestA2) { // false for NaN: z leaves no digits in a tail
            bestA2 = a2;
            best = std::move(f);
        }
    }
    if (!best) return Failed(kNoPercentileFit);
    // The search values may have skipped one that the curve leaves out.
    if (!std::isfinite(m_Curves::ToStandard(best->C, s.X.front())) ||
        !std::isfinite(m_Curves::ToStandard(best->C, s.X.back())))
        return Failed(kNoPercentileFit);
    return *best;
}

} // namespace

const RowInfo& Info(int row) {
    return kRows[row];
}

// Least significant digit first, 11 bits a pass, on the doubles' bits made to
// sort as unsigned numbers (negative: all bits flipped; else the sign bit set).
// A pass whose digit all the values share is skipped.
void SortValues(std::vector<double>& values) {
    constexpr std::size_t kRadixFrom = 50000; // below, std::sort is as quick
    const std::size_t n = values.size();
    if (n < kRadixFrom) return std::sort(values.begin(), values.end());
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    std::vector<std::uint64_t> keys(n), spare(n);
    for (std::size_t i = 0; i < n; ++i) {
        const auto bits = std::bit_cast<std::uint64_t>(values[i]);
        keys[i] = bits & kSign ? ~bits : bits | kSign;
    }
    constexpr int kBits = 11;
    constexpr std::size_t kBuckets = std::size_t{1} << kBits;
    for (int shift = 0; shift < 64; shift += kBits) {
        std::vector<std::size_t> start(kBuckets + 1, 0);
        for (std::uint64_t k : keys)
            ++start[((k >> shift) & (kBuckets - 1)) + 1];
        if (std::find(start.begin(), start.end(), n) != start.end()) continue;
        for (std::size_t b = 1; b <= kBuckets; ++b)
            start[b] += start[b - 1];
        for (std::uint64_t k : keys)
            spare[start[(k >> shift) & (kBuckets - 1)]++] = k;
        keys.swap(spare);
    }
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint64_t k = keys[i];
        values[i] = std::bit_cast<double>(k & kSign ? k & ~kSign : ~k);
    }
}

Sample Prepare(std::vector<double> values) {
    Sample s;
    s.X = std::move(values);
    if (!std::is_sorted(s.X.begin(), s.X.end())) SortValues(s.X);
    if (s.X.size() < 2) return s;
    MeanSd(
        s.X, [](double v) { return v; }, s.Mean, s.Sd);
    s.Positive = s.X.front() > 0;
    return s;
}

double Quantile(const std::vector<double>& sorted, double p) {
    const std::size_t n = sorted.size();
    const double pos = static_cast<double>(n) * p + 0.5;
    if (pos <= 1) return sorted.front();
    if (pos >= static_cast<double>(n)) return sorted.back();
    const std::size_t i = static_cast<std::size_t>(pos); // 1-based lower neighbour
    const double frac = pos - static_cast<double>(i);
    return sorted[i - 1] + frac * (sorted[i] - sorted[i - 1]);
}

bool FitWeibull(const std::vector<double>& d, double& shape, double& scale, double& logLik,
                double shapeStart) {
    std::vector<double> sorted = d, y;
    std::sort(sorted.begin(), sorted.end());
    if (sorted.empty() || !(sorted.front() > 0)) return false;
    const double x1 = sorted.front();
    for (double& v : sorted)
        v -= x1;
    const WeibullResult w = WeibullOnGaps(sorted, x1, shapeStart, y);
    shape = w.Shape, scale = w.Scale, logLik = w.LogLik;
    return w.Ok;
}

Fit FitRow(int row, const Sample& s) {
    if (s.X.size() < kMinValues || !(s.X.back() > s.X.front()) || !std::isfinite(s.Sd))
        return Failed(kTooFew);
    switch (row) {
    case kNormal:
        return NormalRow(s);
    case kLogNormal:
        return LogNormalRow(s);
    case kLogNormal3P:
        return LogNormal3PRow(s);
    case kExponential:
        return ExponentialRow(s);
    case kExponential2P:
        return Exponential2PRow(s);
    case kWeibull:
        return WeibullRow(s);
    case kWeibull3P:
        return Weibull3PRow(s);
    case kJohnsonMoments:
        return JohnsonMomentsRow(s);
    case kJohnsonPercentiles:
        return JohnsonPercentilesRow(s);
    }
    return Failed(kTooFew);
}

} // namespace m_Fits
