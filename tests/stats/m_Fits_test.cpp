// The fits against independent references: the published Weibull fit of the
// ball-bearing data, closed forms, a fine grid of the profile, and the defining
// property of the percentile curve.
#include "stats/m_Fits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>

namespace {

using namespace m_Fits;

// Lieblein & Zelen (1956): millions of revolutions to failure of 23 ball bearings.
const std::vector<double> kBearings = {17.88, 28.92, 33.00,  41.52,  42.12,  45.60,  48.48, 51.84,
                                       51.96, 54.12, 55.56,  67.80,  68.64,  68.64,  68.88, 84.12,
                                       93.12, 98.64, 105.12, 105.84, 127.92, 128.04, 173.40};

TEST(Fits, BallBearingsWeibullMatchesThePublishedFit) {
    const Fit f = FitRow(kWeibull, Prepare(kBearings));
    ASSERT_EQ(f.Status, "");
    EXPECT_NEAR(f.C.P[0], 2.102, 0.0005); // shape
    EXPECT_NEAR(f.C.P[1], 81.88, 0.005);  // scale
}

TEST(Fits, BallBearingsLogNormalAndExponentialByClosedForms) {
    double sum = 0, sumSq = 0, sumX = 0;
    for (double x : kBearings)
        sum += std::log(x), sumX += x;
    const double mu = sum / 23;
    for (double x : kBearings)
        sumSq += (std::log(x) - mu) * (std::log(x) - mu);
    const Sample s = Prepare(kBearings);
    const Fit ln = FitRow(kLogNormal, s);
    EXPECT_NEAR(ln.C.P[0], mu, 1e-13);
    EXPECT_NEAR(ln.C.P[1], std::sqrt(sumSq / 22), 1e-13);
    EXPECT_NEAR(FitRow(kExponential, s).C.P[0], 23 / sumX, 1e-15);
    const double scale = 23 * (sumX / 23 - 17.88) / 22;
    const Fit e2 = FitRow(kExponential2P, s);
    EXPECT_NEAR(e2.C.P[0], 1 / scale, 1e-14);
    EXPECT_NEAR(e2.C.P[1], 17.88 - scale / 23, 1e-12);
}

// Right-skewed samples with threshold 5 at evenly spaced probabilities, with a
// little fixed noise: log-normal (sigma 0.6) and Weibull (shape 1.8, scale 2).
std::vector<double> Skewed(int n, bool weibull) {
    std::vector<double> x;
    for (int i = 1; i <= n; ++i) {
        const double p = (i - 0.5) / n, noise = 0.01 * std::sin(7.0 * i);
        if (weibull) {
            x.push_back(5 + 2 * std::pow(-std::log1p(-p), 1 / 1.8) + noise);
            continue;
        }
        double lo = -10, hi = 10; // the normal quantile by bisection on erfc
        for (int k = 0; k < 100; ++k) {
            const double mid = 0.5 * (lo + hi);
            (0.5 * std::erfc(-mid / std::sqrt(2.0)) < p ? lo : hi) = mid;
        }
        x.push_back(5 + std::exp(0.6 * 0.5 * (lo + hi)) + noise);
    }
    return x;
}

TEST(Fits, ThreeParameterRowsFindTheLocalMaximumOfTheProfileGrid) {
    Sample s;
    double x1 = 0, n = 60;
    // The profiles written out directly, maximised over a fine grid in ln(x(1) - theta).
    auto lognormal = [&](double theta) {
        long double sum = 0, sumSq = 0, sumLog = 0;
        for (double x : s.X)
            sum += std::log(x - theta);
        const long double mu = sum / n;
        for (double x : s.X) {
            const long double l = std::log(x - theta);
            sumSq += (l - mu) * (l - mu), sumLog += l;
        }
        return static_cast<double>(-n / 2 * std::log(sumSq / n) - sumLog);
    };
    auto weibull = [&](double theta) { // the shape by a golden-section search
        auto at = [&](double k) {
            long double m = 0, sumLog = 0;
            for (double x : s.X)
                m += std::pow(x - theta, k), sumLog += std::log(x - theta);
            return static_cast<double>(n * std::log(k) - n * std::log(m / n) + (k - 1) * sumLog);
        };
        double a = 0.05, b = 50;
        for (int i = 0; i < 120; ++i) {
            const double c = b - 0.618033988749895 * (b - a), d = a + 0.618033988749895 * (b - a);
            (at(c) > at(d) ? b : a) = at(c) > at(d) ? d : c;
        }
        return at(0.5 * (a + b));
    };
    struct Case {
        Row R;
        std::function<double(double)> Profile;
    } cases[] = {{kLogNormal3P, lognormal}, {kWeibull3P, weibull}};
    for (const Case& c : cases) {
        SCOPED_TRACE(Info(c.R).Name);
        // A big sample's search starts on a stand-in; its answer must still be
        // the top of the profile on every value: above it a little to either
        // side, and not tilted (the slope vanishes there; a tilt of 1 % would
        // be an error of 1/200 of the step).
        n = 30000;
        s = Prepare(Skewed(30000, c.R == kWeibull3P));
        const Fit big = FitRow(c.R, s);
        ASSERT_EQ(big.Status, "");
        const double at = std::log(s.X.front() - big.C.P[2]), top = c.Profile(big.C.P[2]);
        const double left = c.Profile(s.X.front() - std::exp(at - 0.003)),
                     right = c.Profile(s.X.front() - std::exp(at + 0.003));
        EXPECT_GT(top, std::max(left, right));
        EXPECT_LT(std::fabs(right - left), 0.01 * (2 * top - left - right));
        n = 60;
        s = Prepare(Skewed(60, c.R == kWeibull3P));
        x1 = s.X.front();
        double bestU = 0, best = -1e300;
        for (double step : {0.01, 0.0005}) { // coarse over the range, then fine around the best
            const double from = step == 0.01 ? -6 : bestU - 0.02,
                         to = step == 0.01 ? 3 : bestU + 0.02;
            for (double u = from; u < to; u += step) {
                const double v = c.Profile(x1 - std::exp(u));
                if (v > best) best = v, bestU = u;
            }
        }
        const Fit f = FitRow(c.R, s);
        ASSERT_EQ(f.Status, "");
        const double theta = f.C.P[2];
        EXPECT_NEAR(std::log(x1 - theta), bestU, 0.002);
        EXPECT_GE(c.Profile(theta), best - 1e-9);
    }
}

TEST(Fits, SortValuesOrdersAsStdSortDoes) {
    std::mt19937_64 random(7);
    std::vector<double> x(100000);
    for (double& v : x) // every sign and scale, with ties
        v = std::ldexp(std::uniform_real_distribution<double>(-1, 1)(random),
                       std::uniform_int_distribution<int>(-1074, 1023)(random));
    const double specials[] = {0.0,
                               -0.0,
                               1e-310,
                               -1e-310,
                               1e308,
                               -1e308,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               3.5,
                               3.5};
    std::copy(std::begin(specials), std::end(specials), x.begin());
    std::vector<double> expected = x;
    std::sort(expected.begin(), expected.end());
    SortValues(x);
    EXPECT_EQ(x, expected);
}

TEST(Fits, PercentileCurveMapsItsFourQuantilesOntoTheNormalGrid) {
    // Bounded (uniform-like), heavy-tailed and skewed samples: SB, SU and either.
    std::vector<std::vector<double>> samples(3);
    for (int i = 1; i <= 200; ++i) {
        const double p = (i - 0.5) / 200;
        samples[0].push_back(p + 0.001 * std::sin(3.0 * i));
        samples[1].push_back(std::tan(3.0 * (p - 0.5)) + 0.001 * std::sin(5.0 * i));
        samples[2].push_back(-std::log1p(-p) + 0.002 * std::sin(11.0 * i));
    }
    const char* types[] = {"SB", "SU", nullptr};
    for (int k = 0; k < 3; ++k) {
        const Sample s = Prepare(samples[k]);
        const Fit f = FitRow(kJohnsonPercentiles, s);
        ASSERT_EQ(f.Status, "");
        if (types[k]) {
            EXPECT_EQ(f.Type, types[k]);
        }
        ASSERT_TRUE(f.Z >= 0.25 && f.Z <= 1.25);
        const double level[4] = {-3, -1, 1, 3};
        for (double m : level) {
            // The quantile at position n p + 0.5, written out here.
            const double pos = 200 * 0.5 * std::erfc(-m * f.Z / std::sqrt(2.0)) + 0.5;
            const std::size_t i = static_cast<std::size_t>(pos);
            const double q =
                pos <= 1     ? s.X.front()
                : pos >= 200 ? s.X.back()
                             : s.X[i - 1] + (pos - static_cast<double>(i)) * (s.X[i] - s.X[i - 1]);
            EXPECT_NEAR(m_Curves::ToStandard(f.C, q), m * f.Z, 1e-9) << f.Type << " at " << m;
        }
    }
}
} // namespace
