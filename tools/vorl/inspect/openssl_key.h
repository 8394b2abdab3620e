#ifndef VORL_TOOL_INSPECT_OPENSSL_KEY_H
#define VORL_TOOL_INSPECT_OPENSSL_KEY_H

#include "inspect/Report.h"
#include "shared/fingerprint.h"

#include <openssl/ossl_typ.h>

#include <memory>

namespace vorl::tool {

// Keys of any algorithm, so that one that the library does not take can be called by its name.

using OpenSSLKey = std::shared_ptr<EVP_PKEY>;

/// A key in DER: SubjectPublicKeyInfo or RSAPublicKey; PrivateKeyInfo or what the algorithm had before it.
/// Null for anything else, where bytes follow, and for a private key of a size that no key has: while it
/// reads, OpenSSL computes with the numbers, which can take hours.
OpenSSLKey publicKeyInDer(const bytes& der);
OpenSSLKey privateKeyInDer(const bytes& der);

/// The bytes of the first element of DER, and all of them where that cannot be told.
bytes firstElement(const bytes& der);

/// Whether a private key in DER is encrypted with a password (PKCS #8, EncryptedPrivateKeyInfo).
bool isEncryptedInDer(const bytes& der);

/// For example "RSA", "EC" or "Ed25519".
std::string algorithmName(const EVP_PKEY* key);

/// What the library says against a key, or an empty text: it takes RSA only.
std::string libraryVerdictOn(const EVP_PKEY* key);

/// Enters the algorithm, the size and the fingerprint of the public part into the report, which the two
/// halves of a pair and a certificate for it have in common.
void addKeyFacts(EVP_PKEY* key, Report& report);

/// Enters the private numbers of an RSA key into the report, or what stands for them; nothing for other keys.
void addPrivateFacts(const EVP_PKEY* key, Secrets secrets, Report& report);

/// SHA-256 in hex.
std::string sha256Text(const bytes& data);

}  // namespace vorl::tool

#endif
