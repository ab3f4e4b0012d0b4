// The dialog's arithmetic: units, the missing curve, and texts that read back exactly.
#include "ui/main/ProbabilityLimits.h"

#include "support/Format.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace ProbabilityLimits;

TEST(ProbabilityLimits, UnitsAMissingCurveAndExactTexts) {
    EXPECT_EQ(FractionOf("0.27", Unit::Percent), 0.27 / 100);
    EXPECT_EQ(FractionOf("100", Unit::Ppm), 1e-4);
    EXPECT_FALSE(FractionOf("1/2", Unit::Fraction));
    EXPECT_EQ(LimitsFor(std::nullopt, {Side::Lower, 0.01}).Message, kNoCurve);
    // The window's own separator, and every digit the double needs.
    support::SetDecimalSeparator(',');
    const double x = std::nextafter(0.1, 1.0);
    EXPECT_EQ(ExactText(0.5), "0,5");
    EXPECT_EQ(support::ParseNumber(ExactText(x)), x);
    support::SetDecimalSeparator('.');
}

} // namespace
