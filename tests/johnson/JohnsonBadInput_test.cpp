// Bad values at every entry point of JohnsonDist: each call ends, with a status
// message or a reported error, and never leaves a non-finite number in a curve
// that claims success.
#include "johnson/JohnsonDist.h"
#include "tests/helpers/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using testing_support::BadValues;

class JohnsonBadInput : public testing_support::RecordingTest {
protected:
    // What Calculate left must be a clear outcome.
    void ExpectClearOutcome(const JohnsonDist& j, const std::string& what) {
        SCOPED_TRACE(what);
        const bool reported = !Rec().AllErrors().empty();
        ASSERT_FALSE(j.CalcError.empty());
        if (j.CalcError.rfind("Error", 0) == 0) {
            EXPECT_EQ(j.JDistribution, "Error");
            EXPECT_EQ(j.Delta, 0);
            EXPECT_EQ(j.Lamda, 0);
        } else if (!reported) {
            // A success nobody complained about is a real curve.
            EXPECT_EQ(j.CalcError, "Success");
            EXPECT_TRUE(std::isfinite(j.Delta) && std::isfinite(j.Gamma) &&
                        std::isfinite(j.Lamda) && std::isfinite(j.Xi));
        }
        for (const auto& e : Rec().AllErrors())
            EXPECT_EQ(e.Label.rfind("Pondera.JohnsonDist.", 0), 0u) << e.Label;
        Rec().Clear();
    }
};

TEST_F(JohnsonBadInput, CalculateWithEachMomentBad) {
    const double good[4] = {1, 2, 0.5, 4};
    for (int slot = 0; slot < 4; ++slot) {
        for (double bad : BadValues()) {
            double m[4] = {good[0], good[1], good[2], good[3]};
            m[slot] = bad;
            JohnsonDist j;
            j.Calculate(m[0], m[1], m[2], m[3]);
            ExpectClearOutcome(j, "slot " + std::to_string(slot) + " value " + std::to_string(bad));
        }
    }
}

TEST_F(JohnsonBadInput, ExtremeButNumericMoments) {
    struct Row {
        double Mean, Sd, Skew, Kurt;
        const char* Expected; // JDistribution, or "" when only a clear outcome is asked
    };
    const Row rows[] = {
        {0, 1e-300, 0.5, 4, ""},    // the SL/SU/SB formulas square a tiny sd
        {0, 1e-300, 0.5, -1, ""},   // SL on the line: sd^2 underflows, a reported error
        {0, 1, 0, 1e6, "SU"},       // very long tails, still an SU curve
        {0, 1, 2, 1e6, "SU"},
        {0, 1, 1e3, 30, "Error"},   // kurtosis far below skewness^2 + 1
        {0, 1, 1e3, 1e6 + 2, ""},   // just above the boundary at skewness 1000
        {0, 1, 1e200, 3, ""},       // skewness^2 overflows: a reported error
        {1e300, 1e300, 0.5, 4, ""}, // lamda and xi overflow
        {0, 1, 0.5, 3e15, ""},      // SUFIT would cycle for ever without its cap
        {0, 1, 0.0001, 1e9, ""},    // SUFIT's m below zero: a reported error
    };
    for (const Row& r : rows) {
        JohnsonDist j;
        j.Calculate(r.Mean, r.Sd, r.Skew, r.Kurt);
        const std::string what = std::to_string(r.Mean) + " " + std::to_string(r.Sd) + " " +
                                 std::to_string(r.Skew) + " " + std::to_string(r.Kurt);
        if (*r.Expected) {
            EXPECT_EQ(j.JDistribution, r.Expected) << what;
        }
        ExpectClearOutcome(j, what);
    }
}

TEST_F(JohnsonBadInput, FixedEndpointsWithBadValues) {
    const double good[6] = {1, 0.3, 0.2, 3, 0, 2}; // mean, sd, skew, kurt, lower, upper
    for (int slot = 0; slot < 6; ++slot) {
        for (double bad : BadValues()) {
            double v[6];
            std::copy(good, good + 6, v);
            v[slot] = bad;
            JohnsonDist j;
            j.Calculate(v[0], v[1], v[2], v[3], &v[4], &v[5]);
            if (j.CalcError.empty()) {
                // End points that are not numbers: nothing was computed.
                EXPECT_TRUE(slot >= 4 && !std::isfinite(bad));
                EXPECT_EQ(j.JDistribution, "");
                continue;
            }
            ExpectClearOutcome(j, "slot " + std::to_string(slot) + " value " + std::to_string(bad));
        }
    }
}

TEST_F(JohnsonBadInput, TransformsNeverThrowOrHang) {
    for (double bad : BadValues()) {
        for (int code = 0; code <= 8; ++code) {
            for (int slot = 0; slot < 5; ++slot) {
                double a[5] = {0.5, 1.2, 0.3, 2, -1}; // x, delta, gamma, lamda, xi
                a[slot] = bad;
                JohnsonDist j;
                j.Alpha = 1.5;
                const double z = j.JohnsontoNormal(a[0], a[1], a[2], a[3], a[4], code);
                const double x = j.NormaltoJohnson(a[0], a[1], a[2], a[3], a[4], code);
                // Whatever came back is a number the caller can use, or the
                // error path has it.
                if (!Rec().AllErrors().empty()) {
                    Rec().Clear();
                    continue;
                }
                EXPECT_FALSE(std::isnan(z));
                EXPECT_FALSE(std::isnan(x));
            }
        }
        int16_t fault = 0;
        const double q = JohnsonDist::PPND(bad, fault);
        EXPECT_TRUE(std::isfinite(q));
        Rec().Clear();
    }
}

TEST_F(JohnsonBadInput, DataWithBadValues) {
    for (double bad : BadValues()) {
        for (bool fixed : {false, true}) {
            JohnsonDist j;
            j.CalculateFromData({1, 2, bad, 4, 7}, fixed);
            if (!j.CalcError.empty()) ExpectClearOutcome(j, std::to_string(bad));
            EXPECT_TRUE(std::isfinite(j.Mean));
            Rec().Clear();
        }
    }
}

} // namespace
