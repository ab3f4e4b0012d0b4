// Log-gamma and gamma by the Lanczos series, against exact factorials and
// half-integer values.
#include "engine/m_NumRecipes.h"

#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace m_NumRecipes;

class NumRecipesTest : public testing_support::RecordingTest {};

TEST_F(NumRecipesTest, GammaMatchesFactorialsAndHalfIntegers) {
    struct Row {
        double X;
        long double Exact;
    };
    const long double rootPi = std::sqrt(3.141592653589793238462643383279502884L);
    const std::vector<Row> rows = {
        {1, 1}, {2, 1}, {3, 2}, {5, 24}, {11, 3628800}, {21, 2432902008176640000.0L},
        {0.5, rootPi}, {1.5, rootPi / 2}, {2.5, 3 * rootPi / 4}, {10.5, 1133278.38894878556733L},
    };
    for (const auto& r : rows) {
        // The Numerical Recipes series is good to about 2e-10 relative.
        EXPECT_LE(std::fabs((Gamma(r.X) - r.Exact) / r.Exact), 2e-10) << r.X;
        EXPECT_NEAR(gammln(r.X), std::log(r.Exact), 2e-10) << r.X;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(NumRecipesTest, GammlnAgreesWithTheLibraryOverAWideRange) {
    for (double x = 0.01; x < 1e6; x *= 1.7)
        EXPECT_NEAR(gammln(x), std::lgamma(x), 2e-10 * std::max(1.0, std::fabs(std::lgamma(x)))) << x;
}

TEST_F(NumRecipesTest, GammlnOfZeroIsADivisionByZero) {
    EXPECT_EQ(gammln(0), 0);
    ASSERT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.m_NumRecipes.gammln"});
    EXPECT_EQ(Rec().AllErrors()[0].Number, 11);
}

TEST_F(NumRecipesTest, UnsupportedArgumentsAreErrorsWithZeroResults) {
    struct Row {
        double X;
        const char* Label;
    };
    const std::vector<Row> rows = {
        {-0.5, "Pondera.m_NumRecipes.Gamma"}, // no reflection formula
        {0, "Pondera.m_NumRecipes.Gamma"},
        {1e-320, "Pondera.m_NumRecipes.Gamma"},
        {200, "Pondera.m_NumRecipes.Gamma"}, // Gamma(200) overflows
        {std::nan(""), "Pondera.m_NumRecipes.Gamma"},
    };
    for (const auto& r : rows) {
        Rec().Clear();
        EXPECT_EQ(Gamma(r.X), 0) << r.X;
        EXPECT_EQ(ErrorLabels(), std::vector<std::string>{r.Label}) << r.X;
    }
    for (double bad : testing_support::BadValues()) {
        EXPECT_TRUE(std::isfinite(gammln(bad))) << bad;
        EXPECT_TRUE(std::isfinite(Gamma(bad))) << bad;
    }
}

} // namespace
