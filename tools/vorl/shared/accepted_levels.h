#ifndef VORL_TOOL_SHARED_ACCEPTED_LEVELS_H
#define VORL_TOOL_SHARED_ACCEPTED_LEVELS_H

#include "inspect/levels.h"

#include <string>
#include <vector>

namespace vorl::tool {

class CommandOptions;

/// Adds --accept to a command. `list` must outlive the parsing.
void declareAccept(CommandOptions& command, std::string& list);

/// The levels of a list such as "full,test". Throws ToolError for what is none.
std::vector<Level> acceptedLevels(const std::string& list);

/// Makes the library accept these levels and no others.
void setPolicy(const std::vector<Level>& accepted);

}  // namespace vorl::tool

#endif
