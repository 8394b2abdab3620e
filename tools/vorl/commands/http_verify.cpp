#include "commands/commands.h"
#include "http/HttpOptions.h"
#include "http/signatures.h"

#include <memory>

namespace vorl::tool {

Run declareHttpVerify(CommandOptions& command) {
    const auto options = std::make_shared<HttpOptions>();
    options->declareKey(command);
    options->declareSignature(command,
                              "Name of the key that must have signed; by default the one that is named");
    options->declareMessage(command);
    return [options] { return verifyHttpMessage(*options); };
}

}  // namespace vorl::tool
