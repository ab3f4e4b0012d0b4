// pondera-cli fit: the Johnson curve for four moments, fitted as the moments view
// fits it (JohnsonDist::Calculate without end points), one JSON object per fit.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "johnson/JohnsonDist.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace cli {

void AddFitFields(JsonObject& out, const JohnsonDist& fit) {
    const bool none = fit.JDistribution == "Error";
    const auto figure = [&](double v) { return none ? std::nan("") : v; }; // null
    out.AddString("type", fit.JDistribution)
        .AddString("message", fit.CalcError)
        .Add("delta", figure(fit.Delta))
        .Add("gamma", figure(fit.Gamma))
        .Add("lamda", figure(fit.Lamda))
        .Add("xi", figure(fit.Xi));
}

namespace {

constexpr const char* kFields[4] = {"MEAN", "SD", "SKEW", "KURT"};

// The four moments from four words; empty on success, else what is wrong.
std::string ParseMoments(const std::vector<std::string>& words, double (&m)[4]) {
    if (words.size() != 4)
        return "four numbers are needed, MEAN SD SKEW KURT (got " + std::to_string(words.size()) +
               ")";
    for (int i = 0; i < 4; ++i)
        if (!ParseArg(words[i], m[i]))
            return std::string(kFields[i]) + " \"" + Excerpt(words[i]) + "\" is not a number";
    return "";
}

// One fit, as one user action: errors it raises are gathered and reported with it.
void PrintFit(const double (&m)[4]) {
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        JohnsonDist jd;
        jd.Calculate(m[0], m[1], m[2], m[3]);
        AddFitFields(out, jd);
    }
    out.AddRecorded();
    PrintLine(out);
}

int RunFit(const std::vector<std::string>& words) {
    double m[4];
    if (!words.empty()) {
        if (const std::string problem = ParseMoments(words, m); !problem.empty())
            return Fail("fit", problem);
        PrintFit(m);
        return 0;
    }
    // One fit per line "MEAN SD SKEW KURT". The words are split by hand, as
    // std::istringstream would split them: building a stream for every line
    // cost about a tenth of a fit.
    std::vector<std::string> lineWords;
    return AnswerLines("fit", [&](const std::string& line) {
        lineWords.clear();
        for (std::size_t at = 0;;) {
            at = line.find_first_not_of(" \t\n\v\f\r", at);
            if (at == std::string::npos) break;
            const std::size_t end = line.find_first_of(" \t\n\v\f\r", at);
            lineWords.push_back(line.substr(at, end - at));
            at = end;
        }
        if (std::string problem = ParseMoments(lineWords, m); !problem.empty()) return problem;
        PrintFit(m);
        return std::string();
    });
}

} // namespace

void AddFit(CLI::App& program, int& status) {
    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* command = program.add_subcommand(
        "fit", "The Johnson curve with these moments; with none, one \"MEAN SD SKEW KURT\" per "
               "line of standard input.");
    command->add_option("MOMENTS", *words, "mean, standard deviation, skewness, kurtosis")
        ->type_name("MEAN SD SKEW KURT");
    command->callback([words, &status] { status = RunFit(*words); });
}

} // namespace cli
