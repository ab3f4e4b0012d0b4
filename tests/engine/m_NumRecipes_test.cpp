// Log-gamma and gamma by the Lanczos series, against exact factorials,
// half-integer values and the C library.
#include "engine/m_NumRecipes.h"

#include "tests/helpers/TestSupport.h"

#include <cmath>

namespace {

using namespace m_NumRecipes;

class NumRecipesTest : public testing_support::RecordingTest {};

TEST_F(NumRecipesTest, GammaMatchesFactorialsAndHalfIntegers) {
    const long double rootPi = std::sqrt(3.141592653589793238462643383279502884L);
    const std::pair<double, long double> rows[] = {{1, 1},
                                                   {2, 1},
                                                   {3, 2},
                                                   {5, 24},
                                                   {11, 3628800},
                                                   {21, 2432902008176640000.0L},
                                                   {0.5, rootPi},
                                                   {1.5, rootPi / 2},
                                                   {2.5, 3 * rootPi / 4},
                                                   {10.5, 1133278.38894878556733L}};
    for (const auto& [x, exact] : rows) {
        // The Numerical Recipes series is good to about 2e-10 relative.
        EXPECT_LE(std::fabs((Gamma(x) - exact) / exact), 2e-10) << x;
    }
    for (double x = 0.01; x < 1e6; x *= 1.7)
        EXPECT_NEAR(gammln(x), std::lgamma(x), 2e-10 * std::max(1.0, std::fabs(std::lgamma(x))))
            << x;
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(NumRecipesTest, UnsupportedArgumentsAreErrorsWithZeroResults) {
    EXPECT_EQ(gammln(0), 0);
    ASSERT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.m_NumRecipes.gammln"});
    EXPECT_EQ(Rec().AllErrors()[0].Number, 11); // division by zero
    // No reflection formula below 0; Gamma(200) overflows.
    for (double x : {-0.5, 0.0, 1e-320, 200.0, std::nan("")}) {
        Rec().Clear();
        EXPECT_EQ(Gamma(x), 0) << x;
        EXPECT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.m_NumRecipes.Gamma"}) << x;
    }
    for (double bad : testing_support::BadValues())
        EXPECT_TRUE(std::isfinite(gammln(bad)) && std::isfinite(Gamma(bad))) << bad;
}

} // namespace
