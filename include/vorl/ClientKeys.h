#ifndef VORL_CLIENTKEYS_H
#define VORL_CLIENTKEYS_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <string>

namespace vorl {

/// A client's two keys, derived from a shared secret or from the identifier of a shopper or a device.
///
/// Both are slices of one SHA-384 digest of the material, without salt, label or counter: bytes 0 to 15 are
/// the encryption key, of AES-128's size, bytes 16 to 47 the HMAC key. They are wiped when the object goes.
class VORL_API ClientKeys {
public:
    /// From a secret of 48 bytes or more, such as DiffieHellman::computeSharedSecret() gives.
    /// Throws VORLException "shared secret too small".
    explicit ClientKeys(const bytes& sharedSecret);
    /// From an identifier of 9 characters or more. Throws VORLException for a shorter one.
    explicit ClientKeys(const std::string& id);
    ClientKeys(const unsigned char* data, unsigned int len);

    ClientKeys(const ClientKeys&) = default;
    ClientKeys& operator=(const ClientKeys&) = default;
    ~ClientKeys();

    /// Replaces both keys by those of `material`, of any length. Throws OpenSSLException where OpenSSL cannot
    /// digest it; the keys are then what they were.
    void derive(const bytes& material);

    /// 16 bytes.
    const bytes& encryptionKey() const { return encryptionKey_; }
    /// 32 bytes.
    const bytes& hmacKey() const { return hmacKey_; }

    /// In constant time.
    bool operator==(const ClientKeys& other) const;
    bool operator!=(const ClientKeys& other) const { return !(*this == other); }

    /// Both keys in full.
    std::string toString() const;

private:
    bytes encryptionKey_;
    bytes hmacKey_;
};

}  // namespace vorl

#endif
