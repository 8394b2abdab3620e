#ifndef VORL_PRIVKEY_H
#define VORL_PRIVKEY_H

#include "vorl/OpenSSLPKey.h"

namespace vorl {

/// An RSA key with its private half: it makes signatures.
class VORL_API PrivKey : public OpenSSLPKey {
public:
    using OpenSSLPKey::OpenSSLPKey;
    PrivKey(const PrivKey& other) = default;
    PrivKey& operator=(const PrivKey& other) = default;

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// For example "Private-Key (RSA)".
    std::string toString() const override;
    ~PrivKey() override;

    /// The next PEM block of a private key.
    /// Throw OpenSSLException where there is none, which is also how a file that cannot be opened
    /// shows, and where it is encrypted: a password is neither asked for nor tried. Throw VORLException for a
    /// key that is not RSA.
    static std::shared_ptr<PrivKey> loadFromPEMBIO(const std::shared_ptr<BIO>& bio);
    static std::shared_ptr<PrivKey> loadFromPEMFile(const std::string& path);
    static std::shared_ptr<PrivKey> loadFromPEMStr(const std::string& pem);
};

}  // namespace vorl

#endif
