// The distribution calculator: both tails against long-double closed forms down
// to 1e-300, every density path against the slope of the cumulative, refusals.
#include "engine/DistCalculator.h"

#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorTrap.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

using L = long double;
using Pdf = double (*)(double, double, double, double, double);

struct Dist {
    std::string Key;
    double P[4];
    int Code = 0; // current distribution code, read by the "Johnson" key
};

DistCalculator Make(const Dist& s, bool calculate = true) {
    m_PercentCertainty::CurrentDistribution = s.Code;
    DistCalculator calc;
    calc.SetDistribution(s.Key);
    for (int i = 0; i < 4; ++i)
        calc.SetParam(i + 1, s.P[i]);
    if (calculate) {
        EXPECT_TRUE(calc.Calculate()) << s.Key << ": " << calc.Message();
    }
    return calc;
}

// Standard normal tails in long double (glibc's erfcl, not the double erfc under test).
L Lower(L z) {
    return 0.5L * std::erfc(-z / std::sqrt(2.0L));
}
L Upper(L z) {
    return 0.5L * std::erfc(z / std::sqrt(2.0L));
}

using Tails = std::function<std::pair<L, L>(L)>;
Tails OfZ(std::function<L(L)> z) {
    return [=](L x) { return std::pair{Lower(z(x)), Upper(z(x))}; };
}
Tails OfExp(std::function<L(L)> t) { // P(X > x) = exp(-t(x))
    return [=](L x) { return std::pair{-std::expm1(-t(x)), std::exp(-t(x))}; };
}
Tails Fixed(L lower, L upper) {
    return [=](L) { return std::pair{lower, upper}; };
}

class DistCalculatorTest : public testing_support::RecordingTest {};

TEST_F(DistCalculatorTest, BothTailsMatchClosedForms) {
    const Dist sb{"Johnson", {2, 0.5, 4, 1}, 7}, sl{"Johnson", {3, 0.5, 2, 2}, 9},
        slNeg{"Johnson", {3, 0.5, -1, 2}, 9};
    const std::tuple<const char*, Dist, std::vector<double>, Tails> rows[] = {
        {"normal out to 4.6e-308",
         {"Normal", {0, 1}},
         {0, 1, 2.5, 9, 25, 37.5, -0.5, -3, -15, -37.5},
         OfZ([](L x) { return x; })},
        {"exponential", {"Exponential", {2, 1}}, {1.5, 21, 341}, OfExp([](L x) {
             return 2 * (x - 1);
         })},
        {"weibull next to its threshold", {"Weibull", {0.5, 4, 0}}, {4e-300}, OfExp([](L x) {
             return std::sqrt(x / 4);
         })},
        {"lognormal", {"Lognormal", {0.5, 2, 0}}, {1, 1e5, 1e13, 1e-12}, OfZ([](L x) {
             return (std::log(x) - 0.5L) / 2;
         })},
        {"lognormal at and below its threshold", {"Lognormal", {0, 1, 5}}, {4, 5}, Fixed(0, 1)},
        {"uniform",
         {"Uniform", {-1, 1}},
         {0.5, 1 - 0x1p-40},
         [](L x) {
             return std::pair{(x + 1) / 2, (1 - x) / 2};
         }},
        {"triangular: 2x^2, then 1 - 2(1 - x)^2",
         {"Triangular", {0, 0.5, 1}},
         {1e-150, 0.25, 0.75, 1 - 0x1p-50},
         [](L x) {
             const L a = 2 * x * x, b = 2 * (1 - x) * (1 - x);
             return x <= 0.5 ? std::pair{a, 1 - a} : std::pair{1 - b, b};
         }},
        {"johnson SB (AS 100)", sb, {1.5, 4.9, 1 + 1e-8, 5 - 1e-9}, OfZ([](L x) {
             return 0.5L + 2 * std::log((x - 1) / (5 - x));
         })},
        {"johnson SU", {"Johnson", {1.5, -1, 3, -2}, 8}, {-2, 50, -1e6, 1e12}, OfZ([](L x) {
             return -1 + 1.5L * std::asinh((x + 2) / 3);
         })},
        {"johnson SL, lamda inside the logarithm", sl, {2.5, 20, 2 + 1e-6}, OfZ([](L x) {
             return 0.5L + 3 * std::log((x - 2) / 2);
         })},
        {"johnson SL mirrored", slNeg, {1.5, -20, 2 - 1e-6}, OfZ([](L x) {
             return -(0.5L + 3 * std::log(2 - x));
         })},
        {"johnson normal form for any other code",
         {"Johnson", {0.5, -2.5, 0, 0}, 1},
         {29, -1},
         OfZ([](L x) { return -2.5L + 0.5L * x; })},
    };
    for (const auto& [what, d, points, tails] : rows) {
        const DistCalculator calc = Make(d);
        for (double x : points) {
            const auto [lower, upper] = tails(x);
            const double got[2] = {calc.CumulativeProbability(x), calc.UpperTailProbability(x)};
            const L want[2] = {lower, upper};
            for (int i = 0; i < 2; ++i) // below 1e-300 only absolute terms count
                EXPECT_LE(std::fabs(got[i] - want[i]),
                          want[i] < 1e-300L ? 1e-300L : 2e-12L * want[i])
                    << what << " at " << x << (i ? " upper" : " lower");
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, EveryDensityPathIsTheSlopeOfTheCumulative) {
    // Paths: the calculator's point density, its grid (through GetPDFData), and
    // the engine's own density where the moments view draws with one.
    struct Row {
        const char* Name; // as GetPDFData takes it
        Dist D;
        Pdf Own;
    };
    auto normal = [](double x, double m, double s, double, double) {
        return m_Distributions::Normal_PDF(x, m, s);
    };
    const Row rows[] = {
        {"Normal", {"Normal", {3, 2}}, normal},
        {"LogNormal", {"Lognormal", {0.3, 0.6, 1}}, nullptr},
        {"Exponential", {"Exponential", {0.5, -1}}, nullptr},
        {"Weibull", {"Weibull", {2.5, 3, 1}}, nullptr},
        {"Weibull", {"Weibull", {0.7, 3, 1}}, nullptr},
        {"Uniform", {"Uniform", {-1, 3}}, nullptr},
        {"Triangular", {"Triangular", {-1, 0.5, 1}}, nullptr},
        {"Johnson", {"Johnson", {1.3, 0.4, 5, -1}, 7}, m_Distributions::JohnsonSB_PDF},
        {"Johnson", {"Johnson", {1.3, 0.4, 2, -1}, 8}, m_Distributions::JohnsonSU_PDF},
        {"Johnson", {"Johnson", {1.3, 0.4, 1, -1}, 9}, m_Distributions::JohnsonSL_PDF},
        {"Johnson", {"Johnson", {1.3, 0.4, 2.5, -1}, 9}, m_Distributions::JohnsonSL_PDF},
        {"Johnson", {"Johnson", {1.3, 0.4, -1, 2}, 9}, m_Distributions::JohnsonSL_PDF},
        {"Johnson", {"Johnson", {1.3, 0.4, -3, 2}, 9}, m_Distributions::JohnsonSL_PDF},
        {"Johnson", {"Johnson", {0.5, 1, 0, 0}, 0}, nullptr},
    };
    constexpr int kN = 397;
    for (const Row& r : rows) {
        const Dist& d = r.D;
        const DistCalculator calc = Make(d);
        const auto grid =
            m_Distributions::GetPDFData(r.Name, -20, 20, kN, d.P[0], d.P[1], d.P[2], d.P[3]);
        ASSERT_EQ(grid.size(), kN + 1u);
        int checked = 0;
        for (int i = 1; i <= kN; ++i) {
            const double x = m_Distributions::GridX(-20, 20, kN, i);
            const double f = calc.CumulativeProbability(x);
            if (f < 0.02 || f > 0.98) continue; // smooth inside, away from the ends
            const double h = 1e-5 * std::max(1.0, std::fabs(x));
            const double slope =
                (calc.CumulativeProbability(x + h) - calc.CumulativeProbability(x - h)) / (2 * h);
            const double tol = 1e-7 * std::max(1.0, slope);
            const std::string where = d.Key + " " + std::to_string(d.P[2]) + " code " +
                                      std::to_string(d.Code) + " x " + std::to_string(x);
            EXPECT_NEAR(calc.Density(x), slope, tol) << where;
            EXPECT_NEAR(grid[i], slope, tol) << where << " grid";
            if (r.Own) {
                EXPECT_NEAR(r.Own(x, d.P[0], d.P[1], d.P[2], d.P[3]), slope, tol) << where;
            }
            EXPECT_NEAR(f + calc.UpperTailProbability(x), 1.0, 1e-15) << where;
            ++checked;
        }
        EXPECT_GT(checked, 5) << d.Key << " code " << d.Code;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, UnusableParametersAreRefusedWithAMessage) {
    const std::pair<Dist, const char*> rows[] = {
        {{"Johnson", {1, 0, 0, 0}, 9}, "Lamda must not be zero for a Johnson SL distribution."},
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
