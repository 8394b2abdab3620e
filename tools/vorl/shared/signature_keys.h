#ifndef VORL_TOOL_SHARED_SIGNATURE_KEYS_H
#define VORL_TOOL_SHARED_SIGNATURE_KEYS_H

#include "vorl/bytes.h"

#include <memory>
#include <optional>
#include <string>

namespace vorl {
class OpenSSLPKey;
class PrivKey;
class PubKey;
class X509Cert;
}  // namespace vorl

namespace vorl::tool {

class KeyFile;

/// Said wherever a certificate has been found good.
inline const char CHAIN_NOT_CHECKED[] =
    "not checked: the chain of trust, which is whether its issuer signed the certificate and can be "
    "trusted\n";

// What signs and verifies, from the files that name it. All throw ToolError where a file cannot be read, and
// BAD_INPUT for what is not in it. A password is never asked for.

/// From PEM text. `inputPath` is what the command reads besides the key.
std::shared_ptr<const PrivKey> loadPrivateKey(const KeyFile& file, const std::string& inputPath);
/// From PEM text.
std::shared_ptr<const PubKey> loadPublicKey(const std::string& path);
/// From PEM text, DER, or the Base64 text of DER.
std::shared_ptr<const X509Cert> loadCertificate(const std::string& path);
/// The same for what has been read from `path`.
std::shared_ptr<const X509Cert> certificateFrom(const bytes& input, const std::string& path);

/// Why the key of a certificate verifies nothing; nothing where it does.
std::optional<std::string> keyFault(const X509Cert& certificate);
/// The key of a certificate that was loaded from `path`; throws ToolError where keyFault() finds one.
std::shared_ptr<const PubKey> publicKeyOf(const X509Cert& certificate, const std::string& path);

/// For example "RSA, 2048 bits".
std::string keyText(const OpenSSLPKey& key);

}  // namespace vorl::tool

#endif
