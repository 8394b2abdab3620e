#ifndef VORL_HMAC_H
#define VORL_HMAC_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <cstddef>
#include <memory>

namespace vorl {

class DigestAlgo;

/// A keyed message authentication code (RFC 2104) that keeps its key for many messages.
///
/// Ready for update() from construction; each further message begins with init(). No operation throws because
/// of OpenSSL: where it fails, the code is empty. So compare codes in length and in content, and in constant
/// time. The key may be empty; it is wiped when the object goes.
class VORL_API HMAC {
public:
    /// With SHA-256.
    explicit HMAC(const bytes& key);
    HMAC(const bytes& key, std::shared_ptr<const DigestAlgo> algo);
    ~HMAC();

    HMAC(const HMAC&) = delete;
    HMAC& operator=(const HMAC&) = delete;

    /// Starts again with the same key and digest.
    void init();
    void update(const unsigned char* data, unsigned int len);
    void update(const bytes& data);
    /// The code, as long as the digest's output; empty where OpenSSL failed since the last start.
    bytes final();

    /// The code of one whole message as Base64 text, unlike final(), which gives the bytes themselves.
    bytes hmac(const unsigned char* data, unsigned int len);
    bytes hmac(const bytes& data);

private:
    struct FreeContext {
        void operator()(HMAC_CTX* context) const;
    };

    // Failures of all these are under the mark of whoever calls.
    void initObj();
    void restart();
    void feed(const unsigned char* data, std::size_t size);
    void feedUnmarked(const unsigned char* data, std::size_t size);
    bytes finish();
    bytes base64CodeOf(const unsigned char* data, std::size_t size);

    bytes key_;
    std::shared_ptr<const DigestAlgo> algo_;
    std::unique_ptr<HMAC_CTX, FreeContext> ctx_;
    // What OpenSSL is given for the digest.
    const EVP_MD* md_ = nullptr;
    // Results of OpenSSL are not reported, but remembered: it does not survive a context that is half made.
    bool keyed_ = false;
    bool started_ = false;
    // Started, and no data fed since.
    bool fresh_ = false;
};

}  // namespace vorl

#endif
