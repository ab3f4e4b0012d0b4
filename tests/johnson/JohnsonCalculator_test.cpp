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
    int Code;         // current distribution code the window would set
};

const FitRow kFits[] = {
    {"SB", 0, 1, 0.5, 2.8, "SB", 7},
    {"SB_negative", 5, 2, -1.2, 3.5, "SB", 7},
    {"SU", 0, 1, 1, 6, "SU", 8},
    {"SU_negative", 10, 2, -0.5, 5, "SU", 8},
    {"SL", 1, 1, 2, -1, "SL", 9},
    {"SL_negative", 2, 0.5, -0.6, -1, "SL", 9},
    {"Normal", 5, 2, 0, 3, "Normal", 1},
};

class JohnsonCalculator : public testing_support::RecordingTest,
                          public ::testing::WithParamInterface<FitRow> {
protected:
    void TearDown() override { m_PercentCertainty::CurrentDistribution = saved_; }
    int saved_ = m_PercentCertainty::CurrentDistribution;
};

int TypeCode(const std::string& type) {
    if (type == "SL") return JohnsonDist::kSL;
    if (type == "SU") return JohnsonDist::kSU;
    if (type == "SB") return JohnsonDist::kSB;
    return JohnsonDist::kNormal;
}

// The point of the fitted curve at normal deviate z, from Johnson's definitions.
double PointAt(const std::string& type, const JohnsonDist& j, double z) {
    const double w = (z - j.Gamma) / j.Delta;
    if (type == "SB") return j.Xi + j.Lamda / (1 + std::exp(-w));
    if (type == "SU") return j.Xi + j.Lamda * std::sinh(w);
    if (type == "SL") return j.Xi + j.Lamda * std::exp((j.Lamda * z - j.Gamma) / j.Delta);
    return w;
}

TEST_P(JohnsonCalculator, CumulativeIsTheNormalOfSnv) {
    const FitRow& r = GetParam();
    JohnsonDist j;
    j.Calculate(r.Mean, r.Sd, r.Skew, r.Kurt);
    ASSERT_EQ(j.JDistribution, r.Type);

    m_PercentCertainty::CurrentDistribution = r.Code;
    DistCalculator calc;
    calc.SetDistribution("Johnson");
    calc.SetParam(1, j.Delta);
    calc.SetParam(2, j.Gamma);
    calc.SetParam(3, j.Lamda);
    calc.SetParam(4, j.Xi);
    ASSERT_TRUE(calc.Calculate()) << calc.Message();

    const int code = TypeCode(r.Type);
    // Out to z = +-12 (tails near 1e-33); SB points must stay strictly inside.
    for (double z = -12; z <= 12; z += 0.25) {
        const double x = PointAt(r.Type, j, z);
        if (r.Type == std::string("SB") && !(x > j.Xi && x < j.Xi + j.Lamda)) continue;
        // Beyond (x - xi) / lamda = -63 SNV takes AS 100's asymptotic form, off by
        // a relative 1 / (4 w^2) in its logarithm's argument; the calculator is exact.
        if (r.Type == std::string("SU") && (x - j.Xi) / j.Lamda <= -63) continue;
        const double zs = JohnsonDist::SNV(x, code, j.Gamma, j.Delta, j.Lamda, j.Xi);
        const double lower = calc.CumulativeProbability(x);
        const double upper = calc.UpperTailProbability(x);
        SCOPED_TRACE("z " + std::to_string(z) + " x " + std::to_string(x));
        // Each tail to 1e-9 relative where it is the small one (rounding of x
        // moves z by a few ulps times the slope).
        EXPECT_LE(std::fabs(lower / NormalCdf(zs) - 1), 1e-9 * (1 + std::fabs(zs)));
        EXPECT_LE(std::fabs(upper / NormalUpper(zs) - 1), 1e-9 * (1 + std::fabs(zs)));
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Fits, JohnsonCalculator, ::testing::ValuesIn(kFits),
                         [](const auto& info) { return std::string(info.param.Name); });

class JohnsonCalculatorSupport : public testing_support::RecordingTest {};

TEST_F(JohnsonCalculatorSupport, BoundedEndsGiveZeroAndOne) {
    const int saved = m_PercentCertainty::CurrentDistribution;
    JohnsonDist j;
    j.Calculate(0, 1, 0.5, 2.8);
    m_PercentCertainty::CurrentDistribution = 7;
    DistCalculator calc;
    calc.SetDistribution("Johnson");
    calc.SetParam(1, j.Delta);
    calc.SetParam(2, j.Gamma);
    calc.SetParam(3, j.Lamda);
    calc.SetParam(4, j.Xi);
    ASSERT_TRUE(calc.Calculate());
    EXPECT_EQ(calc.CumulativeProbability(j.Xi), 0);
    EXPECT_EQ(calc.CumulativeProbability(j.Xi - 1), 0);
    EXPECT_EQ(calc.CumulativeProbability(j.Xi + j.Lamda), 1);
    EXPECT_EQ(calc.UpperTailProbability(j.Xi + j.Lamda + 1), 0);
    m_PercentCertainty::CurrentDistribution = saved;
}

} // namespace
