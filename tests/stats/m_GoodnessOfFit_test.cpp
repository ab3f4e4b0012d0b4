// The Anderson-Darling statistic against its defining sum, and the chi-squared p.
#include "stats/m_GoodnessOfFit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using m_Curves::Curve;
using m_Curves::Kind;

// A2 = -n - (1/n) sum (2i - 1)[ln F(x(i)) + ln(1 - F(x(n+1-i)))], in long double.
long double DirectA2(const std::vector<double>& x, long double (*cdf)(long double)) {
    const std::size_t n = x.size();
    long double sum = 0;
    for (std::size_t i = 1; i <= n; ++i)
        sum += (2.0L * i - 1) * (std::log(cdf(x[i - 1])) + std::log(1 - cdf(x[n - i])));
    return -static_cast<long double>(n) - sum / n;
}

TEST(GoodnessOfFit, AndersonDarlingMatchesTheDirectSum) {
    std::vector<double> x;
    for (int i = 1; i <= 50; ++i)
        x.push_back(1 + 0.8 * std::fabs(std::sin(1.7 * i)) + 0.01 * i);
    std::sort(x.begin(), x.end());
    struct Case {
        Curve C;
        long double (*Cdf)(long double);
    } cases[] = {
        {{Kind::Normal, {1.6, 0.3, 0, 0}},
         [](long double v) { return 0.5L * std::erfc(-(v - 1.6L) / 0.3L / std::sqrt(2.0L)); }},
        {{Kind::Weibull, {2.5, 1.2, 0.5, 0}},
         [](long double v) { return 1 - std::exp(-std::pow((v - 0.5L) / 1.2L, 2.5L)); }},
        {{Kind::JohnsonSB, {0.9, 0.2, 1.5, 0.9}},
         [](long double v) {
             const long double z = 0.2L + 0.9L * std::log((v - 0.9L) / (2.4L - v));
             return 0.5L * std::erfc(-z / std::sqrt(2.0L));
         }},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(m_GoodnessOfFit::A2(c.C, x), static_cast<double>(DirectA2(x, c.Cdf)), 1e-10);
    }
    // A value outside a bounded curve gives no figures.
    const Curve narrow{Kind::JohnsonSB, {0.9, 0.2, 1.0, 0.9}};
    EXPECT_TRUE(std::isnan(m_GoodnessOfFit::A2(narrow, x)));
    EXPECT_TRUE(std::isnan(m_GoodnessOfFit::LogLik(narrow, x)));
}

TEST(GoodnessOfFit, LikelihoodRatioUsesChiSquaredWithOneDegree) {
    // 3.841459 is the 95 % point of chi-squared(1); 6.634897 the 99 % point.
    EXPECT_NEAR(m_GoodnessOfFit::LikelihoodRatioP(3.841459 / 2, 0), 0.05, 1e-7);
    EXPECT_NEAR(m_GoodnessOfFit::LikelihoodRatioP(10 + 6.634897 / 2, 10), 0.01, 1e-7);
    EXPECT_EQ(m_GoodnessOfFit::LikelihoodRatioP(-1, 0), 1);
}

} // namespace
