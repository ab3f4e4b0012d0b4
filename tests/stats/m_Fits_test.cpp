// The fits against independent references: the published Weibull fit of the
// ball-bearing data, closed forms, a fine grid of the profile, and the defining
// property of the percentile curve.
#include "stats/m_Fits.h"

#include <gtest/gtest.h>

#include <cmath>
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
} // namespace
