// Placeholder until the window exists: runs one example of the command-line tool.
#include "app/CliCommands.h"
#include "support/m_Interface.h"

int main() {
    m_Interface::SetupErrorHandling();
    return cli::RunPnc({"Normal", "0", "1", "0", "0", "--lsl", "-3", "--usl", "3"});
}
