// The nine fits of a sample, in the order the identification table shows them.
#pragma once

#include "stats/m_Curves.h"

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace m_Fits {

enum Row : int {
    kNormal,
    kLogNormal,
    kLogNormal3P,
    kExponential,
    kExponential2P,
    kWeibull,
    kWeibull3P,
    kJohnsonMoments,
    kJohnsonPercentiles,
    kRowCount
};

struct RowInfo {
    const char* Name; // "Normal", "LogNormal 3P", ...
    int K;            // parameters estimated, for AICc
    int Nested;       // the row it is tested against by likelihood ratio, or -1
};
const RowInfo& Info(int row);

// Why a row has no fit.
inline constexpr const char* kTooFew = "needs at least 5 values with spread";
inline constexpr const char* kNeedsPositive = "needs values above 0";
inline constexpr const char* kNoThreshold = "no threshold estimate";
inline constexpr const char* kNoPercentileFit = "no percentile fit";
inline constexpr const char* kNoMomentFit = "no curve for these moments";
inline constexpr const char* kTooNarrow = "the values vary too little for this curve";
inline constexpr const char* kOutside = "a value lies outside the curve";

inline constexpr std::size_t kMinValues = 5;

// The sample sorted, with what several rows share.
struct Sample {
    std::vector<double> X; // ascending
    double Mean = 0, Sd = 0;
    bool Positive = false; // every value above 0
};
Sample Prepare(std::vector<double> values);

// Ascending, as std::sort would (NaN aside); a big sample by radix, several
// times quicker.
void SortValues(std::vector<double>& values);

struct Fit {
    std::string Status; // empty: fitted
    m_Curves::Curve C;
    std::string Type; // the Johnson rows: "SB", "SL", "SU" or "Normal"
    double Z = std::numeric_limits<double>::quiet_NaN(); // the percentile row's z
    // The family's maximised log-likelihood on the sample, for the likelihood-
    // ratio test (for Normal, LogNormal and Exponential 2P it differs from the
    // value at the reported parameters); NaN for the Johnson rows.
    double MaxLogLik = std::numeric_limits<double>::quiet_NaN();
};

// The row's estimator on the sample. Safe to call from several threads.
Fit FitRow(int row, const Sample& s);

// Maximum-likelihood Weibull on values above 0 (any order): shape, scale and
// the log-likelihood. False when it does not converge.
bool FitWeibull(const std::vector<double>& d, double& shape, double& scale, double& logLik,
                double shapeStart = 0);

// The sample quantile at probability p: position n p + 0.5 of the sorted
// values, linear between neighbours, clamped to the ends.
double Quantile(const std::vector<double>& sorted, double p);

} // namespace m_Fits
