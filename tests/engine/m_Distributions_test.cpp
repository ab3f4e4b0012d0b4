// Parameter checks, moments, the engine's own densities and the density grid.
#include "engine/m_Distributions.h"

#include "engine/DistCalculator.h"
#include "engine/Families.h"

#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <sstream>

namespace {

using namespace m_Distributions;
using reference::NormalDensity;
using L = long double;

double Rel(L actual, L expected) {
    return static_cast<double>(std::fabs((actual - expected) / expected));
}

class DistributionsTest : public testing_support::RecordingTest {};

// Labels of the error path, from a short list: "mean StDev" -> the two
// m_Distributions labels; "G" stands for m_NumRecipes.Gamma.
std::vector<std::string> Labels(const std::string& words) {
    std::vector<std::string> out;
    std::istringstream in(words);
    for (std::string w; in >> w;)
        out.push_back(w == "G" ? "Pondera.m_NumRecipes.Gamma" : "Pondera.m_Distributions." + w);
    return out;
}

// The window's checks and the calculator refuse by the same rules: the first
// check that fails shows the message the calculator gives for the same values.
TEST_F(DistributionsTest, ChecksAndTheCalculatorRefuseAlike) {
    const char* kUni = "Minimum must be less than Maximum for a Uniform distribution.";
    const char* kTri = "Minimum must be less than Maximum for a Triangular distribution.";
    const char* kSd = "Standard deviation must be greater than zero.";
    const struct Row {
        const char* Name;
        double P1, P2, P3;
        int FailingCheck; // 0 = all pass, else the first check (1..3) that fails
        const char* Message;
    } rows[] = {
        {"Uniform", 3, 3, 0, 0, nullptr}, // equal ends pass on purpose
        {"Uniform", 5, 4, 0, 1, kUni},
        // The likeliest may equal either end, or both.
        {"Triangular", 0, 0, 0, 0, nullptr},
        {"Triangular", 0, 2, 1, 2,
         "Likeliest value must be between Minimum and Maximum for a Triangular distribution."},
        {"Triangular", 2, 1, 1, 1, kTri},
        {"Exponential", 0, 0, 0, 1,
         "Scale parameter for an Exponential distribution must be greater than zero."},
        {"Exponential", 1e-300, -5, 0, 0, nullptr},
        {"Weibull", 0, 0, 0, 1,
         "Shape parameter for a Weibull distribution must be greater than zero."},
        {"Weibull", 1, 0, 0, 2,
         "Scale parameter for a Weibull distribution must be greater than zero."},
        {"LogNormal", 0, 0, 0, 2, kSd},
        {"Normal", 1e308, 1e-320, 0, 0, nullptr}, // p1 is never checked
        {"Johnson SB", -1, -1, -1, 0, nullptr},   // Johnson parameters are not checked
        {"Lognormal", 0, -1, 0, 0, nullptr},      // not a name of the table
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.Name) + " " + std::to_string(r.P1) + " " + std::to_string(r.P2) +
                     " " + std::to_string(r.P3));
        Rec().Clear();
        const bool ok1 = CheckParam1(r.Name, r.P1, r.P2, r.P3);
        const bool ok2 = ok1 && CheckParam2(r.Name, r.P1, r.P2, r.P3);
        const bool ok3 = ok2 && CheckParam3(r.Name, r.P1, r.P2, r.P3);
        EXPECT_EQ(!ok1 ? 1 : !ok2 ? 2 : !ok3 ? 3 : 0, r.FailingCheck);
        EXPECT_EQ(MessageTexts(),
                  r.Message ? std::vector<std::string>{r.Message} : std::vector<std::string>{});
        if (!r.Message) continue;
        const Families::Family* family = Families::ByName(r.Name);
        DistCalculator calc;
        calc.SetDistribution(family->CalculatorKey);
        const double p[3] = {r.P1, r.P2, r.P3};
        for (int i = 0; i < 3; ++i)
            calc.SetParam(i + 1, p[i]);
        EXPECT_FALSE(calc.Calculate());
        EXPECT_EQ(calc.Message(), r.Message);
    }
    // A NaN breaks a rule rather than slipping through it.
    Rec().Clear();
    EXPECT_FALSE(CheckParam2("Normal", 0, NAN, 0));
    // Oddly worded messages are kept; each is reached when its check is called on its own.
    Rec().Clear();
    EXPECT_FALSE(CheckParam2("Uniform", 2, 1, 0));
    EXPECT_FALSE(CheckParam3("Triangular", 2, 0, 1));
    EXPECT_EQ(MessageTexts(),
              (std::vector<std::string>{
                  "Maximum must be less than Minimum for a Uniform distribution.",
                  "Maximum must be greater than Minimum for a Triangular distribution."}));
}

struct MomentRow {
    const char* Name;
    int Code;
    double P1, P2, P3;
    L Mean, Sd, Skew, Kurt;
    double Tol; // relative, absolute below 1
};

TEST_F(DistributionsTest, MomentsMatchClosedForms) {
    const L rt2 = std::sqrt(2.0L), e = std::exp(1.0L);
    // LogNormal 0, 1: mean e^0.5, kurtosis e^4 + 2e^3 + 3e^2 - 3 = 113.936...
    const L lnKurt = e * e * e * e + 2 * e * e * e + 3 * e * e - 3;
    const MomentRow rows[] = {
        {"Normal", 1, 10, 2, 0, 10, 2, 0, 3, 0},
        {"Uniform", 6, 0, 1, 0, 0.5L, std::sqrt(1 / 12.0L), 0, 1.8L, 1e-15},
        {"Triangular", 2, 0, 0, 1, 1 / 3.0L, std::sqrt(1 / 18.0L), 2 * rt2 / 5, 2.4L, 1e-14},
        // Symmetric far from 0: the spread survives (no cancellation).
        {"Triangular", 2, 1e8 - 1, 1e8, 1e8 + 1, 1e8, std::sqrt(1 / 6.0L), 0, 2.4L, 1e-13},
        {"Exponential", 3, 2, 1, 0, 1.5L, 0.5L, 2, 9, 1e-15},
        {"Exponential", 3, -4, 0, 0, -0.25L, 0.25L, 2, 9, 0}, // sqrt(1/rate^2) stays positive
        {"LogNormal", 4, 0, 1, 0, std::sqrt(e), std::sqrt(e * (e - 1)), (e + 2) * std::sqrt(e - 1),
         lnKurt, 1e-12},
        // exp(2 mu + s^2) alone would overflow
        {"LogNormal", 4, 400, 1, 0, std::exp(400.5L), std::exp(400.5L) * std::sqrt(e - 1),
         (e + 2) * std::sqrt(e - 1), lnKurt, 1e-12},
        {"Weibull", 5, 1, 1, 0, 1, 1, 2, 9, 1e-9}, // the exponential
        // Gamma(1 + n/k) to 30 digits (mpmath)
        {"Weibull", 5, 3.6, 1, 5, 5.90110568328228942194L, 0.278020287044976710458L,
         0.000562938901549315431593L, 2.71674518369734418327L, 1e-9},
    };
    for (const MomentRow& r : rows) {
        SCOPED_TRACE(std::string(r.Name) + " " + std::to_string(r.P1) + " " + std::to_string(r.P2) +
                     " " + std::to_string(r.P3));
        const double got[4] = {mean(r.Code, r.P1, r.P2, r.P3), StDev(r.Code, r.P1, r.P2, r.P3),
                               Skewness(r.Code, r.P1, r.P2, r.P3),
                               Kurtosis(r.Code, r.P1, r.P2, r.P3)};
        const L want[4] = {r.Mean, r.Sd, r.Skew, r.Kurt};
        for (int i = 0; i < 4; ++i)
            EXPECT_LE(std::fabs(got[i] - want[i]) / std::max(1.0L, std::fabs(want[i])), r.Tol) << i;
    }
    // A triangle without spread is a point: no skewness or kurtosis, and no error.
    for (double a : {0.0, 5.0, -1e300}) {
        EXPECT_EQ(mean(2, a, a, a), a);
        EXPECT_EQ(StDev(2, a, a, a), 0);
        EXPECT_TRUE(std::isnan(Skewness(2, a, a, a)) && std::isnan(Kurtosis(2, a, a, a))) << a;
    }
    // The Johnson codes and any other have no closed form here: 0.
    for (int code : {0, 7, 8, 9, -1, 100})
        for (auto f : {mean, StDev, Skewness, Kurtosis})
            EXPECT_EQ(f(code, 1, 2, 3), 0) << code;
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, MomentFaultsReportTheirOwnLabelAndLeaveZero) {
    const std::tuple<const char*, int, double, double, std::vector<std::string>> rows[] = {
        {"lognormal sigma 50: exp(1250)", 4, 0, 50, Labels("mean StDev Skewness Kurtosis")},
        {"weibull shape 1e-3: Gamma(1001)", 5, 1e-3, 1,
         Labels("G mean G StDev G Skewness G Kurtosis")},
        {"weibull shape 0: 1/0", 5, 0, 1, Labels("mean StDev Skewness Kurtosis")},
        {"exponential rate 0", 3, 0, 0, Labels("mean StDev")},
    };
    for (const auto& [what, code, p1, p2, labels] : rows) {
        Rec().Clear();
        const double m = mean(code, p1, p2, 0), s = StDev(code, p1, p2, 0);
        const double k = Skewness(code, p1, p2, 0), b = Kurtosis(code, p1, p2, 0);
        EXPECT_EQ(ErrorLabels(), labels) << what;
        EXPECT_EQ(m, 0) << what;
        EXPECT_EQ(s, 0) << what;
        EXPECT_TRUE(std::isfinite(k) && std::isfinite(b)) << what;
    }
}

TEST_F(DistributionsTest, DensitiesGuardTheirSupport) {
    // Inside the support each is the slope of its cumulative (the calculator
    // tests); here a far tail and the support's edges.
    EXPECT_LE(Rel(Normal_PDF(-1e-3, 0, 1e-4), NormalDensity(10) / 1e-4L), 1e-13);
    const double zeros[] = {
        JohnsonSB_PDF(1, 1, 0, 2, 1),  JohnsonSB_PDF(3, 1, 0, 2, 1),          // both ends
        JohnsonSB_PDF(2, 1, 0, 0, 1),  JohnsonSB_PDF(1e-320, 0.001, 0, 1, 0), // pole
        JohnsonSL_PDF(1, 1, 0, 1, 1),  JohnsonSL_PDF(2, 0, 0, 1, 1),          // x = xi; delta 0
        JohnsonSL_PDF(2, 1, 0, -1, 1), JohnsonSU_PDF(0, 1, 0, 0, 0),
        JohnsonSU_PDF(0, -1, 0, 1, 0)};
    for (size_t i = 0; i < std::size(zeros); ++i)
        EXPECT_EQ(zeros[i], 0) << i;
    EXPECT_TRUE(ErrorLabels().empty());
    // The normal density without spread is a division by zero.
    EXPECT_EQ(Normal_PDF(0, 0, 0), 0);
    EXPECT_EQ(ErrorLabels(), Labels("Normal_PDF"));
    EXPECT_EQ(Rec().AllErrors()[0].Description, "Division by zero");
}

TEST_F(DistributionsTest, GetPDFDataCopiesTheGridOrReportsAndCopiesNothing) {
    // Element 0 unused; the values are the calculator tests' business. A name no
    // branch knows gives zeros.
    EXPECT_EQ(GetPDFData("Normal", -2, 2, 4, 0, 1, 0, 0)[0], 0);
    for (const char* name : {"Johnson SB", "Lognormal", ""})
        EXPECT_EQ(GetPDFData(name, 0, 1, 6, 1, 1, 1, 1), std::vector<double>(7, 0.0)) << name;
    EXPECT_TRUE(ErrorLabels().empty());
    EXPECT_EQ(GetPDFData("Normal", 0, 1, 3, 0, -1, 0, 0), std::vector<double>(4, 0.0));
    ASSERT_EQ(ErrorLabels(), Labels("GetPDFData"));
    EXPECT_EQ(Rec().AllErrors()[0].Description, "Standard deviation must be greater than zero.");
    // The point count is a 16-bit integer.
    EXPECT_EQ(GetPDFData("Normal", 0, 1, kMaxPoints + 1, 0, 1, 0, 0).size(), 1u);
    EXPECT_EQ(GetPDFData("Normal", 0, 1, 0, 0, 1, 0, 0).size(), 1u);
    EXPECT_EQ(ErrorLabels(), Labels("GetPDFData GetPDFData GetPDFData"));
}

} // namespace
