// The AS 100 transforms (SNV, AJV and the object's two), the five-parameter SB
// transform, and AS 111's normal quantiles against an independent inverse.
#include "johnson/JohnsonDist.h"
#include "tests/helpers/TestSupport.h"
#include "tests/johnson/JohnsonReference.h"

#include <cmath>

namespace {

using J = JohnsonDist;

class JohnsonRoutines : public testing_support::RecordingTest {};

TEST_F(JohnsonRoutines, SnvByTypeAndZeroOutsideTheSupport) {
    const double g = 0.3, d = 1.7;
    const std::tuple<double, int, double, double, double> rows[] = {
        // x, type, lamda, xi, z
        {1, J::kSL, 1, -2, std::log(3.0) * d + g}, // SL, both orientations: lamda is the sign
        {-5, J::kSL, -1, -2, -(std::log(3.0) * d + g)},
        {4, J::kSU, 2.5, -2, g + d * std::asinh(6 / 2.5)},
        {-100, J::kSU, 1, 0, g + d * std::log(0.005)},    // beyond -63: w = -0.5 / w
        {-62.5, J::kSU, 1, 0, g + d * std::asinh(-62.5)}, // just inside the cut: exact
        {1, J::kSB, 4, -2, g + d * std::log(3.0)},
        {2, J::kNormal, 0, 0, 2 * d + g},
        // SB at an end and beyond, SL on the wrong side of xi, and other codes: 0.
        {-2, J::kSB, 4, -2, 0},
        {9, J::kSB, 4, -2, 0},
        {-2, J::kSL, 1, -2, 0},
        {2, J::kST, 1, 0, 0},
    };
    for (const auto& [x, type, lamda, xi, z] : rows)
        EXPECT_NEAR(J::SNV(x, type, g, d, lamda, xi), z, 1e-10 * (1 + std::fabs(z)))
            << type << " at " << x;
    // AJV inverts SNV.
    struct Curve {
        int Type;
        double G, D, L, Xi;
    };
    for (const Curve& c : {Curve{J::kSU, -1.13, 1.97, 1.44, -1.0},
                           {J::kSB, 1.04, 1.40, 6.84, -2.32},
                           {J::kSL, -3.45, 3.18, 1, -3.10}})

        for (double z = -6; z <= 6; z += 0.5) {
            const double x = J::AJV(z, c.Type, c.G, c.D, c.L, c.Xi);
            EXPECT_NEAR(J::SNV(x, c.Type, c.G, c.D, c.L, c.Xi), z, 1e-9 * (1 + std::fabs(z)))
                << c.Type << " " << z;
        }
    EXPECT_DOUBLE_EQ(J::AJV(1.04, J::kSB, 1.04, 1.4, 6, -2), 1.0); // SB's midpoint where z = gamma
    // SL takes lamda outside the exponent for either sign (so for lamda = -1 it is
    // not SNV's inverse; nothing in the program needs that one).
    EXPECT_DOUBLE_EQ(J::AJV(1, J::kSL, 0.5, 2, -1, 3), 3 - std::exp(0.25));
    EXPECT_TRUE(Rec().AllErrors().empty());
}

TEST_F(JohnsonRoutines, PpndAgreesWithAnIndependentInverse) {
    int16_t fault = -1;
    EXPECT_EQ(J::PPND(0.5, fault), 0);
    EXPECT_EQ(fault, 0);
    for (double p : {0.0, 1.0, -0.5}) {
        fault = 0;
        EXPECT_EQ(J::PPND(p, fault), 0);
        EXPECT_EQ(fault, 1) << p;
    }
    // AS 111 is good to about 1 part in 1e7 out to |z| of about 3.7 (p = 1e-4);
    // beyond, its tail rational drifts slowly (measured: 1.2e-6 at p = 1e-5,
    // 2e-5 at 1e-10, 1e-3 at 1e-300), which the bounds below follow.
    auto bound = [](double tail) {
        return tail >= 1e-4 ? 2.2e-7 : tail >= 1e-5 ? 1.3e-6 : tail >= 1e-10 ? 2.1e-5 : 1.1e-3;
    };
    std::vector<double> ps = {0.0799, 0.0801, 0.9199, 0.9201}; // either side of the split
    for (int e = -300; e <= -1; e += 7)
        ps.push_back(std::pow(10.0, e));
    for (double p = 0.001; p < 0.9999; p += 0.004)
        ps.push_back(p);
    for (double p : ps) {
        const double z = J::PPND(p, fault), ref = johnson_reference::NormalQuantile(p);
        ASSERT_EQ(fault, 0) << p;
        // Relative where z is away from 0; absolute 1e-9 near the centre.
        EXPECT_LE(std::fabs(z - ref), std::max(1e-9, bound(std::min(p, 1 - p)) * std::fabs(ref)))
            << p;
    }
    EXPECT_TRUE(Rec().AllErrors().empty());
}

} // namespace
