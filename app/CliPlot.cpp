// Placeholder until the command is written.
#include "app/CliCommands.h"
#include "app/CliJson.h"

namespace cli {
int RunPlot(const Args&) { return Usage(); }
} // namespace cli
