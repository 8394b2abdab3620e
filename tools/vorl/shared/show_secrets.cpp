#include "shared/show_secrets.h"

#include "shared/CommandOptions.h"

namespace vorl::tool {

void declareShowSecrets(CommandOptions& command, Secrets& secrets) {
    command.flag(
        "--show-secrets", [&secrets] { secrets = Secrets::SHOWN; },
        "Show secret keys themselves instead of their fingerprints");
}

}  // namespace vorl::tool
