// Placeholder until the command is written.
#include "app/CliCommands.h"
#include "app/CliJson.h"

namespace cli {
int RunMoments(const Args&) { return Usage(); }
int RunPdf(const Args&) { return Usage(); }
int RunPnc(const Args&) { return Usage(); }
} // namespace cli
