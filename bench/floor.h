#ifndef VORL_BENCH_FLOOR_H
#define VORL_BENCH_FLOOR_H

#include "vorl/bytes.h"

#include <openssl/evp.h>

#include <cstddef>
#include <memory>

namespace vorl::bench {

/// Octets in storage that nobody has filled with zeros first.
struct RawOctets {
    std::unique_ptr<unsigned char[]> data;
    std::size_t size;
};

/// The same messages as VorlContext's at the Full level, by calls of OpenSSL written out by hand for this one
/// purpose: contexts that are keyed once, storage for the envelope that is used again, one allocation for the
/// result, no check that a correct message does not need. What the library is measured against.
class Floor {
public:
    explicit Floor(const bytes& key);

    RawOctets encrypt(const bytes& message);
    RawOctets decrypt(const bytes& text);

private:
    struct FreeContext {
        void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
    };

    unsigned char* envelopeOf(std::size_t size);

    std::unique_ptr<EVP_CIPHER_CTX, FreeContext> encrypting_;
    std::unique_ptr<EVP_CIPHER_CTX, FreeContext> decrypting_;
    std::unique_ptr<unsigned char[]> envelope_;
    std::size_t capacity_ = 0;
};

}  // namespace vorl::bench

#endif
