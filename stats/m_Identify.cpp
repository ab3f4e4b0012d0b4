// Ranking by AICc (weights exp(-dAICc/2) / sum): A2 is not comparable across
// families, so it is shown beside the rank, not used for it.
//
// The simulated p is a parametric bootstrap (as scipy.stats.goodness_of_fit):
// for the location-scale rows it is exact up to its Monte Carlo error
// sqrt(p (1 - p) / R); for the threshold and Johnson rows it is the best
// available. A sample whose refit fails (a 3P row without an interior maximum)
// is drawn again from the next numbers of its stream, so R counts fitted samples.
#include "stats/m_Identify.h"

#include "stats/m_GoodnessOfFit.h"
#include "stats/m_Simulate.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <limits>
#include <thread>

namespace m_Identify {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr const char* kNotComputed = "could not be computed";
constexpr const char* kStopped = "stopped";

struct Tally {
    long Exceed = 0, Done = 0, Redraws = 0;
    bool GaveUp = false;
};

void RunReplicate(int row, const m_Curves::Curve& fitted, double a2, std::size_t n,
                  const Options& o, int r, Tally& t) {
    m_Simulate::Stream stream(o.Seed, row, r);
    std::vector<double> x(n);
    for (int attempt = 0; attempt < m_Simulate::kAttempts; ++attempt) {
        m_Simulate::Draw(fitted, stream, x);
        m_Fits::Sample s;
        m_Fits::Fit f;
        try {
            s = m_Fits::Prepare(x);
            f = m_Fits::FitRow(row, s);
        } catch (const std::exception&) {
            t.GaveUp = true;
            return;
        }
        const double a2Star = f.Status.empty() ? m_GoodnessOfFit::A2(f.C, s.X)
                                               : std::numeric_limits<double>::quiet_NaN();
        if (!std::isnan(a2Star)) {
            ++t.Done;
            if (a2Star >= a2) ++t.Exceed;
            return;
        }
        ++t.Redraws;
    }
    t.GaveUp = true;
}

} // namespace

int DefaultReplicates(std::size_t n) {
    constexpr double kBudget = 5e6;
    return static_cast<int>(
        std::clamp(kBudget / static_cast<double>(std::max<std::size_t>(n, 1)), 19.0, 1000.0));
}

double SimulatedP(int row, const m_Curves::Curve& fitted, double a2, std::size_t n,
                  const Options& o, int* redraws) {
    if (o.Replicates <= 0) return kNaN;
    const int threads = std::clamp(o.Threads, 1, 64);
    std::vector<Tally> tallies(threads);
    auto stopped = [&] { return o.Cancel && o.Cancel->load(std::memory_order_relaxed); };
    auto work = [&](int t) {
        for (int r = t; r < o.Replicates && !stopped(); r += threads) {
            RunReplicate(row, fitted, a2, n, o, r, tallies[t]);
            if (o.Progress) o.Progress();
        }
    };
    m_Simulate::OnThreads(threads, work);
    Tally all;
    for (const Tally& t : tallies) {
        all.Exceed += t.Exceed, all.Done += t.Done, all.Redraws += t.Redraws;
        all.GaveUp = all.GaveUp || t.GaveUp;
    }
    if (redraws) *redraws = static_cast<int>(all.Redraws);
    if (all.GaveUp || stopped()) return kNaN;
    return (1.0 + static_cast<double>(all.Exceed)) / (static_cast<double>(all.Done) + 1.0);
}

std::vector<RowResult> Identify(const std::vector<double>& values, const Options& o) {
    const m_Fits::Sample s = m_Fits::Prepare(values);
    const double n = static_cast<double>(s.X.size());
    std::vector<RowResult> rows(m_Fits::kRowCount);
    auto fitRow = [&](int i) {
        RowResult& r = rows[i];
        r.Name = m_Fits::Info(i).Name;
        r.LogLik = r.A2 = r.AICc = r.Weight = r.P = r.PTable = r.LrtP = kNaN;
        if (o.Cancel && *o.Cancel) {
            r.Status = kStopped;
            return;
        }
        try {
            r.F = m_Fits::FitRow(i, s);
        } catch (const std::exception&) { // out of memory: the row fails, the others stand
            r.F = m_Fits::Fit{};
            r.F.Status = kNotComputed;
        }
        if (!r.F.Status.empty()) {
            r.Status = r.F.Status;
            return;
        }
        r.LogLik = m_GoodnessOfFit::LogLik(r.F.C, s.X);
        if (std::isnan(r.LogLik)) {
            r.Status = m_Fits::kOutside;
            return;
        }
        r.AICc = m_GoodnessOfFit::AICc(r.LogLik, m_Fits::Info(i).K, n);
    };
    auto measureRow = [&](int i) {
        RowResult& r = rows[i];
        if (o.Cancel && *o.Cancel) return;
        r.A2 = m_GoodnessOfFit::A2(r.F.C, s.X);
        // The table is for the normal: on ln x for the LogNormal row.
        if (i == m_Fits::kNormal || i == m_Fits::kLogNormal)
            r.PTable = m_GoodnessOfFit::NormalTableP(r.A2, n);
    };
    // The rows are independent. The slowest starts first, the next slowest
    // after the three quick ones (so a caller shown each row sees some at once),
    // so that neither ends the run alone.
    static const int kOrder[m_Fits::kRowCount] = {
        m_Fits::kWeibull3P,     m_Fits::kNormal,         m_Fits::kExponential,
        m_Fits::kExponential2P, m_Fits::kLogNormal3P,    m_Fits::kLogNormal,
        m_Fits::kWeibull,       m_Fits::kJohnsonMoments, m_Fits::kJohnsonPercentiles};
    const bool large = s.X.size() > 2000; // below, starting a thread costs more than it saves
    const int threads = large ? std::clamp(o.Threads, 1, 64) : 1;
    // Each of the two steps shares out the rows in the given order.
    auto onThreads = [&](const std::vector<int>& order, auto& step, const auto& done) {
        std::atomic<std::size_t> next{0};
        m_Simulate::OnThreads(threads, [&](int) {
            for (std::size_t k; (k = next++) < order.size();) {
                step(order[k]);
                if (done) done(order[k], rows[order[k]]);
            }
        });
    };
    onThreads({std::begin(kOrder), std::end(kOrder)}, fitRow, o.RowDone);
    for (int i = 0; i < m_Fits::kRowCount; ++i) {
        const int nested = m_Fits::Info(i).Nested;
        if (nested >= 0 && rows[i].Status == "ok" && rows[nested].Status == "ok")
            rows[i].LrtP =
                m_GoodnessOfFit::LikelihoodRatioP(rows[i].F.MaxLogLik, rows[nested].F.MaxLogLik);
    }
    // AICc weights and ranks among the rows that have an AICc.
    double best = std::numeric_limits<double>::infinity();
    for (const RowResult& r : rows)
        if (std::isfinite(r.AICc)) best = std::min(best, r.AICc);
    double total = 0;
    for (const RowResult& r : rows)
        if (std::isfinite(r.AICc)) total += std::exp(-0.5 * (r.AICc - best));
    for (RowResult& r : rows) {
        if (!std::isfinite(r.AICc)) continue;
        r.Weight = std::exp(-0.5 * (r.AICc - best)) / total;
        r.Rank = 1;
        for (const RowResult& other : rows)
            if (std::isfinite(other.AICc) && other.AICc < r.AICc) ++r.Rank;
    }
    if (o.Ranked) o.Ranked(rows);
    std::vector<int> ranked;
    for (int i = 0; i < m_Fits::kRowCount; ++i)
        if (rows[i].Status == "ok") ranked.push_back(i);
    auto place = [&](int i) { return rows[i].Rank > 0 ? rows[i].Rank : m_Fits::kRowCount + 1; };
    std::stable_sort(ranked.begin(), ranked.end(),
                     [&](int a, int b) { return place(a) < place(b); });
    onThreads(ranked, measureRow, o.Measured);
    for (int i : ranked)
        if (!std::isnan(rows[i].A2))
            rows[i].P = SimulatedP(i, rows[i].F.C, rows[i].A2, s.X.size(), o, &rows[i].Redraws);
    return rows;
}

} // namespace m_Identify
