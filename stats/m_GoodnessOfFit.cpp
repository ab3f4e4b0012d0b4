// A2 = -n - (1/n) sum (2i - 1)[ln F(x(i)) + ln(1 - F(x(n+1-i)))], regrouped by
// point as sum [(2i - 1) ln F(x(i)) + (2n + 1 - 2i) ln(1 - F(x(i)))] so that one
// pass over the sorted sample gives it; the sum is kept in long double because
// for a million values it is -n^2 to within the statistic.
// The log-likelihood is a pass of its own: ranking needs it, not A2.
#include "stats/m_GoodnessOfFit.h"

#include <boost/math/distributions/chi_squared.hpp>

#include <cmath>
#include <limits>

namespace m_GoodnessOfFit {

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
}

bool Covers(const m_Curves::Curve& c, const std::vector<double>& sorted) {
    if (sorted.empty()) return false;
    const m_Curves::Evaluator at(c);
    const m_Curves::Point low = at(sorted.front()), high = at(sorted.back());
    return low.Inside && high.Inside && std::isfinite(low.LogLower) &&
           std::isfinite(high.LogUpper) && std::isfinite(low.LogUpper) &&
           std::isfinite(high.LogLower);
}

double LogLik(const m_Curves::Curve& c, const std::vector<double>& sorted) {
    if (!Covers(c, sorted)) return kNaN;
    const m_Curves::Evaluator at(c);
    long double sum = 0;
    for (double x : sorted)
        sum += at.LogDensity(x);
    const double logLik = static_cast<double>(sum);
    return std::isfinite(logLik) ? logLik : kNaN;
}

double A2(const m_Curves::Curve& c, const std::vector<double>& sorted) {
    if (!Covers(c, sorted)) return kNaN;
    const std::size_t n = sorted.size();
    const m_Curves::Evaluator at(c);
    long double sum = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const m_Curves::Point p = at(sorted[i]);
        const double up = 2.0 * static_cast<double>(i + 1) - 1,
                     down = 2.0 * static_cast<double>(n - i) - 1;
        sum +=
            up * static_cast<long double>(p.LogLower) + down * static_cast<long double>(p.LogUpper);
    }
    const double a2 = static_cast<double>(-static_cast<long double>(n) - sum / n);
    return std::isfinite(a2) ? a2 : kNaN;
}

double NormalTableP(double a2, double n) {
    const double a = a2 * (1 + 0.75 / n + 2.25 / (n * n));
    if (!(a >= 0)) return std::numeric_limits<double>::quiet_NaN();
    if (a > 10) return 0;
    if (a >= 0.6) return std::exp(1.2937 - 5.709 * a + 0.0186 * a * a);
    if (a > 0.34) return std::exp(0.9177 - 4.279 * a - 1.38 * a * a);
    if (a > 0.2) return 1 - std::exp(-8.318 + 42.796 * a - 59.938 * a * a);
    return 1 - std::exp(-13.436 + 101.14 * a - 223.73 * a * a);
}

double LikelihoodRatioP(double l3, double l2) {
    const double lambda = 2 * (l3 - l2);
    if (!(lambda > 0)) return 1;
    if (!std::isfinite(lambda)) return 0;
    return boost::math::cdf(boost::math::complement(boost::math::chi_squared(1), lambda));
}

double AICc(double logLik, int k, double n) {
    if (!(n > k + 1)) return std::numeric_limits<double>::quiet_NaN();
    return -2 * logLik + 2 * k + 2.0 * k * (k + 1) / (n - k - 1);
}

} // namespace m_GoodnessOfFit
