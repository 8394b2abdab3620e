#include "shared/command_line.h"

#include "commands/commands.h"
#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/failures.h"
#include "shared/messages.h"
#include "shared/output.h"

#include <openssl/crypto.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>

namespace vorl::tool {

namespace {

const char EXIT_STATUSES[] =
    "Exit status: 0 success, 1 a clear no, 2 wrong usage, 3 input unreadable or malformed,\n"
    "4 cannot be opened or agreed on (wrong key, damaged data, refused number),\n"
    "5 fault of the platform or the output.";

std::string versionText() {
    return "vorl " VORL_TOOL_VERSION "\n" + std::string(OpenSSL_version(OPENSSL_VERSION));
}

void declareVersion(CLI::App& app) {
    app.set_version_flag("--version", versionText, "Print the versions of vorl and OpenSSL and exit");
}

// What exists already under a name such as "dh params"; the tool itself under none.
CLI::App* commandNamed(CLI::App& app, const std::string& name) {
    CLI::App* command = &app;
    std::istringstream words(name);
    for (std::string word; words >> word;) {
        command = command->get_subcommand(word);
    }
    return command;
}

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description) {
    const std::size_t blank = name.rfind(' ');
    const bool isInGroup = blank != std::string::npos;
    CLI::App* const parent = commandNamed(app, isInGroup ? name.substr(0, blank) : "");
    CLI::App* const command = parent->add_subcommand(isInGroup ? name.substr(blank + 1) : name, description);
    declareVersion(*command);
    command->footer(EXIT_STATUSES);
    return command;
}

void declareCommands(CLI::App& app, Run& chosen) {
    // At most one: what follows a command is its own, even if it is a file with the name of a command.
    app.require_subcommand(0, 1);
    for (const CommandGroup& group : COMMAND_GROUPS) {
        addCommand(app, group.name, group.description)->require_subcommand(0, 1);
    }
    for (const Command& command : COMMANDS) {
        CLI::App* const subcommand = addCommand(app, command.name, command.description);
        // Only the one that is named declares its options, which keeps the start of a run short.
        subcommand->preparse_callback([&chosen, &command, subcommand](std::size_t) {
            CommandOptions options(*subcommand);
            subcommand->callback([&chosen, run = command.declare(options)] { chosen = run; });
        });
    }
}

// "vorl" and the words of the command, as far as they were understood.
std::string commandText(const CLI::App& app) {
    std::string text = app.get_name();
    for (auto commands = app.get_subcommands(); !commands.empty();
         commands = commands.back()->get_subcommands()) {
        text += " " + commands.back()->get_name();
    }
    return text;
}

ExitStatus refuseUsage(const CLI::App& app, const CLI::ParseError& error) {
    sayError(error.what());
    sayHint("'" + commandText(app) + " --help' shows the usage");
    return ExitStatus::USAGE;
}

bool isCommand(const std::string& name) {
    return std::any_of(std::begin(COMMANDS), std::end(COMMANDS),
                       [&name](const Command& command) { return name == command.name; });
}

bool isGroup(const std::string& name) {
    return std::any_of(std::begin(COMMAND_GROUPS), std::end(COMMAND_GROUPS),
                       [&name](const CommandGroup& group) { return name == group.name; });
}

// The parser would name everything that follows, and answer a --help among it.
void refuseUnknownCommand(int argc, const char* const* argv) {
    std::string before;
    for (int i = 1; i < argc && argv[i][0] != '-'; ++i) {
        const std::string name = before + argv[i];
        if (isCommand(name)) {
            return;
        }
        if (!isGroup(name)) {
            throw ToolError(ExitStatus::USAGE, "there is no command '" + name + "'",
                            "'vorl " + before + "--help' lists the commands");
        }
        before = name + " ";
    }
}

ExitStatus parseAndRun(int argc, const char* const* argv) {
    refuseUnknownCommand(argc, argv);
    CLI::App app("Protects and signs messages, agrees on keys, and shows what records are made of.", "vorl");
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
        throw ToolError(ExitStatus::USAGE, "a command is needed",
                        "'" + commandText(app) + " --help' lists the commands");
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
