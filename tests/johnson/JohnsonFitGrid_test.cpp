// Fit -> moments of the fitted curve -> the requested moments, over a dense grid
// of the whole (skewness, kurtosis) plane used by the moments view, with the
// curve's moments integrated independently (JohnsonReference.h).
#include "johnson/JohnsonDist.h"
#include "tests/helpers/TestSupport.h"
#include "tests/johnson/JohnsonReference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using johnson_reference::Moments;
using johnson_reference::OfCurve;
using Exit = JohnsonDist::SbfitTrace::Exit;

struct Tolerance {
    double Mean, Sd; // relative to the requested sd
    double B1, B2;   // absolute, on beta1 and beta2
};

// What each fit promises:
// - SU: lamda and xi come from closed forms, so mean and sd are exact; SUFIT
//   stops when |beta1 - z| <= 1e-4 for the iterate before its last update, which
//   can move beta1 (and beta2 with it) a few times that far.
// - SB (converged): Newton steps below 1e-4 leave the shape within about 1e-6,
//   but lamda and xi come from the moments before the last step, so mean and sd
//   are off by up to a few times the last step.
// - SL: exact in mean, sd and skewness; beta2 within tolb = 1e-4 of the line.
const Tolerance kSU = {1e-9, 1e-9, 5e-4, 1e-3};
const Tolerance kSB = {5e-4, 5e-4, 1e-5, 1e-5};
const Tolerance kSL = {1e-9, 1e-9, 1e-8, 1.0001e-4};

// One unconverged SB point, for the listing: the errors of the curve returned
// (mean and sd relative to the sd asked for).
struct Unconverged {
    double S, K;
    Exit Why;
    bool Zeros;
    double Err[4];
};

class JohnsonFitGrid : public testing_support::RecordingTest {};

TEST_F(JohnsonFitGrid, FittedCurvesHaveTheRequestedMoments) {
    // skewness -4..4 by 0.1; kurtosis from just inside the boundary up to 30 by
    // 0.1, plus points on and just either side of the lognormal line and the normal.
    std::vector<std::pair<double, double>> points = {{0.0, 3.0}, {0.00005, 3.00005}};
    for (int i = -40; i <= 40; ++i) {
        const double s = i * 0.1, line = johnson_reference::LognormalLine(s);
        for (double k = s * s + 1 + 0.05; k <= 30; k += 0.1)
            points.emplace_back(s, k);
        for (double off : {-5e-5, 0.0, 5e-5, -2e-4, 2e-4})
            if (line <= 30) points.emplace_back(s, line + off);
    }
    // Assorted locations and scales, taken in turn so every region meets each.
    const std::pair<double, double> locations[] = {
        {0, 1}, {10, 2}, {-5, 0.5}, {1000, 30}, {0.001, 1e-4}};
    int sb = 0, su = 0, sl = 0, normal = 0;
    std::vector<Unconverged> unconverged;
    for (std::size_t n = 0; n < points.size(); ++n) {
        const auto [s, k] = points[n];
        const auto [mean, sd] = locations[n % std::size(locations)];
        JohnsonDist jd;
        jd.Calculate(mean, sd, s, k);
        SCOPED_TRACE("skewness " + std::to_string(s) + " kurtosis " + std::to_string(k));
        ASSERT_EQ(jd.CalcError, "Success");
        const std::string& type = jd.JDistribution;
        ASSERT_TRUE(type == "SB" || type == "SU" || type == "SL" || type == "Normal") << type;
        const Tolerance* tol = type == "SU" ? &kSU : type == "SL" ? &kSL : &kSB;
        su += type == "SU";
        sl += type == "SL";
        if (type == "Normal") {
            ++normal;
            EXPECT_LE(std::fabs(s), 1e-4);
            EXPECT_LE(std::fabs(k - 3), 1e-4);
            EXPECT_DOUBLE_EQ(-jd.Gamma / jd.Delta, mean);
            EXPECT_DOUBLE_EQ(1 / jd.Delta, sd);
            continue;
        }
        if (type == "SB") {
            // Ask sbfit again, with a trace, whether it converged.
            JohnsonDist::SbfitTrace trace;
            double g = 0, d = 0, l = 0, x = 0;
            JohnsonDist::sbfit(mean, sd, s, k, g, d, l, x, false, &trace);
            ASSERT_EQ(g, jd.Gamma);
            ASSERT_EQ(d, jd.Delta);
            if (trace.Outcome == Exit::Converged) {
                ++sb;
            } else if (trace.Rounds.empty()) {
                // Nothing to return: the parameters stay as jnsn zeroed them.
                EXPECT_EQ(std::vector<double>({jd.Gamma, jd.Delta, jd.Lamda, jd.Xi}),
                          std::vector<double>(4, 0.0));
                unconverged.push_back({s, k, trace.Outcome, true, {}});
                continue;
            } else {
                // The last iterate with moments, lamda and xi built from them. Its mean
                // and sd hold only as far as MOM's m2 = mu2 - mu1^2 does: near the
                // lognormal line the iterates run off towards the lognormal limit
                // (gamma, delta -> infinity) and m2 loses its digits, so all four
                // errors are listed.
                ASSERT_TRUE(std::isfinite(jd.Gamma) && std::isfinite(jd.Xi));
                EXPECT_TRUE(jd.Delta > 0 && jd.Lamda > 0);
                const Moments m = OfCurve("SB", jd.Delta, jd.Gamma, jd.Lamda, jd.Xi);
                unconverged.push_back(
                    {s,
                     k,
                     trace.Outcome,
                     false,
                     {(m.Mean - mean) / sd, (m.Sd - sd) / sd, m.Skew - s, m.Kurt - k}});
                continue;
            }
        }
        const Moments m = OfCurve(type, jd.Delta, jd.Gamma, jd.Lamda, jd.Xi);
        EXPECT_LE(std::fabs(m.Mean - mean) / sd, tol->Mean) << type;
        EXPECT_LE(std::fabs(m.Sd - sd) / sd, tol->Sd) << type;
        EXPECT_LE(std::fabs(m.Skew * m.Skew - s * s), tol->B1) << type;
        EXPECT_TRUE(std::fabs(s) < 0.05 || (m.Skew < 0) == (s < 0)) << type;
        EXPECT_LE(std::fabs(m.Kurt - k), tol->B2) << type;
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
    // Every region was reached.
    EXPECT_GT(sb, 3000);
    EXPECT_GT(su, 10000);
    EXPECT_GT(sl, 50);
    EXPECT_EQ(normal, 5); // three on the line at skewness 0, and two more

    // The SB iteration stops unconverged near both edges of the SB region (the
    // program's strict MOM tolerances). Those fits are listed per skewness and
    // outcome, with the largest errors of each group. About a third of the SB
    // region, as the analysis of the MOM tolerances leads one to expect; a big
    // change either way means the iteration changed.
    const char* exits[] = {"?", "converged", "500 rounds", "MOM fault", "m2 <= 0"};
    std::printf(
        "SB fits: %d converged, %zu unconverged\n%6s %17s %-10s %-12s %6s %10s %10s %10s %10s\n",
        sb, unconverged.size(), "skew", "kurtosis", "stopped", "returns", "points", "max|dmean|",
        "max|dsd|", "max|dskew|", "max|dkurt|");
    for (std::size_t i = 0, j = 0; i < unconverged.size(); i = j) {
        const Unconverged& a = unconverged[i];
        double worst[4] = {0, 0, 0, 0};
        for (; j < unconverged.size() && unconverged[j].S == a.S && unconverged[j].Why == a.Why &&
               unconverged[j].Zeros == a.Zeros;
             ++j)
            for (int c = 0; c < 4; ++c)
                worst[c] = std::max(worst[c], std::fabs(unconverged[j].Err[c]));
        std::printf("%6.1f %7.3f..%7.3f %-10s %-12s %6zu %10.2g %10.2g %10.2g %10.2g\n", a.S, a.K,
                    unconverged[j - 1].K, exits[static_cast<int>(a.Why)],
                    a.Zeros ? "zeros" : "last iterate", j - i, worst[0], worst[1], worst[2],
                    worst[3]);
    }
    EXPECT_GT(unconverged.size(), 1500u);
    EXPECT_LT(unconverged.size(), 2500u);
}

} // namespace
