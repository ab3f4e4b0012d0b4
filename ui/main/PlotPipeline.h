// The plot pipeline's decisions, without widgets: the order of the input checks
// and the field a failed one focuses, the moments for the moment boxes, the x
// range (options, ticked limits, where the density starts), the sampling grid
// and densities, and what the PNC boxes show. frm_Pondera::Plot reads the
// fields into PlotInputs, calls these in turn and paints what they return.
#pragma once

#include "engine/m_Distributions.h"

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace PlotPipeline {

// The input fields a failed check gives the focus to.
enum class Field {
    None,
    Param1,
    Param2,
    Param3,
    LSL,
    Target,
    USL,
    Mean,
    StDev,
    Skewness,
    Kurtosis,
    Param4
};

struct LimitField {
    bool Ticked = false;
    std::string Text;
};
using Limits = std::array<LimitField, 3>; // LSL, Target, USL

// What the window's fields hold when Plot starts.
struct PlotInputs {
    std::string Name; // the selected distribution
    std::array<std::string, 4> ParamTexts;
    std::array<std::string, 4> ParamLabels; // the captions, for the messages
    bool Param3Shown = false;
    bool Param4Shown = false; // the Johnson forms' Xi
    Limits Limit;
};

// The display options that choose the range (AppXRange, AppNumStDev, AppXMin, AppXMax).
struct RangeOptions {
    int Mode = 0; // 0 mean +- k standard deviations, 1 fixed endpoints
    double NumStDev = 2.6;
    double XMin = 0, XMax = 0;
};

struct Check {
    bool Ok = true;
    Field Focus = Field::None;
    std::string Message; // empty when the distribution's own rule has shown its message
};

inline constexpr const char* kWarningTitle = "Pondera Warning";
inline constexpr const char* kNoWidth =
    "Nothing to draw: the display range has no width. Check the parameters and the display "
    "options.";

// "<caption> must be a number.", the caption's colon included.
std::string NotANumber(const std::string& caption);

// Param1, Param2 and (where shown) Param3 and Param4 must hold numbers, in that order.
Check CheckParamTexts(const PlotInputs& in);
// The parameters as Plot keeps them: Param3 is 0 while its field is hidden.
std::array<double, 3> ParamValues(const PlotInputs& in);
// CheckParam1..3 of the distribution in turn; each shows its own message. Then
// the rules only the calculator applies (the Johnson forms'), with their message.
Check CheckParamRules(const std::string& name, const std::array<double, 3>& p, double p4 = 0);
// Each ticked limit must hold a number, in the order LSL, Target, USL.
Check CheckLimitTexts(const Limits& limits);
// The checks in the order Plot runs them: the parameter texts, the
// distribution's rules, the ticked limits' texts. The first that fails stops.
Check CheckInputs(const PlotInputs& in);

using Moments = m_Distributions::MomentSet;
// The engine's moments of the distribution; for the Johnson forms, by
// quadrature over the normal variate. A fault in one leaves it 0 and the others
// set; the range is then chosen from what was set.
void MomentsOf(const std::string& name, double p1, double p2, double p3, Moments& into,
               double p4 = 0);

// The moment boxes' texts in the display pattern.
std::array<std::string, 4> MomentTexts(const Moments& m, const std::string& pattern);

// A parameter row after choosing a distribution: its caption (nullptr hides
// the row) and the text put into its field (nullptr leaves the field alone).
// Names outside the list show no rows and leave their fields alone.
struct ParamRow {
    const char* Label = nullptr;
    const char* DefaultText = nullptr;
};
std::array<ParamRow, 4> ParamRows(const std::string& name);

// Mean +- k standard deviations or the fixed endpoints, widened so that every
// ticked limit lies in it (an unticked one counts as +-1e299).
std::pair<double, double> DisplayRange(double mean, double stDev, const RangeOptions& options,
                                       const Limits& limits);
// Widened once more to the point where the density starts (Param2 of the
// Exponential, Param3 of the Weibull and LogNormal).
std::pair<double, double> WithDensityStart(const std::string& name, std::pair<double, double> range,
                                           const std::array<double, 3>& p);
// Widened once more to take in low..high as well: what else is drawn on the
// same axes (the data's values, a pinned curve).
std::pair<double, double> Covering(std::pair<double, double> range, double low, double high);
// A range the chart can map: finite and wider than nothing.
bool Drawable(double low, double high);

// 1-based arrays (element 0 unused) of the grid and its densities.
struct Curve {
    std::vector<double> X, Y;
};
// x(i) = low + (i - 1)(high - low)/N.
// Kept: the divisor is N, so the last point stops one step short of high.
Curve Sample(const std::string& name, double low, double high, int n,
             const std::array<double, 4>& p);

// What the three PNC boxes show after a drawing.
enum class PncBoxes { Empty, Calculated, Zero };
// Empty when LSL and USL are both ticked and LSL is not below USL; figures
// when one of them is ticked; zeros when neither is.
PncBoxes ResultKind(const Limits& limits);

// The curve CalcPercent hands the calculator: its distribution code and
// parameters (an absent one counts as 0; a family reads only its own slots).
struct PncSource {
    int Code = 0;
    std::array<std::optional<double>, 4> Params;
};
PncSource SourceFromFields(const std::string& name, const std::array<std::string, 4>& texts);
// The curve the figures are for: in moments mode the fitted curve's exact
// parameters, not their rounded display (none when the fit gave no curve);
// otherwise the selected distribution with its fields.
std::optional<PncSource> FiguresSource(bool byMoments, const std::optional<PncSource>& fitted,
                                       const std::string& name,
                                       const std::array<std::string, 4>& texts);

// The three boxes' texts: below LSL, above USL and their sum, each 0 for an
// unticked limit.
std::array<std::string, 3> PercentTexts(const PncSource& source, const Limits& limits,
                                        const std::string& pattern);

// The PNC boxes and the ppm box when no figures are calculated: all empty for
// crossed limits, the number 0 in the display pattern when neither limit is
// ticked (Pp and Ppk stay empty). None when the figures are calculated.
struct ResultTexts {
    std::array<std::string, 3> Pnc;
    std::string Ppm;
};
std::optional<ResultTexts> UncalculatedResults(const Limits& limits, const std::string& pattern);

// What the status bar shows under the pointer: x, the density there and the
// probability on either side, from the engine at x itself (not from the drawn
// samples), the upper side computed directly so a small tail keeps its digits.
struct Readout {
    double X = 0, Density = 0, Below = 0, Above = 0;
};
Readout ReadoutAt(const PncSource& source, double x);
// "x = ...   density = ...   P(X ≤ x) = ...   P(X > x) = ..." in the pattern.
std::string ReadoutText(const Readout& r, const std::string& pattern);

} // namespace PlotPipeline
