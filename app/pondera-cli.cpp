// pondera-cli: the engine and the window's plot path, headless, for scripts.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "support/Version.h"
#include "support/m_Interface.h"

int main(int argc, char** argv) {
    CLI::App program("Pondera's figures as JSON: moments, densities, fraction nonconforming "
                     "and Johnson fits.",
                     "pondera-cli");
    cli::SetUp(program, support::kVersion);
    int status = 0;
    cli::AddMoments(program, status);
    cli::AddPdf(program, status);
    cli::AddPnc(program, status);
    cli::AddFit(program, status);
    cli::AddData(program, status);
    cli::AddQuantile(program, status);
    cli::AddIdentify(program, status);
#ifndef PONDERA_NO_PLOT
    cli::AddPlot(program, status);
    cli::AddReport(program, status);
#endif
    m_Interface::SetupErrorHandling();
    return cli::Run(program, argc, argv, status);
}
