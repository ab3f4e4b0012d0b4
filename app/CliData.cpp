// pondera-cli data: a sample read from a file or standard input, its moments,
// the Johnson curve fitted to them as the moments view fits it, that curve's
// fraction nonconforming and the capability figures; and the capability object
// that pnc adds to its answer.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/Families.h"
#include "engine/m_PercentCertainty.h"
#include "johnson/JohnsonDist.h"
#include "stats/m_Capability.h"
#include "stats/m_SampleData.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <cmath>
#include <limits>
#include <memory>

namespace cli {

namespace {

constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN(); // printed as null

double Or(const std::optional<double>& v) {
    return v.value_or(kUndefined);
}

// The distribution code the PNC calculator takes for a fitted curve, as the
// window passes it: a normal fit goes to the Johnson normal form (code 0).
std::optional<int> CodeOfFit(const std::string& type) {
    const Families::Family* f = Families::ByFittedType(type);
    if (!f) return std::nullopt; // no curve to draw (an error, or the two-point ST limit)
    return f->Code;
}

std::string Capability(const std::optional<m_Capability::Percentiles>& x, std::optional<double> lsl,
                       std::optional<double> usl) {
    const m_Capability::Figures f =
        x ? m_Capability::Indices(*x, lsl, usl) : m_Capability::Figures{};
    return JsonObject()
        .Add("pp", Or(f.Pp))
        .Add("ppl", Or(f.Ppl))
        .Add("ppu", Or(f.Ppu))
        .Add("ppk", Or(f.Ppk))
        .Add("x0135", x ? x->X0135 : kUndefined)
        .Add("x50", x ? x->X50 : kUndefined)
        .Add("x99865", x ? x->X99865 : kUndefined)
        .AddString("method", m_Capability::MethodKey(m_Capability::Method::Percentile))
        .Str();
}

} // namespace

std::string CapabilityJson(int code, const double (&p)[4], std::optional<double> lsl,
                           std::optional<double> usl) {
    return Capability(m_Capability::PercentilePoints(code, p[0], p[1], p[2], p[3]), lsl, usl);
}

std::string CapabilityZJson(int code, const double (&p)[4], std::optional<double> lsl,
                            std::optional<double> usl) {
    const m_Capability::Figures f = m_Capability::ZScoreFigures(code, p, lsl, usl);
    return JsonObject()
        .Add("pp", Or(f.Pp))
        .Add("ppl", Or(f.Ppl))
        .Add("ppu", Or(f.Ppu))
        .Add("ppk", Or(f.Ppk))
        .AddString("method", m_Capability::MethodKey(m_Capability::Method::ZScore))
        .Str();
}

std::string PpmJson(const m_Capability::Ppm& expected, const m_Capability::Ppm& observed) {
    return JsonObject()
        .Add("expected_below", expected.Below)
        .Add("expected_above", expected.Above)
        .Add("expected_total", expected.Total)
        .Add("observed_below", observed.Below)
        .Add("observed_above", observed.Above)
        .Add("observed_total", observed.Total)
        .Str();
}

bool LimitsCrossed(std::optional<double> lsl, std::optional<double> usl) {
    if (!lsl || !usl || *lsl < *usl) return false;
    // As the window empties its boxes, the answer has no figures, and says why.
    support::MsgBox("The LSL is not below the USL: there is no fraction nonconforming.",
                    "Pondera Warning");
    return true;
}

namespace {

struct DataRequest {
    std::string Path;
    std::optional<std::string> Column;
    std::optional<double> LSL, USL, Target;
};

int RunData(const DataRequest& r) {
    const std::optional<double>&lsl = r.LSL, &usl = r.USL;
    // The target is checked like the other limits but, as in the window, takes no
    // part in the fraction nonconforming or the capability figures.

    // Scripts read the same file the same way everywhere: "." is the decimal point.
    const m_SampleData::Parsed data = m_SampleData::ReadFile(r.Path, {'.', r.Column.value_or("")});
    if (!data.Problem.empty()) {
        if (!r.Column && data.ColumnNames.size() > 1)
            return Fail("data", data.Problem + " with --column N|NAME");
        return Fail("data", data.Problem);
    }
    m_SampleData::Summary s;
    if (const std::string problem = m_SampleData::Describe(data.Values, s); !problem.empty())
        return Fail("data", problem);

    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        out.Add("n", static_cast<double>(s.N))
            .Add("mean", s.Mean)
            .Add("stdev", s.StDev)
            .Add("skewness", s.Skewness)
            .Add("kurtosis", s.Kurtosis);
        // The exact moments, not rounded texts, as CalculateFromData passes them.
        JohnsonDist fit;
        fit.Calculate(s.Mean, s.StDev, s.Skewness, s.Kurtosis);
        JsonObject fitted;
        AddFitFields(fitted, fit);
        out.AddRaw("fit", fitted.Str());
        const std::optional<int> code = CodeOfFit(fit.JDistribution);
        const double p[4] = {fit.Delta, fit.Gamma, fit.Lamda, fit.Xi};
        const bool crossed = LimitsCrossed(lsl, usl);
        // No curve, or crossed limits: no figures. A missing limit contributes 0.
        m_PercentCertainty::Figures f{kUndefined, kUndefined, kUndefined};
        if (code && !crossed) f = m_PercentCertainty::Pnc(Families::ByCode(*code), p, lsl, usl);
        out.Add("lower", f.Lower).Add("upper", f.Upper).Add("total", f.Total);
        // Crossed limits leave the curve's percentiles but no figures.
        out.AddRaw("capability", !code     ? Capability(std::nullopt, lsl, usl)
                                 : crossed ? CapabilityJson(*code, p, {}, {})
                                           : CapabilityJson(*code, p, lsl, usl));
        out.AddRaw("capability_z", !code || crossed ? CapabilityZJson(0, {}, {}, {})
                                                    : CapabilityZJson(*code, p, lsl, usl));
        if (code && !crossed)
            out.AddRaw("ppm", PpmJson({f.Lower * 1e6, f.Upper * 1e6, f.Total * 1e6},
                                      m_Capability::Observed(data.Values, lsl, usl)));
    }
    out.AddRecorded();
    PrintLine(out);
    return 0;
}

} // namespace

void AddData(CLI::App& program, int& status) {
    auto r = std::make_shared<DataRequest>();
    CLI::App* command = program.add_subcommand(
        "data", "Moments of a sample (one value per line), the Johnson curve fitted to them, its "
                "fraction nonconforming and capability figures.");
    command->add_option("FILE", r->Path, "the values, or - for standard input")->required();
    AddText(command, "--column", r->Column,
            "the column to read, by number from 1 or by its header's name (needed when there "
            "are several)");
    AddNumber(command, "--lsl", r->LSL, "the lower spec limit (absent: unticked)");
    AddNumber(command, "--usl", r->USL, "the upper spec limit (absent: unticked)");
    AddNumber(command, "--target", r->Target, "the target (checked; takes no part in the figures)");
    command->callback([r, &status] { status = RunData(*r); });
}

} // namespace cli
