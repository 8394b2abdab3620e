#ifndef VORL_DIFFIEHELLMAN_H
#define VORL_DIFFIEHELLMAN_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

class Buffer;
class DiffieHellmanParams;

/// The client's side of a key agreement (PKCS #3): a key pair in a group, and the secret that it shares with
/// the owner of another one.
///
/// Complete from construction and constant afterwards; objects never share their OpenSSL DH. The shared
/// secret is always 128 bytes, so that only a group with a prime of 1024 bits serves for it.
class VORL_API DiffieHellman {
public:
    /// A new key pair. With instrumentation on, it is saved as "DiffieHellman", private key included.
    /// Throws OpenSSLException where OpenSSL fails.
    static std::unique_ptr<DiffieHellman> generate(const DiffieHellmanParams& params);

    /// A copy of p, g and both keys. Throws VORLException for the first of them that is missing.
    explicit DiffieHellman(const std::shared_ptr<DH>& dh);
    DiffieHellman(const DiffieHellman& other);
    DiffieHellman& operator=(const DiffieHellman& other);
    ~DiffieHellman();

    /// The text to send to the peer: the Base64 of a DHPubKey record, whose key is padded to 128 bytes; to
    /// 129 where its top bit would otherwise make it look negative.
    bytes getPubKey() const;

    /// The 128 bytes that the peer computes as well, from the text that its getPubKey() gave.
    ///
    /// Leading zero bytes of the shared number are left out, the rest stands at the front and zero bytes
    /// behind it; the last byte is always 0. Where OpenSSL does not compute, because it refuses the peer's
    /// number (0, 1 and p - 1 among others) or has no memory, all 128 bytes are zero: check for that before
    /// you use them.
    ///
    /// With instrumentation on, the peer's key and the secret are saved as "DHRemotePubKey" and
    /// "DHSharedSecret".
    /// Throws VORLException for text that is no record, for a key of fewer than 120 or more than 129 bytes
    /// and for a group of another size; OpenSSLException where OpenSSL answers 0.
    bytes computeSharedSecret(const bytes& serverPubKeyB64) const;

    /// Appends p, g, the public and the private key, each as an OctetString. A number that is 0 is not
    /// written: such a pair cannot be read back.
    void encode(Buffer& out) const;
    /// Throws ASN1Exception where a block is missing or cut short.
    static std::unique_ptr<DiffieHellman> decode(Buffer& in);

    /// All four numbers. The private key is compared as OpenSSL compares numbers, not in constant time.
    bool operator==(const DiffieHellman& other) const;
    bool operator!=(const DiffieHellman& other) const { return !(*this == other); }

    /// All four numbers in hex, the private key included: for diagnostics only.
    std::string toString() const;
    /// Every field of an OpenSSL DH, private key included; "n/a" for those that OpenSSL does not tell.
    static std::string toString(const std::shared_ptr<DH>& dh);

private:
    friend class DiffieHellmanParams;

    std::shared_ptr<DH> dh_;
};

}  // namespace vorl

#endif
