#include "shared/accepted_levels.h"

#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/message_options.h"
#include "vorl/VORLLib.h"

#include <algorithm>
#include <sstream>

namespace vorl::tool {

namespace {

bool isLevelName(const std::string& name) {
    const std::vector<std::string> names = levelNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

void declareAccept(CommandOptions& command, std::string& list) {
    command.value("--accept", "LEVELS", list,
                  "Levels that are accepted, separated by commas: full, test, none; full by default");
}

std::vector<Level> acceptedLevels(const std::string& list) {
    std::vector<Level> accepted;
    std::istringstream names(list + ",");
    for (std::string name; std::getline(names, name, ',');) {
        if (!isLevelName(name)) {
            throw ToolError(ExitStatus::USAGE, "--accept: there is no level '" + name + "'",
                            "give a list of full, test and none, for example --accept full,test");
        }
        accepted.push_back(levelNamed(name));
    }
    return accepted;
}

void setPolicy(const std::vector<Level>& accepted) {
    for (const Level& level : levels()) {
        VORLLib::setAllowedEncryptionType(level.type, false);
    }
    for (const Level& level : accepted) {
        VORLLib::setAllowedEncryptionType(level.type, true);
    }
}

}  // namespace vorl::tool
