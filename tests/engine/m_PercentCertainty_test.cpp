// PNC below the LSL and above the USL for the current distribution. The tails
// themselves are the calculator tests' business; here the code's key, the
// limits at the support's start, the point mass, the cap and the status text.
#include "engine/m_PercentCertainty.h"

#include "engine/m_Distributions.h"
#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"

#include <array>
#include <cmath>

namespace {

using namespace m_PercentCertainty;

class PercentCertaintyTest : public testing_support::RecordingTest {
  protected:
    // The distribution and limits as the window sets them.
    void Use(int code, std::array<double, 4> p, double lsl = 0, double usl = 0) {
        CurrentDistribution = code;
        Param1 = p[0], Param2 = p[1], Param3 = p[2], Param4 = p[3];
        LSL = lsl, USL = usl;
    }
};

TEST_F(PercentCertaintyTest, FiguresByCodeWithExactEdges) {
    const double phi1 = reference::NormalCdf(-1), e = std::exp(1.0);
    const struct Row {
        const char* What;
        int Code;
        std::array<double, 4> P;
        double LSL, USL, Lower, Upper, Tol;
    } rows[] = {
        {"normal", 1, {0, 1}, -1, 1, phi1, phi1, 1e-15},
        {"lognormal", 4, {0, 1, 5}, 5 + 1 / e, 5 + e, phi1, phi1, 1e-14},
        {"johnson SU", 8, {1, 0, 1, 0}, -std::sinh(1.0), std::sinh(1.0), phi1, phi1, 1e-14},
        // At or below where the support starts nothing lies below, exactly.
        {"lognormal limits on the threshold", 4, {0, 1, 5}, 5, 5, 0, 1, 0},
        {"lognormal limits below the threshold", 4, {0, 1, 5}, 4, 4, 0, 1, 0},
        {"exponential limits on its minimum", 3, {2, 1}, 1, 1, 0, 1, 0},
        {"weibull limits below its minimum", 5, {2, 1, 3}, 2, 2, 0, 1, 0},
        // A limit 2e308 above the threshold lies past the whole support.
        {"weibull limits past the double range", 5, {2, 1, -1e308}, 1e308, 1e308, 1, 0, 0},
        // Minimum = maximum = 4: all of it below an LSL above the point, above a
        // USL below it, and none beyond a limit on the point.
        {"uniform point mass", 6, {4, 4}, 5, 3, 1, 1, 0},
        {"triangular point mass", 2, {4, 4, 4}, 5, 3, 1, 1, 0},
        {"point mass on the limits", 6, {4, 4}, 4, 4, 0, 0, 0},
    };
    for (const Row& r : rows) {
        Use(r.Code, r.P, r.LSL, r.USL);
        EXPECT_NEAR(CalcLSLPNC(), r.Lower, r.Tol * r.Lower) << r.What;
        EXPECT_NEAR(CalcUSLPNC(), r.Upper, r.Tol * r.Upper) << r.What;
    }
    EXPECT_EQ(m_Distributions::PNC_USL("Lognormal", 4, 0, 1, 5, 0), 0);
    EXPECT_EQ(Rec().Status, "");
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, OverlappingTailsAreCappedSoTheTotalStaysAProbability) {
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
}

TEST_F(PercentCertaintyTest, CalculatorFailureShowsItsMessageAndGivesZero) {
    Use(8, {1, 0, 0, 0}); // an SU lamda of 0
    EXPECT_EQ(CalcUSLPNC(), 0);
    EXPECT_EQ(Rec().Status, "Lamda must be greater than zero for a Johnson SU distribution.");
    EXPECT_TRUE(ErrorLabels().empty());
}

} // namespace
