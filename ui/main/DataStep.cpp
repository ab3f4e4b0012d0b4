#include "ui/main/DataStep.h"

#include "stats/m_Fits.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"

#include <algorithm>
#include <cmath>

namespace DataStep {

namespace {

constexpr const char* kBins = "Pondera.DataStep.Bins";

// The quantile at p of sorted values, interpolating between order statistics
// (Hyndman and Fan's type 7, the default of R and NumPy).
double Quantile(const std::vector<double>& sorted, double p) {
    const double pos = p * static_cast<double>(sorted.size() - 1);
    const auto i = static_cast<std::size_t>(pos);
    if (i + 1 >= sorted.size()) return sorted.back();
    return sorted[i] + (pos - static_cast<double>(i)) * (sorted[i + 1] - sorted[i]);
}

} // namespace

Sample Read(std::string_view text, const m_SampleData::ReadOptions& options) {
    return Read(m_SampleData::Parse(text, options));
}

Sample Read(m_SampleData::Parsed parsed) {
    Sample s;
    s.ColumnNames = std::move(parsed.ColumnNames);
    s.Problem = parsed.Problem;
    s.Line = parsed.Line;
    if (s.Ok()) s.Problem = m_SampleData::Describe(parsed.Values, s.Summary);
    if (s.Ok()) s.Values = std::move(parsed.Values);
    return s;
}

std::string SummaryText(const m_SampleData::Summary& s, const std::string& pattern) {
    return "n = " + std::to_string(s.N) + "\nMean: " + support::Format(s.Mean, pattern) +
           "\nStd. Deviation: " + support::Format(s.StDev, pattern) +
           "\nSkewness: " + support::Format(s.Skewness, pattern) +
           "\nKurtosis: " + support::Format(s.Kurtosis, pattern);
}

double Histogram::Density(std::size_t bin) const {
    return static_cast<double>(Counts[bin]) / (static_cast<double>(N) * Width);
}

// Freedman-Diaconis width 2 IQR n^(-1/3): it follows the bulk of the data and,
// unlike Sturges' rule, does not assume a normal shape, so a skewed sample's
// peak is not smoothed away. A sample whose middle half is one value has no
// IQR; Sturges' ceil(log2 n) + 1 bins serve then. The count is rounded up and
// the width evened out so the bins end exactly at the largest value.
Histogram Bins(std::vector<double> values) {
    Histogram h;
    support::Trap(kBins, [&] {
        if (values.size() < 2) return;
        m_Fits::SortValues(values);
        const double low = values.front(), range = values.back() - low;
        if (!(range > 0) || !std::isfinite(range)) return;
        const double n = static_cast<double>(values.size());
        const double iqr = Quantile(values, 0.75) - Quantile(values, 0.25);
        double bins =
            iqr > 0 ? std::ceil(range / (2 * iqr / std::cbrt(n))) : std::ceil(std::log2(n)) + 1;
        bins = std::clamp(bins, 1.0, static_cast<double>(kMaxBins));
        h.Low = low;
        h.Width = range / bins;
        h.N = values.size();
        h.Counts.assign(static_cast<std::size_t>(bins), 0);
        for (const double v : values) {
            const auto i = static_cast<std::size_t>((v - low) / h.Width);
            ++h.Counts[std::min(i, h.Counts.size() - 1)];
        }
    });
    return h;
}

Moments MomentsOf(const m_SampleData::Summary& s, const std::string& pattern) {
    Moments m;
    m.Exact = {s.Mean, s.StDev, s.Skewness, s.Kurtosis};
    for (int i = 0; i < 4; ++i)
        m.Shown[i] = support::Format(m.Exact[i], pattern);
    return m;
}

std::array<double, 4> MomentValues(const std::array<std::string, 4>& texts, const Moments* data) {
    std::array<double, 4> v{};
    for (int i = 0; i < 4; ++i)
        v[i] = data && texts[i] == data->Shown[i] ? data->Exact[i] : support::Val(texts[i]);
    return v;
}

} // namespace DataStep
