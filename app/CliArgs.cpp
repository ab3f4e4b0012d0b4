// pondera-cli's command line.
#include "app/CliArgs.h"

#include "app/CliJson.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace cli {

void BadValue(const std::string& name, const std::string& problem) {
    throw CLI::ValidationError(name + " " + problem);
}

CLI::Option* AddNumber(CLI::App* command, const std::string& name, std::optional<double>& out,
                       const std::string& help) {
    return command
        ->add_option_function<std::string>(
            name,
            [name, &out](const std::string& text) {
                double v = 0;
                if (!ParseArg(text, v)) BadValue(name, "takes a number, not \"" + text + "\"");
                out = v;
            },
            help)
        ->type_name("X");
}

CLI::Option* AddWhole(CLI::App* command, const std::string& name, int low, int high,
                      std::optional<int>& out, const std::string& help) {
    return command
        ->add_option_function<std::string>(
            name,
            [=, &out](const std::string& text) {
                double v = 0;
                if (!ParseArg(text, v) || v != std::floor(v) || v < low || v > high)
                    BadValue(name, "takes a whole number from " + std::to_string(low) + " to " +
                                       std::to_string(high));
                out = static_cast<int>(v);
            },
            help)
        ->type_name("N");
}

CLI::Option* AddText(CLI::App* command, const std::string& name, std::optional<std::string>& out,
                     const std::string& help) {
    return command
        ->add_option_function<std::string>(
            name, [&out](const std::string& text) { out = text; }, help)
        ->type_name("TEXT");
}

CLI::Option* AddChoice(CLI::App* command, const std::string& name,
                       const std::vector<std::string>& words, std::optional<std::string>& out,
                       const std::string& help) {
    std::string list;
    for (const auto& w : words)
        list += (list.empty() ? "" : "|") + w;
    return command
        ->add_option_function<std::string>(
            name,
            [=, &out](const std::string& text) {
                for (const auto& w : words)
                    if (text == w) {
                        out = text;
                        return;
                    }
                BadValue(name, "takes " + list);
            },
            help)
        ->type_name(list);
}

void SetUp(CLI::App& program, const std::string& version) {
    program.set_version_flag("--version", "pondera-cli " + version, "Print the version and exit");
    program.require_subcommand(0, 1);
    program.footer("Each answer is one JSON object on standard output. Usage errors exit with "
                   "status 2.\nSee pondera-cli(1), or COMMAND --help, for the details.");
}

int Run(CLI::App& program, int argc, char** argv, const int& status) {
    try {
        program.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return program.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return program.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return program.exit(e);
    } catch (const CLI::ParseError& e) {
        const auto chosen = program.get_subcommands();
        if (!chosen.empty()) return Fail(chosen.back()->get_name(), e.what());
        const auto extras = program.remaining();
        if (!extras.empty() && extras.front().rfind("-", 0) != 0)
            return Fail("", "unknown command \"" + extras.front() + "\"");
        return Fail("", e.what());
    }
    if (program.get_subcommands().empty()) {
        std::cerr << program.help();
        return 2;
    }
    // An answer that did not reach its reader (a full disk, a closed pipe) is
    // no answer.
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "pondera-cli %s: cannot write the answer: %s\n",
                     program.get_subcommands().back()->get_name().c_str(),
                     std::strerror(errno ? errno : EIO));
        return 1;
    }
    return status;
}

} // namespace cli
