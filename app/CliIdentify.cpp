// pondera-cli identify: every fit of a sample in one table, ranked by AICc,
// with its goodness of fit and, given limits, its fraction nonconforming and
// capability figures as pnc gives them for that curve.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/Families.h"
#include "engine/m_PercentCertainty.h"
#include "stats/m_CapabilityStudy.h"
#include "stats/m_Identify.h"
#include "stats/m_SampleData.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cli {

namespace {

struct IdentifyRequest {
    std::string Path;
    std::optional<std::string> Column;
    std::optional<int> Replicates, Seed;
    std::optional<double> LSL, USL;
    double Level = 0.95;
};

struct SampleRead {
    std::vector<double> Values;
    std::optional<std::string> Column; // the column read, when one was named
    std::string Problem;
};

// All reading of identify goes through here: the same reader, the same refusals
// as data.
SampleRead ReadSample(const std::string& path, const std::optional<std::string>& column) {
    SampleRead out;
    m_SampleData::Parsed data = m_SampleData::ReadFile(path, {'.', column.value_or("")});
    if (!data.Problem.empty()) {
        out.Problem = data.Problem;
        if (!column && data.ColumnNames.size() > 1) out.Problem += " with --column N|NAME";
        return out;
    }
    out.Values = std::move(data.Values);
    if (!data.Column.empty()) out.Column = data.Column;
    return out;
}

// The curve's parameters in the window's slots of its family.
std::vector<double> Slots(const m_Curves::Curve& c) {
    switch (c.K) {
    case m_Curves::Kind::Normal:
    case m_Curves::Kind::Exponential:
        return {c.P[0], c.P[1]};
    case m_Curves::Kind::LogNormal:
    case m_Curves::Kind::Weibull:
        return {c.P[0], c.P[1], c.P[2]};
    default:
        return {c.P[0], c.P[1], c.P[2], c.P[3]};
    }
}

// A capability object with the interval of each figure (null where it has none).
std::string WithIntervals(std::string object, const m_CapabilityStudy::Intervals& ci) {
    auto low = [](const std::optional<m_Capability::Interval>& i) {
        return i ? i->Low : std::nan("");
    };
    auto high = [](const std::optional<m_Capability::Interval>& i) {
        return i ? i->High : std::nan("");
    };
    JsonObject more;
    more.Add("pp_low", low(ci.Pp))
        .Add("pp_high", high(ci.Pp))
        .Add("ppk_low", low(ci.Ppk))
        .Add("ppk_high", high(ci.Ppk))
        .Add("ppm_low", low(ci.Ppm))
        .Add("ppm_high", high(ci.Ppm));
    object.pop_back(); // the closing brace
    return object + "," + more.Str().substr(1);
}

// lower, upper, total and capability as pnc computes them for the row's curve,
// both methods with their intervals at the requested level, and expected and
// observed ppm.
void AddLimits(JsonObject& out, int row, const m_Curves::Curve& c,
               const std::vector<double>& values, const IdentifyRequest& q,
               const m_Identify::Options& o) {
    namespace pc = m_PercentCertainty;
    const std::optional<double> lsl = q.LSL, usl = q.USL;
    const int code = m_Curves::Code(c.K);
    const double p[4] = {c.P[0], c.P[1], c.P[2], c.P[3]};
    const pc::Figures f = pc::Pnc(Families::ByCode(code), p, lsl, usl);
    const double lower = f.Lower, upper = f.Upper;
    out.Add("lower", f.Lower).Add("upper", f.Upper).Add("total", f.Total);

    m_CapabilityStudy::Request r;
    r.Code = code;
    std::copy(std::begin(p), std::end(p), r.P);
    r.LSL = lsl, r.USL = usl, r.Below = lower, r.Above = upper;
    r.Values = &values, r.Row = row, r.Level = q.Level;
    m_CapabilityStudy::Study s = m_CapabilityStudy::Compute(r);
    m_Bootstrap::Options b;
    b.Replicates = o.Replicates, b.Seed = o.Seed, b.Threads = o.Threads;
    m_CapabilityStudy::AddIntervals(s, r, b);
    out.AddRaw("capability", WithIntervals(CapabilityJson(code, p, lsl, usl), s.PercentileCI));
    out.AddRaw("capability_z", WithIntervals(CapabilityZJson(code, p, lsl, usl), s.ZScoreCI));
    out.AddRaw("ppm", PpmJson(s.Expected, *s.Observed));
}

std::string RowJson(int index, const m_Identify::RowResult& r, const std::vector<double>& values,
                    const IdentifyRequest& q, const m_Identify::Options& o) {
    JsonObject row;
    row.AddString("row", r.Name);
    const bool curve = r.F.Status.empty();
    if (curve) {
        row.AddString("family", m_Curves::Family(r.F.C.K));
        if (r.F.Type.empty())
            row.AddRaw("type", "null");
        else
            row.AddString("type", r.F.Type);
        row.AddRaw("params", NumberArray(Slots(r.F.C)));
    } else {
        row.AddRaw("family", "null").AddRaw("type", "null").AddRaw("params", "null");
    }
    if (r.Name == m_Fits::Info(m_Fits::kJohnsonPercentiles).Name) row.Add("z", r.F.Z);
    row.Add("loglik", r.LogLik)
        .Add("ad", r.A2)
        .Add("p", r.P)
        .Add("p_table", r.PTable)
        .Add("lrt_p", r.LrtP)
        .Add("aicc", r.AICc)
        .Add("weight", r.Weight)
        .Add("redraws", std::isnan(r.P) ? r.P : r.Redraws);
    if (r.Rank > 0)
        row.Add("rank", r.Rank);
    else
        row.AddRaw("rank", "null");
    row.AddString("status", r.Status);
    if ((q.LSL || q.USL) && r.Status == "ok") AddLimits(row, index, r.F.C, values, q, o);
    return row.Str();
}

int RunIdentify(const IdentifyRequest& q) {
    const SampleRead sample = ReadSample(q.Path, q.Column);
    if (!sample.Problem.empty()) return Fail("identify", sample.Problem);
    const std::size_t n = sample.Values.size();
    if (n < m_Fits::kMinValues)
        return Fail("identify", "At least " + std::to_string(m_Fits::kMinValues) +
                                    " values are needed; found " + std::to_string(n) + ".");
    const auto [low, high] = std::minmax_element(sample.Values.begin(), sample.Values.end());
    if (!(*low < *high))
        return Fail("identify", "All " + std::to_string(n) +
                                    " values are equal; a curve needs values that vary.");

    m_Identify::Options options;
    options.Replicates = q.Replicates.value_or(m_Identify::DefaultReplicates(n));
    options.Seed = static_cast<std::uint64_t>(q.Seed.value_or(1));
    JsonObject out;
    out.Add("n", static_cast<double>(n)).Add("replicates", options.Replicates);
    if (q.LSL || q.USL) out.Add("level", q.Level);
    if (sample.Column)
        out.AddString("column", *sample.Column);
    else
        out.AddRaw("column", "null");
    support::Recorder().Clear(); // what the Johnson fits report is part of the answer
    std::string fits = "[";
    {
        support::ActionScope action;
        const std::vector<m_Identify::RowResult> rows =
            m_Identify::Identify(sample.Values, options);
        for (std::size_t i = 0; i < rows.size(); ++i)
            fits +=
                (i ? "," : "") + RowJson(static_cast<int>(i), rows[i], sample.Values, q, options);
    }
    out.AddRaw("fits", fits + "]");
    out.AddRecorded();
    PrintLine(out);
    return 0;
}

} // namespace

void AddIdentify(CLI::App& program, int& status) {
    auto q = std::make_shared<IdentifyRequest>();
    CLI::App* command = program.add_subcommand(
        "identify", "Every fit of a sample (Normal, LogNormal, Exponential, Weibull with and "
                    "without threshold, Johnson by moments and by percentiles) ranked by AICc, "
                    "with log-likelihood, Anderson-Darling and p-values.");
    command->add_option("FILE", q->Path, "the values, or - for standard input")->required();
    AddText(command, "--column", q->Column, "the column to read, by number or name");
    AddWhole(command, "--replicates", 0, 1000000, q->Replicates,
             "simulated samples per row for the p-value (default 1000, fewer past 20000 values; 0: "
             "none)");
    AddWhole(command, "--seed", 0, 2147483647, q->Seed, "seed of the simulation (default 1)");
    AddNumber(command, "--lsl", q->LSL, "the lower spec limit (absent: unticked)");
    AddNumber(command, "--usl", q->USL, "the upper spec limit (absent: unticked)");
    command
        ->add_option("--level", q->Level,
                     "confidence level of the capability intervals (default 0.95); the "
                     "bootstrap draws as many samples per row as --replicates")
        ->check(CLI::Range(0.5, 0.9999));
    command->callback([q, &status] { status = RunIdentify(*q); });
}

} // namespace cli
