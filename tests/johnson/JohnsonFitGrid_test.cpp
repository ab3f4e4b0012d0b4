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

struct Location {
    double Mean, Sd;
};
// Assorted locations and scales, taken in turn so every region meets each.
const Location kLocations[] = {{0, 1}, {10, 2}, {-5, 0.5}, {1000, 30}, {0.001, 1e-4}};

// Beta2 of the lognormal with this skewness (Johnson's w = exp(delta^-2)).
double LognormalLine(double s) {
    const double b1 = s * s;
    const double u = std::cbrt(0.5 * b1 + 1 + std::fabs(s) * std::sqrt(0.25 * b1 + 1));
    const double w = u + 1 / u - 1;
    return w * w * w * w + 2 * w * w * w + 3 * w * w - 3;
}

struct Tolerance {
    double Mean, Sd;    // relative to the requested sd
    double B1, B2;      // absolute, on beta1 and beta2
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

// One unconverged SB point, for the listing: the errors of the curve returned.
struct Unconverged {
    double S, K;
    Exit Why;
    int Rounds;
    double MeanErr, SdErr, SkewErr, KurtErr; // mean and sd relative to the sd asked for
};

const char* ExitName(Exit e) {
    switch (e) {
    case Exit::MomFault: return "MOM fault";
    case Exit::IterationLimit: return "500 rounds";
    case Exit::NonPositiveVariance: return "m2 <= 0";
    default: return "?";
    }
}

class JohnsonFitGrid : public testing_support::RecordingTest {};

TEST_F(JohnsonFitGrid, FittedCurvesHaveTheRequestedMoments) {
    // skewness -4..4 by 0.1; kurtosis from just inside the boundary up to 30 by
    // 0.1, plus points on and just either side of the lognormal line and the normal.
    std::vector<std::pair<double, double>> points;
    for (int i = -40; i <= 40; ++i) {
        const double s = i * 0.1;
        for (double k = s * s + 1 + 0.05; k <= 30; k += 0.1) points.emplace_back(s, k);
        const double line = LognormalLine(s);
        if (line <= 30)
            for (double off : {-5e-5, 0.0, 5e-5, -2e-4, 2e-4}) points.emplace_back(s, line + off);
    }
    points.emplace_back(0.0, 3.0);
    points.emplace_back(0.00005, 3.00005);

    int counts[5] = {0, 0, 0, 0, 0}; // SB, SU, SL, Normal, unconverged SB
    std::vector<Unconverged> unconverged;
    std::size_t next = 0;
    for (const auto& [s, k] : points) {
        const Location at = kLocations[next++ % std::size(kLocations)];
        JohnsonDist jd;
        jd.Calculate(at.Mean, at.Sd, s, k);
        SCOPED_TRACE("skewness " + std::to_string(s) + " kurtosis " + std::to_string(k));
        ASSERT_EQ(jd.CalcError, "Success");
        const std::string& type = jd.JDistribution;
        ASSERT_TRUE(type == "SB" || type == "SU" || type == "SL" || type == "Normal") << type;

        const Tolerance* tol = nullptr;
        if (type == "SU") {
            tol = &kSU;
            ++counts[1];
        } else if (type == "SL") {
            tol = &kSL;
            ++counts[2];
        } else if (type == "Normal") {
            ++counts[3];
            EXPECT_LE(std::fabs(s), 1e-4);
            EXPECT_LE(std::fabs(k - 3), 1e-4);
            EXPECT_DOUBLE_EQ(-jd.Gamma / jd.Delta, at.Mean);
            EXPECT_DOUBLE_EQ(1 / jd.Delta, at.Sd);
            continue;
        } else {
            // Ask sbfit again, with a trace, whether it converged.
            JohnsonDist::SbfitTrace trace;
            double g = 0, d = 0, l = 0, x = 0;
            JohnsonDist::sbfit(at.Mean, at.Sd, s, k, g, d, l, x, false, &trace);
            ASSERT_EQ(g, jd.Gamma);
            ASSERT_EQ(d, jd.Delta);
            if (trace.Outcome == Exit::Converged) {
                tol = &kSB;
                ++counts[0];
            } else {
                ++counts[4];
                Unconverged u{s, k, trace.Outcome, static_cast<int>(trace.Rounds.size()),
                              0, 0, 0, 0};
                if (trace.Rounds.empty()) {
                    // Nothing to return: the parameters stay as jnsn zeroed them.
                    EXPECT_EQ(jd.Gamma, 0);
                    EXPECT_EQ(jd.Delta, 0);
                    EXPECT_EQ(jd.Lamda, 0);
                    EXPECT_EQ(jd.Xi, 0);
                } else {
                    // The last iterate with moments, lamda and xi built from them.
                    // Its mean and sd hold only as far as MOM's m2 = mu2 - mu1^2
                    // does: near the lognormal line the iterates run off towards
                    // the lognormal limit (gamma, delta -> infinity) and m2 loses
                    // its digits, so all four errors are listed.
                    ASSERT_TRUE(std::isfinite(jd.Delta) && std::isfinite(jd.Gamma) &&
                                std::isfinite(jd.Lamda) && std::isfinite(jd.Xi));
                    EXPECT_GT(jd.Delta, 0);
                    EXPECT_GT(jd.Lamda, 0);
                    const Moments m = OfCurve("SB", jd.Delta, jd.Gamma, jd.Lamda, jd.Xi);
                    u.MeanErr = (m.Mean - at.Mean) / at.Sd;
                    u.SdErr = (m.Sd - at.Sd) / at.Sd;
                    u.SkewErr = m.Skew - s;
                    u.KurtErr = m.Kurt - k;
                }
                unconverged.push_back(u);
                continue;
            }
        }
        const Moments m = OfCurve(type, jd.Delta, jd.Gamma, jd.Lamda, jd.Xi);
        EXPECT_LE(std::fabs(m.Mean - at.Mean) / at.Sd, tol->Mean) << type;
        EXPECT_LE(std::fabs(m.Sd - at.Sd) / at.Sd, tol->Sd) << type;
        EXPECT_LE(std::fabs(m.Skew * m.Skew - s * s), tol->B1) << type;
        if (std::fabs(s) >= 0.05) {
            EXPECT_EQ(m.Skew < 0, s < 0) << type;
        }
        EXPECT_LE(std::fabs(m.Kurt - k), tol->B2) << type;
    }
    EXPECT_TRUE(Rec().AllErrors().empty());

    // Every region was reached.
    EXPECT_GT(counts[0], 3000);
    EXPECT_GT(counts[1], 10000);
    EXPECT_GT(counts[2], 50);
    EXPECT_EQ(counts[3], 5); // three on the line at skewness 0, and two more

    // The SB iteration stops unconverged near both edges of the SB region (the
    // program's strict MOM tolerances); those fits are listed here, in runs of
    // neighbouring kurtosis values, with the largest shape errors of each run.
    std::printf("SB fits: %d converged, %zu unconverged\n", counts[0], unconverged.size());
    std::printf("%6s %17s %-24s %6s %10s %10s %10s %10s\n", "skew", "kurtosis", "stopped",
                "points", "max|dmean|", "max|dsd|", "max|dskew|", "max|dkurt|");
    for (std::size_t i = 0; i < unconverged.size();) {
        const Unconverged& first = unconverged[i];
        const bool zeros = first.Rounds == 0;
        double worst[4] = {0, 0, 0, 0};
        std::size_t j = i;
        for (; j < unconverged.size(); ++j) {
            const Unconverged& u = unconverged[j];
            if (u.S != first.S || (u.Rounds == 0) != zeros || u.Why != first.Why ||
                (j > i && u.K - unconverged[j - 1].K > 0.1001))
                break;
            const double e[4] = {u.MeanErr, u.SdErr, u.SkewErr, u.KurtErr};
            for (int c = 0; c < 4; ++c) worst[c] = std::max(worst[c], std::fabs(e[c]));
        }
        const std::string why =
            std::string(ExitName(first.Why)) + (zeros ? ", zeros" : ", last iterate");
        std::printf("%6.1f %7.3f..%7.3f %-24s %6zu", first.S, first.K, unconverged[j - 1].K,
                    why.c_str(), j - i);
        if (zeros)
            std::printf(" %10s %10s %10s %10s\n", "-", "-", "-", "-");
        else
            std::printf(" %10.2g %10.2g %10.2g %10.2g\n", worst[0], worst[1], worst[2], worst[3]);
        i = j;
    }
    // About a third of the SB region, as the analysis of the MOM tolerances leads
    // one to expect; a big change either way means the iteration changed.
    EXPECT_GT(unconverged.size(), 1500u);
    EXPECT_LT(unconverged.size(), 2500u);
}

} // namespace
