#include "ui/main/ResultsSheet.h"

#include "support/Format.h"

#include <cmath>
#include <cstdio>

namespace ResultsSheet {

namespace {

std::string Caption(std::string caption) {
    if (!caption.empty() && caption.back() == ':') caption.pop_back();
    return caption;
}

std::string Written(const std::optional<double>& v, const std::string& pattern) {
    return v ? support::Format(*v, pattern) : std::string();
}

// Three significant digits for the caption beneath the boxes (its full
// digits are in Copy Results): whole numbers from 1000 up, scientific notation
// below 0.001 so that a tiny figure is never shown as 0.
std::string Compact(double v) {
    char text[32];
    const double a = std::fabs(v);
    if (a >= 1000 && a < 1e9)
        std::snprintf(text, sizeof text, "%.0f", v);
    else if (v == 0 || (a >= 0.001 && a < 1000))
        std::snprintf(text, sizeof text, "%.3g", v);
    else
        std::snprintf(text, sizeof text, "%.2E", v);
    std::string s = text;
    for (char& ch : s)
        if (ch == '.') ch = support::DecimalSeparator();
    return s;
}

std::string Range(const m_Capability::Interval& i) {
    return Compact(i.Low) + "\u2013" + Compact(i.High);
}

// "95 %", "99.5 %": the level as people say it.
std::string Percent(double level) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g %%", level * 100);
    return text;
}

} // namespace

std::string PpmText(double ppm, const std::string& pattern) {
    const std::string text = support::Format(ppm, pattern);
    if (ppm == 0 || text.find_first_of("123456789") != std::string::npos) return text;
    return support::Format(ppm, "0.00E+00");
}

CapabilityTexts Capability(const m_CapabilityStudy::Study& s, const std::string& pattern,
                           const std::string& progress) {
    CapabilityTexts t;
    const m_Capability::Figures& f = s.Figures();
    const std::string method = m_Capability::MethodName(s.Shown);
    t.Pp = Written(f.Pp, pattern);
    t.Ppk = Written(f.Ppk, pattern);
    t.Ppl = Written(f.Ppl, pattern);
    t.Ppu = Written(f.Ppu, pattern);
    t.Ppm = PpmText(s.Expected.Total, pattern);
    auto tip = [&](const char* name, const std::string& v) {
        return std::string(name) + (v.empty() ? std::string("n/a") : v);
    };
    t.PpTip = s.Shown == m_Capability::Method::ZScore
                  ? "Pp = (Z(USL) - Z(LSL)) / 6, Z the normal quantile of the curve's tail "
                    "(Z-score method); empty when a limit lies beyond the curve's end, where "
                    "the curve has no tail to give a Z"
                  : "Pp = (USL - LSL) / (X99.865 - X0.135), from the curve's own percentiles "
                    "(percentile method, ISO 22514-2)";
    t.PpkTip = tip("Ppl: ", t.Ppl) + "\n" + tip("Ppu: ", t.Ppu) + "\nMethod: " + method;
    t.PpmTip = "Expected from the curve: " + PpmText(s.Expected.Below, pattern) + " below LSL, " +
               PpmText(s.Expected.Above, pattern) + " above USL";
    t.Caption = "Method: " + method;
    if (s.Observed)
        t.Caption += "; n = " + std::to_string(s.N) +
                     "\nObserved ppm: " + Compact(s.Observed->Below) + " below, " +
                     Compact(s.Observed->Above) + " above, " + Compact(s.Observed->Total) +
                     " total";
    const m_CapabilityStudy::Intervals& ci = s.ShownIntervals();
    if (!progress.empty()) {
        t.Caption += "\n" + Percent(s.Level) + " CI: " + progress;
    } else if (!s.IntervalMethod.empty()) {
        std::string line;
        const std::pair<const char*, const std::optional<m_Capability::Interval>&> parts[] = {
            {"Pp ", ci.Pp}, {"Ppk ", ci.Ppk}, {"ppm ", ci.Ppm}};
        for (const auto& [name, interval] : parts)
            if (interval) line += (line.empty() ? "" : ", ") + std::string(name) + Range(*interval);
        t.Caption += "\n" + Percent(s.Level) + " CI: " + (line.empty() ? "none" : line);
        t.CaptionTip = "Confidence intervals: " + s.IntervalMethod;
    }
    return t;
}

std::string Text(const Shown& shown) {
    std::string text;
    auto row = [&](const std::string& caption, const std::string& value) {
        text += caption + '\t' + value + '\n';
    };
    row("Distribution", shown.Distribution);
    for (const auto& [caption, value] : shown.Params)
        row(Caption(caption), value);
    const char* limits[] = {"LSL", "Target", "USL"};
    for (int i = 0; i < 3; ++i)
        if (shown.Limit[i].Ticked) row(limits[i], shown.Limit[i].Text);
    if (!shown.N.empty()) row("n", shown.N);
    // Named apart from the parameters: a normal's parameters are also a mean
    // and a standard deviation.
    const char* moments[] = {"Moment: Mean", "Moment: Std. Deviation", "Moment: Skewness",
                             "Moment: Kurtosis"};
    for (int i = 0; i < 4; ++i)
        row(moments[i], shown.Moments[i]);
    const char* pnc[] = {"PNC below LSL", "PNC above USL", "Total PNC"};
    for (int i = 0; i < 3; ++i)
        row(pnc[i], shown.PNC[i]);
    const CapabilityTexts& c = shown.Capability;
    row("Pp", c.Pp);
    row("Ppk", c.Ppk);
    row("Ppl", c.Ppl);
    row("Ppu", c.Ppu);
    row("ppm", c.Ppm);
    const m_CapabilityStudy::Study& s = shown.Study;
    row("Capability method", m_Capability::MethodName(s.Shown));
    if (s.Observed) {
        row("ppm observed below LSL", support::Format(s.Observed->Below, shown.Pattern));
        row("ppm observed above USL", support::Format(s.Observed->Above, shown.Pattern));
        row("ppm observed", support::Format(s.Observed->Total, shown.Pattern));
    }
    if (!s.IntervalMethod.empty()) {
        const std::string level = Percent(s.Level);
        const m_CapabilityStudy::Intervals& ci = s.ShownIntervals();
        const std::pair<const char*, const std::optional<m_Capability::Interval>&> parts[] = {
            {"Pp ", ci.Pp}, {"Ppk ", ci.Ppk}, {"ppm ", ci.Ppm}};
        for (const auto& [name, interval] : parts)
            if (interval)
                row(name + level + " interval", support::Format(interval->Low, shown.Pattern) +
                                                    '\t' +
                                                    support::Format(interval->High, shown.Pattern));
        row("Interval method", s.IntervalMethod);
    }
    return text;
}

} // namespace ResultsSheet
