#include "ui/main/PlotPipeline.h"

#include "engine/DistCalculator.h"
#include "engine/Families.h"
#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/m_Interface.h"

#include <cmath>

namespace PlotPipeline {

namespace {

constexpr const char* kModule = "Pondera.PlotPipeline";
constexpr double kUnticked = 1e299; // an unticked limit never decides the range

constexpr const char* kLimitMessages[3] = {"LSL must be a number.", "Target must be a number.",
                                           "USL must be a number."};
constexpr Field kLimitFields[3] = {Field::LSL, Field::Target, Field::USL};
constexpr Field kParamFields[4] = {Field::Param1, Field::Param2, Field::Param3, Field::Param4};

} // namespace

std::string NotANumber(const std::string& caption) {
    return caption + " must be a number.";
}

Check CheckParamTexts(const PlotInputs& in) {
    for (int i = 0; i < 4; ++i) {
        if ((i == 2 && !in.Param3Shown) || (i == 3 && !in.Param4Shown)) continue;
        if (!support::IsNumeric(in.ParamTexts[i]))
            return {false, kParamFields[i], NotANumber(in.ParamLabels[i])};
    }
    return {};
}

std::array<double, 3> ParamValues(const PlotInputs& in) {
    return {support::Val(in.ParamTexts[0]), support::Val(in.ParamTexts[1]),
            in.Param3Shown ? support::Val(in.ParamTexts[2]) : 0.0};
}

Check CheckParamRules(const std::string& name, const std::array<double, 3>& p, double p4) {
    using Rule = bool (*)(const std::string&, double, double, double);
    const Rule rules[3] = {m_Distributions::CheckParam1, m_Distributions::CheckParam2,
                           m_Distributions::CheckParam3};
    for (int i = 0; i < 3; ++i)
        if (!rules[i](name, p[0], p[1], p[2])) return {false, kParamFields[i], {}};
    const Families::Family* family = Families::ByName(name);
    const Families::Params all = {p[0], p[1], p[2], p4};
    if (const Families::Rule* rule = family ? family->Refusal(all) : nullptr)
        // The Johnson rules are on Delta (the first) and Lamda.
        return {false, rule == &family->Rules[0] ? Field::Param1 : Field::Param3, rule->Message};
    return {};
}

Check CheckLimitTexts(const Limits& limits) {
    for (int i = 0; i < 3; ++i)
        if (limits[i].Ticked && !support::IsNumeric(limits[i].Text))
            return {false, kLimitFields[i], kLimitMessages[i]};
    return {};
}

Check CheckInputs(const PlotInputs& in) {
    if (Check c = CheckParamTexts(in); !c.Ok) return c;
    if (Check c = CheckParamRules(in.Name, ParamValues(in), support::Val(in.ParamTexts[3])); !c.Ok)
        return c;
    return CheckLimitTexts(in.Limit);
}

namespace {

// The moments of x(z) for z standard normal, by the trapezoid rule over z, which
// converges fast on a smooth integrand under the normal density. The window
// reaches far enough for x^4 of the heaviest tails (SU, SL grow like
// exp(|z| / delta)).
Moments JohnsonMoments(const Families::Family& family, const Families::Params& p) {
    Moments m;
    const double reach = std::min(40.0, std::max(12.0, 6.0 / p[0]));
    const int n = 8000;
    const double h = 2 * reach / n;
    double s[5] = {};
    for (int i = 0; i <= n; ++i) {
        const double z = -reach + i * h;
        const double lower = 0.5 * std::erfc(-z / std::sqrt(2.0)),
                     upper = 0.5 * std::erfc(z / std::sqrt(2.0));
        const double x = family.Quantile(p, z, lower, upper);
        if (!std::isfinite(x)) continue;
        const double w =
            (i == 0 || i == n ? 0.5 : 1.0) * h * std::exp(-0.5 * z * z) / std::sqrt(2 * M_PI);
        double xk = 1;
        for (double& sk : s) {
            sk += w * xk;
            xk *= x;
        }
    }
    const double mean = s[1] / s[0];
    const double m2 = s[2] / s[0] - mean * mean;
    const double m3 = s[3] / s[0] - 3 * mean * s[2] / s[0] + 2 * mean * mean * mean;
    const double m4 = s[4] / s[0] - 4 * mean * s[3] / s[0] + 6 * mean * mean * s[2] / s[0] -
                      3 * mean * mean * mean * mean;
    m.Mean = mean;
    m.StDev = std::sqrt(std::max(m2, 0.0));
    m.Skewness = m3 / std::pow(m2, 1.5);
    m.Kurtosis = m4 / (m2 * m2);
    return m;
}

} // namespace

void MomentsOf(const std::string& name, double p1, double p2, double p3, Moments& into, double p4) {
    const Families::Family* family = Families::ByName(name);
    const Families::Params p = {p1, p2, p3, p4};
    if (family && !family->Classical && family->Quantile && !family->Refusal(p))
        into = JohnsonMoments(*family, p);
    else
        into = m_Distributions::MomentsOf(name, p1, p2, p3);
}

std::array<std::string, 4> MomentTexts(const Moments& m, const std::string& pattern) {
    // A moment the distribution does not have (a triangle without spread has no
    // skewness or kurtosis) is NaN: it is said so, not shown as an error.
    auto text = [&pattern](double v) {
        return std::isnan(v) ? std::string(m_Distributions::kUndefinedMoment)
                             : support::Format(v, pattern);
    };
    return {text(m.Mean), text(m.StDev), text(m.Skewness), text(m.Kurtosis)};
}

std::array<ParamRow, 4> ParamRows(const std::string& name) {
    std::array<ParamRow, 4> rows;
    const Families::Family* family = Families::ByName(name);
    if (!family) return rows;
    for (int i = 0; i < 4; ++i)
        if (family->Slots[i].Label)
            rows[i] = {family->Slots[i].Label, family->Slots[i].DefaultText};
    return rows;
}

std::pair<double, double> DisplayRange(double mean, double stDev, const RangeOptions& options,
                                       const Limits& limits) {
    double low = options.XMin, high = options.XMax;
    if (options.Mode == 0) {
        low = support::ck(mean - options.NumStDev * stDev);
        high = support::ck(mean + options.NumStDev * stDev);
    }
    for (const LimitField& f : limits) {
        low = m_Interface::Min(low, f.Ticked ? support::Val(f.Text) : kUnticked);
        high = m_Interface::Max(high, f.Ticked ? support::Val(f.Text) : -kUnticked);
    }
    return {low, high};
}

std::pair<double, double> WithDensityStart(const std::string& name, std::pair<double, double> range,
                                           const std::array<double, 3>& p) {
    const Families::Family* family = Families::ByName(name);
    if (!family || !family->MinimumSlot) return range;
    const double minimum = p[family->MinimumSlot - 1];
    return {m_Interface::Min(range.first, minimum), m_Interface::Max(range.second, minimum)};
}

std::pair<double, double> Covering(std::pair<double, double> range, double low, double high) {
    return {m_Interface::Min(range.first, low), m_Interface::Max(range.second, high)};
}

bool Drawable(double low, double high) {
    return std::isfinite(low) && std::isfinite(high) && high > low;
}

Curve Sample(const std::string& name, double low, double high, int n,
             const std::array<double, 4>& p) {
    Curve c;
    c.X.assign(n + 1, 0.0);
    // The calculator samples on these very points.
    for (int i = 1; i <= n; ++i)
        c.X[i] = support::ck(m_Distributions::GridX(low, high, n, i));
    // A Johnson form typed by its parameters is sampled from its own record.
    const Families::Family* family = Families::ByName(name);
    if (family && !family->Classical && family->Grid && n > 0 &&
        !family->Refusal({p[0], p[1], p[2], p[3]})) {
        c.Y.assign(n + 1, 0.0);
        family->Grid({p[0], p[1], p[2], p[3]}, low, high, n, c.Y.data() + 1);
        return c;
    }
    c.Y = m_Distributions::GetPDFData(name, low, high, n, p[0], p[1], p[2], p[3]);
    c.Y.resize(n + 1, 0.0);
    return c;
}

PncBoxes ResultKind(const Limits& limits) {
    const LimitField& lsl = limits[0];
    const LimitField& usl = limits[2];
    if (lsl.Ticked && usl.Ticked && !(support::Val(lsl.Text) < support::Val(usl.Text)))
        return PncBoxes::Empty;
    return lsl.Ticked || usl.Ticked ? PncBoxes::Calculated : PncBoxes::Zero;
}

PncSource SourceFromFields(const std::string& name, const std::array<std::string, 4>& texts) {
    PncSource s;
    const Families::Family* family = Families::ByName(name);
    s.Code = family ? family->Code : 0;
    for (int i = 0; i < 4; ++i)
        if (family && family->Slots[i].Label) s.Params[i] = support::Val(texts[i]);
    return s;
}

std::optional<PncSource> FiguresSource(bool byMoments, const std::optional<PncSource>& fitted,
                                       const std::string& name,
                                       const std::array<std::string, 4>& texts) {
    if (byMoments) return fitted;
    return SourceFromFields(name, texts);
}

std::optional<ResultTexts> UncalculatedResults(const Limits& limits, const std::string& pattern) {
    const PncBoxes kind = ResultKind(limits);
    if (kind == PncBoxes::Calculated) return std::nullopt;
    const std::string shown = kind == PncBoxes::Zero ? support::Format(0.0, pattern) : "";
    ResultTexts r;
    r.Pnc = {shown, shown, shown};
    r.Ppm = shown;
    return r;
}

namespace {

std::optional<double> TickedValue(const LimitField& f) {
    return f.Ticked ? std::optional(support::Val(f.Text)) : std::nullopt;
}

// Below LSL and above USL, each 0 for an unticked limit.
m_PercentCertainty::Figures PncFigures(const PncSource& source, const Limits& limits) {
    const auto& p = source.Params;
    return m_PercentCertainty::Pnc(
        Families::ByCode(source.Code),
        {p[0].value_or(0), p[1].value_or(0), p[2].value_or(0), p[3].value_or(0)},
        TickedValue(limits[0]), TickedValue(limits[2]));
}

} // namespace

std::array<std::string, 3> PercentTexts(const PncSource& source, const Limits& limits,
                                        const std::string& pattern) {
    const m_PercentCertainty::Figures f = PncFigures(source, limits);
    return {support::Format(f.Lower, pattern), support::Format(f.Upper, pattern),
            support::Format(support::ck(f.Total), pattern)};
}

Readout ReadoutAt(const PncSource& source, double x) {
    Readout r;
    r.X = x;
    support::Trap({kModule, __func__}, [&] {
        const Families::Family& family = Families::ByCode(source.Code);
        const std::string key = family.CalculatorKey;
        double p[4];
        for (int i = 0; i < 4; ++i)
            p[i] = source.Params[i].value_or(0);
        DistCalculator calc;
        calc.SetDistribution(key, source.Code);
        for (int i = 0; i < 4; ++i)
            calc.SetParam(i + 1, p[i]);
        if (!calc.Calculate()) return;
        r.Density = support::ck(calc.Density(x));
        r.Below = m_Distributions::PNC_LSL(key, x, p[0], p[1], p[2], p[3], source.Code);
        r.Above = m_Distributions::PNC_USL_Upper(key, x, p[0], p[1], p[2], p[3], source.Code);
    });
    return r;
}

std::string ReadoutText(const Readout& r, const std::string& pattern) {
    return "x = " + support::Format(r.X, pattern) +
           "    density = " + support::Format(r.Density, pattern) +
           "    P(X \u2264 x) = " + support::Format(r.Below, pattern) +
           "    P(X > x) = " + support::Format(r.Above, pattern);
}

} // namespace PlotPipeline
