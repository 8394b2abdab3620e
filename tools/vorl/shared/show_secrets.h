#ifndef VORL_TOOL_SHARED_SHOW_SECRETS_H
#define VORL_TOOL_SHARED_SHOW_SECRETS_H

#include "shared/fingerprint.h"

namespace vorl::tool {

class CommandOptions;

/// Adds --show-secrets to a command. `secrets` must outlive the parsing.
void declareShowSecrets(CommandOptions& command, Secrets& secrets);

}  // namespace vorl::tool

#endif
