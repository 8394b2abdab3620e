#include "commands/commands.h"
#include "http/HttpOptions.h"
#include "http/signatures.h"
#include "shared/CommandOptions.h"

#include <memory>

namespace vorl::tool {

Run declareHttpBase(CommandOptions& command) {
    const auto options = std::make_shared<HttpOptions>();
    options->declareSignature(command, "Name of the key, for a message that is not signed yet");
    command.flag("--raw", options->isRaw, "Write no newline behind it");
    options->declareMessage(command);
    return [options] { return writeSignatureBase(*options); };
}

}  // namespace vorl::tool
