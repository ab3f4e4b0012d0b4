// Bad values at every entry point of JohnsonDist: each call ends, with a status
// message or a reported error, and never leaves a non-finite number in a curve
// that claims success.
#include "johnson/JohnsonDist.h"
#include "tests/helpers/TestSupport.h"

#include <array>
#include <cmath>
#include <functional>

namespace {

class JohnsonBadInput : public testing_support::RecordingTest {
  protected:
    // What Calculate left must be a clear outcome.
    void ExpectClearOutcome(const JohnsonDist& j, const std::string& what) {
        SCOPED_TRACE(what);
        ASSERT_FALSE(j.CalcError.empty());
        if (j.CalcError.rfind("Error", 0) == 0) {
            EXPECT_EQ(j.JDistribution, "Error");
            EXPECT_EQ(j.Delta, 0);
            EXPECT_EQ(j.Lamda, 0);
        } else if (Rec().AllErrors().empty()) { // a success nobody complained about is a real curve
            EXPECT_EQ(j.CalcError, "Success");
            EXPECT_TRUE(std::isfinite(j.Delta) && std::isfinite(j.Gamma) &&
                        std::isfinite(j.Lamda) && std::isfinite(j.Xi));
        }
        for (const auto& e : Rec().AllErrors())
            EXPECT_EQ(e.Label.rfind("Pondera.JohnsonDist.", 0), 0u) << e.Label;
        Rec().Clear();
    }
    // Calls f with each bad value in each slot of the good arguments.
    template <std::size_t N>
    void EachBad(std::array<double, N> good,
                 const std::function<void(std::array<double, N>&, std::string)>& f) {
        for (std::size_t slot = 0; slot < N; ++slot)
            for (double bad : testing_support::BadValues()) {
                auto v = good;
                v[slot] = bad;
                f(v, "slot " + std::to_string(slot) + " value " + std::to_string(bad));
            }
    }
};

TEST_F(JohnsonBadInput, CalculateWithEachMomentBad) {
    EachBad<4>({1, 2, 0.5, 4}, [&](auto& m, const std::string& what) {
        JohnsonDist j;
        j.Calculate(m[0], m[1], m[2], m[3]);
        ExpectClearOutcome(j, what);
    });
}

TEST_F(JohnsonBadInput, ExtremeButNumericMoments) {
    const std::array<double, 4> rows[] = {
        {0, 1e-300, 0.5, -1},   // SL on the line: sd^2 underflows unless scaled
        {1e300, 1e300, 0.5, 4}, // lamda and xi near the top of the doubles
        {0, 1, 0.0001, 1e9},    // SUFIT's symmetric shortcut far out
        {1e308, 1e300, 0.5, 4}, // xi overflows: no curve
        {0, 1, 0.457, 1e300},   // beta2 beyond the SU solve's reach
    };
    for (const auto& [mean, sd, skew, kurt] : rows) {
        JohnsonDist j;
        j.Calculate(mean, sd, skew, kurt);
        const std::string what = std::to_string(mean) + " " + std::to_string(sd) + " " +
                                 std::to_string(skew) + " " + std::to_string(kurt);
        ExpectClearOutcome(j, what);
    }
}

TEST_F(JohnsonBadInput, TransformsNeverThrowOrHang) {
    // x, delta, gamma, lamda, xi through every code, both ways.
    EachBad<5>({0.5, 1.2, 0.3, 2, -1}, [&](auto& a, const std::string& what) {
        for (int code = 0; code <= 8; ++code) {
            JohnsonDist j;
            j.Alpha = 1.5;
            const double z = j.JohnsontoNormal(a[0], a[1], a[2], a[3], a[4], code);
            const double x = j.NormaltoJohnson(a[0], a[1], a[2], a[3], a[4], code);
            // A number the caller can use, or the error path has it.
            EXPECT_TRUE(!Rec().AllErrors().empty() || (!std::isnan(z) && !std::isnan(x)))
                << what << " code " << code;
            Rec().Clear();
        }
    });
    for (double bad : testing_support::BadValues()) {
        int16_t fault = 0;
        EXPECT_TRUE(std::isfinite(JohnsonDist::PPND(bad, fault))) << bad;
    }
}

} // namespace
