// One run of drawing by moments, without widgets: the moment fields' checks,
// the Johnson fit, its list item and parameter texts, the grid and the
// densities of the fitted curve, and the calculator code for its PNC figures.
// frm_Pondera::PlotbyMoments reads the fields, calls these in order and paints.
#pragma once

#include "engine/Families.h"
#include "ui/main/PlotPipeline.h"

#include <array>
#include <string>
#include <vector>

namespace MomentsStep {

// Captions of the parameter rows in moments mode: the Johnson forms' own.
inline constexpr const char* kParamCaptions[4] = {
    Families::kJohnsonSlots[0].Label, Families::kJohnsonSlots[1].Label,
    Families::kJohnsonSlots[2].Label, Families::kJohnsonSlots[3].Label};

// Mean, StDev, Skewness, Kurtosis must hold numbers; only numericness is
// tested, the fit judges the rest.
PlotPipeline::Check CheckMomentTexts(const std::array<std::string, 4>& texts);

// What a JohnsonDist fit gave: the type ("SB", "SL", "SU", "Normal", "Error", ...)
// and the message for the status bar.
struct Fit {
    std::string Type;
    std::string Message;
    double Delta = 0, Gamma = 0, Lamda = 0, Xi = 0;
    bool Failed() const { return Type == "Error"; }
};
// One fit object per run, released when the run ends.
Fit FitMoments(double mean, double stDev, double skewness, double kurtosis);

// The item of the moments-mode list that shows the fit: "Johnson SB", "Johnson SL",
// "Johnson SU" or "Normal"; nullptr for a type without a row (no density either).
const char* ListItem(const std::string& type);

// tb_Param1..4: Delta, Gamma, Lamda, Xi in the display pattern.
std::array<std::string, 4> ParamTexts(const Fit& fit, const std::string& pattern);

// x(i) = low + (i - 1)(high - low)/N with the last point pinned to high.
// Kept: the last gap is twice the step, as the chart and the PNC figures have it.
std::vector<double> Grid(double low, double high, int n);

// The fitted density on a 1-based grid; the normal row uses the requested mean
// and standard deviation; all 0 for a type without a row.
std::vector<double> Densities(const Fit& fit, const std::vector<double>& x, double mean,
                              double stDev);

// The calculator's code for a fit's PNC figures. A normal fit goes to the
// calculator's Johnson normal form z = gamma + delta x (code 0), which is what
// its delta and gamma describe.
PlotPipeline::PncSource PncSourceOf(const Fit& fit);

} // namespace MomentsStep
