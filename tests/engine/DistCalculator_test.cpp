// The distribution calculator, family by family: both tails against long-double
// closed forms down to 1e-300, and every density path (the point density, the
// grid, the engine's own density) against the slope of the cumulative.
#include "engine/DistCalculator.h"

#include "engine/m_Distributions.h"
#include "support/ErrorTrap.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <functional>

namespace {

using L = long double;
using Pdf = double (*)(double, double, double, double, double);

struct Dist {
    std::string Key;
    double P[4];
    int Code = 0; // the Johnson form the "Johnson" key means
};

DistCalculator Make(const Dist& s, bool calculate = true) {
    DistCalculator calc;
    calc.SetDistribution(s.Key, s.Code);
    for (int i = 0; i < 4; ++i)
        calc.SetParam(i + 1, s.P[i]);
    if (calculate) {
        EXPECT_TRUE(calc.Calculate()) << s.Key << ": " << calc.Message();
    }
    return calc;
}

using Tails = std::function<std::pair<L, L>(L)>;
// Standard normal tails in long double (glibc's erfcl, not the double erfc under test).
Tails OfZ(std::function<L(L)> z) {
    return [=](L x) {
        const L t = z(x) / std::sqrt(2.0L);
        return std::pair{0.5L * std::erfc(-t), 0.5L * std::erfc(t)};
    };
}
Tails OfExp(std::function<L(L)> t) { // P(X > x) = exp(-t(x))
    return [=](L x) { return std::pair{-std::expm1(-t(x)), std::exp(-t(x))}; };
}

double OwnNormal(double x, double m, double s, double, double) {
    return m_Distributions::Normal_PDF(x, m, s);
}

class DistCalculatorTest : public testing_support::RecordingTest {};

TEST_F(DistCalculatorTest, TailsMatchClosedFormsAndDensitiesAreTheirSlope) {
    using m_Distributions::JohnsonSB_PDF, m_Distributions::JohnsonSL_PDF,
        m_Distributions::JohnsonSU_PDF;
    const struct Row {
        Dist D;
        Pdf Own;                   // the engine's own density, where the moments view uses one
        Tails Ref;                 // P(X <= x), P(X > x)
        std::vector<double> Ahead; // points far out or next to an end
    } rows[] = {
        {{"Normal", {0, 1}}, OwnNormal, OfZ([](L x) { return x; }), {1, 9, 25, 37.5, -3, -37.5}},
        {{"Exponential", {2, 1}}, nullptr, OfExp([](L x) { return 2 * (x - 1); }), {1.5, 21, 341}},
        {{"Weibull", {0.5, 4, 0}}, nullptr, OfExp([](L x) { return std::sqrt(x / 4); }), {4e-300}},
        {{"Lognormal", {0.5, 2, 0}},
         nullptr,
         OfZ([](L x) { return (std::log(x) - 0.5L) / 2; }),
         {1, 1e5, 1e13, 1e-12}},
        {{"Uniform", {-1, 1}},
         nullptr,
         [](L x) {
             return std::pair{(x + 1) / 2, (1 - x) / 2};
         },
         {0.5, 1 - 0x1p-40}},
        // 2x^2, then 1 - 2(1 - x)^2
        {{"Triangular", {0, 0.5, 1}},
         nullptr,
         [](L x) {
             const L a = 2 * x * x, b = 2 * (1 - x) * (1 - x);
             return x <= 0.5 ? std::pair{a, 1 - a} : std::pair{1 - b, b};
         },
         {1e-150, 0.25, 0.75, 1 - 0x1p-50}},
        // The Johnson forms by the code given with the key, as AS 100 gives them; the SL keeps
        // lamda inside the logarithm, a negative lamda mirrors it, and any other
        // code is the normal form.
        {{"Johnson", {2, 0.5, 4, 1}, 7},
         JohnsonSB_PDF,
         OfZ([](L x) { return 0.5L + 2 * std::log((x - 1) / (5 - x)); }),
         {1.5, 4.9, 1 + 1e-8, 5 - 1e-9}},
        {{"Johnson", {1.5, -1, 3, -2}, 8},
         JohnsonSU_PDF,
         OfZ([](L x) { return -1 + 1.5L * std::asinh((x + 2) / 3); }),
         {-2, 50, -1e6, 1e12}},
        {{"Johnson", {3, 0.5, 2, 2}, 9},
         JohnsonSL_PDF,
         OfZ([](L x) { return 0.5L + 3 * std::log((x - 2) / 2); }),
         {2.5, 20, 2 + 1e-6}},
        {{"Johnson", {3, 0.5, -1, 2}, 9},
         JohnsonSL_PDF,
         OfZ([](L x) { return -(0.5L + 3 * std::log(2 - x)); }),
         {1.5, -20, 2 - 1e-6}},
        {{"Johnson", {0.5, -2.5, 0, 0}, 1},
         nullptr,
         OfZ([](L x) { return -2.5L + 0.5L * x; }),
         {29, -1}},
    };
    constexpr int kN = 397;
    for (const Row& r : rows) {
        const Dist& d = r.D;
        const DistCalculator calc = Make(d);
        const std::string what =
            d.Key + " " + std::to_string(d.P[0]) + " code " + std::to_string(d.Code);
        auto tailsMatch = [&](double x) {
            const auto [lower, upper] = r.Ref(x);
            const double got[2] = {calc.CumulativeProbability(x), calc.UpperTailProbability(x)};
            const L want[2] = {lower, upper};
            for (int i = 0; i < 2; ++i) // below 1e-300 only absolute terms count
                EXPECT_LE(std::fabs(got[i] - want[i]),
                          want[i] < 1e-300L ? 1e-300L : 2e-12L * want[i])
                    << what << " at " << x << (i ? " upper" : " lower");
        };
        for (double x : r.Ahead)
            tailsMatch(x);
        const auto grid =
            m_Distributions::GetPDFData(d.Key == "Lognormal" ? "LogNormal" : d.Key, -20, 20, kN,
                                        d.P[0], d.P[1], d.P[2], d.P[3], d.Code);
        ASSERT_EQ(grid.size(), kN + 1u);
        int checked = 0;
        for (int i = 1; i <= kN; ++i) {
            const double x = m_Distributions::GridX(-20, 20, kN, i);
            const double f = calc.CumulativeProbability(x);
            if (f < 0.02 || f > 0.98) continue; // smooth inside, away from the ends
            tailsMatch(x);
            const double h = 1e-5 * std::max(1.0, std::fabs(x));
            const double slope =
                (calc.CumulativeProbability(x + h) - calc.CumulativeProbability(x - h)) / (2 * h);
            const double tol = 1e-7 * std::max(1.0, slope);
            EXPECT_NEAR(calc.Density(x), slope, tol) << what << " at " << x;
            EXPECT_NEAR(grid[i], slope, tol) << what << " grid at " << x;
            if (r.Own) {
                EXPECT_NEAR(r.Own(x, d.P[0], d.P[1], d.P[2], d.P[3]), slope, tol) << what << x;
            }
            ++checked;
        }
        EXPECT_GT(checked, 5) << what;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// Weibull corners where (x - min) / scale or its power leaves the double range,
// or a steep curve sits just above its scale. References: mpmath at 40 digits
// (the double x taken exactly), lower = -expm1(-u^k), upper = exp(-u^k),
// density (k/eta) u^(k-1) exp(-u^k).
TEST_F(DistCalculatorTest, WeibullTailsHoldWhereTheRatioLeavesTheRange) {
    const struct Row {
        const char* Name;
        double K, Eta, X;
        L Lower, Upper, Density;
    } rows[] = {
        {"shape 2000 just above the scale", 2000, 1, 1.0001, 0.70518007861221701173L,
         0.29481992138778298827L, 720.10851807417264416L},
        {"ratio 1e160, small shape", 0.01, 1e-160, 1, 0.99999999999999999487L,
         5.1336382510526146189e-18L, 2.0437381987717607849e-18L},
        {"ratio 1e310, small shape", 0.005, 1e-300, 1e10, 0.99999999999999961037L,
         3.896281218624702943e-16L, 6.9122637229367828673e-27L},
        {"ratio 1e-330, tiny shape", 0.001, 1e300, 1e-30, 0.3735805856724556153L,
         0.6264194143275443847L, 2.9299837326553789424e+26L},
    };
    for (const Row& r : rows) {
        const DistCalculator calc = Make({"Weibull", {r.K, r.Eta, 0}});
        EXPECT_NEAR(calc.CumulativeProbability(double(r.X)), double(r.Lower),
                    double(1e-12L * r.Lower))
            << r.Name;
        EXPECT_NEAR(calc.UpperTailProbability(double(r.X)), double(r.Upper),
                    double(1e-12L * r.Upper))
            << r.Name;
        EXPECT_NEAR(calc.Density(double(r.X)), double(r.Density), double(1e-11L * r.Density))
            << r.Name;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, UnusableParametersAreRefusedWithAMessage) {
    const std::pair<Dist, const char*> rows[] = {
        {{"Johnson", {1, 0, 0, 0}, 9}, "Lamda must not be zero for a Johnson SL distribution."},
        {{"Johnson", {0, 0, 1, 0}, 0},
         "Delta must be greater than zero for a Johnson distribution."},
        {{"Normal", {NAN, 1}}, "The parameters must be finite numbers."},
        {{"LogNormal", {0, 1}}, "Unknown distribution \"LogNormal\"."}, // keys compare exactly
    };
    for (const auto& [d, message] : rows) {
        DistCalculator calc = Make(d, false);
        EXPECT_FALSE(calc.Calculate()) << message;
        EXPECT_EQ(calc.Message(), message);
    }
    // Asking after a change, before Calculate again, is an error.
    DistCalculator calc = Make({"Normal", {0, 1}});
    calc.SetParam(2, 0);
    EXPECT_THROW(calc.CumulativeProbability(0), support::RunTimeError);
}

} // namespace
