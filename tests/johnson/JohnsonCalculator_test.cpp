// The distribution calculator's "Johnson" key, for curves fitted by moments:
// its cumulative probabilities must be the standard normal probabilities of
// SNV's deviate, in both tails. The normal probabilities come from std::erfc.
#include "engine/DistCalculator.h"
#include "engine/m_PercentCertainty.h"
#include "johnson/JohnsonDist.h"
#include "tests/helpers/TestSupport.h"
#include "tests/johnson/JohnsonReference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using johnson_reference::NormalCdf;
using johnson_reference::NormalUpper;

struct FitRow {
    const char* Name;
    double Mean, Sd, Skew, Kurt;
    const char* Type; // expected JDistribution
    int Code;         // the current distribution code the window would set
    int TypeCode;     // JohnsonDist's code of the type
};

const FitRow kFits[] = {
    {"SB", 0, 1, 0.5, 2.8, "SB", 7, JohnsonDist::kSB},
    {"SB_negative", 5, 2, -1.2, 3.5, "SB", 7, JohnsonDist::kSB},
    {"SU", 0, 1, 1, 6, "SU", 8, JohnsonDist::kSU},
    {"SU_negative", 10, 2, -0.5, 5, "SU", 8, JohnsonDist::kSU},
    {"SL", 1, 1, 2, -1, "SL", 9, JohnsonDist::kSL},
    {"SL_negative", 2, 0.5, -0.6, -1, "SL", 9, JohnsonDist::kSL},
    {"Normal", 5, 2, 0, 3, "Normal", 1, JohnsonDist::kNormal},
};

class JohnsonCalculator : public testing_support::RecordingTest,
                          public ::testing::WithParamInterface<FitRow> {
  protected:
    void TearDown() override { m_PercentCertainty::CurrentDistribution = saved_; }
    int saved_ = m_PercentCertainty::CurrentDistribution;
};

TEST_P(JohnsonCalculator, CumulativeIsTheNormalOfSnv) {
    const FitRow& r = GetParam();
    JohnsonDist j;
    j.Calculate(r.Mean, r.Sd, r.Skew, r.Kurt);
    ASSERT_EQ(j.JDistribution, r.Type);
    m_PercentCertainty::CurrentDistribution = r.Code;
    DistCalculator calc;
    calc.SetDistribution("Johnson");
    const double params[4] = {j.Delta, j.Gamma, j.Lamda, j.Xi};
    for (int i = 0; i < 4; ++i)
        calc.SetParam(i + 1, params[i]);
    ASSERT_TRUE(calc.Calculate()) << calc.Message();
    const std::string type = r.Type;
    // Out to z = +-12 (tails near 1e-33): the point of the curve at z, from
    // Johnson's definitions.
    for (double z = -12; z <= 12; z += 0.25) {
        const double w = (z - j.Gamma) / j.Delta;
        const double x = type == "SB"   ? j.Xi + j.Lamda / (1 + std::exp(-w))
                         : type == "SU" ? j.Xi + j.Lamda * std::sinh(w)
                         : type == "SL"
                             ? j.Xi + j.Lamda * std::exp((j.Lamda * z - j.Gamma) / j.Delta)
                             : w;
        // SB points must stay strictly inside. Beyond (x - xi) / lamda = -63 SNV takes
        // AS 100's asymptotic form, off by a relative 1 / (4 w^2) in its logarithm's
        // argument; the calculator is exact.
        if (type == "SB" && !(x > j.Xi && x < j.Xi + j.Lamda)) continue;
        if (type == "SU" && (x - j.Xi) / j.Lamda <= -63) continue;
        const double zs = JohnsonDist::SNV(x, r.TypeCode, j.Gamma, j.Delta, j.Lamda, j.Xi);
        SCOPED_TRACE("z " + std::to_string(z) + " x " + std::to_string(x));
        // Each tail to 1e-9 relative where it is the small one (rounding of x moves
        // z by a few ulps times the slope).
        EXPECT_LE(std::fabs(calc.CumulativeProbability(x) / NormalCdf(zs) - 1),
                  1e-9 * (1 + std::fabs(zs)));
        EXPECT_LE(std::fabs(calc.UpperTailProbability(x) / NormalUpper(zs) - 1),
                  1e-9 * (1 + std::fabs(zs)));
    }
    if (type == "SB") { // bounded: exactly 0 and 1 at and beyond the ends
        EXPECT_EQ(calc.CumulativeProbability(j.Xi), 0);
        EXPECT_EQ(calc.CumulativeProbability(j.Xi - 1), 0);
        EXPECT_EQ(calc.CumulativeProbability(j.Xi + j.Lamda), 1);
        EXPECT_EQ(calc.UpperTailProbability(j.Xi + j.Lamda + 1), 0);
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Fits, JohnsonCalculator, ::testing::ValuesIn(kFits),
                         [](const auto& info) { return std::string(info.param.Name); });

} // namespace
