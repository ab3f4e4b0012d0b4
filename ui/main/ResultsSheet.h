// "Copy Results": what the window shows, as tab-separated rows of a caption and
// a value, ready to paste into a spreadsheet. Values are the texts of the
// fields, so they carry the display format and the locale's decimal separator
// the spreadsheet of the same user expects.
#pragma once

#include "ui/main/PlotPipeline.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace ResultsSheet {

struct Shown {
    std::string Distribution;
    // The shown parameter rows: caption (its colon is dropped) and text.
    std::vector<std::pair<std::string, std::string>> Params;
    PlotPipeline::Limits Limit;         // only the ticked ones are listed
    std::array<std::string, 4> Moments; // mean, standard deviation, skewness, kurtosis
    std::array<std::string, 3> PNC;     // below LSL, above USL, total
    PlotPipeline::CapabilityView Capability;
    std::string N; // the sample size when data are loaded, else empty (no row)
};

// One row per line, "\n"-terminated: the distribution, its parameters, the
// ticked limits, n, the moments, the PNC and capability figures.
std::string Text(const Shown& shown);

} // namespace ResultsSheet
