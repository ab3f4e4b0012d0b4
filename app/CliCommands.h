// The commands of pondera-cli. Each adds itself to the program as a subcommand
// with its options; when it is the one chosen it runs once the command line is
// read and leaves its exit status in `status`.
#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}
class JohnsonDist;
namespace m_Capability {
struct Ppm;
}
namespace cli {
class JsonObject;
}

namespace cli {

void AddMoments(CLI::App& program, int& status);  // moments DIST P1 [P2 [P3]]
void AddPdf(CLI::App& program, int& status);      // pdf DIST P1..P4 --range LOW HIGH --points N
void AddPnc(CLI::App& program, int& status);      // pnc DIST P1..P4 [--lsl X] [--usl X], or stdin
void AddFit(CLI::App& program, int& status);      // fit MEAN SD SKEW KURT, or lines on stdin
void AddData(CLI::App& program, int& status);     // data FILE|- [--lsl X] [--usl X] [--target X]
void AddIdentify(CLI::App& program, int& status); // identify FILE|- [--column C] ...
void AddPlot(CLI::App& program, int& status);     // plot --dist NAME ... (the window, headless)
void AddReport(CLI::App& program, int& status);   // report ... --out FILE.pdf (as plot, then a PDF)
// quantile DIST P1..P4 --lower P | --upper P
void AddQuantile(CLI::App& program, int& status);

// The fields of a Johnson fit in fit and data: type, message and the four
// parameters, null when the fit failed (no curve, so no figures).
void AddFitFields(JsonObject& out, const JohnsonDist& fit);

// The "capability" object of pnc and data for a distribution code and Param1..Param4.
std::string CapabilityJson(int code, const double (&p)[4], std::optional<double> lsl,
                           std::optional<double> usl);
// The "capability_z" object beside it: the same figures by the Z-score method.
std::string CapabilityZJson(int code, const double (&p)[4], std::optional<double> lsl,
                            std::optional<double> usl);
// The "ppm" object of data and identify: expected (the curve's) and observed
// (the values') parts per million below, above and in all.
std::string PpmJson(const m_Capability::Ppm& expected, const m_Capability::Ppm& observed);
// True, with a message recorded for the answer, when both limits are given and
// the LSL is not below the USL: then there are no figures.
bool LimitsCrossed(std::optional<double> lsl, std::optional<double> usl);

} // namespace cli
