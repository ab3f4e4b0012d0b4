// pondera-cli's command line, read with CLI11: every command is a subcommand
// that declares its own options. Numbers follow the input-field rule; a value
// may follow its option as the next word or after "=" (`--lsl -3`, `--lsl=-3`),
// and a negative number stands as a parameter. Usage errors exit with status 2.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace cli {

// An option taking one number; a value that is not one is a usage error.
CLI::Option* AddNumber(CLI::App* command, const std::string& name, std::optional<double>& out,
                       const std::string& help);
// An option taking a whole number from low to high.
CLI::Option* AddWhole(CLI::App* command, const std::string& name, int low, int high,
                      std::optional<int>& out, const std::string& help);
// An option taking one text, kept as typed.
CLI::Option* AddText(CLI::App* command, const std::string& name, std::optional<std::string>& out,
                     const std::string& help);
// An option taking one of the given words.
CLI::Option* AddChoice(CLI::App* command, const std::string& name,
                       const std::vector<std::string>& words, std::optional<std::string>& out,
                       const std::string& help);

// Reports a bad option value from inside an option's check: "NAME PROBLEM".
[[noreturn]] void BadValue(const std::string& name, const std::string& problem);

// The program's own options (--help, --version) and the help's closing words.
void SetUp(CLI::App& program, const std::string& version);

// Parses the command line, which runs the chosen command; returns the exit
// status: the command's, 0 after --help or --version, 2 on a usage error.
int Run(CLI::App& program, int argc, char** argv, const int& status);

} // namespace cli
