// PNC below the LSL and above the USL for the current distribution.
#include "engine/m_PercentCertainty.h"

#include "engine/m_Distributions.h"
#include "support/Format.h"
#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"

#include <array>
#include <cmath>
#include <string>
#include <tuple>

namespace {

using namespace m_PercentCertainty;

double Rel(long double actual, long double expected) {
    return static_cast<double>(std::fabs((actual - expected) / expected));
}

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
    EXPECT_LE(Rel(CalcLSLPNC(), reference::NormalCdf(-3)), 1e-14);
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
    EXPECT_LE(Rel(CalcUSLPNC(), reference::NormalCdf(-1)), 1e-14);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, FiguresStayProbabilitiesAtTheEdgesOfTheDoubleRange) {
    // A limit 2e308 above the threshold lies past the whole support.
    Use(5, {2, 1, -1e308}, 1e308, 1e308);
    EXPECT_EQ(CalcLSLPNC(), 1);
    EXPECT_EQ(CalcUSLPNC(), 0);
    // Limits one ulp apart: each triangular tail rounds up, the cap keeps the total at 1.
    const double a = -0.9828253375168252, c = -0.9274049738716139, b = 1.179061774045704;
    const double lsl = -0.8711175082131247, usl = std::nextafter(lsl, 1.0);
    Use(2, {a, c, b}, lsl, usl);
    const double lower = CalcLSLPNC(), upper = CapUpperPNC(lower, CalcUSLPNC());
    const long double want =
        1 - (b - lsl) * static_cast<long double>(b - lsl) / ((b - a) * (b - c));
    EXPECT_NEAR(lower, want, 1e-15);
    EXPECT_NEAR(upper, 1 - want, 1e-15);
    EXPECT_LE(lower + upper, 1.0);
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

} // namespace
