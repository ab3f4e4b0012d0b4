// Capability figures: hand-computed normal and uniform cases, and every family's
// percentile points put back through the calculator's cumulative probability.
#include "stats/m_Capability.h"

#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "tests/helpers/TestSupport.h"

#include <optional>

namespace {

using namespace m_Distributions;
using std::nullopt;

constexpr double kTail = 0.00134989803163009452; // P(Z < -3), from tables
using Opt = std::optional<double>;

struct IndexRow {
    const char* Name;
    int Code;
    double P1, P2;
    Opt Lsl, Usl;
    Opt Pp, Ppl, Ppu, Ppk, Ppm;
};

// Normal 10, 2: X0.135, X50, X99.865 = 4, 10, 16. Uniform 0..10: 10t, 5, 10 - 10t.
const IndexRow kIndexRows[] = {
    {"normal_both", kNormal, 10, 2, 4, 18, 14 / 12.0, 1, 8 / 6.0, 1, 2700},
    {"normal_usl_only", kNormal, 10, 2, nullopt, 13, nullopt, nullopt, 0.5, 0.5, 2700},
    {"normal_no_limits", kNormal, 10, 2, nullopt, nullopt, nullopt, nullopt, nullopt, nullopt,
     nullopt},
    {"uniform_both", kUniform, 0, 10, 1, 9, 8 / (10 - 20 * kTail), 4 / (5 - 10 * kTail),
     4 / (5 - 10 * kTail), 4 / (5 - 10 * kTail), 2700},
    // USL - LSL beyond the double range still gives Pp = 2e308 / 6.
    {"normal_limits_at_the_ends", kNormal, 0, 1, -1e308, 1e308, 1e308 / 3, 1e308 / 3, 1e308 / 3,
     1e308 / 3, 2700},
    // A point mass has no spread: nothing to divide by.
    {"uniform_point_mass", kUniform, 5, 5, 4, 6, nullopt, nullopt, nullopt, nullopt, 2700},
};

class CapabilityIndices : public testing_support::RecordingTest,
                          public ::testing::WithParamInterface<IndexRow> {};

TEST_P(CapabilityIndices, MatchTheHandComputedFigures) {
    const IndexRow& r = GetParam();
    const auto x = m_Capability::PercentilePoints(r.Code, r.P1, r.P2, 0, 0);
    ASSERT_TRUE(x);
    const m_Capability::Figures f = m_Capability::Indices(*x, r.Lsl, r.Usl, 0.0027);
    const std::pair<Opt, Opt> pairs[] = {
        {f.Pp, r.Pp}, {f.Ppl, r.Ppl}, {f.Ppu, r.Ppu}, {f.Ppk, r.Ppk}, {f.Ppm, r.Ppm}};
    for (const auto& [got, want] : pairs) {
        ASSERT_EQ(got.has_value(), want.has_value());
        if (want) {
            EXPECT_NEAR(*got, *want, 1e-12 * *want);
        }
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Rows, CapabilityIndices, ::testing::ValuesIn(kIndexRows),
                         [](const auto& row) { return std::string(row.param.Name); });

struct CurveRow {
    const char* Name;
    int Code; // 0: the Johnson normal form
    double P[4];
};

const CurveRow kCurves[] = {
    {"Normal", kNormal, {10, 2}},
    {"LogNormal", kLogNormal, {0.5, 0.8, 3}},
    {"Weibull", kWeibull, {1.7, 3, -1}},
    {"Triangular_mode_at_max", kTriangular, {0, 5, 5}},
    {"JohnsonSB", kJohnsonSB, {1.36, 1.98, 8.59, -1.82}},
    {"JohnsonSL_mirrored", kJohnsonSL, {5.11, -4.65, -1, 4.53}},
    {"Johnson_normal_form", 0, {0.5, -2.5}},
};

class CapabilityPercentiles : public testing_support::RecordingTest,
                              public ::testing::WithParamInterface<CurveRow> {};

// The cumulative probability at each point is the normal one at -3, 0 and +3:
// the quantiles invert the calculator's own distribution functions.
TEST_P(CapabilityPercentiles, AreTheCurvesQuantiles) {
    const CurveRow& r = GetParam();
    const auto x = m_Capability::PercentilePoints(r.Code, r.P[0], r.P[1], r.P[2], r.P[3]);
    ASSERT_TRUE(x);
    const std::string key = m_PercentCertainty::CalculatorName(r.Code);
    auto cdf = [&](double v) { return PNC_LSL(key, v, r.P[0], r.P[1], r.P[2], r.P[3], r.Code); };
    auto upper = [&](double v) {
        return PNC_USL_Upper(key, v, r.P[0], r.P[1], r.P[2], r.P[3], r.Code);
    };
    EXPECT_NEAR(cdf(x->X0135), kTail, 1e-10 * kTail);
    EXPECT_NEAR(cdf(x->X50), 0.5, 1e-12);
    EXPECT_NEAR(upper(x->X99865), kTail, 1e-10 * kTail);
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Families, CapabilityPercentiles, ::testing::ValuesIn(kCurves),
                         [](const auto& row) { return std::string(row.param.Name); });

class Capability : public testing_support::RecordingTest {};

TEST_F(Capability, ParametersWithoutACurveHaveNoPercentiles) {
    const CurveRow rows[] = {
        {"", kNormal, {0, 0}}, {"", kJohnsonSL, {1, 0, 0, 0}}, {"", kJohnsonSU, {1, 2000, 1, 0}}};
    for (const CurveRow& r : rows)
        EXPECT_FALSE(m_Capability::PercentilePoints(r.Code, r.P[0], r.P[1], r.P[2], r.P[3]))
            << r.Code;
    EXPECT_TRUE(Rec().AllErrors().empty());
}

} // namespace

// Z-score method against closed forms: a normal curve gives the percentile
// figures; a Weibull's tails are exp(-(x/scale)^shape), Phi^-1 from Boost.
#include <boost/math/distributions/normal.hpp>

namespace {

TEST(ZScoreIndices, NormalAgreesWithPercentile) {
    // Normal 10, 2; LSL 4 (z = -3), USL 18 (z = 4): Pp 14/12, Ppl 1, Ppu 4/3.
    const double below = 0.5 * std::erfc(3 / std::sqrt(2.0)),
                 above = 0.5 * std::erfc(4 / std::sqrt(2.0));
    const m_Capability::Figures f = m_Capability::ZScoreIndices(
        m_Capability::Tails{below, 1 - below}, m_Capability::Tails{1 - above, above});
    EXPECT_NEAR(*f.Pp, 14 / 12.0, 1e-13);
    EXPECT_NEAR(*f.Ppl, 1, 1e-13);
    EXPECT_NEAR(*f.Ppu, 4 / 3.0, 1e-13);
    EXPECT_NEAR(*f.Ppk, 1, 1e-13);
}

TEST(ZScoreIndices, WeibullAgainstSecondQuantile) {
    const boost::math::normal phi;
    const double shape = 1.5, scale = 2, lsl = 0.1, usl = 7;
    const double lslAbove = std::exp(-std::pow(lsl / scale, shape));
    const double uslAbove = std::exp(-std::pow(usl / scale, shape));
    const double zl = boost::math::quantile(phi, -std::expm1(-std::pow(lsl / scale, shape)));
    const double zu = -boost::math::quantile(phi, uslAbove);
    const m_Capability::Figures f = m_Capability::ZScoreIndices(
        m_Capability::Tails{1 - lslAbove, lslAbove}, m_Capability::Tails{1 - uslAbove, uslAbove});
    EXPECT_NEAR(*f.Pp, (zu - zl) / 6, 1e-12);
    EXPECT_NEAR(*f.Ppk, std::min(-zl, zu) / 3, 1e-12);
    // A tail of 1e-300 keeps its z (about 37.04), and a missing limit leaves its side empty.
    const m_Capability::Figures tiny =
        m_Capability::ZScoreIndices(std::nullopt, m_Capability::Tails{1, 1e-300});
    EXPECT_NEAR(*tiny.Ppu * 3, -boost::math::quantile(phi, 1e-300), 1e-10);
    EXPECT_FALSE(tiny.Pp || tiny.Ppl);
    // Beyond the curve's lower end the LSL side simply has no tail; above its
    // upper end the whole curve is out, and Ppk is no longer the USL side's.
    const m_Capability::Tails below{0, 1}, inside{0.5, 0.5}, above{1, 0};
    EXPECT_NEAR(*m_Capability::ZScoreIndices(below, inside).Ppk, 0, 1e-15);
    EXPECT_FALSE(m_Capability::ZScoreIndices(above, m_Capability::Tails{1, 1e-9}).Ppk);
}

// The published 50-value sample: Cp 0.237112 [0.190279, 0.283853],
// Cpk 0.157803 [0.060270, 0.255336] at 95 %.
TEST(NormalIntervals, PublishedFiftyValueSample) {
    const auto pp = m_Capability::NormalPpInterval(0.237112, 50, 0.95);
    const auto ppk = m_Capability::NormalPpkInterval(0.157803, 50, 0.95);
    EXPECT_NEAR(pp->Low, 0.190279, 1e-6);
    EXPECT_NEAR(pp->High, 0.283853, 1e-6);
    EXPECT_NEAR(ppk->Low, 0.060270, 1e-6);
    EXPECT_NEAR(ppk->High, 0.255336, 1e-6);
    EXPECT_FALSE(m_Capability::NormalPpInterval(1, 1, 0.95));
    EXPECT_FALSE(m_Capability::NormalPpkInterval(1, 50, 1));
}

} // namespace

// The Z-score figures of skewed curves through the family records, against
// scipy.stats (norm.ppf of the curve's cdf and sf), and the percentile Pp of the
// same lognormal, which the Z-score method judges far more harshly.
namespace {

struct ZRow {
    const char* Name;
    int Code;
    double P[4];
    double Lsl, Usl, Pp, Ppk;
};

const ZRow kZRows[] = {
    // scipy.stats.lognorm(s=0.8, scale=exp(0.5), loc=3); percentile Pp 1.486858769078852
    {"LogNormal", kLogNormal, {0.5, 0.8, 3}, 3.2, 30, 1.0219322455080058, 0.8789324635142082},
    // scipy.stats.johnsonsu(a=-0.8, b=1.3, loc=5, scale=2)
    {"JohnsonSU", kJohnsonSU, {1.3, -0.8, 2, 5}, 1, 12, 0.7386937884795, 0.5851455377148492},
};

class ZScoreFigures : public testing_support::RecordingTest,
                      public ::testing::WithParamInterface<ZRow> {};

TEST_P(ZScoreFigures, MatchScipy) {
    const ZRow& r = GetParam();
    const m_Capability::Figures f = m_Capability::ZScoreFigures(r.Code, r.P, r.Lsl, r.Usl);
    EXPECT_NEAR(*f.Pp, r.Pp, 1e-9);
    EXPECT_NEAR(*f.Ppk, r.Ppk, 1e-9);
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Curves, ZScoreFigures, ::testing::ValuesIn(kZRows),
                         [](const auto& row) { return std::string(row.param.Name); });

TEST(ZScoreFigures, LognormalPercentilePpIsNotTheZScoreOne) {
    const auto x = m_Capability::PercentilePoints(kLogNormal, 0.5, 0.8, 3, 0);
    EXPECT_NEAR(*m_Capability::Indices(*x, 3.2, 30).Pp, 1.486858769078852, 1e-9);
}

TEST(Observed, CountsValuesStrictlyOutside) {
    // A value on a limit conforms; 1 of 8 below, 2 of 8 above.
    const m_Capability::Ppm o = m_Capability::Observed({0, 1, 2, 3, 4, 5, 6, 7}, 1, 5);
    EXPECT_EQ(o.Below, 125000);
    EXPECT_EQ(o.Above, 250000);
    EXPECT_EQ(o.Total, 375000);
    EXPECT_EQ(m_Capability::Observed({0, 9}, std::nullopt, std::nullopt).Total, 0);
}

} // namespace
