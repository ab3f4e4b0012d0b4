// The dialog's arithmetic: units, the missing curve, and texts that read back exactly.
#include "ui/main/ProbabilityLimits.h"

#include "support/Format.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace ProbabilityLimits;

TEST(ProbabilityLimits, UnitsCurveAndExactTexts) {
    EXPECT_EQ(FractionOf("0.27", Unit::Percent), 0.27 / 100);
    EXPECT_EQ(FractionOf("100", Unit::Ppm), 1e-4);
    EXPECT_FALSE(FractionOf("1/2", Unit::Fraction));
    EXPECT_EQ(LimitsFor(std::nullopt, {Side::Lower, 0.01}).Message, kNoCurve);
    // Both tails: each gets half (a normal 0, 1 at 5 %: -z and z of 2.5 %).
    const Outcome both = LimitsFor(PlotPipeline::PncSource{1, {0.0, 1.0}}, {Side::Both, 0.05});
    ASSERT_TRUE(both.LSL && both.USL);
    EXPECT_NEAR(support::Val(*both.USL), 1.959963984540054, 1e-15);
    EXPECT_EQ(support::Val(*both.LSL), -support::Val(*both.USL));
    // The window's own separator, and every digit the double needs.
    support::SetDecimalSeparator(',');
    const double x = std::nextafter(0.1, 1.0);
    EXPECT_EQ(ExactText(0.5), "0,5");
    EXPECT_EQ(support::ParseNumber(ExactText(x)), x);
    support::SetDecimalSeparator('.');
}

} // namespace
