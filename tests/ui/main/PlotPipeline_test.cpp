// The plot pipeline's decisions without a window: checks and focus, moments,
// range, grid, and what the PNC boxes show.
#include "ui/main/PlotPipeline.h"

#include "support/Format.h"
#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <optional>

using namespace PlotPipeline;
using testing_support::RelErr;

namespace {

PlotInputs Inputs(const std::string& name, std::array<std::string, 4> params, bool third = false) {
    PlotInputs in;
    in.Name = name;
    in.ParamTexts = params;
    in.ParamLabels = {"Mean:", "Std. Deviation:", "Maximum:", ""};
    in.Param3Shown = third;
    return in;
}

} // namespace

struct PipelineCheckRow {
    const char* Row;
    PlotInputs In;
    Field Focus;
    const char* Message; // "" when the distribution's rule shows its own
};

class PipelineChecks : public testing_support::RecordingTest,
                       public testing::WithParamInterface<PipelineCheckRow> {};

TEST_P(PipelineChecks, StopAtTheFirstBadFieldWithItsMessage) {
    const PipelineCheckRow& r = GetParam();
    const Check c = CheckInputs(r.In);
    EXPECT_EQ(c.Ok, r.Focus == Field::None);
    EXPECT_EQ(c.Focus, r.Focus);
    EXPECT_EQ(c.Message, r.Message);
    // A rule's failure has shown its message already, a passed check none.
    EXPECT_EQ(MessageTexts().size(), c.Ok || !c.Message.empty() ? 0u : 1u);
}

PlotInputs WithLimit(PlotInputs in, int which, bool ticked, const char* text) {
    in.Limit[which] = {ticked, text};
    return in;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PipelineChecks,
    testing::Values(
        PipelineCheckRow{"Good", Inputs("Normal", {"0", "1"}), Field::None, ""},
        PipelineCheckRow{"Param1Text", Inputs("Normal", {"abc", "x"}), Field::Param1,
                         "Mean: must be a number."},
        PipelineCheckRow{"Param2Empty", Inputs("Normal", {"0", ""}), Field::Param2,
                         "Std. Deviation: must be a number."},
        PipelineCheckRow{"HiddenParam3NotRead", Inputs("Normal", {"0", "1", "x"}), Field::None, ""},
        PipelineCheckRow{"ShownParam3", Inputs("Triangular", {"0", "1", "x"}, true), Field::Param3,
                         "Maximum: must be a number."},
        PipelineCheckRow{"RuleBeforeLimits",
                         WithLimit(Inputs("Normal", {"0", "-1"}), 0, true, "abc"), Field::Param2,
                         ""},
        PipelineCheckRow{"TriangularRuleOnParam2", Inputs("Triangular", {"0", "5", "3"}, true),
                         Field::Param2, ""},
        PipelineCheckRow{"LSLText", WithLimit(Inputs("Normal", {"0", "1"}), 0, true, "abc"),
                         Field::LSL, "LSL must be a number."},
        PipelineCheckRow{"TargetEmpty", WithLimit(Inputs("Normal", {"0", "1"}), 1, true, ""),
                         Field::Target, "Target must be a number."},
        PipelineCheckRow{"UntickedUSLIgnored",
                         WithLimit(Inputs("Normal", {"0", "1"}), 2, false, "abc"), Field::None,
                         ""}),
    [](const auto& row) { return std::string(row.param.Row); });

struct PipelineRangeRow {
    const char* Row;
    std::string Name;
    RangeOptions Options;
    Limits Limit;
    std::array<double, 3> P;
    double Low, High;
};

class PipelineRange : public testing::TestWithParam<PipelineRangeRow> {};

// Mean 1, standard deviation 2 throughout.
TEST_P(PipelineRange, CoversTheCandidateTheTickedLimitsAndTheStart) {
    const PipelineRangeRow& r = GetParam();
    const auto [low, high] = WithDensityStart(r.Name, DisplayRange(1, 2, r.Options, r.Limit), r.P);
    EXPECT_DOUBLE_EQ(low, r.Low);
    EXPECT_DOUBLE_EQ(high, r.High);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PipelineRange,
    testing::Values(
        PipelineRangeRow{"MeanPlusMinusK", "Normal", {0, 2.6}, {}, {}, 1 - 5.2, 1 + 5.2},
        PipelineRangeRow{"TargetFarRight", "Normal", {0, 3}, {{{}, {true, "40"}, {}}}, {}, -5, 40},
        PipelineRangeRow{
            "UntickedLimitIgnored", "Normal", {0, 3}, {{{false, "-90"}, {}, {}}}, {}, -5, 7},
        PipelineRangeRow{
            "LimitsBothSides", "Normal", {0, 1}, {{{true, "-9"}, {}, {true, "9"}}}, {}, -9, 9},
        PipelineRangeRow{"FixedEndpoints", "Normal", {1, 3, -2, 2}, {}, {}, -2, 2},
        PipelineRangeRow{
            "FixedWidenedByUSL", "Normal", {1, 3, -2, 2}, {{{}, {}, {true, "5"}}}, {}, -2, 5},
        PipelineRangeRow{"ExponentialStartsAtParam2", "Exponential", {0, 1}, {}, {2, -4, 0}, -4, 3},
        PipelineRangeRow{"WeibullStartsAtParam3", "Weibull", {0, 1}, {}, {2, 1, 9}, -1, 9},
        PipelineRangeRow{"UniformAddsNothing", "Uniform", {0, 1}, {}, {-50, 50, 0}, -1, 3}),
    [](const auto& row) { return std::string(row.param.Row); });

TEST(PlotPipeline, TheGridStopsOneStepShortAndHoldsTheDensity) {
    const Curve c = Sample("Normal", -3, 3, 300, {0, 1, 0, 0});
    ASSERT_EQ(c.X.size(), 301u);
    EXPECT_DOUBLE_EQ(c.X[1], -3);
    EXPECT_NEAR(c.X[300], 3 - 6.0 / 300, 1e-12);
    for (int i : {1, 77, 150, 300})
        EXPECT_LT(RelErr(c.Y[i], reference::NormalDensity(c.X[i])), 1e-12) << i;
    EXPECT_FALSE(Drawable(2, 2));
    EXPECT_FALSE(Drawable(0, INFINITY));
}

// Which fields reach the moments (the closed forms themselves are the engine's).
TEST(PlotPipeline, MomentsTakeTheFieldsTheWindowPasses) {
    Moments m;
    MomentsOf("Exponential", 2, 5, 0, m); // rate 2 from 5
    EXPECT_NEAR(m.Mean, 5.5, 1e-12);
    EXPECT_NEAR(m.StDev, 0.5, 1e-12);
    // A triangle without spread has no skewness or kurtosis: the boxes say so.
    MomentsOf("Triangular", 3, 3, 3, m);
    EXPECT_EQ(MomentTexts(m, "0.00"),
              (std::array<std::string, 4>{"3.00", "0.00", "Undefined", "Undefined"}));
}

// Typed by parameters, a Johnson form shows its four slots; its moments by
// quadrature match Johnson's closed forms for SU (x = xi + lamda sinh((z - gamma) / delta)).
TEST(PlotPipeline, JohnsonSUByParameters) {
    const std::array<ParamRow, 4> rows = ParamRows("Johnson SU");
    EXPECT_STREQ(rows[2].Label, "Lamda:");
    EXPECT_STREQ(rows[3].Label, "Xi:");
    const double delta = 1.5, gamma = 0.8, lamda = 2, xi = 10;
    const double w = std::exp(1 / (delta * delta)), omega = gamma / delta;
    Moments m;
    MomentsOf("Johnson SU", delta, gamma, lamda, m, xi);
    EXPECT_NEAR(m.Mean, xi - lamda * std::sqrt(w) * std::sinh(omega), 1e-9);
    EXPECT_NEAR(m.StDev * m.StDev, lamda * lamda / 2 * (w - 1) * (w * std::cosh(2 * omega) + 1),
                1e-8);
    EXPECT_LT(m.Skewness, 0);
}

TEST(PlotPipeline, ThePNCBoxes) {
    const Limits none{}, lsl{{{true, "-3"}, {}, {}}};
    EXPECT_EQ(ResultKind(none), PncBoxes::Zero);
    EXPECT_EQ(ResultKind(lsl), PncBoxes::Calculated);
    EXPECT_EQ(ResultKind({{{true, "5"}, {}, {true, "5"}}}), PncBoxes::Empty);
    EXPECT_EQ(ResultKind({{{true, "6"}, {true, "x"}, {false, "5"}}}), PncBoxes::Calculated);
    // Without figures: zeros in the pattern (the ppm box too), or all empty.
    const auto zeros = UncalculatedResults(none, "0.00E+00");
    ASSERT_TRUE(zeros);
    EXPECT_EQ(zeros->Pnc, (std::array<std::string, 3>{"0.00E+00", "0.00E+00", "0.00E+00"}));
    EXPECT_EQ(zeros->Ppm, "0.00E+00");
    const auto crossed = UncalculatedResults({{{true, "5"}, {}, {true, "4"}}}, "0.0");
    ASSERT_TRUE(crossed);
    EXPECT_EQ(crossed->Pnc[0] + crossed->Pnc[2] + crossed->Ppm, "");
    EXPECT_FALSE(UncalculatedResults(lsl, "0.0"));

    const auto texts = PercentTexts(SourceFromFields("Normal", {"0", "1", "", ""}),
                                    {{{true, "-3"}, {}, {true, "2"}}}, "0.000000000000E+00");
    const double lower = reference::NormalCdf(-3), upper = reference::NormalCdf(-2);
    EXPECT_LT(RelErr(support::Val(texts[0]), lower), 1e-6);
    EXPECT_LT(RelErr(support::Val(texts[1]), upper), 1e-6);
    EXPECT_LT(RelErr(support::Val(texts[2]), lower + upper), 1e-6);
    EXPECT_EQ(PercentTexts(SourceFromFields("Normal", {"0", "1", "", ""}), lsl, "0.0")[1], "0.0");
}

// What the capability boxes show (the indices themselves are m_Capability's):
// for the normal the usual (USL - LSL)/6 sigma and friends.
// The readout under the pointer against the normal's closed form, the upper
// tail to its own digits far out.
TEST(Readout, DensityAndBothSidesAtAPointAgainstTheNormal) {
    PncSource normal;
    normal.Code = 1;
    normal.Params = {1.0, 2.0, std::nullopt, std::nullopt};
    for (double x : {-5.0, 1.0, 4.0, 13.0, 21.0}) {
        const double z = (x - 1) / 2;
        const Readout r = ReadoutAt(normal, x);
        EXPECT_EQ(r.X, x);
        EXPECT_LT(RelErr(r.Density, reference::NormalDensity(z) / 2), 1e-12) << x;
        EXPECT_LT(RelErr(r.Below, reference::NormalCdf(z)), 1e-12) << x;
        EXPECT_LT(RelErr(r.Above, reference::NormalCdf(-z)), 1e-9) << x;
    }
    EXPECT_EQ(ReadoutText({1.5, 0.25, 0.125, 0.875}, "0.000"),
              "x = 1.500    density = 0.250    P(X \u2264 x) = 0.125    P(X > x) = 0.875");
}
