// The identification table: simulated p-values that are uniform under the
// fitted family and the same for any number of threads, rows shown fitted and
// ranked before their A2, and bad samples that end in a status, never in a
// crash or a hang.
#include "stats/m_GoodnessOfFit.h"
#include "stats/m_Identify.h"

#include <gtest/gtest.h>

#include <cmath>
#include <mutex>
#include <numeric>
#include <random>

namespace {

using namespace m_Fits;

TEST(Identify, SimulatedPIsRoughlyUniformUnderTheFittedFamily) {
    // 300 samples of 20 from the family itself, 19 replicates each: p takes the
    // values k/20 with equal chances.
    std::mt19937_64 gen(7);
    for (Row row : {kNormal, kExponential}) {
        double sum = 0;
        int small = 0;
        for (int k = 0; k < 300; ++k) {
            std::vector<double> x(20);
            for (double& v : x)
                v = row == kNormal ? std::normal_distribution<>(10, 2)(gen)
                                   : std::exponential_distribution<>(0.5)(gen);
            const Sample s = Prepare(x);
            const Fit f = FitRow(row, s);
            const double p = m_Identify::SimulatedP(row, f.C, m_GoodnessOfFit::A2(f.C, s.X), 20,
                                                    {19, static_cast<std::uint64_t>(k), 2});
            sum += p;
            small += p <= 0.1;
        }
        EXPECT_NEAR(sum / 300, 0.525, 0.05) << Info(row).Name; // mean of k/20, k = 1..20
        EXPECT_NEAR(small / 300.0, 0.1, 0.05) << Info(row).Name;
    }
}

TEST(Identify, TheAnswerDoesNotDependOnTheThreads) {
    std::vector<double> x;
    for (int i = 1; i <= 30; ++i)
        x.push_back(3 + std::exp(0.5 * std::sin(2.3 * i)));
    const auto one = m_Identify::Identify(x, {40, 11, 1});
    const auto two = m_Identify::Identify(x, {40, 11, 2});
    for (int i = 0; i < kRowCount; ++i) {
        EXPECT_EQ(one[i].Status, two[i].Status) << one[i].Name;
        if (one[i].Status == "ok") {
            EXPECT_EQ(one[i].P, two[i].P) << one[i].Name;
        }
    }
    // Shown in two steps: fits and ranks first, without A2; then A2 best first.
    m_Identify::Options shown{0, 11, 2};
    std::mutex lock;
    int fitted = 0;
    std::vector<int> ranks, measured;
    shown.RowDone = [&](int, const m_Identify::RowResult& r) {
        std::lock_guard hold(lock);
        fitted += std::isnan(r.A2);
    };
    shown.Ranked = [&](const std::vector<m_Identify::RowResult>& rows) {
        for (const auto& r : rows)
            ranks.push_back(std::isnan(r.A2) ? r.Rank : -1);
    };
    shown.Measured = [&](int i, const m_Identify::RowResult& r) {
        std::lock_guard hold(lock);
        if (r.A2 == one[i].A2) measured.push_back(one[i].Rank);
    };
    m_Identify::Identify(x, shown);
    EXPECT_EQ(fitted, kRowCount);
    for (int i = 0; i < kRowCount; ++i)
        EXPECT_EQ(ranks.at(i), one[i].Rank) << one[i].Name;
    std::vector<int> best(measured.size());
    std::iota(best.begin(), best.end(), 1);
    EXPECT_EQ(measured, best); // one thread below 2000 values: strictly in rank order
    // Watching the progress leaves the answer as it is; a cancelled run has no p.
    std::atomic<bool> cancel{false};
    std::atomic<int> drawn{0};
    m_Identify::Options watched{40, 11, 2, &cancel, [&] { ++drawn; }};
    const m_Identify::RowResult& weibull = one[kWeibull];
    EXPECT_EQ(m_Identify::SimulatedP(kWeibull, weibull.F.C, weibull.A2, x.size(), watched),
              weibull.P);
    EXPECT_EQ(drawn, 40);
    cancel = true;
    EXPECT_TRUE(
        std::isnan(m_Identify::SimulatedP(kWeibull, weibull.F.C, weibull.A2, x.size(), watched)));
}

TEST(Identify, BadSamplesEndInAStatus) {
    std::vector<double> million(1000000, 5.0);
    million[123456] = 1e12;
    std::vector<double> noisy;
    for (int i = 0; i < 50; ++i)
        noisy.push_back(1e9 + 1e-3 * std::sin(1.0 * i));
    struct Case {
        const char* Name;
        std::vector<double> X;
        const char* Status; // of every row, or nullptr: each row "ok" or a reason
    } cases[] = {
        {"four values", {1, 2, 3, 4}, kTooFew},
        {"all equal", std::vector<double>(10, 2.5), kTooFew},
        {"values <= 0", {-1, 0, 2, 3, 5, 8, 9}, nullptr},
        {"1e9 + tiny noise", noisy, nullptr},
        {"one outlier among a million equal values", million, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Name);
        const auto rows = m_Identify::Identify(c.X, {0, 1, 2});
        ASSERT_EQ(rows.size(), static_cast<std::size_t>(kRowCount));
        for (const auto& r : rows) {
            if (c.Status) {
                EXPECT_EQ(r.Status, c.Status) << r.Name;
            }
            if (r.Status == "ok") {
                EXPECT_TRUE(std::isfinite(r.LogLik) && std::isfinite(r.A2)) << r.Name;
            } else {
                EXPECT_FALSE(r.Status.empty());
                EXPECT_TRUE(std::isnan(r.AICc) && r.Rank == 0) << r.Name;
            }
        }
        if (std::string(c.Name) != "values <= 0") continue;
        for (Row row : {kLogNormal, kExponential, kWeibull})
            EXPECT_EQ(rows[row].Status, kNeedsPositive);
    }
}

TEST(Identify, SimulatedPMeetsThePublishedTables) {
    // 5 % points of A2 with the parameters estimated, n = 20: the exponential
    // A2 (1 + 0.6/n) = 1.341 (Stephens 1974), the Weibull as the extreme-value
    // law of ln x A2 (1 + 0.2/sqrt n) = 0.757 (Stephens 1977), the normal
    // A2 (1 + 0.75/n + 2.25/n^2) = 0.752 (D'Agostino & Stephens 1986).
    const double n = 20;
    using m_Curves::Kind;
    struct Case {
        Row R;
        m_Curves::Curve C;
        double A2;
    } cases[] = {
        {kExponential, {Kind::Exponential, {1, 0, 0, 0}}, 1.341 / (1 + 0.6 / n)},
        {kWeibull, {Kind::Weibull, {2, 1, 0, 0}}, 0.757 / (1 + 0.2 / std::sqrt(n))},
        {kNormal, {Kind::Normal, {0, 1, 0, 0}}, 0.752 / (1 + 0.75 / n + 2.25 / (n * n))},
    };
    for (const Case& c : cases)
        EXPECT_NEAR(m_Identify::SimulatedP(c.R, c.C, c.A2, 20, {4000, 3, 2}), 0.05, 0.015)
            << Info(c.R).Name;
    // The normal table's p against the simulation over its pieces.
    for (double a2 : {0.25, 0.4, 0.9})
        EXPECT_NEAR(m_Identify::SimulatedP(kNormal, cases[2].C, a2, 20, {4000, 5, 2}),
                    m_GoodnessOfFit::NormalTableP(a2, n), 0.03)
            << a2;
}

} // namespace
