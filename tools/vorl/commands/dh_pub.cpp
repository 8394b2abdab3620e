#include "commands/commands.h"
#include "shared/ToolError.h"
#include "shared/dh_files.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/VORLException.h"

#include <CLI/CLI.hpp>

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

Run declareDhPub(CLI::App& command) {
    const auto path = std::make_shared<std::string>("-");
    command.add_option("STATE", *path, "Key pair, as 'vorl dh new' writes it; '-' is standard input")
        ->required()
        ->type_name("");
    return [path] { return showPublicKey(*path); };
}

}  // namespace vorl::tool
