#ifndef VORL_TOOL_SHARED_COMMAND_LINE_H
#define VORL_TOOL_SHARED_COMMAND_LINE_H

#include "shared/exit_status.h"

namespace vorl::tool {

/// Runs the command that the arguments name. Every failure is told on standard error.
ExitStatus runCommandLine(int argc, const char* const* argv);

}  // namespace vorl::tool

#endif
