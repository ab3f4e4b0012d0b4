// The bootstrap intervals: the same for any number of threads, and covering the
// true Ppk about as often as their level says (a coarse check: 200 samples).
#include "stats/m_Bootstrap.h"

#include "stats/m_Fits.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <random>

namespace {

const m_Curves::Curve kWeibull{m_Curves::Kind::Weibull, {2, 10, 0, 0}};
constexpr double kLsl = 1, kUsl = 25;

TEST(Bootstrap, SameAnswerForAnyThreadCount) {
    const m_Curves::Curve skewed{m_Curves::Kind::Weibull, {1.3, 10, 5, 0}};
    m_Bootstrap::Options one, three;
    one.Replicates = three.Replicates = 60;
    one.Threads = 1, three.Threads = 3;
    const auto a = m_Bootstrap::Intervals(m_Fits::kWeibull3P, skewed, 40, 6, 40, one);
    const auto b = m_Bootstrap::Intervals(m_Fits::kWeibull3P, skewed, 40, 6, 40, three);
    ASSERT_TRUE(a.Percentile.Ppk && a.ZScore.Ppk && a.Ppm);
    EXPECT_EQ(a.Percentile.Ppk->Low, b.Percentile.Ppk->Low);
    EXPECT_EQ(a.ZScore.Ppk->High, b.ZScore.Ppk->High);
    EXPECT_EQ(a.Ppm->High, b.Ppm->High);
    EXPECT_EQ(a.Redraws, b.Redraws);
}

TEST(Bootstrap, CancelledRunSaysSo) {
    std::atomic<bool> cancel{true};
    m_Bootstrap::Options o;
    o.Cancel = &cancel;
    EXPECT_TRUE(m_Bootstrap::Intervals(m_Fits::kWeibull, kWeibull, 40, kLsl, kUsl, o).Cancelled);
}

TEST(Bootstrap, CoversTheTruePpkAboutAsOftenAsItsLevel) {
    const double truePpk = *m_Bootstrap::FiguresOf(kWeibull, kLsl, kUsl).Percentile.Ppk;
    std::mt19937_64 random(2024);
    std::uniform_real_distribution<double> u(0, 1);
    const int samples = 200;
    int covered = 0;
    for (int i = 0; i < samples; ++i) {
        std::vector<double> x(50);
        for (double& v : x)
            v = 10 * std::pow(-std::log1p(-u(random)), 0.5);
        const m_Fits::Fit f = m_Fits::FitRow(m_Fits::kWeibull, m_Fits::Prepare(x));
        ASSERT_TRUE(f.Status.empty());
        m_Bootstrap::Options o;
        o.Replicates = 200, o.Seed = static_cast<std::uint64_t>(i);
        const auto r = m_Bootstrap::Intervals(m_Fits::kWeibull, f.C, x.size(), kLsl, kUsl, o);
        ASSERT_TRUE(r.Percentile.Ppk);
        covered += r.Percentile.Ppk->Low <= truePpk && truePpk <= r.Percentile.Ppk->High;
    }
    // 95 % of 200 is 190 (binomial sd about 3); the percentile bootstrap runs a little short.
    EXPECT_GE(covered, 176);
    EXPECT_LE(covered, 198);
}

} // namespace
