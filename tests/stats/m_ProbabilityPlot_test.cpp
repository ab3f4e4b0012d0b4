// The probability paper against closed forms: plotting positions, each axis
// transform, a sample placed at the curve's own quantiles lying on the line,
// and the normal band against the inverse of its information in closed form.
#include "stats/m_ProbabilityPlot.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace m_ProbabilityPlot;
using m_Curves::Curve;
using m_Curves::Kind;

TEST(ProbabilityPlot, PlottingPositionsByHand) {
    EXPECT_NEAR(Position(1, 5), 0.7 / 5.4, 1e-15);
    EXPECT_NEAR(Position(3, 5), 0.5, 1e-15);
    EXPECT_NEAR(Position(5, 5), 4.7 / 5.4, 1e-15);
    EXPECT_NEAR(Position(1, 5, Positions::Hazen), 0.1, 1e-15);
    EXPECT_NEAR(Position(1, 4, Positions::MeanRank), 0.2, 1e-15);
}

TEST(ProbabilityPlot, AxesMatchTheirClosedForms) {
    struct Row {
        const char* Name;
        Curve C;
        Paper P;
        double X, U; // a value and its place on the value axis
        double Prob, V;
    };
    // Quantiles of the standard normal from tables: 0.975 -> 1.959963985, 0.1 -> -1.2815515655.
    const Row rows[] = {
        {"Normal", {Kind::Normal, {10, 2, 0, 0}}, Paper::Normal, 13, 13, 0.975, 1.959963984540054},
        {"LogNormal",
         {Kind::LogNormal, {1, 0.5, 2, 0}},
         Paper::Normal,
         5,
         std::log(3.0),
         0.1,
         -1.2815515655446004},
        {"Exponential",
         {Kind::Exponential, {0.5, 1, 0, 0}},
         Paper::ExtremeValue,
         3,
         std::log(2.0),
         0.5,
         std::log(std::log(2.0))},
        {"Weibull",
         {Kind::Weibull, {2, 10, 3, 0}},
         Paper::ExtremeValue,
         13,
         std::log(10.0),
         1 - std::exp(-1.0),
         0},
        {"JohnsonSU",
         {Kind::JohnsonSU, {2, 0.5, 3, 1}},
         Paper::Normal,
         4,
         0.5 + 2 * std::asinh(1.0),
         0.975,
         1.959963984540054},
        {"JohnsonSB",
         {Kind::JohnsonSB, {1.5, -0.2, 10, 0}},
         Paper::Normal,
         2.5,
         -0.2 + 1.5 * std::log(2.5 / 7.5),
         0.1,
         -1.2815515655446004},
        {"JohnsonSL",
         {Kind::JohnsonSL, {1.2, 0.3, 1, 2}},
         Paper::Normal,
         5,
         0.3 + 1.2 * std::log(3.0),
         0.5,
         0},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.Name);
        EXPECT_EQ(PaperOf(r.C.K), r.P);
        EXPECT_NEAR(ToAxis(r.C, r.X), r.U, 1e-12);
        EXPECT_NEAR(FromAxis(r.C, r.U), r.X, 1e-12);
        EXPECT_NEAR(ToPaper(r.P, r.Prob), r.V, 1e-12);
        EXPECT_NEAR(FromPaper(r.P, r.V), r.Prob, 1e-14);
    }
}

// x(i) = F^-1(p(i)) by the curve's closed-form quantile, so every point must
// fall on the fitted line.
TEST(ProbabilityPlot, ASampleAtTheCurvesQuantilesLiesOnItsLine) {
    struct Row {
        const char* Name;
        int FitRow;
        Curve C;
        double (*Quantile)(const double* par, double p);
    };
    const Row rows[] = {
        {"Weibull 3P",
         m_Fits::kWeibull3P,
         {Kind::Weibull, {1.7, 40, 12, 0}},
         [](const double* a, double p) {
             return a[2] + a[1] * std::pow(-std::log1p(-p), 1 / a[0]);
         }},
        {"Exponential 2P",
         m_Fits::kExponential2P,
         {Kind::Exponential, {0.25, -3, 0, 0}},
         [](const double* a, double p) { return a[1] - std::log1p(-p) / a[0]; }},
        // SU quantile: xi + lamda sinh((Phi^-1(p) - gamma) / delta), with Phi^-1 by bisection on
        // erfc.
        {"Johnson SU",
         m_Fits::kJohnsonPercentiles,
         {Kind::JohnsonSU, {1.3, -0.4, 2, 5}},
         [](const double* a, double p) {
             double lo = -40, hi = 40;
             for (int k = 0; k < 200; ++k) {
                 const double mid = (lo + hi) / 2;
                 (0.5 * std::erfc(-mid / std::sqrt(2.0)) < p ? lo : hi) = mid;
             }
             return a[3] + a[2] * std::sinh((lo - a[1]) / a[0]);
         }},
    };
    constexpr std::size_t n = 40;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.Name);
        std::vector<double> x;
        for (std::size_t i = 1; i <= n; ++i)
            x.push_back(r.Quantile(r.C.P, Position(i, n)));
        m_Fits::Fit fit;
        fit.C = r.C;
        const Plot plot = Make(x, r.FitRow, fit);
        ASSERT_EQ(plot.Status, "");
        ASSERT_EQ(plot.U.size(), n);
        ASSERT_GE(plot.LineU.size(), 2u);
        const double slope =
            (plot.LineV.back() - plot.LineV.front()) / (plot.LineU.back() - plot.LineU.front());
        for (std::size_t i = 0; i < n; ++i)
            EXPECT_NEAR(plot.V[i], plot.LineV.front() + slope * (plot.U[i] - plot.LineU.front()),
                        1e-9);
        EXPECT_FALSE(plot.BandV.empty());
        EXPECT_FALSE(plot.ProbTicks.empty());
        EXPECT_GE(plot.ValueTicks.size(), 3u);
    }
}

// For the normal at (mean, s) the observed information is n / s^2 for the
// mean and (2n - 3) / s^2 for s, uncorrelated: Var(mean + s z) = s^2 / n +
// z^2 s^2 / (2n - 3).
TEST(ProbabilityPlot, NormalBandIsTheDeltaMethodsInClosedForm) {
    std::vector<double> values;
    for (int i = 0; i < 100; ++i)
        values.push_back(std::sin(i * 1.7) * 3 + std::cos(i * 0.31) + 20);
    const m_Fits::Sample s = m_Fits::Prepare(values);
    const m_Fits::Fit fit = m_Fits::FitRow(m_Fits::kNormal, s);
    const Plot plot = Make(s.X, m_Fits::kNormal, fit);
    ASSERT_FALSE(plot.BandV.empty());
    const double sd = fit.C.P[1];
    for (std::size_t k = 0; k < plot.BandV.size(); k += 10) {
        const double z = plot.BandV[k];
        const double half = 1.959963984540054 * sd * std::sqrt(1 / 100.0 + z * z / 197.0);
        EXPECT_NEAR((plot.BandHigh[k] - plot.BandLow[k]) / 2, half, 1e-4 * half);
    }
}

TEST(ProbabilityPlot, MillionsOfValuesKeepAFewThousandPointsWithTheEnds) {
    std::vector<double> x(2'000'000);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = 1 + static_cast<double>(i) * 1e-5;
    m_Fits::Fit fit;
    fit.C = {Kind::Weibull, {1.5, 10, 0, 0}};
    const Plot plot = Make(x, m_Fits::kWeibull, fit);
    EXPECT_LE(plot.U.size(), 4002u);
    EXPECT_GT(plot.U.size(), 1000u);
    EXPECT_DOUBLE_EQ(plot.U.front(), 0);
    EXPECT_DOUBLE_EQ(plot.U.back(), std::log(x.back()));
}

} // namespace
