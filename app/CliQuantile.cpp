// pondera-cli quantile: the limit that leaves a given fraction in one tail, as
// "Limits from Probability..." writes it into the window's limit box.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/Families.h"
#include "engine/m_Quantile.h"
#include "support/ErrorReporter.h"
#include "support/UserFace.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cli {

namespace {

struct QuantileRequest {
    std::vector<std::string> Words; // DIST P1 .. P4
    std::optional<double> Lower, Upper;
};

int RunQuantile(const QuantileRequest& r) {
    if (r.Words.empty()) return Fail("quantile", "a distribution name is needed");
    const Families::Family* family = Families::ByName(r.Words[0]);
    if (!family) return Fail("quantile", "unknown distribution \"" + Excerpt(r.Words[0]) + "\"");
    if (r.Words.size() > 5) return Fail("quantile", "too many parameters");
    double p[4] = {0, 0, 0, 0};
    for (size_t i = 1; i < r.Words.size(); ++i)
        if (!ParseArg(r.Words[i], p[i - 1]))
            return Fail("quantile", "parameter \"" + Excerpt(r.Words[i]) + "\" is not a number");
    if (r.Lower.has_value() == r.Upper.has_value())
        return Fail("quantile", "give one of --lower P and --upper P");
    JsonObject out;
    support::Recorder().Clear();
    {
        support::ActionScope action;
        const bool upper = r.Upper.has_value();
        const m_Quantile::Limit limit =
            m_Quantile::FromTail(family->Code, p, upper ? *r.Upper : *r.Lower, upper);
        if (limit.Found) {
            out.Add("x", limit.X);
        } else {
            out.AddRaw("x", "null");
            if (!limit.Message.empty()) support::MsgBox(limit.Message);
        }
    }
    out.AddRecorded();
    PrintLine(out);
    return 0;
}

} // namespace

void AddQuantile(CLI::App& program, int& status) {
    auto r = std::make_shared<QuantileRequest>();
    CLI::App* command = program.add_subcommand(
        "quantile", "The limit x with P(X <= x) = P (--lower) or P(X > x) = P (--upper).");
    command->add_option("DIST_PARAMS", r->Words, "the distribution's name, then its parameters")
        ->type_name("DIST P1 P2 P3 P4");
    AddNumber(command, "--lower", r->Lower, "the fraction below the limit");
    AddNumber(command, "--upper", r->Upper, "the fraction above the limit");
    command->callback([r, &status] { status = RunQuantile(*r); });
}

} // namespace cli
