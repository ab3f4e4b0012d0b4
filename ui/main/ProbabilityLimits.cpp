#include "ui/main/ProbabilityLimits.h"

#include "engine/m_Quantile.h"
#include "support/Format.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace ProbabilityLimits {

std::optional<double> FractionOf(const std::string& text, Unit unit) {
    const std::optional<double> typed = support::ParseNumber(text);
    if (!typed) return std::nullopt;
    switch (unit) {
    case Unit::Percent:
        return *typed / 100;
    case Unit::Ppm:
        return *typed / 1e6;
    default:
        return typed;
    }
}

Outcome LimitsFor(const std::optional<PlotPipeline::PncSource>& curve, const Request& request) {
    Outcome out;
    if (!curve) {
        out.Message = ProbabilityLimits::kNoCurve;
        return out;
    }
    double params[4];
    for (int i = 0; i < 4; ++i)
        params[i] = curve->Params[i].value_or(0);
    const bool both = request.Tails == Side::Both;
    // Both tails share the probability; each is then asked for on its own side.
    const double tail = both ? request.Fraction / 2 : request.Fraction;
    if (!(std::isgreater(request.Fraction, 0) && std::isless(request.Fraction, 1))) {
        out.Message = m_Quantile::kOutsideZeroOne;
        return out;
    }
    for (bool upper : {false, true}) {
        if (!both && (request.Tails == Side::Upper) != upper) continue;
        const m_Quantile::Limit limit = m_Quantile::FromTail(curve->Code, params, tail, upper);
        if (!limit.Found) return {{}, {}, limit.Message};
        (upper ? out.USL : out.LSL) = ExactText(limit.X);
    }
    return out;
}

std::string ExactText(double x) {
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, x).ptr; // shortest round trip
    std::string text(buffer, end);
    std::replace(text.begin(), text.end(), '.', support::DecimalSeparator());
    return text;
}

} // namespace ProbabilityLimits
