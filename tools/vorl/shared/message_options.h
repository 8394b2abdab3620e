#ifndef VORL_TOOL_SHARED_MESSAGE_OPTIONS_H
#define VORL_TOOL_SHARED_MESSAGE_OPTIONS_H

#include "inspect/levels.h"
#include "shared/SecretBytes.h"

#include <optional>
#include <string>
#include <vector>

namespace vorl::tool {

class CommandOptions;
class KeyFile;

/// What the two directions of a message have in common: INPUT, -o and --raw.
struct MessageOptions {
    void declare(CommandOptions& command, const std::string& rawHelp, const std::string& inputHelp);

    std::string input = "-";
    /// Empty where the user has not said where.
    std::optional<std::string> output;
    bool isRaw = false;
};

std::vector<std::string> levelNames();
/// The level of a name that is one of levelNames().
const Level& levelNamed(const std::string& name);

/// The key for messages of the given levels. Where none of them encrypts, it may be left out; where it is
/// given, it has to be a key all the same. Throws ToolError.
SecretBytes loadMessageKey(const KeyFile& key, const std::vector<Level>& forLevels,
                           const std::string& inputPath);

}  // namespace vorl::tool

#endif
