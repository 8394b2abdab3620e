#ifndef VORL_PUBKEY_H
#define VORL_PUBKEY_H

#include "vorl/OpenSSLPKey.h"

namespace vorl {

/// The public half of an RSA key: it verifies signatures.
class VORL_API PubKey : public OpenSSLPKey {
public:
    using OpenSSLPKey::OpenSSLPKey;
    PubKey(const PubKey& other) = default;
    PubKey& operator=(const PubKey& other) = default;

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// For example "Public-Key (RSA)".
    std::string toString() const override;
    ~PubKey() override;

    /// The next PEM block of a public key.
    /// Throw OpenSSLException where there is none, which is also how a file that cannot be opened
    /// shows, and where it is encrypted: a password is neither asked for nor tried. Throw VORLException for a
    /// key that is not RSA.
    static std::shared_ptr<PubKey> loadFromPEMBIO(const std::shared_ptr<BIO>& bio);
    static std::shared_ptr<PubKey> loadFromPEMFile(const std::string& path);
    static std::shared_ptr<PubKey> loadFromPEMStr(const std::string& pem);
};

}  // namespace vorl

#endif
