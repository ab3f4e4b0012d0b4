// How sure the capability figures of a fitted curve are: a parametric
// bootstrap. Samples of the data's size are drawn from the fitted curve, each is
// refitted by the same row's estimator, and the figures are recomputed by both
// methods; the interval is the percentile interval of the replicates.
#pragma once

#include "stats/m_Capability.h"
#include "stats/m_Curves.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace m_Bootstrap {

struct Options {
    int Replicates = 1000;
    std::uint64_t Seed = 1;
    int Threads = 2; // the answer is the same for any number
    double Level = 0.95;
    // Set from another thread to stop early; the result is then marked Cancelled.
    const std::atomic<bool>* Cancel = nullptr;
    // Replicates done so far and in all; called from the worker threads, so it
    // must be safe to call from several at once.
    std::function<void(int done, int total)> Progress;
};

struct Set {
    std::optional<m_Capability::Interval> Pp, Ppk;
};

struct Result {
    Set Percentile, ZScore;
    std::optional<m_Capability::Interval> Ppm; // the expected total, in ppm
    int Redraws = 0;                           // samples drawn again because their refit failed
    bool Cancelled = false;                    // nothing else is set then
};

// Intervals at options.Level for the figures of `fitted` (fitted to n values by
// m_Fits row `row`) against the limits. Replicate r draws from its own stream
// seeded by (seed, row, r), so threads only share the work and the answer does
// not depend on their number. A figure that some replicates cannot give (a
// limit outside most of them) has no interval.
Result Intervals(int row, const m_Curves::Curve& fitted, std::size_t n, std::optional<double> lsl,
                 std::optional<double> usl, const Options& options);

// The figures of one curve by both methods and its expected ppm: what each
// replicate computes, and what the identification table shows for a row.
struct CurveFigures {
    m_Capability::Figures Percentile, ZScore;
    std::optional<double> Ppm;
    double Below = 0, Above = 0; // the fractions outside each limit (0 for an absent one)
};
CurveFigures FiguresOf(const m_Curves::Curve& c, std::optional<double> lsl,
                       std::optional<double> usl);

// The curve a distribution code and Param1..Param4 describe, when it is one a
// sample can be fitted with (the Johnson normal form, code 0, as a Normal).
std::optional<m_Curves::Curve> CurveOf(int code, const double (&p)[4]);

} // namespace m_Bootstrap
