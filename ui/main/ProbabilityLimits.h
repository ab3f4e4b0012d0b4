// Limits from a probability, without widgets: the typed probability in its
// unit, the tails it asks for, and the exact quantiles of the current curve as
// the texts the limit boxes take. frm_LimitsFromProbability asks these and the
// window writes the answer into tb_LSL / tb_USL.
#pragma once

#include "ui/main/PlotPipeline.h"

#include <optional>
#include <string>

namespace ProbabilityLimits {

enum class Side { Lower, Upper, Both }; // Both: central, half the probability on each side
enum class Unit { Fraction, Percent, Ppm };
// The unit list's items, in the order of Unit.
inline constexpr const char* kUnitNames[] = {"fraction", "%", "ppm"};

inline constexpr const char* kNotANumber = "Probability must be a number.";
inline constexpr const char* kNoCurve = "There is no curve to take limits from: plot one first.";

struct Request {
    Side Tails = Side::Both;
    double Fraction = 0; // the whole probability asked for, as a fraction
};

// The typed probability as a fraction; empty when the text is not a number.
std::optional<double> FractionOf(const std::string& text, Unit unit);

struct Outcome {
    std::optional<std::string> LSL, USL; // the texts for the boxes to set
    std::string Message;                 // why there are none
};

// The limits of the curve (empty: none drawn) for the request.
Outcome LimitsFor(const std::optional<PlotPipeline::PncSource>& curve, const Request& request);

// The shortest text that the input-field rule reads back as exactly x.
std::string ExactText(double x);

} // namespace ProbabilityLimits
