#include "shared/show_secrets.h"

#include <CLI/CLI.hpp>

namespace vorl::tool {

void declareShowSecrets(CLI::App& command, Secrets& secrets) {
    command.add_flag_callback(
        "--show-secrets", [&secrets] { secrets = Secrets::SHOWN; },
        "Show secret keys themselves instead of their fingerprints");
}

}  // namespace vorl::tool
