// Limits from a probability: round trips through the engine's PNC for every
// family in both tails, the normal quantile against mpmath, and the refusals.
#include "engine/m_Quantile.h"

#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <string>

namespace {

using namespace m_Distributions; // the codes
using m_Quantile::FromTail;

class QuantileTest : public testing_support::RecordingTest {};

// The PNC the window would show for a limit at x on one side.
double Pnc(int code, const double (&p)[4], double x, bool upper) {
    const auto f =
        m_PercentCertainty::Pnc(Families::ByCode(code), p, upper ? std::nullopt : std::optional(x),
                                upper ? std::optional(x) : std::nullopt);
    return upper ? f.Upper : f.Lower;
}

// mpmath (60 digits): the roots of Phi(z) = p.
TEST_F(QuantileTest, NormalQuantileMatchesHighPrecisionValues) {
    const std::pair<double, double> rows[] = {{0.025, -1.959963984540054235524594},
                                              {1e-300, -37.04709629936119923722296},
                                              {0.7, 0.5244005127080407840382893}};
    for (const auto& [p, z] : rows)
        EXPECT_NEAR(m_Quantile::NormalQuantile(p, false), z, 4e-16 * std::fabs(z)) << p;
}

// Bounded curves have the tested end at 0, where the doubles resolve any tail;
// next to another end a tiny tail is out of reach (the refusals below).
TEST_F(QuantileTest, EveryFamilyGivesTheTailBackInBothTails) {
    enum Sides { kLower = 1, kUpper = 2, kBoth = 3 };
    const struct Row {
        const char* Name;
        int Code;
        double P[4];
        int Sides;
    } rows[] = {
        {"Normal", kNormal, {10, 2}, kBoth},
        {"LogNormal", kLogNormal, {0.5, 0.8, 0}, kBoth},
        {"Exponential", kExponential, {0.5, 0}, kBoth},
        {"Weibull 2", kWeibull, {2, 10, 0}, kBoth},
        {"Weibull 0.7", kWeibull, {0.7, 3, 0}, kBoth},
        {"Uniform from 0", kUniform, {0, 4}, kLower},
        {"Uniform to 0", kUniform, {-4, 0}, kUpper},
        {"Triangular from 0", kTriangular, {0, 1, 4}, kLower},
        {"Triangular to 0", kTriangular, {-4, -1, 0}, kUpper},
        {"Triangular, likeliest at the minimum 0", kTriangular, {0, 0, 1}, kLower},
        {"Triangular, likeliest at the maximum 0", kTriangular, {-1, 0, 0}, kUpper},
        // The SB tail measures from the lower end: next to the upper one it
        // resolves distances at the scale of lamda, so a wide curve stays clear of it.
        {"Johnson SB", kJohnsonSB, {10, 0.5, 1, 0}, kBoth},
        {"Johnson SU", kJohnsonSU, {1.5, -1, 3, -2}, kBoth},
        {"Johnson SL", kJohnsonSL, {3, 0.5, 2, 0}, kBoth},
        {"Johnson SL mirrored", kJohnsonSL, {3, 0.5, -1, 0}, kBoth},
        {"Johnson normal form", 0, {0.5, -2.5, 0, 0}, kBoth},
    };
    for (const Row& r : rows)
        for (bool upper : {false, true}) {
            if (!(r.Sides & (upper ? kUpper : kLower))) continue;
            for (double p : {1e-3, 1e-9, 1e-15, 1e-100}) {
                const std::string what =
                    std::string(r.Name) + (upper ? " upper " : " lower ") + std::to_string(p);
                const m_Quantile::Limit limit = FromTail(r.Code, r.P, p, upper);
                ASSERT_TRUE(limit.Found) << what << ": " << limit.Message;
                EXPECT_NEAR(Pnc(r.Code, r.P, limit.X, upper), p, 1e-12 * p) << what;
            }
        }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(QuantileTest, AProbabilityOutOfReachIsRefusedWithItsReason) {
    using namespace m_Quantile;
    const struct {
        const char* Name;
        int Code;
        double P[4];
        double Prob;
        bool Upper;
        std::string Message;
    } rows[] = {
        {"zero", kNormal, {0, 1}, 0, false, kOutsideZeroOne},
        {"NaN", kNormal, {0, 1}, NAN, true, kOutsideZeroOne},
        {"a point", kTriangular, {1, 1, 1}, 0.01, false, kNoSpread},
        {"next to an end at 1", kUniform, {1, 2}, 1e-100, false, kUnreachable},
        {"beyond the doubles", kJohnsonSU, {1e-3, 0, 1, 0}, 1e-100, true, kBeyondRange},
        {"the Johnson rule",
         kJohnsonSU,
         {0, 0, 1, 0},
         0.01,
         false,
         "Delta must be greater than zero for a Johnson distribution."},
    };
    for (const auto& r : rows) {
        const m_Quantile::Limit limit = FromTail(r.Code, r.P, r.Prob, r.Upper);
        EXPECT_FALSE(limit.Found) << r.Name;
        EXPECT_EQ(limit.Message, r.Message) << r.Name;
        EXPECT_TRUE(ErrorLabels().empty()) << r.Name;
    }
}

} // namespace
