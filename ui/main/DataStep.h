// Fitting to measured data, the window's side, without widgets: what the data
// dialog reads and shows, the histogram drawn over the fitted curve, and which
// moments a run in moments mode fits while the data's texts are still shown.
#pragma once

#include "stats/m_SampleData.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace DataStep {

// The values and their moments, or the first problem (line-numbered when a
// line was not a number; Line 0 otherwise).
struct Sample {
    std::vector<double> Values;
    m_SampleData::Summary Summary;
    std::string Problem;
    int Line = 0;
    std::vector<std::string> ColumnNames; // as the reader names them
    bool Ok() const { return Problem.empty(); }
};
Sample Read(std::string_view text, const m_SampleData::ReadOptions& options);
// The same for what the reader made of a file.
Sample Read(m_SampleData::Parsed parsed);

// The dialog's summary: n and the four sample moments in the display pattern.
std::string SummaryText(const m_SampleData::Summary& s, const std::string& pattern);

// Equal-width bins from the smallest to the largest value; the last bin holds
// the largest value.
struct Histogram {
    double Low = 0, Width = 0;
    std::vector<std::size_t> Counts;
    std::size_t N = 0;
    // Count / (n width): the histogram as a density, on the curve's axes.
    double Density(std::size_t bin) const;
};
inline constexpr std::size_t kMaxBins = 100;
Histogram Bins(std::vector<double> values);

// The data's moments as written into the moment fields, and their exact values.
struct Moments {
    std::array<std::string, 4> Shown;
    std::array<double, 4> Exact{};
};
Moments MomentsOf(const m_SampleData::Summary& s, const std::string& pattern);
// The four moments to fit: a field that still shows the data's text stands for
// the data's exact value, so the fit is not the fit of rounded texts; a field
// the user has changed stands for what it holds.
std::array<double, 4> MomentValues(const std::array<std::string, 4>& texts, const Moments* data);

} // namespace DataStep
