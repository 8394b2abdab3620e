#ifndef VORL_TOOL_INSPECT_PEM_CONTENT_H
#define VORL_TOOL_INSPECT_PEM_CONTENT_H

#include "shared/SecretBytes.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl::tool {

/// What a block of PEM text holds.
struct PemContent {
    /// The DER, or what a password has made of it; empty where there is no whole block.
    SecretBytes data;
    bool isEncrypted = false;
};

/// A BIO that reads the text, which must outlive it; null where the text is more than OpenSSL counts.
std::shared_ptr<BIO> bioOver(const bytes& text, std::size_t offset = 0);

/// The content of the first block whose label is wanted. No password is asked for.
PemContent pemContentIn(const bytes& text, bool (*isWanted)(const std::string& label));

}  // namespace vorl::tool

#endif
