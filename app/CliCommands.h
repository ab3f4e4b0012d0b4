// The commands of pondera-cli; each gets the arguments after its name and
// returns the exit code.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace cli {

using Args = std::vector<std::string>;

int RunMoments(const Args& args); // moments DIST P1 [P2 [P3]]
int RunPdf(const Args& args);     // pdf DIST P1 P2 P3 P4 --range LOW HIGH --points N
int RunPnc(const Args& args);     // pnc DIST P1 P2 P3 P4 [--lsl X] [--usl X], or lines on stdin
int RunFit(const Args& args);     // fit MEAN SD SKEW KURT, or lines on stdin
int RunPlot(const Args& args);    // plot --dist NAME ... (the window's code path, headless)
int RunData(const Args& args);    // data FILE|- [--lsl X] [--usl X] [--target X]

// The "capability" object of pnc and data for a distribution code and Param1..Param4.
std::string CapabilityJson(int code, const double (&p)[4], std::optional<double> lsl,
                           std::optional<double> usl);

} // namespace cli
