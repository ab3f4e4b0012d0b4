// "Copy Results": what the window shows, as tab-separated rows of a caption and
// a value, ready to paste into a spreadsheet. Values are the texts of the
// fields, so they carry the display format and the locale's decimal separator
// the spreadsheet of the same user expects. The capability figures, their
// method, observed ppm and intervals come from the window's capability study,
// written as the boxes write them.
#pragma once

#include "stats/m_CapabilityStudy.h"
#include "ui/main/PlotPipeline.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace ResultsSheet {

// What the capability boxes and the caption beneath them show, for the
// method the options choose.
struct CapabilityTexts {
    std::string Pp, Ppk, Ppm, Ppl, Ppu;
    std::string PpTip, PpkTip, PpmTip;
    std::string Caption;    // method, observed ppm, intervals (one line each)
    std::string CaptionTip; // how the intervals were found
};
// `progress`, when not empty, stands where the intervals will be.
CapabilityTexts Capability(const m_CapabilityStudy::Study& s, const std::string& pattern,
                           const std::string& progress = "");

// ppm in the pattern; a figure that is not 0 but would show as 0 there is
// written in scientific notation instead, so a tiny tail stays visible.
std::string PpmText(double ppm, const std::string& pattern);

struct Shown {
    std::string Distribution;
    // The shown parameter rows: caption (its colon is dropped) and text.
    std::vector<std::pair<std::string, std::string>> Params;
    PlotPipeline::Limits Limit;         // only the ticked ones are listed
    std::array<std::string, 4> Moments; // mean, standard deviation, skewness, kurtosis
    std::array<std::string, 3> PNC;     // below LSL, above USL, total
    CapabilityTexts Capability;         // as the boxes show them
    m_CapabilityStudy::Study Study;     // for the method, observed ppm and intervals
    std::string Pattern;                // the display pattern of those figures
    std::string N;                      // the sample size when data are loaded, else empty (no row)
};

// One row per line, "\n"-terminated: the distribution, its parameters, the
// ticked limits, n, the moments, the PNC and capability figures, then the
// capability method, observed ppm and the intervals when there are some (an
// interval row holds its low and high end in two cells).
std::string Text(const Shown& shown);

} // namespace ResultsSheet
