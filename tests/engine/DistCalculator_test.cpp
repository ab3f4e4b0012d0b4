// The distribution calculator: both tails against independent references down
// to 1e-300, densities against the slope of the cumulative, grid and supports.
#include "engine/DistCalculator.h"

#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorTrap.h"
#include "tests/engine/EngineReference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

namespace {

using engine_ref::Rel;

struct Dist {
    std::string Key;
    double P[4];
    int Code = 0; // current distribution code, read by the "Johnson" key
};

DistCalculator Make(const Dist& s) {
    m_PercentCertainty::CurrentDistribution = s.Code;
    DistCalculator calc;
    calc.SetDistribution(s.Key);
    for (int i = 0; i < 4; ++i) calc.SetParam(i + 1, s.P[i]);
    return calc;
}

// Runs f inside a trap so a floating-point fault becomes a recorded error.
template <class F> double Trapped(F f) {
    double v = -1;
    support::Trap("Pondera.test", [&] { v = f(); });
    return v;
}

class DistCalculatorTest : public testing_support::RecordingTest {};

// One row: a point and the exact lower and upper tails there.
struct TailRow {
    const char* Name;
    Dist S;
    double X;
    long double Lower, Upper;
};

std::vector<TailRow> TailRows() {
    using namespace engine_ref;
    std::vector<TailRow> rows;
    // Normal: both tails out to 1e-300 and beyond (z = 37.5 is 4.6e-308).
    for (double z : {0.0, 0.5, 1.0, 2.5, 3.0, 5.0, 9.0, 15.0, 25.0, 37.0, 37.5}) {
        rows.push_back({"Normal upper", {"Normal", {0, 1, 0, 0}}, z, NormalLower(z), NormalUpper(z)});
        rows.push_back({"Normal lower", {"Normal", {0, 1, 0, 0}}, -z, NormalLower(-z), NormalUpper(-z)});
    }
    // Shifted and scaled, with an exactly representable z = 12.
    rows.push_back({"Normal 10,0.25", {"Normal", {10, 0.25, 0, 0}}, 13, NormalLower(12), NormalUpper(12)});
    // Exponential: P(X > x) = exp(-rate (x - min)).
    for (double x : {1.0, 1.5, 3.0, 21.0, 101.0, 341.0}) {
        const long double up = std::exp(-2.0L * (x - 1));
        rows.push_back({"Exponential 2,1", {"Exponential", {2, 1, 0, 0}}, x, 1 - up, up});
    }
    rows.push_back({"Exponential near min", {"Exponential", {2, 0, 0, 0}}, 1e-200, 2e-200L, 1});
    // Weibull: P(X > x) = exp(-((x - min)/scale)^shape).
    for (double x : {0.5, 1.0, 4.0, 26.0}) {
        const long double t = std::pow(static_cast<long double>(x), 2.0L);
        rows.push_back({"Weibull 2,1,0", {"Weibull", {2, 1, 0, 0}}, x, -std::expm1(-t), std::exp(-t)});
    }
    rows.push_back({"Weibull 0.5,4,0", {"Weibull", {0.5, 4, 0, 0}}, 4e-300, 1e-150L, 1 - 1e-150L});
    rows.push_back({"Weibull 0.5,4,3 far", {"Weibull", {0.5, 4, 3, 0}}, 3 + 4 * 400.0 * 400.0,
                    1 - std::exp(-400.0L), std::exp(-400.0L)});
    // Log-normal: the normal tails of ln(x - min).
    for (double x : {1.0, 2.0, 1e5, 1e13, 1e-12}) {
        const long double z = (std::log(static_cast<long double>(x)) - 0.5L) / 2;
        rows.push_back({"Lognormal 0.5,2,0", {"Lognormal", {0.5, 2, 0, 0}}, x, NormalLower(z), NormalUpper(z)});
    }
    rows.push_back({"Lognormal below min", {"Lognormal", {0, 1, 5, 0}}, 4, 0, 1});
    rows.push_back({"Lognormal at min", {"Lognormal", {0, 1, 5, 0}}, 5, 0, 1});
    // Uniform and triangular: exact rational tails.
    rows.push_back({"Uniform -1,1", {"Uniform", {-1, 1, 0, 0}}, 0.5, 0.75L, 0.25L});
    rows.push_back({"Uniform edge", {"Uniform", {-1, 1, 0, 0}}, 1 - 0x1p-40, 1 - 0x1p-41L, 0x1p-41L});
    rows.push_back({"Uniform outside", {"Uniform", {-1, 1, 0, 0}}, 3, 1, 0});
    // Triangular (0, 0.5, 1): F(x) = 2x^2 up to the mode, 1 - 2(1 - x)^2 after it.
    for (double x : {1e-150, 0.25, 0.5, 0.75}) {
        const long double lx = x;
        const long double lower = x <= 0.5 ? 2 * lx * lx : 1 - 2 * (1 - lx) * (1 - lx);
        rows.push_back({"Triangular 0,0.5,1", {"Triangular", {0, 0.5, 1, 0}}, x, lower, 1 - lower});
    }
    rows.push_back({"Triangular upper edge", {"Triangular", {0, 0.5, 1, 0}}, 1 - 0x1p-50, 1 - 0x1p-99L, 0x1p-99L});
    // Mode at the maximum: the upper tail 1 - x^2 = (1 - x)(1 + x) before the mode.
    rows.push_back({"Triangular 0,1,1", {"Triangular", {0, 1, 1, 0}}, 1 - 0x1p-40,
                    (1 - 0x1p-40L) * (1 - 0x1p-40L), 0x1p-40L * (2 - 0x1p-40L)});
    rows.push_back({"Triangular 0,0,1", {"Triangular", {0, 0, 1, 0}}, 0x1p-40,
                    0x1p-40L * (2 - 0x1p-40L), (1 - 0x1p-40L) * (1 - 0x1p-40L)});
    // Johnson forms, z from the AS 100 transform in long double.
    auto sb = [](long double x) { return 0.5L + 2 * std::log((x - 1) / (1 + 4 - x)); };
    for (double x : {1.5, 3.0, 4.9, 1 + 1e-8, 5 - 1e-9})
        rows.push_back({"Johnson SB", {"Johnson", {2, 0.5, 4, 1}, 7}, x, NormalLower(sb(x)), NormalUpper(sb(x))});
    rows.push_back({"Johnson SB below", {"Johnson", {2, 0.5, 4, 1}, 7}, 1, 0, 1});
    rows.push_back({"Johnson SB above", {"Johnson", {2, 0.5, 4, 1}, 7}, 5, 1, 0});
    auto su = [](long double x) { return -1 + 1.5L * std::asinh((x + 2) / 3); };
    for (double x : {-2.0, 0.0, 50.0, -1e6, 1e12})
        rows.push_back({"Johnson SU", {"Johnson", {1.5, -1, 3, -2}, 8}, x, NormalLower(su(x)), NormalUpper(su(x))});
    auto slPos = [](long double x) { return 1 * (3 * std::log(1 * (x - 2)) + 0.5L); };
    for (double x : {2.5, 3.0, 20.0, 2 + 1e-6})
        rows.push_back({"Johnson SL +1", {"Johnson", {3, 0.5, 1, 2}, 9}, x, NormalLower(slPos(x)), NormalUpper(slPos(x))});
    rows.push_back({"Johnson SL +1 below", {"Johnson", {3, 0.5, 1, 2}, 9}, 2, 0, 1});
    auto slNeg = [](long double x) { return -1 * (3 * std::log(-1 * (x - 2)) + 0.5L); };
    for (double x : {1.5, 1.0, -20.0, 2 - 1e-6})
        rows.push_back({"Johnson SL -1", {"Johnson", {3, 0.5, -1, 2}, 9}, x, NormalLower(slNeg(x)), NormalUpper(slNeg(x))});
    rows.push_back({"Johnson SL -1 above", {"Johnson", {3, 0.5, -1, 2}, 9}, 2, 1, 0});
    // Any other code: the normal form z = gamma + delta x.
    rows.push_back({"Johnson normal", {"Johnson", {0.5, -2.5, 0, 0}, 1}, 29, NormalLower(12), NormalUpper(12)});
    return rows;
}

TEST_F(DistCalculatorTest, BothTailsMatchIndependentReferences) {
    for (const auto& row : TailRows()) {
        SCOPED_TRACE(std::string(row.Name) + " at x = " + std::to_string(row.X));
        DistCalculator calc = Make(row.S);
        ASSERT_TRUE(calc.Calculate()) << calc.Message();
        const double lower = Trapped([&] { return calc.CumulativeProbability(row.X); });
        const double upper = Trapped([&] { return calc.UpperTailProbability(row.X); });
        // Below 1e-300 a tail only has to be right in absolute terms.
        auto check = [](double got, long double want) {
            if (want < 1e-300L) EXPECT_LE(std::fabs(got - static_cast<double>(want)), 1e-300);
            else EXPECT_LE(Rel(got, want), 2e-12) << got << " vs " << static_cast<double>(want);
        };
        check(lower, row.Lower);
        check(upper, row.Upper);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, NormalUpperTailAtNineIsTheKnownValue) {
    DistCalculator calc = Make({"Normal", {0, 1, 0, 0}});
    ASSERT_TRUE(calc.Calculate());
    // 1 - Phi(9) (Abramowitz & Stegun table 26.1 extended; 1.1285884059538e-19).
    EXPECT_LE(Rel(calc.UpperTailProbability(9), 1.128588405953840647735e-19L), 1e-13);
    EXPECT_LE(Rel(calc.CumulativeProbability(-9), 1.128588405953840647735e-19L), 1e-13);
}

TEST_F(DistCalculatorTest, DensityIsTheSlopeOfTheCumulative) {
    const std::vector<std::pair<Dist, std::vector<double>>> cases = {
        {{"Normal", {3, 2, 0, 0}}, {-2, 3, 7.5}},
        {{"Lognormal", {0.3, 0.6, 1, 0}}, {1.2, 2.5, 6}},
        {{"Exponential", {0.5, -1, 0, 0}}, {0, 3, 10}},
        {{"Weibull", {2.5, 3, 1, 0}}, {1.5, 3, 6}},
        {{"Weibull", {0.7, 3, 1, 0}}, {1.1, 3, 9}},
        {{"Uniform", {-1, 3, 0, 0}}, {-0.5, 2}},
        {{"Triangular", {-1, 0.5, 1, 0}}, {-0.5, 0.25, 0.8}},
        {{"Johnson", {1.3, 0.4, 5, -1}, 7}, {0, 1.5, 3.5}},
        {{"Johnson", {1.3, 0.4, 2, -1}, 8}, {-4, 0, 3}},
        {{"Johnson", {1.3, 0.4, 1, -1}, 9}, {-0.5, 1, 4}},
        {{"Johnson", {1.3, 0.4, -1, 2}, 9}, {-3, 0, 1.5}},
        {{"Johnson", {0.5, 1, 0, 0}, 0}, {-3, -2, 0}},
    };
    for (const auto& [setup, points] : cases) {
        DistCalculator calc = Make(setup);
        ASSERT_TRUE(calc.Calculate()) << calc.Message();
        for (double x : points) {
            SCOPED_TRACE(setup.Key + " code " + std::to_string(setup.Code) + " x " + std::to_string(x));
            const double h = 1e-5;
            const double slope =
                (calc.CumulativeProbability(x + h) - calc.CumulativeProbability(x - h)) / (2 * h);
            EXPECT_NEAR(calc.Density(x), slope, 1e-8 * std::max(1.0, slope));
            // The two tails are complements.
            EXPECT_NEAR(calc.CumulativeProbability(x) + calc.UpperTailProbability(x), 1.0, 1e-15);
        }
    }
}

TEST_F(DistCalculatorTest, DensitiesOnTheGridMatchClosedForms) {
    using engine_ref::Phi;
    DistCalculator calc = Make({"Normal", {1, 2, 0, 0}});
    calc.SetNumberOfPoints(8);
    ASSERT_TRUE(calc.ComputeDensities(-3, 5));
    for (int i = 1; i <= 8; ++i) {
        const double x = -3 + (i - 1) * 1.0; // x(i) = low + (i - 1)(high - low)/N
        EXPECT_LE(Rel(calc.DensityValue(i), Phi((x - 1) / 2.0L) / 2), 1e-14) << i;
    }
    // Lognormal: phi(z) / (sigma (x - min)).
    calc = Make({"Lognormal", {0, 1, 0, 0}});
    calc.SetNumberOfPoints(4);
    ASSERT_TRUE(calc.ComputeDensities(0, 4));
    EXPECT_EQ(calc.DensityValue(1), 0); // x = min
    EXPECT_LE(Rel(calc.DensityValue(2), Phi(0)), 1e-14);
    EXPECT_LE(Rel(calc.DensityValue(3), Phi(std::log(2.0L)) / 2), 1e-14);
}

TEST_F(DistCalculatorTest, GridDensitiesAgreeWithThePointDensityEverywhere) {
    // The grid has quick forms for ordinary points; they must give what the
    // careful point-by-point density gives, across supports, tails and scales.
    const std::vector<Dist> dists = {
        {"Normal", {1, 2, 0, 0}},          {"Normal", {-1e5, 1e-3, 0, 0}},
        {"Lognormal", {0.3, 0.6, 1, 0}},   {"Lognormal", {-40, 3, 0, 0}},
        {"Exponential", {0.5, -1, 0, 0}},  {"Weibull", {2, 3, 1, 0}},
        {"Weibull", {3, 0.5, -2, 0}},      {"Weibull", {0.7, 3, 1, 0}},
        {"Weibull", {12.5, 1e-4, 0, 0}},   {"Uniform", {-1, 3, 0, 0}},
        {"Triangular", {-1, 0.5, 1, 0}},   {"Johnson", {1.3, 0.4, 5, -1}, 7},
        {"Johnson", {0.2, 3, 1e-3, 0}, 7}, {"Johnson", {1.3, 0.4, 2, -1}, 8},
        {"Johnson", {0.3, -2, 1e4, 5}, 8}, {"Johnson", {1.3, 0.4, 1, -1}, 9},
        {"Johnson", {1.3, 0.4, -1, 2}, 9}, {"Johnson", {0.5, 1, 0, 0}, 0},
    };
    const std::vector<std::pair<double, double>> ranges = {{-10, 10}, {-1e5 - 0.01, -1e5 + 0.01},
                                                           {0, 1e-3}, {-1e6, 1e6}, {5, -5}};
    for (const auto& dist : dists) {
        for (const auto& [low, high] : ranges) {
            DistCalculator calc = Make(dist);
            calc.SetNumberOfPoints(333);
            ASSERT_TRUE(calc.ComputeDensities(low, high));
            ASSERT_TRUE(calc.Calculate());
            for (int i = 1; i <= 333; ++i) {
                const double x = m_Distributions::GridX(low, high, 333, i);
                const double want = calc.Density(x), got = calc.DensityValue(i);
                if (want < 1e-290) EXPECT_LE(got, 1e-290);
                else EXPECT_LE(Rel(got, want), 1e-12) << dist.Key << " code " << dist.Code << " x " << x;
            }
        }
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, SupportEndsAndPoles) {
    struct Row {
        Dist S;
        double X, Density;
    };
    const std::vector<Row> rows = {
        {{"Exponential", {2, 1, 0, 0}}, 1, 2},      // the density starts at rate
        {{"Exponential", {2, 1, 0, 0}}, 0.999, 0},  // nothing below the minimum
        {{"Weibull", {0.5, 1, 0, 0}}, 0, 0},        // a pole is drawn as 0
        {{"Weibull", {1, 4, 0, 0}}, 0, 0.25},       // shape 1: 1/scale
        {{"Weibull", {3, 1, 0, 0}}, 0, 0},
        {{"Weibull", {3, 1, 0, 0}}, -1, 0},
        {{"Uniform", {-1, 3, 0, 0}}, -1, 0.25},
        {{"Uniform", {-1, 3, 0, 0}}, 3.5, 0},
        {{"Triangular", {-1, 0, 1, 0}}, 0, 1},
        {{"Triangular", {0, 0, 2, 0}}, 0, 1},       // mode at the minimum
        {{"Triangular", {0, 2, 2, 0}}, 2, 1},
        {{"Lognormal", {0, 1, 5, 0}}, 5, 0},
        {{"Johnson", {1, 0, 2, 0}, 7}, 0, 0},       // SB ends are excluded
        {{"Johnson", {1, 0, 2, 0}, 7}, 2, 0},
        {{"Johnson", {1, 0, 1, 0}, 9}, 0, 0},
        {{"Johnson", {1, 0, -1, 0}, 9}, 0.5, 0},    // negative SL lives below xi
        {{"Johnson", {0.001, 0, 1, 0}, 7}, 1e-320, 0}, // beside an SB pole: drawn as the pole
        {{"Johnson", {0.001, 0, 1, 0}, 9}, 1e-320, 0},
    };
    for (const auto& row : rows) {
        DistCalculator calc = Make(row.S);
        ASSERT_TRUE(calc.Calculate()) << calc.Message();
        EXPECT_DOUBLE_EQ(calc.Density(row.X), row.Density) << row.S.Key << " at " << row.X;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, JohnsonFormFollowsTheCurrentDistributionCode) {
    // The same four parameters read as SB, SU, SL and the normal form.
    const double x = 0.7;
    const long double d = 0.7L - 0.2L;
    const struct {
        int Code;
        long double Z;
    } forms[] = {{7, 0.3L + 1.4L * std::log(d / (2 - d))},
                 {8, 0.3L + 1.4L * std::asinh(d / 2)},
                 {9, 2 * (1.4L * std::log(2 * d) + 0.3L)},
                 {0, 0.3L + 1.4L * 0.7L},
                 {3, 0.3L + 1.4L * 0.7L}};
    for (const auto& f : forms) {
        DistCalculator calc = Make({"Johnson", {1.4, 0.3, 2, 0.2}, f.Code});
        ASSERT_TRUE(calc.Calculate());
        EXPECT_LE(Rel(calc.CumulativeProbability(x), engine_ref::NormalLower(f.Z)), 1e-14) << f.Code;
    }
}

TEST_F(DistCalculatorTest, UnusableParametersAreRefusedWithAMessage) {
    struct Row {
        Dist S;
        const char* Message;
    };
    const double nan = std::nan("");
    const std::vector<Row> rows = {
        {{"Normal", {0, 0, 0, 0}}, "Standard deviation must be greater than zero."},
        {{"Lognormal", {0, -1, 0, 0}}, "Standard deviation must be greater than zero."},
        {{"Exponential", {0, 0, 0, 0}}, "Scale parameter for an Exponential distribution must be greater than zero."},
        {{"Weibull", {0, 1, 0, 0}}, "Shape parameter for a Weibull distribution must be greater than zero."},
        {{"Weibull", {1, 0, 0, 0}}, "Scale parameter for a Weibull distribution must be greater than zero."},
        {{"Uniform", {2, 1, 0, 0}}, "Minimum must be less than Maximum for a Uniform distribution."},
        {{"Uniform", {1, 1, 0, 0}}, "Minimum equals Maximum: the Uniform distribution has no spread."},
        {{"Triangular", {1, 1, 1, 0}}, "Minimum equals Maximum: the Triangular distribution has no spread."},
        {{"Triangular", {0, 2, 1, 0}}, "Likeliest value must be between Minimum and Maximum for a Triangular distribution."},
        {{"Johnson", {0, 0, 1, 0}, 7}, "Delta must be greater than zero for a Johnson distribution."},
        {{"Johnson", {1, 0, 0, 0}, 7}, "Lamda must be greater than zero for a Johnson SB distribution."},
        {{"Johnson", {1, 0, -2, 0}, 8}, "Lamda must be greater than zero for a Johnson SU distribution."},
        {{"Johnson", {1, 0, 0, 0}, 9}, "Lamda must not be zero for a Johnson SL distribution."},
        {{"Normal", {nan, 1, 0, 0}}, "The parameters must be finite numbers."},
        {{"LogNormal", {0, 1, 0, 0}}, "Unknown distribution \"LogNormal\"."}, // keys compare exactly
    };
    for (const auto& row : rows) {
        DistCalculator calc = Make(row.S);
        EXPECT_FALSE(calc.Calculate()) << row.Message;
        EXPECT_EQ(calc.Message(), row.Message);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistCalculatorTest, NoSpreadDrawsAFlatZeroDensity) {
    DistCalculator calc = Make({"Triangular", {2, 2, 2, 0}});
    calc.SetNumberOfPoints(5);
    ASSERT_TRUE(calc.ComputeDensities(1, 3));
    for (int i = 1; i <= 5; ++i) EXPECT_EQ(calc.DensityValue(i), 0);
}

TEST_F(DistCalculatorTest, FarTailsAndExtremeScalesStayFiniteWithoutFaults) {
    // Points and scales far outside the usual range: 0 or 1 in the tails, no flags.
    const std::vector<Dist> setups = {
        {"Normal", {0, 1e-300, 0, 0}}, {"Normal", {0, 1e300, 0, 0}},
        {"Lognormal", {0, 50, 0, 0}},  {"Exponential", {1e-300, 0, 0, 0}},
        {"Exponential", {1e300, 0, 0, 0}}, {"Weibull", {1e-3, 1, 0, 0}},
        {"Weibull", {1e3, 1, 0, 0}},   {"Weibull", {1e300, 1, 0, 0}},
        {"Johnson", {1e-300, 1e300, 1e-300, 0}, 8}, {"Johnson", {1e300, 0, 1, 0}, 7},
        {"Johnson", {1, 0, 1e300, -1e300}, 9},
    };
    for (const auto& s : setups) {
        DistCalculator calc = Make(s);
        ASSERT_TRUE(calc.Calculate()) << s.Key;
        for (double x : {-1e300, -1e10, -1.0, -1e-300, 0.0, 1e-320, 1e-300, 0.5, 1.0, 1e10, 1e300}) {
            const double lo = Trapped([&] { return calc.CumulativeProbability(x); });
            const double up = Trapped([&] { return calc.UpperTailProbability(x); });
            const double de = Trapped([&] { return calc.Density(x); });
            EXPECT_TRUE(lo >= 0 && lo <= 1 && up >= 0 && up <= 1) << s.Key << " " << x;
            EXPECT_TRUE(std::isfinite(de) && de >= 0) << s.Key << " " << s.P[0] << " " << x;
        }
    }
    for (const auto& e : Rec().AllErrors()) ADD_FAILURE() << e.Label << " " << e.Description;
}

TEST_F(DistCalculatorTest, CumulativeBeforeCalculateIsAnError) {
    DistCalculator calc;
    calc.SetDistribution("Normal");
    calc.SetParam(2, 1);
    EXPECT_THROW(calc.CumulativeProbability(0), support::RunTimeError);
    ASSERT_TRUE(calc.Calculate());
    calc.SetParam(2, 0); // changing a parameter needs a new Calculate
    EXPECT_THROW(calc.CumulativeProbability(0), support::RunTimeError);
    EXPECT_THROW(calc.SetParam(5, 1), support::RunTimeError);
    EXPECT_THROW(calc.DensityValue(1), support::RunTimeError);
}

} // namespace
