// pondera-cli moments, pdf and pnc: the engine's figures as the window computes
// them, one JSON object per answer.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/Families.h"
#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string>

namespace cli {

namespace {

using namespace m_Distributions;

// The arguments of one request: a distribution, up to four parameters (missing
// trailing ones are 0) and named options.
struct Request {
    std::vector<std::string> Words; // DIST P1 P2 ... as given
    std::string Dist;
    double P[4] = {0, 0, 0, 0};
    std::optional<double> LSL, USL, Low, High;
    std::optional<int> Points;
};

// Reads DIST and up to maxParams numbers from the words. Returns an empty string
// on success, else what is wrong.
std::string ParseWords(int maxParams, Request& r) {
    if (r.Words.empty()) return "a distribution name is needed";
    r.Dist = r.Words[0];
    if (static_cast<int>(r.Words.size()) - 1 > maxParams) return "too many parameters";
    for (size_t i = 1; i < r.Words.size(); ++i)
        if (!ParseArg(r.Words[i], r.P[i - 1]))
            return "parameter \"" + Excerpt(r.Words[i]) + "\" is not a number";
    return "";
}

// A command taking DIST and parameters; the request lives as long as the program.
CLI::App* AddRequest(CLI::App& program, const char* name, const char* what, const char* words,
                     std::shared_ptr<Request>& r) {
    r = std::make_shared<Request>();
    CLI::App* command = program.add_subcommand(name, what);
    command->add_option("DIST_PARAMS", r->Words, "the distribution's name, then its parameters")
        ->type_name(words);
    return command;
}

// The three checks in the order Plot runs them; the first that fails has shown its message.
bool ParametersPass(const Request& r) {
    return CheckParam1(r.Dist, r.P[0], r.P[1], r.P[2]) &&
           CheckParam2(r.Dist, r.P[0], r.P[1], r.P[2]) &&
           CheckParam3(r.Dist, r.P[0], r.P[1], r.P[2]);
}

void Print(JsonObject& out) {
    out.AddRecorded();
    PrintLine(out);
}

// CalcPercent without the window: absent limits are unticked and contribute 0.
JsonObject Pnc(const Request& r) {
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        const Families::Family* family = Families::ByName(r.Dist);
        // Parameters the calculator refuses give no figures, as the checks' do.
        const bool pass = ParametersPass(r);
        const Families::Rule* broken = pass ? family->Refusal(r.P) : nullptr;
        if (broken) support::Face().SetStatusText(broken->Message);
        if (pass && !broken && LimitsCrossed(r.LSL, r.USL)) {
            const double none = std::nan("");
            out.Add("lower", none).Add("upper", none).Add("total", none);
            out.AddRaw("capability", CapabilityJson(family->Code, r.P, {}, {}));
            out.AddRaw("capability_z", CapabilityZJson(family->Code, r.P, {}, {}));
        } else if (pass && !broken) {
            const m_PercentCertainty::Figures f =
                m_PercentCertainty::Pnc(*family, r.P, r.LSL, r.USL);
            out.Add("lower", f.Lower).Add("upper", f.Upper).Add("total", f.Total);
            out.AddRaw("capability", CapabilityJson(family->Code, r.P, r.LSL, r.USL));
            out.AddRaw("capability_z", CapabilityZJson(family->Code, r.P, r.LSL, r.USL));
        }
    }
    if (!support::Recorder().Status.empty()) out.AddString("status", support::Recorder().Status);
    return out;
}

// Splits one stdin line DIST|P1|P2|P3|P4|LSL|USL; empty fields are absent.
std::string ParseLine(const std::string& line, Request& r) {
    std::string fields[7];
    size_t count = 0, start = 0;
    while (true) {
        const size_t bar = line.find('|', start);
        if (count == 7) return "more than seven fields";
        fields[count++] =
            line.substr(start, bar == std::string::npos ? std::string::npos : bar - start);
        if (bar == std::string::npos) break;
        start = bar + 1;
    }
    const size_t first = fields[0].find_first_not_of(" \t");
    const size_t last = fields[0].find_last_not_of(" \t");
    r.Dist = first == std::string::npos ? "" : fields[0].substr(first, last - first + 1);
    if (!Families::ByName(r.Dist)) return "unknown distribution \"" + Excerpt(r.Dist) + "\"";
    auto number = [](const std::string& text, double& out) {
        return text.find_first_not_of(" \t") == std::string::npos || ParseArg(text, out);
    };
    for (int i = 0; i < 4; ++i)
        if (!number(fields[i + 1], r.P[i]))
            return "parameter \"" + Excerpt(fields[i + 1]) + "\" is not a number";
    for (int i = 0; i < 2; ++i) {
        const std::string& text = fields[5 + i];
        if (text.find_first_not_of(" \t") == std::string::npos) continue;
        double v;
        if (!ParseArg(text, v))
            return std::string(i ? "USL" : "LSL") + " \"" + Excerpt(text) + "\" is not a number";
        (i ? r.USL : r.LSL) = v;
    }
    return "";
}

int RunMoments(Request& r) {
    if (const std::string problem = ParseWords(3, r); !problem.empty())
        return Fail("moments", problem);
    const Families::Family* family = Families::ByName(r.Dist);
    if (!family || !family->Classical)
        return Fail("moments", "moments are given for the six classical distributions");
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        if (ParametersPass(r)) {
            const MomentSet m = MomentsOf(r.Dist, r.P[0], r.P[1], r.P[2]);
            out.Add("mean", m.Mean)
                .Add("stdev", m.StDev)
                .Add("skewness", m.Skewness)
                .Add("kurtosis", m.Kurtosis);
        }
    }
    Print(out);
    return 0;
}

int RunPdf(Request& r) {
    if (const std::string problem = ParseWords(4, r); !problem.empty()) return Fail("pdf", problem);
    if (!Families::ByName(r.Dist))
        return Fail("pdf", "unknown distribution \"" + Excerpt(r.Dist) + "\"");
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        if (ParametersPass(r)) {
            const double low = *r.Low, high = *r.High;
            const int n = *r.Points;
            std::vector<double> x(static_cast<size_t>(n)), density(static_cast<size_t>(n), 0.0);
            for (int i = 1; i <= n; ++i)
                x[static_cast<size_t>(i - 1)] = GridX(low, high, n, i);
            // The Johnson kinds by the engine's own densities, as the moments view draws them.
            if (const Families::JohnsonPdf pdf = Families::ByName(r.Dist)->EngineDensity) {
                for (size_t i = 0; i < x.size(); ++i)
                    density[i] = pdf(x[i], r.P[0], r.P[1], r.P[2], r.P[3]);
            } else {
                const auto values =
                    GetPDFData(r.Dist, low, high, n, r.P[0], r.P[1], r.P[2], r.P[3]);
                for (int i = 1; i <= n && i < static_cast<int>(values.size()); ++i)
                    density[static_cast<size_t>(i - 1)] = values[static_cast<size_t>(i)];
            }
            out.AddRaw("x", NumberArray(x)).AddRaw("density", NumberArray(density));
        }
    }
    Print(out);
    return 0;
}

int RunPnc(Request& r) {
    if (!r.Words.empty() || r.LSL || r.USL) {
        if (const std::string problem = ParseWords(4, r); !problem.empty())
            return Fail("pnc", problem);
        if (!Families::ByName(r.Dist))
            return Fail("pnc", "unknown distribution \"" + Excerpt(r.Dist) + "\"");
        JsonObject out = Pnc(r);
        Print(out);
        return 0;
    }
    // One request per line.
    return AnswerLines("pnc", [](const std::string& line) {
        Request request;
        if (std::string problem = ParseLine(line, request); !problem.empty()) return problem;
        JsonObject out = Pnc(request);
        Print(out);
        return std::string();
    });
}

} // namespace

void AddMoments(CLI::App& program, int& status) {
    std::shared_ptr<Request> r;
    AddRequest(program, "moments",
               "Mean, stdev, skewness and kurtosis of a classical distribution.",
               "DIST P1 [P2 [P3]]", r)
        ->callback([r, &status] { status = RunMoments(*r); });
}

void AddPdf(CLI::App& program, int& status) {
    std::shared_ptr<Request> r;
    CLI::App* command =
        AddRequest(program, "pdf", "The density on x(i) = LOW + (i - 1)(HIGH - LOW)/N, i = 1..N.",
                   "DIST P1 P2 P3 P4", r);
    command
        ->add_option_function<std::vector<std::string>>(
            "--range",
            [r](const std::vector<std::string>& ends) {
                double v[2];
                for (int i = 0; i < 2; ++i)
                    if (!ParseArg(ends[static_cast<size_t>(i)], v[i]))
                        BadValue("--range", "takes two numbers, LOW and HIGH");
                r->Low = v[0];
                r->High = v[1];
            },
            "the ends of the grid")
        ->expected(2)
        ->type_name("LOW HIGH")
        ->required();
    AddWhole(command, "--points", 1, kMaxPoints, r->Points, "the number of grid points N")
        ->required();
    command->callback([r, &status] { status = RunPdf(*r); });
}

void AddPnc(CLI::App& program, int& status) {
    std::shared_ptr<Request> r;
    CLI::App* command =
        AddRequest(program, "pnc",
                   "Fraction nonconforming below the LSL, above the USL and in total. With no "
                   "DIST, one request DIST|P1|P2|P3|P4|LSL|USL per line of standard input (an "
                   "empty field is absent).",
                   "DIST P1 P2 P3 P4", r);
    AddNumber(command, "--lsl", r->LSL, "the lower spec limit (absent: unticked)");
    AddNumber(command, "--usl", r->USL, "the upper spec limit (absent: unticked)");
    command->callback([r, &status] { status = RunPnc(*r); });
}

} // namespace cli
