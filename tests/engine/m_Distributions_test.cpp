// Catalogue, parameter checks, moments and the engine's own densities.
#include "engine/m_Distributions.h"

#include "engine/m_PercentCertainty.h"

#include "tests/engine/EngineReference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace m_Distributions;
using engine_ref::Phi;
using engine_ref::Rel;
using L = long double;

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

TEST_F(DistributionsTest, CatalogueCodesKeysAndOrders) {
    // In start-up order: name|code|calculator key|visible slots|the slot holding the minimum.
    std::vector<std::string> rows;
    for (const auto& e : Catalogue()) {
        int slots = 0;
        for (const auto& slot : e.Slots)
            slots += slot.Label != nullptr;
        rows.push_back(std::string(e.Name) + "|" + std::to_string(e.Code) + "|" + e.CalculatorKey +
                       "|" + std::to_string(slots) + "|" + e.MinimumSlot);
        EXPECT_EQ(FindDistribution(e.Name), &e);
    }
    EXPECT_EQ(rows,
              (std::vector<std::string>{"Normal|1|Normal|2|", "LogNormal|4|Lognormal|3|3",
                                        "Exponential|3|Exponential|2|2", "Weibull|5|Weibull|3|3",
                                        "Uniform|6|Uniform|2|", "Triangular|2|Triangular|3|",
                                        "Johnson SB|7|Johnson|4|", "Johnson SL|9|Johnson|4|",
                                        "Johnson SU|8|Johnson|4|"}));
    EXPECT_EQ(FindDistribution("Lognormal"), nullptr); // names compare exactly
    EXPECT_EQ(FindDistribution("normal"), nullptr);
    EXPECT_EQ(ClassicalListOrder(), (std::vector<std::string>{"Normal", "Exponential", "LogNormal",
                                                              "Uniform", "Triangular", "Weibull"}));
    EXPECT_EQ(MomentsListOrder(),
              (std::vector<std::string>{"Johnson SB", "Johnson SL", "Johnson SU", "Normal"}));
}

TEST_F(DistributionsTest, ChecksPassOrShowTheirExactMessage) {
    const char* kUni = "Minimum must be less than Maximum for a Uniform distribution.";
    const char* kTriMode =
        "Likeliest value must be between Minimum and Maximum for a Triangular distribution.";
    const char* kTri = "Minimum must be less than Maximum for a Triangular distribution.";
    const char* kExp = "Scale parameter for an Exponential distribution must be greater than zero.";
    const char* kSd = "Standard deviation must be greater than zero.";
    struct Row {
        const char* Name;
        double P1, P2, P3;
        int FailingCheck; // 0 = all pass, else the first check (1..3) that fails
        const char* Message;
    };
    const Row rows[] = {
        {"Uniform", 3, 3, 0, 0, nullptr}, // equal ends pass on purpose
        {"Uniform", 5, 4, 0, 1, kUni},
        {"Uniform", NAN, 1, 0, 1, kUni},
        // The likeliest may equal either end, or both.
        {"Triangular", 0, 0, 0, 0, nullptr},
        {"Triangular", 0, 0, 1, 0, nullptr},
        {"Triangular", 0, 1, 1, 0, nullptr},
        {"Triangular", 0, 2, 1, 2, kTriMode},
        {"Triangular", 0, -1, 1, 2, kTriMode},
        {"Triangular", 2, 1, 1, 1, kTri},
        {"Exponential", 0, 0, 0, 1, kExp},
        {"Exponential", -1, 0, 0, 1, kExp},
        {"Exponential", NAN, 0, 0, 1, kExp},
        {"Exponential", 1e-300, -5, 0, 0, nullptr},
        {"Weibull", 0, 1, 0, 1,
         "Shape parameter for a Weibull distribution must be greater than zero."},
        {"Weibull", 1, 0, 0, 2,
         "Scale parameter for a Weibull distribution must be greater than zero."},
        {"Weibull", 1e-3, 1e3, -7, 0, nullptr},
        {"Normal", -1e300, 0, 0, 2, kSd},
        {"Normal", 0, NAN, 0, 2, kSd},
        {"LogNormal", 0, -2, 0, 2, kSd},
        {"Normal", 1e308, 1e-320, 0, 0, nullptr}, // p1 is never checked
        {"Johnson SB", -1, -1, -1, 0, nullptr},   // Johnson parameters are not checked
        {"Johnson SU", 0, 0, 0, 0, nullptr},
        {"Lognormal", 0, -1, 0, 0, nullptr}, // not a name of the table
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.Name) + " " + std::to_string(r.P1) + " " + std::to_string(r.P2) +
                     " " + std::to_string(r.P3));
        Rec().Clear();
        const bool ok1 = CheckParam1(r.Name, r.P1, r.P2, r.P3);
        const bool ok2 = ok1 && CheckParam2(r.Name, r.P1, r.P2, r.P3);
        const bool ok3 = ok2 && CheckParam3(r.Name, r.P1, r.P2, r.P3);
        EXPECT_EQ(!ok1 ? 1 : !ok2 ? 2 : !ok3 ? 3 : 0, r.FailingCheck);
        ASSERT_EQ(Rec().Messages.size(), r.Message ? 1u : 0u);
        if (r.Message) {
            EXPECT_EQ(Rec().Messages[0].Text, r.Message);
            EXPECT_EQ(Rec().Messages[0].Title, "Pondera");
            EXPECT_EQ(Rec().Messages[0].Icon, support::BoxIcon::Information);
        }
        EXPECT_TRUE(ErrorLabels().empty());
    }
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

MomentRow Weibull(double k, double eta, double min) { // from the exact gamma function
    auto g = [k](int n) { return std::tgamma(1 + n / static_cast<L>(k)); };
    const L v = g(2) - g(1) * g(1);
    return {"Weibull",
            5,
            k,
            eta,
            min,
            g(1) * eta + min,
            std::sqrt(v) * eta,
            (g(3) - 3 * g(1) * g(2) + 2 * g(1) * g(1) * g(1)) / std::pow(v, 1.5L),
            (g(4) - 4 * g(1) * g(3) + 6 * g(1) * g(1) * g(2) - 3 * std::pow(g(1), 4)) / (v * v),
            1e-9};
}

MomentRow LogNormal(double mu, double s, double min) {
    const L w = std::exp(static_cast<L>(s) * s);
    return {"LogNormal",
            4,
            mu,
            s,
            min,
            std::exp(mu + s * static_cast<L>(s) / 2) + min,
            std::sqrt(std::exp(2 * mu + static_cast<L>(s) * s) * (w - 1)),
            (w + 2) * std::sqrt(w - 1),
            w * w * w * w + 2 * w * w * w + 3 * w * w - 3,
            1e-12};
}

TEST_F(DistributionsTest, MomentsMatchClosedForms) {
    const L rt2 = std::sqrt(2.0L);
    const MomentRow rows[] = {
        {"Normal", 1, 10, 2, 0, 10, 2, 0, 3, 0},
        {"Uniform", 6, 0, 1, 0, 0.5L, std::sqrt(1 / 12.0L), 0, 1.8L, 1e-15},
        {"Uniform", 6, 1e6, 1e6 + 3, 0, 1e6 + 1.5L, 3 / std::sqrt(12.0L), 0, 1.8L, 1e-15},
        {"Triangular", 2, 0, 0, 1, 1 / 3.0L, std::sqrt(1 / 18.0L), 2 * rt2 / 5, 2.4L, 1e-14},
        {"Triangular", 2, 0, 1, 1, 2 / 3.0L, std::sqrt(1 / 18.0L), -2 * rt2 / 5, 2.4L, 1e-14},
        // Symmetric far from 0: the spread survives (no cancellation).
        {"Triangular", 2, 1e8 - 1, 1e8, 1e8 + 1, 1e8, std::sqrt(1 / 6.0L), 0, 2.4L, 1e-13},
        // (a + c - 2b)(2a - c - b)(a - 2c + b) sqrt2 / (5 q^1.5), q = a^2+c^2+b^2-ac-cb-ab = 3.25
        {"Triangular", 2, -1, 0.5, 1, 1 / 6.0L, std::sqrt(3.25L / 18),
         rt2 * (-2.5L) * (-3.5L) * (-1) / (5 * std::pow(3.25L, 1.5L)), 2.4L, 1e-14},
        {"Exponential", 3, 2, 1, 0, 1.5L, 0.5L, 2, 9, 1e-15},
        {"Exponential", 3, 1e-300, 0, 0, 1e300L, 1e300L, 2, 9, 1e-15},
        {"Exponential", 3, -4, 0, 0, -0.25L, 0.25L, 2, 9, 0}, // sqrt(1/rate^2) stays positive
        LogNormal(0, 1, 0), // mean e^0.5 = 1.648721..., kurtosis 113.936...
        LogNormal(0.5, 0.1, 3),
        LogNormal(400, 1, 0),  // exp(2 mu + s^2) alone would overflow
        LogNormal(0, 1e-6, 0), // exp(s^2) - 1 needs expm1
        Weibull(1, 1, 0),
        Weibull(0.5, 2, 0),
        Weibull(2, 10, 0),
        Weibull(3.6, 1, 5),
        Weibull(10, 1, 0),
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
    // The Johnson codes and any other have no closed form here: 0.
    for (int code : {0, 7, 8, 9, -1, 100})
        for (auto f : {mean, StDev, Skewness, Kurtosis})
            EXPECT_EQ(f(code, 1, 2, 3), 0) << code;
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, MomentFaultsReportTheirOwnLabelAndLeaveZero) {
    const std::tuple<const char*, int, double, double, std::vector<std::string>> rows[] = {
        {"triangular 0,0,0: skewness 0/0", 2, 0, 0, Labels("Skewness")},
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

TEST_F(DistributionsTest, BadValuesNeverGiveNaNOrInfinity) {
    for (double bad : testing_support::BadValues()) {
        for (int code = 1; code <= 6; ++code)
            for (int slot = 0; slot < 3; ++slot) {
                double p[3] = {1, 2, 3};
                p[slot] = bad;
                for (auto f : {mean, StDev, Skewness, Kurtosis})
                    EXPECT_TRUE(std::isfinite(f(code, p[0], p[1], p[2])))
                        << code << " " << slot << " " << bad;
            }
        for (double v : {Normal_PDF(bad, 0, 1), Normal_PDF(0, bad, 1), Normal_PDF(0, 0, bad),
                         JohnsonSB_PDF(bad, 1, 0, 1, 0), JohnsonSB_PDF(0.5, bad, 0, 1, 0),
                         JohnsonSL_PDF(1, 1, bad, 1, 0), JohnsonSU_PDF(0, 1, 0, bad, 0),
                         JohnsonSU_PDF(0, 1, 0, 1, bad)})
            EXPECT_TRUE(std::isfinite(v) && v >= 0) << bad;
        for (const auto& e : Catalogue())
            for (int slot = 0; slot < 4; ++slot) {
                double p[4] = {1, 0.5, 2, 0};
                p[slot] = bad;
                const std::string name = e.Name == std::string("Johnson SB") ? "Johnson" : e.Name;
                for (double v : GetPDFData(name, -1, 3, 20, p[0], p[1], p[2], p[3]))
                    EXPECT_TRUE(std::isfinite(v)) << e.Name << " " << slot << " " << bad;
            }
    }
}

TEST_F(DistributionsTest, DensitiesMatchClosedForms) {
    const L c = 1 / std::sqrt(2 * engine_ref::kPi);
    EXPECT_NEAR(Normal_PDF(0, 0, 1), 0.3989422804014327, 1e-16);
    EXPECT_LE(Rel(Normal_PDF(7, 3, 2), Phi(2) / 2), 1e-15);
    EXPECT_LE(Rel(Normal_PDF(-1e-3, 0, 1e-4), Phi(10) / 1e-4L), 1e-13);
    EXPECT_NEAR(JohnsonSU_PDF(0, 1, 0, 1, 0), 0.3989422804014327, 1e-16);
    for (double x : {1.2, 2.0, 3.9}) { // SB: xi 1, lamda 3, delta 0.8, gamma -0.4
        const L y = (x - 1) / 3.0L, z = -0.4L + 0.8L * std::log(y / (1 - y));
        const L want = 0.8L * c / 3 / (y * (1 - y)) * std::exp(-z * z / 2);
        EXPECT_LE(Rel(JohnsonSB_PDF(x, 0.8, -0.4, 3, 1), want), 1e-13);
    }
    for (double x : {-30.0, -1.0, 0.5, 12.0}) { // SU: xi -1, lamda 2, delta 1.7, gamma 0.6
        const L y = (x + 1) / 2.0L, z = 0.6L + 1.7L * std::log(y + std::sqrt(y * y + 1));
        const L want = 1.7L * c / 2 / std::sqrt(y * y + 1) * std::exp(-z * z / 2);
        EXPECT_LE(Rel(JohnsonSU_PDF(x, 1.7, 0.6, 2, -1), want), 1e-13);
    }
    // SL: xi -1, lamda 2.5 (kept inside the logarithm); lamda -1 mirrors it about xi.
    for (const auto& [x, lamda] : {std::pair{-0.5, 2.5}, {1.0, 2.5}, {9.0, 2.5}, {-3.0, -1.0}}) {
        const L y = (x + 1) / L(lamda), z = 0.3L + 2.2L * std::log(y);
        EXPECT_LE(Rel(JohnsonSL_PDF(x, 2.2, 0.3, lamda, -1),
                      2.2L * c / std::fabs(lamda) / y * std::exp(-z * z / 2)),
                  1e-13)
            << lamda;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, JohnsonDensityGuardsGiveZeroWithoutError) {
    const double zeros[] = {
        JohnsonSB_PDF(1, 1, 0, 2, 1),
        JohnsonSB_PDF(3, 1, 0, 2, 1), // x = xi, xi + lamda
        JohnsonSB_PDF(0, 1, 0, 2, 1),
        JohnsonSB_PDF(2, 1, 0, 0, 1), // outside; lamda 0
        JohnsonSB_PDF(0.5, 1, 0, -2, 1),
        JohnsonSB_PDF(1e-320, 0.001, 0, 1, 0), // beside the pole: beyond any double
        JohnsonSL_PDF(1, 1, 0, 1, 1),
        JohnsonSL_PDF(2, 0, 0, 1, 1),  // x = xi; delta 0
        JohnsonSL_PDF(2, 1, 0, -1, 1), // mirrored: x beyond xi
        JohnsonSL_PDF(0, 1, 0, -2, 1), // only -1 mirrors
        JohnsonSU_PDF(0, 1, 0, 0, 0),
        JohnsonSU_PDF(0, -1, 0, 1, 0)};
    for (size_t i = 0; i < std::size(zeros); ++i)
        EXPECT_EQ(zeros[i], 0) << i;
    EXPECT_TRUE(ErrorLabels().empty());
    // The normal density without spread is a division by zero.
    EXPECT_EQ(Normal_PDF(0, 0, 0), 0);
    EXPECT_EQ(Normal_PDF(0, 0, -1), 0);
    EXPECT_EQ(ErrorLabels(), Labels("Normal_PDF Normal_PDF"));
    EXPECT_EQ(Rec().AllErrors()[0].Description, "Division by zero");
}

TEST_F(DistributionsTest, GetPDFDataSamplesTheGridThroughTheCalculator) {
    // x(i) = low + (i - 1)(high - low)/N, element 0 unused.
    const auto normal = GetPDFData("Normal", -2, 2, 4, 0, 1, 0, 0);
    ASSERT_EQ(normal.size(), 5u);
    EXPECT_EQ(normal[0], 0);
    for (int i = 1; i <= 4; ++i)
        EXPECT_LE(Rel(normal[i], Phi(-2.0L + (i - 1))), 1e-15) << i;
    EXPECT_EQ(GridX(-2, 2, 4, 4), 1);
    // "LogNormal" is passed to the calculator as "Lognormal".
    EXPECT_LE(Rel(GetPDFData("LogNormal", 0, 4, 4, 0, 1, 0, 0)[2], Phi(0)), 1e-15);
    EXPECT_DOUBLE_EQ(GetPDFData("Exponential", 0, 4, 2, 0.5, 0, 0, 0)[2], 0.5 * std::exp(-1.0));
    EXPECT_DOUBLE_EQ(GetPDFData("Weibull", 0, 2, 2, 2, 1, 0, 0)[2], 2 * std::exp(-1.0));
    EXPECT_DOUBLE_EQ(GetPDFData("Uniform", -2, 2, 2, -1, 3, 0, 0)[2], 0.25);
    EXPECT_DOUBLE_EQ(GetPDFData("Triangular", -1, 1, 4, -1, 0.5, 1, 0)[3], 2.0 / 3);
    // "Johnson" takes its form from the current distribution code (normal form here).
    m_PercentCertainty::CurrentDistribution = 1;
    EXPECT_LE(Rel(GetPDFData("Johnson", -1, 1, 2, 1, 0, 0, 0)[2], Phi(0)), 1e-15);
    // Names the calculator does not know give zeros.
    for (const char* name : {"Johnson SB", "Lognormal", "", "Gamma"})
        EXPECT_EQ(GetPDFData(name, 0, 1, 6, 1, 1, 1, 1), std::vector<double>(7, 0.0)) << name;
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, GetPDFDataReportsFailuresAndCopiesNothing) {
    EXPECT_EQ(GetPDFData("Normal", 0, 1, 3, 0, -1, 0, 0), std::vector<double>(4, 0.0));
    ASSERT_EQ(ErrorLabels(), Labels("GetPDFData"));
    EXPECT_EQ(Rec().AllErrors()[0].Description, "Standard deviation must be greater than zero.");
    // The point count is a 16-bit integer.
    EXPECT_EQ(GetPDFData("Normal", 0, 1, kMaxPoints + 1, 0, 1, 0, 0).size(), 1u);
    EXPECT_EQ(GetPDFData("Normal", 0, 1, 0, 0, 1, 0, 0).size(), 1u);
    // A density beyond the double range is an overflow: reported, and nothing copied.
    EXPECT_EQ(GetPDFData("Uniform", 0, 1e-320, 3, 0, 1e-320, 0, 0), std::vector<double>(4, 0.0));
    EXPECT_EQ(ErrorLabels(), Labels("GetPDFData GetPDFData GetPDFData GetPDFData"));
}

} // namespace
