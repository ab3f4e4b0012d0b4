// PNC below the LSL and above the USL for the current distribution.
#include "engine/m_PercentCertainty.h"

#include "engine/m_Distributions.h"
#include "support/Format.h"
#include "tests/engine/EngineReference.h"
#include "tests/helpers/TestSupport.h"

#include <array>
#include <cmath>
#include <string>
#include <tuple>

namespace {

using namespace m_PercentCertainty;
using engine_ref::Rel;

class PercentCertaintyTest : public testing_support::RecordingTest {
  protected:
    // The distribution and limits as the window sets them.
    void Use(int code, std::array<double, 4> p, double lsl = 0, double usl = 0) {
        CurrentDistribution = code;
        Param1 = p[0], Param2 = p[1], Param3 = p[2], Param4 = p[3];
        LSL = lsl, USL = usl;
    }
};

TEST_F(PercentCertaintyTest, NormalTailsKeepTheirDigitsFarOut) {
    Use(1, {0, 1}, -3, 3);
    EXPECT_EQ(support::Format(CalcLSLPNC(), "0.00000000"), "0.00134990");
    EXPECT_LE(Rel(CalcLSLPNC(), engine_ref::NormalLower(-3)), 1e-14);
    EXPECT_EQ(CalcUSLPNC(), CalcLSLPNC());
    EXPECT_EQ(support::Format(CalcLSLPNC() + CalcUSLPNC(), "0.0000"), "0.0027");
    // 1 - Phi(9) = 1.1285884059538e-19 (A&S 26.2, extended), both tails.
    Use(1, {0, 1}, -9, 9);
    EXPECT_LE(Rel(CalcUSLPNC(), 1.128588405953840647735e-19L), 1e-13);
    EXPECT_LE(Rel(CalcLSLPNC(), 1.128588405953840647735e-19L), 1e-13);
    EXPECT_EQ(support::Format(CalcUSLPNC(), "0.000000E+00"), "1.128588E-19");
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, LogNormalLimitsAtOrBelowTheThreshold) {
    for (double limit : {5.0, 4.0}) {
        Use(4, {0, 1, 5}, limit, limit);
        EXPECT_EQ(CalcLSLPNC(), 0) << limit; // exactly
        EXPECT_EQ(CalcUSLPNC(), 1) << limit;
        EXPECT_EQ(m_Distributions::PNC_USL("Lognormal", limit, 0, 1, 5, 0), 0);
    }
    Use(4, {0, 1, 5}, 0, 5 + std::exp(1.0));
    EXPECT_LE(Rel(CalcUSLPNC(), engine_ref::NormalUpper(1)), 1e-14);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, EveryCodeReachesItsCalculatorKey) {
    // The upper figure is 1 - the cumulative at the USL, through the key of each code.
    const std::tuple<int, const char*, std::array<double, 4>, double> rows[] = {
        {1, "Normal", {1, 2}, 2.5},           {2, "Triangular", {-1, 0.5, 1}, 0.2},
        {3, "Exponential", {2, 1}, 1.7},      {4, "Lognormal", {0.1, 0.7, 1}, 2.2},
        {5, "Weibull", {1.7, 3, 0.5}, 4},     {6, "Uniform", {-2, 5}, 1},
        {7, "Johnson", {1.2, 0.3, 4, -1}, 1}, {9, "Johnson", {1.2, 0.3, -1, 2}, 1},
        {8, "Johnson", {1.2, 0.3, 2, -1}, 1}, {0, "Johnson", {1.2, 0.3, 0, 0}, 1}};
    for (const auto& [code, key, p, usl] : rows) {
        Use(code, p, 0, usl);
        EXPECT_NEAR(CalcUSLPNC(), 1 - m_Distributions::PNC_USL(key, usl, p[0], p[1], p[2], p[3]),
                    1e-15)
            << key;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, PointMassIsAStep) {
    // Minimum = maximum = 4: all of it below an LSL above the point, above a USL
    // below it, and none beyond a limit on the point.
    const std::tuple<int, std::array<double, 4>, double, double, double, double> rows[] = {
        {6, {4, 4}, 5, 3, 1, 1}, {2, {4, 4, 4}, 5, 3, 1, 1}, {6, {4, 4}, 4, 4, 0, 0}};
    for (const auto& [code, p, lsl, usl, lower, upper] : rows) {
        Use(code, p, lsl, usl);
        EXPECT_EQ(CalcLSLPNC(), lower) << code << " " << lsl;
        EXPECT_EQ(CalcUSLPNC(), upper) << code << " " << usl;
    }
    EXPECT_EQ(Rec().Status, "");
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, CalculatorFailureShowsItsMessageAndGivesZero) {
    Use(8, {1, 0, 0, 0}); // an SU lamda of 0
    EXPECT_EQ(CalcUSLPNC(), 0);
    EXPECT_EQ(Rec().Status, "Lamda must be greater than zero for a Johnson SU distribution.");
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, BadValuesGiveFiguresBetweenZeroAndOne) {
    for (double bad : testing_support::BadValues())
        for (int code = 1; code <= 9; ++code)
            for (int slot = 0; slot < 6; ++slot) {
                double v[6] = {1, 2, 3, 0.5, -1, 4};
                v[slot] = bad;
                Use(code, {v[0], v[1], v[2], v[3]}, v[4], v[5]);
                const double lower = CalcLSLPNC(), upper = CalcUSLPNC();
                EXPECT_TRUE(lower >= 0 && lower <= 1 && upper >= 0 && upper <= 1)
                    << "code " << code << " slot " << slot << " value " << bad;
            }
}

} // namespace
