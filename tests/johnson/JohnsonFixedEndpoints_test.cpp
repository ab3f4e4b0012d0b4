// The fixed-end-point SB fit ("SB3"), checked by integrating the fitted curve
// independently; its refusals are checked with the fit by moments'.
#include "johnson/JohnsonDist.h"
#include "tests/helpers/TestSupport.h"
#include "tests/johnson/JohnsonReference.h"

#include <cmath>

namespace {

using johnson_reference::Moments;

class JohnsonFixedEndpoints : public testing_support::RecordingTest {};

// X = xi + lamda V, V = p^alpha (1 - p^alpha when mirrored), p = logistic((Z - gamma) / delta).
double CurvePoint(double z, double delta, double gamma, double alpha, double lamda, double xi,
                  bool mirrored) {
    const double v = std::pow(johnson_reference::Logistic((z - gamma) / delta), alpha);
    return xi + lamda * (mirrored ? 1 - v : v);
}

Moments CurveMoments(double delta, double gamma, double alpha, double lamda, double xi,
                     bool mirrored) {
    return johnson_reference::OfTransform(
        [=](double z) { return CurvePoint(z, delta, gamma, alpha, lamda, xi, mirrored); }, 12,
        std::min(0.25, delta));
}

struct Sb3Row {
    const char* Name;
    double Delta, Gamma, Alpha;
    bool Mirrored;
    double XLower, XUpper;
};

const Sb3Row kCurves[] = {
    {"power", 0.8, -0.5, 2.5, false, 10, 14},
    {"small_alpha", 1.5, 1.0, 0.3, false, -3, 2},
    {"mirrored", 0.9, 0.2, 1.8, true, 100, 160},
    {"u_shaped", 0.35, 0.1, 1.1, false, 0, 5},
};

class JohnsonSb3Fits : public testing_support::RecordingTest,
                       public ::testing::WithParamInterface<Sb3Row> {};

TEST_P(JohnsonSb3Fits, FitMatchesTheMoments) {
    // Moments of a known curve, then the fit with its end points: the fitted curve,
    // integrated independently, must have those moments.
    const Sb3Row& r = GetParam();
    const double lamda = r.XUpper - r.XLower;
    const Moments want = CurveMoments(r.Delta, r.Gamma, r.Alpha, lamda, r.XLower, r.Mirrored);
    JohnsonDist jd;
    jd.Calculate(want.Mean, want.Sd, want.Skew, want.Kurt, &r.XLower, &r.XUpper);
    ASSERT_EQ(jd.CalcError, "Success");
    ASSERT_EQ(jd.JDistribution, "SB3");
    EXPECT_EQ(jd.Xi, r.XLower);
    EXPECT_EQ(jd.Lamda, lamda);
    const Moments got = CurveMoments(jd.Delta, jd.Gamma, jd.Alpha, jd.Lamda, jd.Xi, jd.Reflected);
    // Squared error within 1e-20 in units of the sd: about 1e-10 each.
    EXPECT_NEAR(got.Mean, want.Mean, 1e-9 * want.Sd);
    EXPECT_NEAR(got.Sd, want.Sd, 1e-9 * want.Sd);
    EXPECT_NEAR(got.Skew, want.Skew, 1e-9);
    // The transform to the normal undoes the curve, for codes 6 and 7 alike.
    const int code = jd.Reflected ? JohnsonDist::kSB3Mirrored : JohnsonDist::kSB3;
    for (double z : {-2.0, 0.5, 2.5}) {
        const double x = CurvePoint(z, jd.Delta, jd.Gamma, jd.Alpha, jd.Lamda, jd.Xi, jd.Reflected);
        EXPECT_NEAR(jd.JohnsontoNormal(x, jd.Delta, jd.Gamma, jd.Lamda, jd.Xi, code), z, 1e-6);
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
}

INSTANTIATE_TEST_SUITE_P(Curves, JohnsonSb3Fits, ::testing::ValuesIn(kCurves),
                         [](const auto& row) { return std::string(row.param.Name); });

// A tolerance below what double precision can reach: Newton runs out of ways
// to lower the error, a breakdown.
TEST_F(JohnsonFixedEndpoints, AnUnreachableToleranceIsABreakdown) {
    double p[3];
    bool reflected = true;
    int16_t fault = 0;
    JohnsonDist::FitSB3(3, 0, 1, 0.4, 0.1, 0.3, 1e-300, p, reflected, fault);
    EXPECT_EQ(fault, 4);
    EXPECT_TRUE(Rec().AllErrors().empty());
}

} // namespace
