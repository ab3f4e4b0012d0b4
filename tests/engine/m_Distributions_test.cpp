// Catalogue, parameter checks, moments and the engine's own densities.
#include "engine/m_Distributions.h"

#include "engine/m_PercentCertainty.h"

#include "tests/engine/EngineReference.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace m_Distributions;
using engine_ref::Phi;
using engine_ref::Rel;

class DistributionsTest : public testing_support::RecordingTest {};

// ---- Catalogue ---------------------------------------------------------------

TEST_F(DistributionsTest, CatalogueListsTheNineWithCodesKeysLabelsAndDefaults) {
    struct Row {
        const char* Name;
        int Code;
        const char* Key;
        std::vector<std::pair<const char*, const char*>> Slots;
        const char* MinimumSlot;
    };
    const std::vector<Row> rows = {
        {"Normal", 1, "Normal", {{"Mean:", "0"}, {"Std. Deviation:", "1"}}, ""},
        {"LogNormal", 4, "Lognormal", {{"Mean:", "0"}, {"Std. Deviation:", "1"}, {"Minimum:", "0"}}, "3"},
        {"Exponential", 3, "Exponential", {{"Scale:", "1"}, {"Minimum:", "0"}}, "2"},
        {"Weibull", 5, "Weibull", {{"Shape:", "2"}, {"Scale:", "10"}, {"Minimum:", "0"}}, "3"},
        {"Uniform", 6, "Uniform", {{"Minimum:", "-1"}, {"Maximum:", "1"}}, ""},
        {"Triangular", 2, "Triangular", {{"Minimum:", "-1"}, {"Likeliest:", "0.5"}, {"Maximum:", "1"}}, ""},
        {"Johnson SB", 7, "Johnson", {{"Delta:", nullptr}, {"Gamma:", nullptr}, {"Lamda:", nullptr}, {"Xi:", nullptr}}, ""},
        {"Johnson SL", 9, "Johnson", {{"Delta:", nullptr}, {"Gamma:", nullptr}, {"Lamda:", nullptr}, {"Xi:", nullptr}}, ""},
        {"Johnson SU", 8, "Johnson", {{"Delta:", nullptr}, {"Gamma:", nullptr}, {"Lamda:", nullptr}, {"Xi:", nullptr}}, ""},
    };
    ASSERT_EQ(Catalogue().size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const auto& e = Catalogue()[i];
        const auto& r = rows[i];
        SCOPED_TRACE(r.Name);
        EXPECT_STREQ(e.Name, r.Name); // start-up order
        EXPECT_EQ(e.Code, r.Code);
        EXPECT_STREQ(e.CalculatorKey, r.Key);
        EXPECT_STREQ(e.MinimumSlot, r.MinimumSlot);
        for (size_t s = 0; s < 4; ++s) {
            if (s < r.Slots.size()) {
                EXPECT_STREQ(e.Slots[s].Label, r.Slots[s].first);
                if (r.Slots[s].second) {
                    EXPECT_STREQ(e.Slots[s].DefaultText, r.Slots[s].second);
                } else {
                    EXPECT_EQ(e.Slots[s].DefaultText, nullptr);
                }
            } else {
                EXPECT_EQ(e.Slots[s].Label, nullptr) << "slot " << s + 1 << " is hidden";
            }
        }
        EXPECT_EQ(FindDistribution(r.Name), &e);
    }
    EXPECT_EQ(FindDistribution("Lognormal"), nullptr); // names compare exactly
    EXPECT_EQ(FindDistribution("normal"), nullptr);
    EXPECT_EQ(ClassicalListOrder(), (std::vector<std::string>{"Normal", "Exponential", "LogNormal",
                                                               "Uniform", "Triangular", "Weibull"}));
    EXPECT_EQ(MomentsListOrder(),
              (std::vector<std::string>{"Johnson SB", "Johnson SL", "Johnson SU", "Normal"}));
}

// ---- Parameter checks ---------------------------------------------------------------

TEST_F(DistributionsTest, ChecksPassOrShowTheirExactMessage) {
    struct Row {
        const char* Name;
        double P1, P2, P3;
        int FailingCheck; // 0 = all pass, else the first check (1..3) that fails
        const char* Message;
    };
    const double nan = std::nan("");
    const std::vector<Row> rows = {
        {"Uniform", 3, 3, 0, 0, nullptr}, // equal ends pass on purpose
        {"Uniform", 5, 4, 0, 1, "Minimum must be less than Maximum for a Uniform distribution."},
        {"Triangular", 0, 0, 0, 0, nullptr},
        {"Triangular", 0, 0, 1, 0, nullptr}, // the likeliest may equal either end
        {"Triangular", 0, 1, 1, 0, nullptr},
        {"Triangular", 0, 2, 1, 2, "Likeliest value must be between Minimum and Maximum for a Triangular distribution."},
        {"Triangular", 0, -1, 1, 2, "Likeliest value must be between Minimum and Maximum for a Triangular distribution."},
        {"Triangular", 2, 1, 1, 1, "Minimum must be less than Maximum for a Triangular distribution."},
        {"Exponential", 0, 0, 0, 1, "Scale parameter for an Exponential distribution must be greater than zero."},
        {"Exponential", -1, 0, 0, 1, "Scale parameter for an Exponential distribution must be greater than zero."},
        {"Exponential", 1e-300, -5, 0, 0, nullptr},
        {"Weibull", 0, 1, 0, 1, "Shape parameter for a Weibull distribution must be greater than zero."},
        {"Weibull", 1, 0, 0, 2, "Scale parameter for a Weibull distribution must be greater than zero."},
        {"Weibull", 1e-3, 1e3, -7, 0, nullptr},
        {"Normal", -1e300, 0, 0, 2, "Standard deviation must be greater than zero."},
        {"Normal", 1e308, 1e-320, 0, 0, nullptr}, // p1 is never checked
        {"LogNormal", 0, -2, 0, 2, "Standard deviation must be greater than zero."},
        {"Johnson SB", -1, -1, -1, 0, nullptr}, // Johnson parameters are not checked
        {"Johnson SU", 0, 0, 0, 0, nullptr},
        {"Lognormal", 0, -1, 0, 0, nullptr}, // not a name of the table
        {"Normal", 0, nan, 0, 2, "Standard deviation must be greater than zero."},
        {"Exponential", nan, 0, 0, 1, "Scale parameter for an Exponential distribution must be greater than zero."},
        {"Uniform", nan, 1, 0, 1, "Minimum must be less than Maximum for a Uniform distribution."},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(std::string(r.Name) + " " + std::to_string(r.P1) + " " + std::to_string(r.P2) +
                     " " + std::to_string(r.P3));
        Rec().Clear();
        const bool ok1 = CheckParam1(r.Name, r.P1, r.P2, r.P3);
        const bool ok2 = ok1 && CheckParam2(r.Name, r.P1, r.P2, r.P3);
        const bool ok3 = ok2 && CheckParam3(r.Name, r.P1, r.P2, r.P3);
        const int failing = !ok1 ? 1 : !ok2 ? 2 : !ok3 ? 3 : 0;
        EXPECT_EQ(failing, r.FailingCheck);
        if (r.Message) {
            ASSERT_EQ(Rec().Messages.size(), 1u);
            EXPECT_EQ(Rec().Messages[0].Text, r.Message);
            EXPECT_EQ(Rec().Messages[0].Title, "Pondera");
            EXPECT_EQ(Rec().Messages[0].Icon, support::BoxIcon::Information);
        } else {
            EXPECT_TRUE(Rec().Messages.empty());
        }
        EXPECT_TRUE(ErrorLabels().empty());
    }
}

TEST_F(DistributionsTest, OddlyWordedMessagesAreKept) {
    EXPECT_FALSE(CheckParam2("Uniform", 2, 1, 0));
    EXPECT_FALSE(CheckParam3("Triangular", 2, 0, 1)); // reached when called on its own
    EXPECT_EQ(MessageTexts(),
              (std::vector<std::string>{"Maximum must be less than Minimum for a Uniform distribution.",
                                        "Maximum must be greater than Minimum for a Triangular distribution."}));
}

// ---- Moments ---------------------------------------------------------------------

struct MomentRow {
    const char* Name;
    int Code;
    double P1, P2, P3;
    long double Mean, Sd, Skew, Kurt;
    double Tol; // relative, absolute below 1
};

std::vector<MomentRow> MomentRows() {
    using L = long double;
    const L rt2 = std::sqrt(2.0L);
    // Weibull moments from the exact gamma function: g_n = Gamma(1 + n/k).
    auto weibull = [](double k, double eta, double min) {
        auto g = [k](int n) { return std::tgamma(1 + n / static_cast<L>(k)); };
        const L v = g(2) - g(1) * g(1);
        return MomentRow{"Weibull", 5, k, eta, min, g(1) * eta + min, std::sqrt(v) * eta,
                         (g(3) - 3 * g(1) * g(2) + 2 * g(1) * g(1) * g(1)) / std::pow(v, 1.5L),
                         (g(4) - 4 * g(1) * g(3) + 6 * g(1) * g(1) * g(2) - 3 * std::pow(g(1), 4)) / (v * v),
                         1e-9};
    };
    auto lognormal = [](double mu, double s, double min) {
        const L w = std::exp(static_cast<L>(s) * s);
        return MomentRow{"LogNormal", 4, mu, s, min, std::exp(mu + s * static_cast<L>(s) / 2) + min,
                         std::sqrt(std::exp(2 * mu + static_cast<L>(s) * s) * (w - 1)),
                         (w + 2) * std::sqrt(w - 1), w * w * w * w + 2 * w * w * w + 3 * w * w - 3, 1e-12};
    };
    return {
        {"Normal", 1, 10, 2, 0, 10, 2, 0, 3, 0},
        {"Uniform", 6, 0, 1, 0, 0.5L, std::sqrt(1 / 12.0L), 0, 1.8L, 1e-15},
        {"Uniform", 6, 1e6, 1e6 + 3, 0, 1e6 + 1.5L, 3 / std::sqrt(12.0L), 0, 1.8L, 1e-15},
        {"Triangular", 2, 0, 0, 1, 1 / 3.0L, std::sqrt(1 / 18.0L), 2 * rt2 / 5, 2.4L, 1e-14},
        {"Triangular", 2, 0, 1, 1, 2 / 3.0L, std::sqrt(1 / 18.0L), -2 * rt2 / 5, 2.4L, 1e-14},
        // Symmetric: skewness 0; a far offset keeps the spread (no cancellation).
        {"Triangular", 2, 1e8 - 1, 1e8, 1e8 + 1, 1e8, std::sqrt(1 / 6.0L), 0, 2.4L, 1e-13},
        // (a + c - 2b)(2a - c - b)(a - 2c + b) sqrt2 / (5 q^1.5), q = a^2+c^2+b^2-ac-cb-ab = 3.25
        {"Triangular", 2, -1, 0.5, 1, 1 / 6.0L, std::sqrt(3.25L / 18),
         rt2 * (-2.5L) * (-3.5L) * (-1) / (5 * std::pow(3.25L, 1.5L)), 2.4L, 1e-14},
        {"Exponential", 3, 2, 1, 0, 1.5L, 0.5L, 2, 9, 1e-15},
        {"Exponential", 3, 1e-300, 0, 0, 1e300L, 1e300L, 2, 9, 1e-15},
        {"Exponential", 3, -4, 0, 0, -0.25L, 0.25L, 2, 9, 0}, // sqrt(1/rate^2) stays positive
        lognormal(0, 1, 0), // mean e^0.5 = 1.648721..., kurtosis 113.936...
        lognormal(0.5, 0.1, 3),
        lognormal(400, 1, 0), // exp(2 mu + s^2) alone would overflow
        lognormal(0, 1e-6, 0), // exp(s^2) - 1 needs expm1
        weibull(1, 1, 0), weibull(0.5, 2, 0), weibull(2, 10, 0), weibull(3.6, 1, 5), weibull(10, 1, 0),
    };
}

TEST_F(DistributionsTest, MomentsMatchClosedForms) {
    for (const auto& r : MomentRows()) {
        SCOPED_TRACE(std::string(r.Name) + " " + std::to_string(r.P1) + " " + std::to_string(r.P2) +
                     " " + std::to_string(r.P3));
        auto near = [&](double got, long double want, double tol) {
            const long double scale = std::max(1.0L, std::fabs(want));
            EXPECT_LE(std::fabs(got - want) / scale, tol) << got << " vs " << static_cast<double>(want);
        };
        near(mean(r.Code, r.P1, r.P2, r.P3), r.Mean, r.Tol);
        near(StDev(r.Code, r.P1, r.P2, r.P3), r.Sd, r.Tol);
        near(Skewness(r.Code, r.P1, r.P2, r.P3), r.Skew, r.Tol);
        near(Kurtosis(r.Code, r.P1, r.P2, r.P3), r.Kurt, r.Tol);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, CodesOutsideOneToSixGiveZero) {
    for (int code : {0, 7, 8, 9, -1, 100}) {
        EXPECT_EQ(mean(code, 1, 2, 3), 0);
        EXPECT_EQ(StDev(code, 1, 2, 3), 0);
        EXPECT_EQ(Skewness(code, 1, 2, 3), 0);
        EXPECT_EQ(Kurtosis(code, 1, 2, 3), 0);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, ExcessKurtosisSwitchSubtractsThree) {
    ASSERT_FALSE(ExcessKurtosis); // dormant: nothing sets it
    ExcessKurtosis = true;
    const double normal = Kurtosis(1, 0, 1, 0), expo = Kurtosis(3, 1, 0, 0);
    ExcessKurtosis = false;
    EXPECT_EQ(normal, 0);
    EXPECT_EQ(expo, 6);
}

TEST_F(DistributionsTest, FaultsReportTheirOwnLabelAndLeaveZero) {
    struct Row {
        const char* What;
        int Code;
        double P1, P2, P3;
        std::vector<std::string> Labels; // reported, in order mean, StDev, Skewness, Kurtosis
    };
    const std::vector<Row> rows = {
        // No spread: the skewness is 0/0.
        {"triangular 0,0,0", 2, 0, 0, 0, {"Pondera.m_Distributions.Skewness"}},
        // exp(1250) overflows in every log-normal moment.
        {"lognormal sigma 50", 4, 0, 50, 0,
         {"Pondera.m_Distributions.mean", "Pondera.m_Distributions.StDev",
          "Pondera.m_Distributions.Skewness", "Pondera.m_Distributions.Kurtosis"}},
        // Gamma(1001) overflows: Gamma reports, and each moment fails with it.
        {"weibull shape 1e-3", 5, 1e-3, 1, 0,
         {"Pondera.m_NumRecipes.Gamma", "Pondera.m_Distributions.mean", "Pondera.m_NumRecipes.Gamma",
          "Pondera.m_Distributions.StDev", "Pondera.m_NumRecipes.Gamma",
          "Pondera.m_Distributions.Skewness", "Pondera.m_NumRecipes.Gamma",
          "Pondera.m_Distributions.Kurtosis"}},
        // Shape 0: 1/0 in every Weibull moment.
        {"weibull shape 0", 5, 0, 1, 0,
         {"Pondera.m_Distributions.mean", "Pondera.m_Distributions.StDev",
          "Pondera.m_Distributions.Skewness", "Pondera.m_Distributions.Kurtosis"}},
        {"exponential rate 0", 3, 0, 0, 0,
         {"Pondera.m_Distributions.mean", "Pondera.m_Distributions.StDev"}},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.What);
        Rec().Clear();
        const double m = mean(r.Code, r.P1, r.P2, r.P3);
        const double s = StDev(r.Code, r.P1, r.P2, r.P3);
        const double k = Skewness(r.Code, r.P1, r.P2, r.P3);
        const double b = Kurtosis(r.Code, r.P1, r.P2, r.P3);
        EXPECT_EQ(ErrorLabels(), r.Labels);
        EXPECT_EQ(m, 0);
        EXPECT_EQ(s, 0);
        for (double v : {m, s, k, b}) EXPECT_TRUE(std::isfinite(v));
    }
}

TEST_F(DistributionsTest, BadValuesNeverGiveNaNOrInfinity) {
    for (double bad : testing_support::BadValues()) {
        for (int code = 1; code <= 6; ++code) {
            for (int slot = 0; slot < 3; ++slot) {
                double p[3] = {1, 2, 3};
                p[slot] = bad;
                for (double v : {mean(code, p[0], p[1], p[2]), StDev(code, p[0], p[1], p[2]),
                                 Skewness(code, p[0], p[1], p[2]), Kurtosis(code, p[0], p[1], p[2])})
                    EXPECT_TRUE(std::isfinite(v)) << "code " << code << " slot " << slot << " value " << bad;
            }
        }
        for (double v : {Normal_PDF(bad, 0, 1), Normal_PDF(0, bad, 1), Normal_PDF(0, 0, bad),
                         JohnsonSB_PDF(bad, 1, 0, 1, 0), JohnsonSB_PDF(0.5, bad, 0, 1, 0),
                         JohnsonSL_PDF(1, 1, bad, 1, 0), JohnsonSU_PDF(0, 1, 0, bad, 0),
                         JohnsonSU_PDF(0, 1, 0, 1, bad)})
            EXPECT_TRUE(std::isfinite(v) && v >= 0) << bad;
        for (const auto& e : Catalogue()) {
            for (int slot = 0; slot < 4; ++slot) {
                double p[4] = {1, 0.5, 2, 0};
                p[slot] = bad;
                for (double v : GetPDFData(e.Name == std::string("Johnson SB") ? "Johnson" : e.Name,
                                           -1, 3, 20, p[0], p[1], p[2], p[3]))
                    EXPECT_TRUE(std::isfinite(v)) << e.Name << " slot " << slot << " value " << bad;
            }
        }
    }
}

// ---- Densities ---------------------------------------------------------------------

TEST_F(DistributionsTest, NormalAndJohnsonDensitiesMatchClosedForms) {
    using L = long double;
    // A few points of each, against the textbook formulas in long double.
    EXPECT_NEAR(Normal_PDF(0, 0, 1), 0.3989422804014327, 1e-16);
    EXPECT_LE(Rel(Normal_PDF(7, 3, 2), Phi(2) / 2), 1e-15);
    EXPECT_LE(Rel(Normal_PDF(-1e-3, 0, 1e-4), Phi(10) / 1e-4L), 1e-13);
    EXPECT_NEAR(JohnsonSU_PDF(0, 1, 0, 1, 0), 0.3989422804014327, 1e-16);
    for (double x : {1.2, 2.0, 3.9}) {
        const L y = (x - 1) / 3.0L; // SB: xi 1, lamda 3, delta 0.8, gamma -0.4
        const L z = -0.4L + 0.8L * std::log(y / (1 - y));
        EXPECT_LE(Rel(JohnsonSB_PDF(x, 0.8, -0.4, 3, 1), 0.8L / (std::sqrt(2 * engine_ref::kPi) * 3) /
                                                           (y * (1 - y)) * std::exp(-z * z / 2)), 1e-13) << x;
    }
    for (double x : {-30.0, -1.0, 0.5, 12.0}) {
        const L y = (x + 1) / 2.0L; // SU: xi -1, lamda 2, delta 1.7, gamma 0.6
        const L z = 0.6L + 1.7L * std::log(y + std::sqrt(y * y + 1));
        EXPECT_LE(Rel(JohnsonSU_PDF(x, 1.7, 0.6, 2, -1),
                      1.7L / (std::sqrt(2 * engine_ref::kPi) * 2) / std::sqrt(y * y + 1) * std::exp(-z * z / 2)), 1e-13) << x;
    }
    for (double x : {-0.5, 1.0, 9.0}) {
        const L y = (x + 1) / 2.5L; // SL: xi -1, lamda 2.5 (kept inside the logarithm)
        const L z = 0.3L + 2.2L * std::log(y);
        EXPECT_LE(Rel(JohnsonSL_PDF(x, 2.2, 0.3, 2.5, -1),
                      2.2L / (std::sqrt(2 * engine_ref::kPi) * 2.5L) / y * std::exp(-z * z / 2)), 1e-13) << x;
    }
}

TEST_F(DistributionsTest, JohnsonDensitiesAreZeroOutsideTheirSupportWithoutError) {
    EXPECT_EQ(JohnsonSB_PDF(1, 1, 0, 2, 1), 0);  // x = xi
    EXPECT_EQ(JohnsonSB_PDF(3, 1, 0, 2, 1), 0);  // x = xi + lamda
    EXPECT_EQ(JohnsonSB_PDF(0, 1, 0, 2, 1), 0);
    EXPECT_EQ(JohnsonSB_PDF(2, 1, 0, 0, 1), 0);  // lamda 0: nothing to divide
    EXPECT_EQ(JohnsonSB_PDF(0.5, 1, 0, -2, 1), 0);
    EXPECT_EQ(JohnsonSL_PDF(1, 1, 0, 1, 1), 0);  // x = xi
    EXPECT_EQ(JohnsonSL_PDF(2, 0, 0, 1, 1), 0);  // delta 0
    EXPECT_EQ(JohnsonSL_PDF(0, 1, 0, -1, 1), 0); // lamda must be positive here
    EXPECT_EQ(JohnsonSB_PDF(1e-320, 0.001, 0, 1, 0), 0); // beside the pole: beyond any double
    EXPECT_EQ(JohnsonSU_PDF(0, 1, 0, 0, 0), 0);
    EXPECT_EQ(JohnsonSU_PDF(0, -1, 0, 1, 0), 0);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, DensitiesIntegrateToOne) {
    // Composite Simpson over the support: catches a wrong scale factor at once.
    auto simpson = [](auto f, double a, double b) {
        const int n = 20000;
        const double h = (b - a) / n;
        double s = f(a) + f(b);
        for (int i = 1; i < n; ++i) s += f(a + i * h) * (i % 2 ? 4 : 2);
        return s * h / 3;
    };
    EXPECT_NEAR(simpson([](double x) { return Normal_PDF(x, 2, 0.5); }, -4, 8), 1, 1e-10);
    EXPECT_NEAR(simpson([](double x) { return JohnsonSB_PDF(x, 1.5, 0.5, 4, -1); }, -1, 3), 1, 1e-8);
    EXPECT_NEAR(simpson([](double x) { return JohnsonSU_PDF(x, 2, -0.5, 1.5, 1); }, -40, 40), 1, 1e-8);
    EXPECT_NEAR(simpson([](double x) { return JohnsonSL_PDF(x, 3, 0.5, 2, 1); }, 1, 30), 1, 1e-8);
}

TEST_F(DistributionsTest, NormalDensityWithoutSpreadIsAnError) {
    EXPECT_EQ(Normal_PDF(0, 0, 0), 0);
    EXPECT_EQ(Normal_PDF(0, 0, -1), 0);
    EXPECT_EQ(ErrorLabels(), (std::vector<std::string>{"Pondera.m_Distributions.Normal_PDF",
                                                       "Pondera.m_Distributions.Normal_PDF"}));
    ASSERT_FALSE(Rec().AllErrors().empty());
    EXPECT_EQ(Rec().AllErrors()[0].Description, "Division by zero");
}

TEST_F(DistributionsTest, GetPDFDataSamplesTheGridThroughTheCalculator) {
    // x(i) = low + (i - 1)(high - low)/N, element 0 unused.
    const auto normal = GetPDFData("Normal", -2, 2, 4, 0, 1, 0, 0);
    ASSERT_EQ(normal.size(), 5u);
    EXPECT_EQ(normal[0], 0);
    for (int i = 1; i <= 4; ++i) EXPECT_LE(Rel(normal[i], Phi(-2.0L + (i - 1))), 1e-15) << i;
    EXPECT_EQ(GridX(-2, 2, 4, 1), -2);
    EXPECT_EQ(GridX(-2, 2, 4, 4), 1);

    // "LogNormal" is passed to the calculator as "Lognormal".
    const auto logn = GetPDFData("LogNormal", 0, 4, 4, 0, 1, 0, 0);
    EXPECT_LE(Rel(logn[2], Phi(0)), 1e-15);
    // Exponential, Weibull, uniform, triangular at known points.
    EXPECT_DOUBLE_EQ(GetPDFData("Exponential", 0, 4, 2, 0.5, 0, 0, 0)[2], 0.5 * std::exp(-1.0));
    EXPECT_DOUBLE_EQ(GetPDFData("Weibull", 0, 2, 2, 2, 1, 0, 0)[2], 2 * std::exp(-1.0));
    EXPECT_DOUBLE_EQ(GetPDFData("Uniform", -2, 2, 2, -1, 3, 0, 0)[2], 0.25);
    EXPECT_DOUBLE_EQ(GetPDFData("Triangular", -1, 1, 4, -1, 0.5, 1, 0)[3], 2.0 / 3);
    // "Johnson" takes its form from the current distribution code (normal form here).
    m_PercentCertainty::CurrentDistribution = 1;
    EXPECT_GT(GetPDFData("Johnson", -1, 1, 2, 1, 0, 0, 0)[2], 0);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, GetPDFDataOfAnUnknownNameIsAllZero) {
    for (const char* name : {"Johnson SB", "Lognormal", "", "Gamma"}) {
        const auto v = GetPDFData(name, 0, 1, 6, 1, 1, 1, 1);
        ASSERT_EQ(v.size(), 7u) << name;
        for (double d : v) EXPECT_EQ(d, 0) << name;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DistributionsTest, GetPDFDataReportsCalculatorFailures) {
    const auto v = GetPDFData("Normal", 0, 1, 3, 0, -1, 0, 0);
    EXPECT_EQ(v, std::vector<double>(4, 0.0));
    ASSERT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.m_Distributions.GetPDFData"});
    EXPECT_EQ(Rec().AllErrors()[0].Description, "Standard deviation must be greater than zero.");
    Rec().Clear();
    // The point count is a 16-bit integer.
    EXPECT_EQ(GetPDFData("Normal", 0, 1, kMaxPoints + 1, 0, 1, 0, 0).size(), 1u);
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.m_Distributions.GetPDFData"});
    EXPECT_EQ(GetPDFData("Normal", 0, 1, 0, 0, 1, 0, 0).size(), 1u);
}

TEST_F(DistributionsTest, GetPDFDataLeavesNoInfinityAfterAnOverflow) {
    // A density beyond the double range is an overflow: reported, and nothing copied.
    const auto v = GetPDFData("Uniform", 0, 1e-320, 3, 0, 1e-320, 0, 0);
    for (double d : v) EXPECT_EQ(d, 0);
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.m_Distributions.GetPDFData"});
}

} // namespace
