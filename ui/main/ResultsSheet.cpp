#include "ui/main/ResultsSheet.h"

namespace ResultsSheet {

namespace {

std::string Caption(std::string caption) {
    if (!caption.empty() && caption.back() == ':') caption.pop_back();
    return caption;
}

} // namespace

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
    const PlotPipeline::CapabilityView& c = shown.Capability;
    row("Pp", c.Pp);
    row("Ppk", c.Ppk);
    row("Ppl", c.Ppl);
    row("Ppu", c.Ppu);
    row("ppm", c.Ppm);
    return text;
}

} // namespace ResultsSheet
