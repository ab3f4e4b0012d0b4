// Which distribution describes a sample: every row of m_Fits with its
// log-likelihood, Anderson-Darling A2, AICc, AICc weight and rank, and its
// p-values (simulated for every row, the normal table for Normal and
// LogNormal, the likelihood ratio for the rows with a nested one).
#pragma once

#include "stats/m_Fits.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace m_Identify {

struct RowResult;

struct Options {
    int Replicates = 1000; // simulated samples per row; 0 skips the simulation
    std::uint64_t Seed = 1;
    int Threads = 2; // the answer is the same for any number
    // Read between rows and between simulated samples: once true, the rows not
    // yet fitted say "stopped" and the simulation stops with a p of NaN. A run
    // that is not stopped gives the same answer as without it.
    const std::atomic<bool>* Cancel = nullptr;
    // Called after each simulated sample, from whichever thread drew it.
    std::function<void()> Progress;
    // A row's figures come in two steps. First its fit, log-likelihood and
    // AICc (A2 and the table p still NaN): RowDone with its index, from
    // whichever thread fitted it; once every row is in and ranked, Ranked with
    // them all. Then its A2 and table p: Measured, in the order of the ranks.
    std::function<void(int row, const RowResult& r)> RowDone;
    std::function<void(const std::vector<RowResult>& rows)> Ranked;
    std::function<void(int row, const RowResult& r)> Measured;
};

// 1,000 simulated samples per row, but no more than 5e6 simulated values per row
// (at least 19 samples): a million values would otherwise take an hour.
int DefaultReplicates(std::size_t n);

struct RowResult {
    std::string Name;
    m_Fits::Fit F;
    std::string Status = "ok";                        // or why the row has no figures
    double LogLik, A2, AICc, Weight, P, PTable, LrtP; // NaN when absent
    int Rank = 0;                                     // 1 = lowest AICc; 0 = not ranked
    int Redraws = 0; // simulated samples drawn again because their refit failed
};

// All nine rows in table order. A sample of fewer than 5 values or without
// spread gives every row that status.
std::vector<RowResult> Identify(const std::vector<double>& values, const Options& options);

// The simulated p of one fitted row whose statistic on the n values was a2:
// (1 + #{A2* >= a2}) / (R + 1) over R samples drawn from the fitted curve and
// refitted by the same row. Replicate r of row `row` draws from its own stream
// seeded by (seed, row, r), so threads only share the work. NaN when too many
// refits fail, or when the options' Cancel was set.
double SimulatedP(int row, const m_Curves::Curve& fitted, double a2, std::size_t n,
                  const Options& options, int* redraws = nullptr);

} // namespace m_Identify
