#include "vectors/vectors.h"
#include "commands/commands.h"
#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/output.h"
#include "shared/start_up.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace vorl::tool {

namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

struct VectorOptions {
    std::string folder;
    bool isReplaced = false;
};

struct VectorFile {
    const char* name;
    Json (*content)();
};

const VectorFile FILES[] = {
    {"envelopes.json", envelopeVectors},    {"agreement.json", agreementVectors},
    {"client_keys.json", clientKeyVectors}, {"signatures.json", signatureVectors},
    {"digests.json", digestVectors},        {"texts.json", textVectors},
};

void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directory(folder, error);
    if (error) {
        throw ToolError(ExitStatus::FAULT,
                        "cannot make the folder '" + folder.string() + "': " + error.message());
    }
}

// All of them before any is written.
void refuseExisting(const fs::path& folder) {
    for (const VectorFile& file : FILES) {
        const fs::path path = folder / file.name;
        std::error_code error;
        if (fs::exists(fs::symlink_status(path, error))) {
            throw ToolError(ExitStatus::USAGE, "'" + path.string() + "' is there already",
                            "name another folder, or replace the files in this one with --force");
        }
    }
}

bytes fileContent(const Json& json) {
    const std::string text = json.dump(2) + "\n";
    return bytes(text.begin(), text.end());
}

ExitStatus writeVectors(const VectorOptions& options) {
    startLibrary();
    const fs::path folder = options.folder;
    if (!options.isReplaced) {
        refuseExisting(folder);
    }
    makeFolder(folder);
    for (const VectorFile& file : FILES) {
        writeOutput((folder / file.name).string(), fileContent(file.content()), Readers::ANYBODY);
    }
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareVectors(CommandOptions& command) {
    const auto options = std::make_shared<VectorOptions>();
    command
        .value("-o,--output", "DIR", options->folder,
               "Folder to write the files to, which is made if it is not there. What they call keys, "
               "secrets and private numbers is the same on every machine, known to everybody, and for "
               "testing only")
        .required();
    command.flag("--force", options->isReplaced, "Replace files that are there already");
    return [options] { return writeVectors(*options); };
}

}  // namespace vorl::tool
