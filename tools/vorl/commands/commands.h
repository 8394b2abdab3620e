#ifndef VORL_TOOL_COMMANDS_COMMANDS_H
#define VORL_TOOL_COMMANDS_COMMANDS_H

#include "shared/exit_status.h"

#include <functional>

namespace CLI {
class App;
}

namespace vorl::tool {

/// What a command does once its arguments are known.
using Run = std::function<ExitStatus()>;

/// Each adds its options to `command` and returns what they are for.
Run declareProtect(CLI::App& command);
Run declareUnprotect(CLI::App& command);
Run declareInspect(CLI::App& command);
Run declareDoctor(CLI::App& command);

struct Command {
    const char* name;
    const char* description;
    Run (*declare)(CLI::App& command);
};

/// In the order in which the help shows them.
inline constexpr Command COMMANDS[] = {
    {"protect", "Put a message into an envelope", declareProtect},
    {"unprotect", "Take the message out of an envelope", declareUnprotect},
    {"inspect", "Show an envelope field by field; takes no key", declareInspect},
    {"doctor", "Check what the tool depends on", declareDoctor},
};

}  // namespace vorl::tool

#endif
