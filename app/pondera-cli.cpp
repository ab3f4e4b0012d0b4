// pondera-cli: the engine and the window's plot path, headless, for scripts.
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "support/m_Interface.h"

#include <string>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 2) return cli::Usage();
    m_Interface::SetupErrorHandling();
    const std::string command = argv[1];
    const cli::Args args(argv + 2, argv + argc);
    if (command == "moments") return cli::RunMoments(args);
    if (command == "pdf") return cli::RunPdf(args);
    if (command == "pnc") return cli::RunPnc(args);
    if (command == "fit") return cli::RunFit(args);
    if (command == "data") return cli::RunData(args);
#ifndef PONDERA_NO_PLOT
    if (command == "plot") return cli::RunPlot(args);
#endif
    return cli::Usage();
}
