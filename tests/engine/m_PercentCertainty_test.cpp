// PNC below the LSL and above the USL for the current distribution.
#include "engine/m_PercentCertainty.h"

#include "engine/m_Distributions.h"
#include "support/Format.h"
#include "tests/engine/EngineReference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace m_PercentCertainty;
using engine_ref::Rel;

class PercentCertaintyTest : public testing_support::RecordingTest {
protected:
    void Use(int code, double p1, double p2, double p3 = 0, double p4 = 0) {
        CurrentDistribution = code;
        Param1 = p1;
        Param2 = p2;
        Param3 = p3;
        Param4 = p4;
    }
};

TEST_F(PercentCertaintyTest, CalculatorNameFollowsTheCode) {
    const std::vector<std::pair<int, const char*>> rows = {
        {1, "Normal"},  {2, "Triangular"}, {3, "Exponential"}, {4, "Lognormal"}, {5, "Weibull"},
        {6, "Uniform"}, {7, "Johnson"},    {8, "Johnson"},     {9, "Johnson"},   {0, "Johnson"}};
    for (const auto& [code, name] : rows) EXPECT_EQ(CalculatorName(code), name) << code;
}

TEST_F(PercentCertaintyTest, NormalThreeSigmaFigures) {
    Use(1, 0, 1);
    LSL = -3;
    USL = 3;
    const double lower = CalcLSLPNC(), upper = CalcUSLPNC();
    EXPECT_EQ(support::Format(lower, "0.00000000"), "0.00134990");
    EXPECT_LE(Rel(lower, engine_ref::NormalLower(-3)), 1e-14);
    EXPECT_DOUBLE_EQ(upper, lower);
    EXPECT_EQ(support::Format(lower + upper, "0.0000"), "0.0027");
}

TEST_F(PercentCertaintyTest, UpperTailKeepsItsDigitsFarOut) {
    Use(1, 0, 1);
    USL = 9;
    EXPECT_LE(Rel(CalcUSLPNC(), 1.128588405953840647735e-19L), 1e-13);
    LSL = -9;
    EXPECT_LE(Rel(CalcLSLPNC(), 1.128588405953840647735e-19L), 1e-13);
    // Exponential: P(X > x) = exp(-rate (x - min)) down to 1e-300.
    Use(3, 0.5, 10);
    USL = 10 + 2 * 690.0;
    EXPECT_LE(Rel(CalcUSLPNC(), std::exp(-690.0L)), 1e-13);
    // Johnson SU (code 8) far in its upper tail.
    Use(8, 2, 0.5, 1.5, -1);
    USL = 1e6;
    const long double z = 0.5L + 2 * std::asinh((1e6L + 1) / 1.5L);
    EXPECT_LE(Rel(CalcUSLPNC(), engine_ref::NormalUpper(z)), 1e-12);
}

TEST_F(PercentCertaintyTest, LogNormalLimitsAtOrBelowTheThreshold) {
    Use(4, 0, 1, 5);
    LSL = 5;
    EXPECT_EQ(CalcLSLPNC(), 0);
    LSL = 4;
    EXPECT_EQ(CalcLSLPNC(), 0);
    USL = 4;
    EXPECT_EQ(CalcUSLPNC(), 1);
    EXPECT_EQ(m_Distributions::PNC_USL("Lognormal", 4, 0, 1, 5, 0), 0);
    USL = 5 + std::exp(1.0);
    EXPECT_LE(Rel(CalcUSLPNC(), engine_ref::NormalUpper(1)), 1e-14);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, UpperFigureIsOneMinusTheCumulativeAtTheUSL) {
    const std::vector<std::tuple<int, const char*, double, double, double, double, double>> rows = {
        {1, "Normal", 1, 2, 0, 0, 2.5},          {2, "Triangular", -1, 0.5, 1, 0, 0.2},
        {3, "Exponential", 2, 1, 0, 0, 1.7},     {4, "Lognormal", 0.1, 0.7, 1, 0, 2.2},
        {5, "Weibull", 1.7, 3, 0.5, 0, 4},       {6, "Uniform", -2, 5, 0, 0, 1},
        {7, "Johnson", 1.2, 0.3, 4, -1, 1},      {9, "Johnson", 1.2, 0.3, -1, 2, 1},
    };
    for (const auto& [code, key, p1, p2, p3, p4, usl] : rows) {
        Use(code, p1, p2, p3, p4);
        USL = usl;
        EXPECT_NEAR(CalcUSLPNC(), 1 - m_Distributions::PNC_USL(key, usl, p1, p2, p3, p4), 1e-15) << key;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, CalculatorFailureShowsItsMessageAndGivesZero) {
    Use(6, 4, 4); // minimum = maximum passes the checks but has no spread
    LSL = 5;
    USL = 3;
    EXPECT_EQ(CalcLSLPNC(), 0);
    EXPECT_EQ(CalcUSLPNC(), 0); // 0 on failure, not 1 - 0
    EXPECT_EQ(Rec().Status, "Minimum equals Maximum: the Uniform distribution has no spread.");
    Use(8, 1, 0, 0, 0); // an SU lamda of 0
    EXPECT_EQ(CalcUSLPNC(), 0);
    EXPECT_EQ(Rec().Status, "Lamda must be greater than zero for a Johnson SU distribution.");
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, BadValuesGiveFiguresBetweenZeroAndOne) {
    for (double bad : testing_support::BadValues()) {
        for (int code = 1; code <= 9; ++code) {
            for (int slot = 0; slot < 6; ++slot) {
                double v[6] = {1, 2, 3, 0.5, -1, 4};
                v[slot] = bad;
                Use(code, v[0], v[1], v[2], v[3]);
                LSL = v[4];
                USL = v[5];
                const double lower = CalcLSLPNC(), upper = CalcUSLPNC();
                EXPECT_TRUE(lower >= 0 && lower <= 1 && upper >= 0 && upper <= 1)
                    << "code " << code << " slot " << slot << " value " << bad;
            }
        }
    }
}

} // namespace
