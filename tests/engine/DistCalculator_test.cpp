// The distribution calculator: both tails against independent references down
// to 1e-300, densities against the slope of the cumulative, grid and supports.
#include "engine/DistCalculator.h"

#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorTrap.h"
#include "tests/engine/EngineReference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

using engine_ref::NormalLower;
using engine_ref::NormalUpper;
using engine_ref::Rel;
using L = long double;

struct Dist {
    std::string Key;
    double P[4];
    int Code = 0; // current distribution code, read by the "Johnson" key
};

// A calculator set up and calculated for the distribution.
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

// Runs f inside a trap so a floating-point fault becomes a recorded error.
template <class F> double Trapped(F f) {
    double v = -1;
    support::Trap("Pondera.test", [&] { v = f(); });
    return v;
}

class DistCalculatorTest : public testing_support::RecordingTest {};

// Exact (lower, upper) tails at x, each computed directly so the small one keeps its digits.
using Tails = std::function<std::pair<L, L>(L)>;
Tails OfZ(std::function<L(L)> z) { // the normal tails of a transform
    return [=](L x) { return std::pair{NormalLower(z(x)), NormalUpper(z(x))}; };
}
Tails OfExp(std::function<L(L)> t) { // P(X > x) = exp(-t(x))
    return [=](L x) { return std::pair{-std::expm1(-t(x)), std::exp(-t(x))}; };
}
Tails Fixed(L lower, L upper) {
    return [=](L) { return std::pair{lower, upper}; };
}

TEST_F(DistCalculatorTest, BothTailsMatchIndependentReferences) {
    const L e = 0x1p-40L;
    const Dist sb{"Johnson", {2, 0.5, 4, 1}, 7}, slPos{"Johnson", {3, 0.5, 1, 2}, 9},
        slNeg{"Johnson", {3, 0.5, -1, 2}, 9};
    const auto normalForm = OfZ([](L x) { return -2.5L + 0.5L * x; });
    const std::tuple<Dist, std::vector<double>, Tails> rows[] = {
        // Normal: both tails out to 1e-300 and beyond (z = 37.5 is 4.6e-308).
        {{"Normal", {0, 1}},
         {0,    0.5, 1,    2.5, 3,  5,  9,   15,  25,  37,   37.5,
          -0.5, -1,  -2.5, -3,  -5, -9, -15, -25, -37, -37.5},
         OfZ([](L x) { return x; })},
        {{"Normal", {10, 0.25}}, {13}, OfZ([](L x) { return (x - 10) / 0.25L; })},
        {{"Exponential", {2, 1}}, {1, 1.5, 3, 21, 101, 341}, OfExp([](L x) {
             return 2 * (x - 1);
         })},
        {{"Exponential", {2, 0}}, {1e-200}, OfExp([](L x) { return 2 * x; })},
        {{"Weibull", {2, 1, 0}}, {0.5, 1, 4, 26}, OfExp([](L x) { return x * x; })},
        {{"Weibull", {0.5, 4, 0}}, {4e-300}, OfExp([](L x) { return std::sqrt(x / 4); })},
        {{"Weibull", {0.5, 4, 3}}, {3 + 4 * 400.0 * 400.0}, OfExp([](L x) {
             return std::sqrt((x - 3) / 4);
         })},
        {{"Lognormal", {0.5, 2, 0}}, {1, 2, 1e5, 1e13, 1e-12}, OfZ([](L x) {
             return (std::log(x) - 0.5L) / 2;
         })},
        {{"Lognormal", {0, 1, 5}}, {4, 5}, Fixed(0, 1)}, // nothing at or below the minimum
        {{"Uniform", {-1, 1}},
         {0.5, 1 - 0x1p-40},
         [](L x) {
             return std::pair{(x + 1) / 2, (1 - x) / 2};
         }},
        {{"Uniform", {-1, 1}}, {3}, Fixed(1, 0)},
        // F = 2x^2 up to the mode, 1 - 2(1 - x)^2 after it.
        {{"Triangular", {0, 0.5, 1}},
         {1e-150, 0.25, 0.5, 0.75, 1 - 0x1p-50},
         [](L x) {
             const L a = 2 * x * x, b = 2 * (1 - x) * (1 - x);
             return x <= 0.5 ? std::pair{a, 1 - a} : std::pair{1 - b, b};
         }},
        // Mode at an end: F = x^2 or 1 - (1 - x)^2, factored.
        {{"Triangular", {0, 1, 1}}, {1 - 0x1p-40}, Fixed((1 - e) * (1 - e), e * (2 - e))},
        {{"Triangular", {0, 0, 1}}, {0x1p-40}, Fixed(e * (2 - e), (1 - e) * (1 - e))},
        // Johnson forms, z from the AS 100 transform.
        {sb, {1.5, 3, 4.9, 1 + 1e-8, 5 - 1e-9}, OfZ([](L x) {
             return 0.5L + 2 * std::log((x - 1) / (5 - x));
         })},
        {sb, {1}, Fixed(0, 1)},
        {sb, {5}, Fixed(1, 0)},
        {{"Johnson", {1.5, -1, 3, -2}, 8}, {-2, 0, 50, -1e6, 1e12}, OfZ([](L x) {
             return -1 + 1.5L * std::asinh((x + 2) / 3);
         })},
        {slPos, {2.5, 3, 20, 2 + 1e-6}, OfZ([](L x) { return 3 * std::log(x - 2) + 0.5L; })},
        {slPos, {2}, Fixed(0, 1)},
        {slNeg, {1.5, 1, -20, 2 - 1e-6}, OfZ([](L x) { return -(3 * std::log(2 - x) + 0.5L); })},
        {slNeg, {2}, Fixed(1, 0)},
        // Any other code: the normal form z = gamma + delta x.
        {{"Johnson", {0.5, -2.5, 0, 0}, 0}, {29}, normalForm},
        {{"Johnson", {0.5, -2.5, 0, 0}, 1}, {29}, normalForm},
        {{"Johnson", {0.5, -2.5, 0, 0}, 3}, {-1}, normalForm},
    };
    for (const auto& [d, points, tails] : rows) {
        const DistCalculator calc = Make(d);
        for (double x : points) {
            SCOPED_TRACE(d.Key + " " + std::to_string(d.P[0]) + " code " + std::to_string(d.Code) +
                         " at x = " + std::to_string(x));
            const auto [lower, upper] = tails(x);
            const double got[2] = {Trapped([&] { return calc.CumulativeProbability(x); }),
                                   Trapped([&] { return calc.UpperTailProbability(x); })};
            const L want[2] = {lower, upper};
            // Below 1e-300 a tail only has to be right in absolute terms.
            for (int i = 0; i < 2; ++i) {
                if (want[i] < 1e-300L)
                    EXPECT_LE(std::fabs(got[i] - static_cast<double>(want[i])), 1e-300);
                else
                    EXPECT_LE(Rel(got[i], want[i]), 2e-12) << got[i] << " vs " << double(want[i]);
            }
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// Distributions across families, supports and scales, for the density checks.
const std::vector<Dist> kShapes = {
    {"Normal", {3, 2}},
    {"Normal", {-1e5, 1e-3}},
    {"Lognormal", {0.3, 0.6, 1}},
    {"Lognormal", {-40, 3, 0}},
    {"Exponential", {0.5, -1}},
    {"Weibull", {2.5, 3, 1}},
    {"Weibull", {3, 0.5, -2}},
    {"Weibull", {0.7, 3, 1}},
    {"Weibull", {12.5, 1e-4, 0}},
    {"Uniform", {-1, 3}},
    {"Triangular", {-1, 0.5, 1}},
    {"Johnson", {1.3, 0.4, 5, -1}, 7},
    {"Johnson", {0.2, 3, 1e-3, 0}, 7},
    {"Johnson", {1.3, 0.4, 2, -1}, 8},
    {"Johnson", {0.3, -2, 1e4, 5}, 8},
    {"Johnson", {1.3, 0.4, 1, -1}, 9},
    {"Johnson", {1.3, 0.4, -1, 2}, 9},
    {"Johnson", {0.5, 1, 0, 0}, 0},
};

TEST_F(DistCalculatorTest, DensityIsTheSlopeOfTheCumulative) {
    for (const Dist& d : kShapes) {
        const DistCalculator calc = Make(d);
        // Points inside the support, where the slope is smooth: quantiles 0.05 .. 0.95.
        for (double x = -50; x <= 50; x += 0.37) {
            const double f = calc.CumulativeProbability(x);
            if (f < 0.05 || f > 0.95) continue;
            SCOPED_TRACE(d.Key + " code " + std::to_string(d.Code) + " x " + std::to_string(x));
            const double h = 1e-5 * std::max(1.0, std::fabs(x));
            const double slope =
                (calc.CumulativeProbability(x + h) - calc.CumulativeProbability(x - h)) / (2 * h);
            EXPECT_NEAR(calc.Density(x), slope, 1e-7 * std::max(1.0, slope));
            EXPECT_NEAR(f + calc.UpperTailProbability(x), 1.0, 1e-15); // complements
        }
    }
}

TEST_F(DistCalculatorTest, GridDensitiesAgreeWithThePointDensityEverywhere) {
    // The grid has quick forms for ordinary points; they must give what the
    // careful point-by-point density gives, across supports, tails and scales.
    const std::pair<double, double> ranges[] = {
        {-10, 10}, {-1e5 - 0.01, -1e5 + 0.01}, {0, 1e-3}, {-1e6, 1e6}, {5, -5}};
    for (const Dist& d : kShapes)
        for (const auto& [low, high] : ranges) {
            DistCalculator calc = Make(d);
            calc.SetNumberOfPoints(333);
            ASSERT_TRUE(calc.ComputeDensities(low, high));
            ASSERT_TRUE(calc.Calculate()); // the grid leaves the point functions to be calculated
            for (int i = 1; i <= 333; ++i) {
                const double x = m_Distributions::GridX(low, high, 333, i);
                const double want = calc.Density(x), got = calc.DensityValue(i);
                if (want < 1e-290)
                    EXPECT_LE(got, 1e-290);
                else
                    EXPECT_LE(Rel(got, want), 1e-12) << d.Key << " code " << d.Code << " x " << x;
            }
        }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, SupportEndsAndPoles) {
    const std::tuple<Dist, double, double> rows[] = {
        {{"Exponential", {2, 1}}, 1, 2}, // the density starts at rate
        {{"Exponential", {2, 1}}, 0.999, 0},
        {{"Weibull", {0.5, 1, 0}}, 0, 0}, // a pole is drawn as 0
        {{"Weibull", {1, 4, 0}}, 0, 0.25},
        {{"Weibull", {3, 1, 0}}, 0, 0},
        {{"Weibull", {3, 1, 0}}, -1, 0},
        {{"Uniform", {-1, 3}}, -1, 0.25},
        {{"Uniform", {-1, 3}}, 3.5, 0},
        {{"Triangular", {-1, 0, 1}}, 0, 1},
        {{"Triangular", {0, 0, 2}}, 0, 1}, // mode at an end
        {{"Triangular", {0, 2, 2}}, 2, 1},
        {{"Lognormal", {0, 1, 5}}, 5, 0},
        {{"Johnson", {1, 0, 2, 0}, 7}, 0, 0},
        {{"Johnson", {1, 0, 2, 0}, 7}, 2, 0}, // SB ends excluded
        {{"Johnson", {1, 0, 1, 0}, 9}, 0, 0},
        {{"Johnson", {1, 0, -1, 0}, 9}, 0.5, 0},       // negative SL lives below xi
        {{"Johnson", {0.001, 0, 1, 0}, 7}, 1e-320, 0}, // beside a pole: drawn as the pole
        {{"Johnson", {0.001, 0, 1, 0}, 9}, 1e-320, 0},
    };
    for (const auto& [d, x, density] : rows)
        EXPECT_DOUBLE_EQ(Make(d).Density(x), density) << d.Key << " code " << d.Code << " at " << x;
    // No spread: a flat zero density.
    DistCalculator flat = Make({"Triangular", {2, 2, 2}}, false);
    flat.SetNumberOfPoints(5);
    ASSERT_TRUE(flat.ComputeDensities(1, 3));
    for (int i = 1; i <= 5; ++i)
        EXPECT_EQ(flat.DensityValue(i), 0);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, UnusableParametersAreRefusedWithAMessage) {
    const std::pair<Dist, const char*> rows[] = {
        {{"Normal", {0, 0}}, "Standard deviation must be greater than zero."},
        {{"Lognormal", {0, -1}}, "Standard deviation must be greater than zero."},
        {{"Exponential", {0, 0}},
         "Scale parameter for an Exponential distribution must be greater than zero."},
        {{"Weibull", {0, 1}},
         "Shape parameter for a Weibull distribution must be greater than zero."},
        {{"Weibull", {1, 0}},
         "Scale parameter for a Weibull distribution must be greater than zero."},
        {{"Uniform", {2, 1}}, "Minimum must be less than Maximum for a Uniform distribution."},
        {{"Triangular", {0, 2, 1}},
         "Likeliest value must be between Minimum and Maximum for a Triangular distribution."},
        {{"Johnson", {0, 0, 1, 0}, 7},
         "Delta must be greater than zero for a Johnson distribution."},
        {{"Johnson", {1, 0, 0, 0}, 7},
         "Lamda must be greater than zero for a Johnson SB distribution."},
        {{"Johnson", {1, 0, -2, 0}, 8},
         "Lamda must be greater than zero for a Johnson SU distribution."},
        {{"Johnson", {1, 0, 0, 0}, 9}, "Lamda must not be zero for a Johnson SL distribution."},
        {{"Normal", {NAN, 1}}, "The parameters must be finite numbers."},
        {{"LogNormal", {0, 1}}, "Unknown distribution \"LogNormal\"."}, // keys compare exactly
    };
    for (const auto& [d, message] : rows) {
        DistCalculator calc = Make(d, false);
        EXPECT_FALSE(calc.Calculate()) << message;
        EXPECT_EQ(calc.Message(), message);
    }
    // Asking before Calculate, after a change, or outside the slots and grid is an error.
    DistCalculator calc = Make({"Normal", {0, 1}}, false);
    EXPECT_THROW(calc.CumulativeProbability(0), support::RunTimeError);
    ASSERT_TRUE(calc.Calculate());
    calc.SetParam(2, 0);
    EXPECT_THROW(calc.CumulativeProbability(0), support::RunTimeError);
    EXPECT_THROW(calc.SetParam(5, 1), support::RunTimeError);
    EXPECT_THROW(calc.DensityValue(1), support::RunTimeError);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, FarTailsAndExtremeScalesStayFiniteWithoutFaults) {
    const Dist setups[] = {
        {"Normal", {0, 1e-300}},
        {"Normal", {0, 1e300}},
        {"Lognormal", {0, 50, 0}},
        {"Exponential", {1e-300, 0}},
        {"Exponential", {1e300, 0}},
        {"Weibull", {1e-3, 1, 0}},
        {"Weibull", {1e3, 1, 0}},
        {"Weibull", {1e300, 1, 0}},
        {"Johnson", {1e-300, 1e300, 1e-300, 0}, 8},
        {"Johnson", {1e300, 0, 1, 0}, 7},
        {"Johnson", {1, 0, 1e300, -1e300}, 9},
    };
    for (const Dist& s : setups) {
        const DistCalculator calc = Make(s);
        for (double x :
             {-1e300, -1e10, -1.0, -1e-300, 0.0, 1e-320, 1e-300, 0.5, 1.0, 1e10, 1e300}) {
            const double lo = Trapped([&] { return calc.CumulativeProbability(x); });
            const double up = Trapped([&] { return calc.UpperTailProbability(x); });
            const double de = Trapped([&] { return calc.Density(x); });
            EXPECT_TRUE(lo >= 0 && lo <= 1 && up >= 0 && up <= 1) << s.Key << " " << x;
            EXPECT_TRUE(std::isfinite(de) && de >= 0) << s.Key << " " << s.P[0] << " " << x;
        }
    }
    for (const auto& e : Rec().AllErrors())
        ADD_FAILURE() << e.Label << " " << e.Description;
}

} // namespace
