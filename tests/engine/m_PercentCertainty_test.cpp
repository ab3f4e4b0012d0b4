// The PNC figures of one family and its limits, against closed forms; the
// exact edges (the support's start, a point mass), the cap and the refusal.
// The tails themselves, family by family, are the calculator tests' business.
#include "engine/m_PercentCertainty.h"

#include "engine/m_Distributions.h"
#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"

#include <array>
#include <cmath>
#include <optional>

namespace {

using namespace m_PercentCertainty;
using std::nullopt;

class PercentCertaintyTest : public testing_support::RecordingTest {};

TEST_F(PercentCertaintyTest, FiguresMatchClosedFormsWithExactEdges) {
    const double phi1 = reference::NormalCdf(-1), e = std::exp(1.0);
    const struct Row {
        const char* What;
        int Code;
        std::array<double, 4> P;
        std::optional<double> LSL, USL;
        double Lower, Upper, Tol;
    } rows[] = {
        {"normal", 1, {0, 1}, -1, 1, phi1, phi1, 1e-15},
        {"normal, LSL alone", 1, {0, 1}, -3, nullopt, reference::NormalCdf(-3), 0, 1e-14},
        // Param1 is a rate: P(X < 1.5) = 1 - e^-1, P(X > 2) = e^-2 above the minimum 1.
        {"exponential", 3, {2, 1}, 1.5, 2, -std::expm1(-1.0), std::exp(-2.0), 1e-15},
        {"uniform", 6, {-1, 3}, 0, 2.5, 0.25, 0.125, 1e-15},
        {"uniform, USL alone", 6, {-1, 3}, nullopt, 2.5, 0, 0.125, 1e-15},
        {"lognormal", 4, {0, 1, 5}, 5 + 1 / e, 5 + e, phi1, phi1, 1e-14},
        {"johnson SU", 8, {1, 0, 1, 0}, -std::sinh(1.0), std::sinh(1.0), phi1, phi1, 1e-14},
        // SB on (0, 1) with delta 1, gamma 0: z = ln(x / (1 - x)), so x = 1 / (1 + e).
        {"johnson SB", 7, {1, 0, 1, 0}, 1 / (1 + e), e / (1 + e), phi1, phi1, 1e-14},
        {"neither limit", 1, {0, 1}, nullopt, nullopt, 0, 0, 0},
        // At or below where the support starts nothing lies below, exactly.
        {"lognormal limits on the threshold", 4, {0, 1, 5}, 5, 5, 0, 1, 0},
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
        const Figures f =
            Pnc(Families::ByCode(r.Code), {r.P[0], r.P[1], r.P[2], r.P[3]}, r.LSL, r.USL);
        EXPECT_NEAR(f.Lower, r.Lower, r.Tol * r.Lower) << r.What;
        EXPECT_NEAR(f.Upper, r.Upper, r.Tol * r.Upper) << r.What;
        EXPECT_EQ(f.Total, f.Lower + f.Upper) << r.What;
    }
    EXPECT_EQ(m_Distributions::PNC_USL("Lognormal", 4, 0, 1, 5, 0), 0);
    EXPECT_EQ(Rec().Status, "");
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(PercentCertaintyTest, TheNamedProceduresReadTheCurrentValues) {
    // Johnson SL: 9 tells it from the other forms sharing the calculator's key.
    CurrentDistribution = 9;
    Param1 = 1, Param2 = 0, Param3 = 1, Param4 = 0;
    LSL = std::exp(-1.0), USL = std::exp(1.0);
    EXPECT_NEAR(CalcLSLPNC(), reference::NormalCdf(-1), 1e-15);
    EXPECT_NEAR(CalcUSLPNC(), reference::NormalCdf(-1), 1e-15);
    EXPECT_EQ(CapUpperPNC(0.75, 0.5), 0.25);
}

TEST_F(PercentCertaintyTest, OverlappingTailsAreCappedSoTheTotalStaysAProbability) {
    // Limits one ulp apart: each triangular tail rounds up, the cap keeps the total at 1.
    const double a = -0.9828253375168252, c = -0.9274049738716139, b = 1.179061774045704;
    const double lsl = -0.8711175082131247, usl = std::nextafter(lsl, 1.0);
    const Figures f = Pnc(Families::ByCode(2), {a, c, b, 0}, lsl, usl);
    const long double want =
        1 - (b - lsl) * static_cast<long double>(b - lsl) / ((b - a) * (b - c));
    EXPECT_NEAR(f.Lower, double(want), 1e-15);
    EXPECT_NEAR(f.Upper, double(1 - want), 1e-15);
    EXPECT_LE(f.Total, 1.0);
}

TEST_F(PercentCertaintyTest, CalculatorRefusalShowsItsMessageAndGivesZero) {
    const Figures f = Pnc(Families::ByCode(8), {1, 0, 0, 0}, nullopt, 1); // an SU lamda of 0
    EXPECT_EQ(f.Upper, 0);
    EXPECT_EQ(Rec().Status, "Lamda must be greater than zero for a Johnson SU distribution.");
    EXPECT_TRUE(ErrorLabels().empty());
}

} // namespace
