#include "commands/commands.h"
#include "inspect/dh_numbers.h"
#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/dh_files.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/VORLException.h"

#include <memory>

namespace vorl::tool {

namespace {

bytes publicText(const KeyPair& keys, const std::string& path) {
    try {
        return keys.pair->getPubKey();
    } catch (const VORLException& fault) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        inputName(path) + ": " + wrongSizeText(keys.primeBits) + ": " + fault.what());
    }
}

ExitStatus showPublicKey(const std::string& path) {
    startLibrary();
    bytes text = publicText(loadKeyPair(path), path);
    text.push_back('\n');
    writeOutput(std::nullopt, text, Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDhPub(CommandOptions& command) {
    const auto path = std::make_shared<std::string>("-");
    command.input("STATE", *path, "Key pair, as 'vorl dh new' writes it; '-' is standard input").required();
    return [path] { return showPublicKey(*path); };
}

}  // namespace vorl::tool
