// pondera-cli identify: every fit of a sample in one table, ranked by AICc,
// with its goodness of fit and, given limits, its fraction nonconforming and
// capability figures as pnc gives them for that curve.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/m_PercentCertainty.h"
#include "stats/m_Identify.h"
#include "stats/m_SampleData.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <algorithm>
#include <cmath>
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

// lower, upper, total and capability as pnc computes them for the row's curve.
void AddLimits(JsonObject& out, const m_Curves::Curve& c, std::optional<double> lsl,
               std::optional<double> usl) {
    namespace pc = m_PercentCertainty;
    const int code = m_Curves::Code(c.K);
    const double p[4] = {c.P[0], c.P[1], c.P[2], c.P[3]};
    pc::CurrentDistribution = code;
    pc::Param1 = p[0], pc::Param2 = p[1], pc::Param3 = p[2], pc::Param4 = p[3];
    double lower = 0, upper = 0;
    if (lsl) {
        pc::LSL = *lsl;
        lower = pc::CalcLSLPNC();
    }
    if (usl) {
        pc::USL = *usl;
        upper = pc::CalcUSLPNC();
    }
    if (lsl && usl) upper = pc::CapUpperPNC(lower, upper);
    out.Add("lower", lower).Add("upper", upper).Add("total", lower + upper);
    out.AddRaw("capability", CapabilityJson(code, p, lsl, usl));
}

std::string RowJson(const m_Identify::RowResult& r, const IdentifyRequest& q) {
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
    if ((q.LSL || q.USL) && r.Status == "ok") AddLimits(row, r.F.C, q.LSL, q.USL);
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
            fits += (i ? "," : "") + RowJson(rows[i], q);
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
    command->callback([q, &status] { status = RunIdentify(*q); });
}

} // namespace cli
