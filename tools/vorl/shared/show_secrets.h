#ifndef VORL_TOOL_SHARED_SHOW_SECRETS_H
#define VORL_TOOL_SHARED_SHOW_SECRETS_H

#include "shared/fingerprint.h"

namespace CLI {
class App;
}

namespace vorl::tool {

/// Adds --show-secrets to a command. `secrets` must outlive the parsing.
void declareShowSecrets(CLI::App& command, Secrets& secrets);

}  // namespace vorl::tool

#endif
