#ifndef VORL_DIGESTER_H
#define VORL_DIGESTER_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <cstddef>
#include <memory>
#include <string>

namespace vorl {

class DigestAlgo;

/// A message digest over data that comes in pieces: init(), update() as often as needed, final().
///
/// final() does not restart: the next digest begins with init(), which also discards data fed so far. Without
/// an init() in between, what a further update() or final() does is OpenSSL's affair; its result means
/// nothing.
class VORL_API Digester {
public:
    /// Does not start a digest.
    explicit Digester(std::shared_ptr<const DigestAlgo> algo);
    ~Digester();

    Digester(const Digester&) = delete;
    Digester& operator=(const Digester&) = delete;

    /// Throws OpenSSLException "EVP_DigestInit_ex()" where OpenSSL refuses.
    void init();

    /// Throws OpenSSLException "EVP_DigestUpdate()" where OpenSSL refuses, and for data before the first
    /// init().
    void update(const unsigned char* data, unsigned int len);
    void update(const std::string& data);
    void update(const bytes& data);

    /// The digest: 20, 28, 32, 48 or 64 bytes. Throws OpenSSLException "EVP_DigestFinal_ex()" where OpenSSL
    /// refuses, and before the first init().
    bytes final();

private:
    struct FreeContext {
        void operator()(EVP_MD_CTX* context) const;
    };

    void feed(const void* data, std::size_t size);

    std::shared_ptr<const DigestAlgo> algo_;
    // What OpenSSL is given for the digest.
    const EVP_MD* const md_;
    std::unique_ptr<EVP_MD_CTX, FreeContext> ctx_;
    // OpenSSL 1.1.1 does not survive a context that was never started.
    bool started_ = false;
};

}  // namespace vorl

#endif
