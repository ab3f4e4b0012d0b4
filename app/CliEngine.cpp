// pondera-cli moments, pdf and pnc: the engine's figures as the window computes
// them, one JSON object per answer.
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <cmath>
#include <optional>
#include <string>

namespace cli {

namespace {

using namespace m_Distributions;

// The arguments of one request: a distribution, up to four parameters (missing
// trailing ones are 0) and named options.
struct Request {
    std::string Dist;
    double P[4] = {0, 0, 0, 0};
    std::optional<double> LSL, USL, Low, High;
    int Points = 0;
};

bool IsClassical(const std::string& name) {
    const CatalogueEntry* e = FindDistribution(name);
    return e && e->Code <= kUniform;
}

// Parses DIST, then up to maxParams numbers, then the options the command takes.
// Returns an empty string on success, else what is wrong.
std::string Parse(const Args& args, int maxParams, bool limits, bool grid, Request& r) {
    if (args.empty()) return "a distribution name is needed";
    r.Dist = args[0];
    int params = 0;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](std::optional<double>& out) -> std::string {
            double v;
            if (i + 1 >= args.size() || !ParseArg(args[i + 1], v)) return a + " takes a number";
            out = v;
            ++i;
            return "";
        };
        std::string problem;
        if (a.rfind("--", 0) == 0) {
            if (limits && a == "--lsl")
                problem = value(r.LSL);
            else if (limits && a == "--usl")
                problem = value(r.USL);
            else if (grid && a == "--range") {
                problem = value(r.Low);
                if (problem.empty()) problem = value(r.High);
                if (!problem.empty()) problem = "--range takes two numbers, LOW and HIGH";
            } else if (grid && a == "--points") {
                std::optional<double> n;
                problem = value(n);
                if (problem.empty() && (*n < 1 || *n > kMaxPoints || *n != std::floor(*n)))
                    problem = "--points takes a whole number from 1 to 32767";
                if (problem.empty()) r.Points = static_cast<int>(*n);
            } else {
                problem = "unknown option " + Excerpt(a);
            }
        } else if (params < maxParams) {
            if (!ParseArg(a, r.P[params]))
                problem = "parameter \"" + Excerpt(a) + "\" is not a number";
            ++params;
        } else {
            problem = "too many parameters";
        }
        if (!problem.empty()) return problem;
    }
    if (grid && (!r.Low || !r.Points)) return "--range LOW HIGH and --points N are needed";
    return "";
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
        if (ParametersPass(r)) {
            const CatalogueEntry* e = FindDistribution(r.Dist);
            m_PercentCertainty::CurrentDistribution = e->Code;
            m_PercentCertainty::Param1 = r.P[0];
            m_PercentCertainty::Param2 = r.P[1];
            m_PercentCertainty::Param3 = r.P[2];
            m_PercentCertainty::Param4 = r.P[3];
            double lower = 0, upper = 0;
            if (r.LSL) {
                m_PercentCertainty::LSL = *r.LSL;
                lower = m_PercentCertainty::CalcLSLPNC();
            }
            if (r.USL) {
                m_PercentCertainty::USL = *r.USL;
                upper = m_PercentCertainty::CalcUSLPNC();
            }
            if (r.LSL && r.USL) upper = m_PercentCertainty::CapUpperPNC(lower, upper);
            out.Add("lower", lower).Add("upper", upper).Add("total", lower + upper);
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
    if (!FindDistribution(r.Dist)) return "unknown distribution \"" + Excerpt(r.Dist) + "\"";
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

} // namespace

int RunMoments(const Args& args) {
    Request r;
    if (const std::string problem = Parse(args, 3, false, false, r); !problem.empty())
        return Fail("moments", problem);
    if (!IsClassical(r.Dist))
        return Fail("moments", "moments are given for the six classical distributions");
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        if (ParametersPass(r)) {
            // The arguments CalcMomentsforDistribution passes: unused ones are 0.
            const int code = FindDistribution(r.Dist)->Code;
            const double p1 = r.P[0], p2 = r.P[1], p3 = r.P[2];
            double a[3] = {p1, p2, 0}, b[3] = {p1, p2, 0};
            if (code == kExponential) b[1] = 0;
            if (code == kWeibull || code == kTriangular) a[2] = b[2] = p3;
            if (code == kLogNormal) a[2] = p3;
            out.Add("mean", mean(code, a[0], a[1], a[2]))
                .Add("stdev", StDev(code, b[0], b[1], b[2]))
                .Add("skewness", Skewness(code, b[0], b[1], b[2]))
                .Add("kurtosis", Kurtosis(code, b[0], b[1], b[2]));
        }
    }
    Print(out);
    return 0;
}

int RunPdf(const Args& args) {
    Request r;
    if (const std::string problem = Parse(args, 4, false, true, r); !problem.empty())
        return Fail("pdf", problem);
    if (!FindDistribution(r.Dist))
        return Fail("pdf", "unknown distribution \"" + Excerpt(r.Dist) + "\"");
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        if (ParametersPass(r)) {
            const double low = *r.Low, high = *r.High;
            const int n = r.Points;
            std::vector<double> x(static_cast<size_t>(n)), density(static_cast<size_t>(n), 0.0);
            for (int i = 1; i <= n; ++i)
                x[static_cast<size_t>(i - 1)] = GridX(low, high, n, i);
            const double d = r.P[0], g = r.P[1], l = r.P[2], xi = r.P[3];
            if (IsClassical(r.Dist)) {
                const auto values =
                    GetPDFData(r.Dist, low, high, n, r.P[0], r.P[1], r.P[2], r.P[3]);
                for (int i = 1; i <= n && i < static_cast<int>(values.size()); ++i)
                    density[static_cast<size_t>(i - 1)] = values[static_cast<size_t>(i)];
            } else {
                auto pdf = r.Dist == "Johnson SB"   ? JohnsonSB_PDF
                           : r.Dist == "Johnson SL" ? JohnsonSL_PDF
                                                    : JohnsonSU_PDF;
                for (size_t i = 0; i < x.size(); ++i)
                    density[i] = pdf(x[i], d, g, l, xi);
            }
            out.AddRaw("x", NumberArray(x)).AddRaw("density", NumberArray(density));
        }
    }
    Print(out);
    return 0;
}

int RunPnc(const Args& args) {
    if (!args.empty()) {
        Request r;
        if (const std::string problem = Parse(args, 4, true, false, r); !problem.empty())
            return Fail("pnc", problem);
        if (!FindDistribution(r.Dist))
            return Fail("pnc", "unknown distribution \"" + Excerpt(r.Dist) + "\"");
        JsonObject out = Pnc(r);
        Print(out);
        return 0;
    }
    // One request per line.
    return AnswerLines("pnc", [](const std::string& line) {
        Request r;
        if (std::string problem = ParseLine(line, r); !problem.empty()) return problem;
        JsonObject out = Pnc(r);
        Print(out);
        return std::string();
    });
}

} // namespace cli
