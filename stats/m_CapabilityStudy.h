// Everything the window, Copy Results, the report and pondera-cli say about
// capability, from one place: both methods' figures and the one the options
// choose, expected and observed ppm, n, and the confidence intervals of a curve
// fitted to data.
#pragma once

#include "stats/m_Bootstrap.h"
#include "stats/m_Capability.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace m_CapabilityStudy {

struct Request {
    int Code = 1; // the distribution code and Param1..Param4 of the curve shown
    double P[4] = {0, 0, 0, 0};
    std::optional<double> LSL, USL;
    // The fractions below the LSL and above the USL as the PNC boxes show them;
    // absent, they are taken from the family's tails as the calculator takes them.
    std::optional<double> Below, Above;
    m_Capability::Method Shown = m_Capability::Method::Percentile;
    // With data: the values, and the m_Fits row whose estimator gave the curve
    // (-1: the curve was typed, so it has no sampling uncertainty).
    const std::vector<double>* Values = nullptr;
    int Row = -1;
    double Level = 0.95;
};

struct Intervals {
    std::optional<m_Capability::Interval> Pp, Ppk, Ppm;
};

struct Study {
    m_Capability::Method Shown = m_Capability::Method::Percentile;
    m_Capability::Figures Percentile, ZScore;
    std::optional<m_Capability::Percentiles> X; // the percentile method's points
    m_Capability::Ppm Expected;
    std::optional<m_Capability::Ppm> Observed; // with data
    std::size_t N = 0;                         // 0 without data
    // Filled by AddIntervals; how they were found ("" while there are none).
    double Level = 0.95;
    std::string IntervalMethod;
    Intervals PercentileCI, ZScoreCI;

    const m_Capability::Figures& Figures() const {
        return Shown == m_Capability::Method::ZScore ? ZScore : Percentile;
    }
    const Intervals& ShownIntervals() const {
        return Shown == m_Capability::Method::ZScore ? ZScoreCI : PercentileCI;
    }
};

// The figures without intervals: quick, for every drawing.
Study Compute(const Request& r);

// True when the request has intervals to compute: a curve fitted to data by a
// row, with a limit.
bool HasIntervals(const Request& r);

// The intervals: the exact chi-square interval for Pp and Bissell's for Ppk of
// the Normal row (the two methods agree on a normal curve), the parametric
// bootstrap for everything else and for the expected ppm. Slow: run it off the
// user-interface thread. Returns false when cancelled (the study is unchanged).
bool AddIntervals(Study& s, const Request& r, m_Bootstrap::Options options);

} // namespace m_CapabilityStudy
