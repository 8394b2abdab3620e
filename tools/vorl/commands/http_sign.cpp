#include "commands/commands.h"
#include "http/HttpOptions.h"
#include "http/signatures.h"
#include "shared/CommandOptions.h"

#include <memory>

namespace vorl::tool {

Run declareHttpSign(CommandOptions& command) {
    const auto options = std::make_shared<HttpOptions>();
    options->declareKey(command);
    options->declareSignature(command, "Name of the key, which the other side finds it by");
    command.value("-o,--output", "FILE", options->output,
                  "File to write; '-' is standard output, the default");
    options->declareMessage(command);
    return [options] { return signHttpMessage(*options); };
}

}  // namespace vorl::tool
