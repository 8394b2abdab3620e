#include "commands/commands.h"
#include "http/HttpOptions.h"
#include "http/signatures.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace vorl::tool {

Run declareHttpBase(CLI::App& command) {
    const auto options = std::make_shared<HttpOptions>();
    options->declareSignature(command, "Name of the key, for a message that is not signed yet");
    command.add_flag("--raw", options->isRaw, "Write no newline behind it");
    options->declareMessage(command);
    return [options] { return writeSignatureBase(*options); };
}

}  // namespace vorl::tool
