#include "shared/command_line.h"

#include "commands/commands.h"
#include "shared/ToolError.h"
#include "shared/failures.h"
#include "shared/messages.h"
#include "shared/output.h"

#include <openssl/crypto.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <string>

namespace vorl::tool {

namespace {

const char EXIT_STATUSES[] =
    "Exit status: 0 success, 1 refused by the policy, 2 wrong usage, 3 input unreadable or malformed,\n"
    "4 cannot be opened (wrong key or damaged data), 5 fault of the platform or the output.";

std::string versionText() {
    return "vorl " VORL_TOOL_VERSION "\n" + std::string(OpenSSL_version(OPENSSL_VERSION));
}

void declareVersion(CLI::App& app) {
    app.set_version_flag("--version", versionText, "Print the versions of vorl and OpenSSL and exit");
}

void declareCommands(CLI::App& app, Run& chosen) {
    for (const Command& command : COMMANDS) {
        CLI::App* const subcommand = app.add_subcommand(command.name, command.description);
        declareVersion(*subcommand);
        subcommand->footer(EXIT_STATUSES);
        subcommand->callback([&chosen, run = command.declare(*subcommand)] { chosen = run; });
    }
    // At most one: what follows a command is its own, even if it is a file with the name of a command.
    app.require_subcommand(0, 1);
}

ExitStatus refuseUsage(const CLI::App& app, const CLI::ParseError& error) {
    const auto commands = app.get_subcommands();
    sayError(error.what());
    sayHint("'vorl" + (commands.empty() ? "" : " " + commands.back()->get_name()) +
            " --help' shows the usage");
    return ExitStatus::USAGE;
}

// The parser would name everything that follows, and answer a --help among it.
void refuseUnknownCommand(int argc, const char* const* argv) {
    const std::string first = argc > 1 ? argv[1] : "-";
    const bool isKnown = std::any_of(std::begin(COMMANDS), std::end(COMMANDS),
                                     [&first](const Command& command) { return first == command.name; });
    if (!isKnown && first.substr(0, 1) != "-") {
        throw ToolError(ExitStatus::USAGE, "there is no command '" + first + "'",
                        "'vorl --help' lists the commands");
    }
}

ExitStatus parseAndRun(int argc, const char* const* argv) {
    refuseUnknownCommand(argc, argv);
    CLI::App app("Protects messages in envelopes, opens them, and looks into them.", "vorl");
    declareVersion(app);
    app.footer(EXIT_STATUSES);
    Run chosen;
    declareCommands(app, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        writeStandardOutput(app.help());
        return ExitStatus::SUCCESS;
    } catch (const CLI::CallForVersion&) {
        writeStandardOutput(versionText() + "\n");
        return ExitStatus::SUCCESS;
    } catch (const CLI::ParseError& error) {
        return refuseUsage(app, error);
    }
    if (!chosen) {
        throw ToolError(ExitStatus::USAGE, "a command is needed", "'vorl --help' lists the commands");
    }
    return chosen();
}

}  // namespace

ExitStatus runCommandLine(int argc, const char* const* argv) {
    try {
        return parseAndRun(argc, argv);
    } catch (...) {
        return tellFailure();
    }
}

}  // namespace vorl::tool
