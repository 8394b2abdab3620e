#ifndef VORL_SOFTWAREKEYCIPHER_H
#define VORL_SOFTWAREKEYCIPHER_H

#include "vorl/Cipher.h"
#include "vorl/bytes.h"

#include <openssl/ossl_typ.h>

#include <cstddef>
#include <initializer_list>

namespace vorl {

/// A cipher of OpenSSL with a key in memory; for the library's specs, AES-128 in CBC or ECB mode with PKCS #5
/// padding to 16 bytes (RFC 5652, section 6.3).
///
/// Reusable: every init starts afresh with the same key, also after a failure. Before the first init, and
/// after one that OpenSSL refused, update() and final() answer as if OpenSSL had failed.
/// The key is wiped when the object goes.
class VORL_API SoftwareKeyCipher : public Cipher {
public:
    /// Copies the key. Its length is judged by encryptInit(), not here.
    SoftwareKeyCipher(std::shared_ptr<const CipherSpec> spec, const unsigned char* theKey,
                      unsigned int keyLen);
    SoftwareKeyCipher(std::shared_ptr<const CipherSpec> spec, const bytes& theKey);
    ~SoftwareKeyCipher() override;

    SoftwareKeyCipher(const SoftwareKeyCipher&) = delete;
    SoftwareKeyCipher& operator=(const SoftwareKeyCipher&) = delete;

    /// Throws VORLException where the spec takes an IV and `iv` is missing or of another length, and for a
    /// key that is not of the spec's length. Without an IV in the spec, `iv` is ignored.
    void encryptInit(const bytes& iv) override;
    /// Takes any IV and any key, unlike encryptInit(): what is missing counts as zero bytes, what is too much
    /// is not used. Devices rely on it.
    void decryptInit(const bytes& iv) override;
    /// Throws OpenSSLException where OpenSSL fails. A failure without output on less than a block of input is
    /// passed over, and the result is empty.
    bytes update(const bytes& data) override;
    /// Throws OpenSSLException where OpenSSL fails: on decryption, for a wrong key or damaged data. Random
    /// data passes as padded once in 256 times, so success proves nothing.
    bytes final() override;

    void encryptInit(std::initializer_list<unsigned char> iv);
    void decryptInit(std::initializer_list<unsigned char> iv);

    /// The forms without a check of the IV: null, which stands for zero bytes, or as many bytes as OpenSSL
    /// takes for the spec's cipher.
    void encryptInit(unsigned char* iv);
    void decryptInit(unsigned char* iv);

    /// Back to what it was after construction.
    void initObj();

    /// update() from and to given storage; returns how many bytes were written to `out`: never more than
    /// `size` and a block of the cipher. The two do not overlap.
    std::size_t update(const unsigned char* data, std::size_t size, unsigned char* out);
    /// final() to given storage of at least a block of the cipher.
    std::size_t final(unsigned char* out);

private:
    struct FreeContext {
        void operator()(EVP_CIPHER_CTX* context) const;
    };

    void start(const unsigned char* iv);
    bool setKey(const unsigned char* iv);
    bool restart(const unsigned char* iv);
    bool feed(const unsigned char* data, std::size_t size, unsigned char* out, std::size_t& produced);
    void reportFailure(bool succeeded, std::size_t size, std::size_t produced) const;

    // What the spec's mode says and what OpenSSL's cipher says need not agree in a spec of the caller's own.
    const bool ignoresIv;
    const bool feedsIv;
    // One of the library's two ciphers. A restart has nothing to report to the error queue, so that a mark in
    // it, which would cost a third of the restart, is spared; and how the data is cut makes no difference.
    const bool isAes;
    // A cipher without an IV would go on where it was.
    const bool restartsWithIv;
    int decrypting = 0;
    // One for each direction, indexed by `decrypting`. Naming a cipher and its key again for each message
    // costs OpenSSL eight times as much as restarting with an IV, and takes locks that all threads share.
    std::unique_ptr<EVP_CIPHER_CTX, FreeContext> ctx[2];
    bool keyed[2] = {false, false};
    bool started = false;
    bytes key;
};

}  // namespace vorl

#endif
