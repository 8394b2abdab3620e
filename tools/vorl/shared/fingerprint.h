#ifndef VORL_TOOL_SHARED_FINGERPRINT_H
#define VORL_TOOL_SHARED_FINGERPRINT_H

#include "vorl/bytes.h"

#include <string>

namespace vorl::tool {

/// Whether reports show secrets, or only what stands for them. --show-secrets says so.
enum class Secrets { HIDDEN, SHOWN };

/// What stands for a secret: the first four bytes of its SHA-256 and its size, "sha256:1a2b3c4d (16 bytes)".
/// Equal secrets can be told from others by it, and it says next to nothing about a random one.
std::string fingerprint(const bytes& secret);

/// The secret in hex where secrets are shown, else its fingerprint.
std::string secretText(const bytes& secret, Secrets secrets);

}  // namespace vorl::tool

#endif
