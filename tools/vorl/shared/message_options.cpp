#include "shared/message_options.h"

#include "shared/CommandOptions.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "vorl/CipherSpec.h"

#include <algorithm>

namespace vorl::tool {

void MessageOptions::declare(CommandOptions& command, const std::string& rawHelp,
                             const std::string& inputHelp) {
    command.flag("--raw", isRaw, rawHelp);
    command.value("-o,--output", "FILE", output, "File to write; '-' is standard output, the default");
    command.input("INPUT", input, inputHelp);
}

std::vector<std::string> levelNames() {
    std::vector<std::string> names;
    for (const Level& level : levels()) {
        names.push_back(level.name);
    }
    return names;
}

const Level& levelNamed(const std::string& name) {
    return *std::find_if(levels().begin(), levels().end(),
                         [&name](const Level& level) { return level.name == name; });
}

SecretBytes loadMessageKey(const KeyFile& key, const std::vector<Level>& forLevels,
                           const std::string& inputPath) {
    const bool isNeeded = std::any_of(forLevels.begin(), forLevels.end(),
                                      [](const Level& level) { return level.spec().keySize > 0; });
    if (!key.isGiven()) {
        if (isNeeded) {
            throw ToolError(ExitStatus::USAGE, "a key is needed",
                            "name its file with -k, or pass it with --key-fd");
        }
        return SecretBytes();
    }
    // All levels that encrypt take the same key.
    return key.load(levels().front().spec().keySize, inputPath);
}

}  // namespace vorl::tool
