#ifndef VORL_TESTS_RAW_CIPHER_H
#define VORL_TESTS_RAW_CIPHER_H

#include "vorl/bytes.h"

#include <openssl/evp.h>

#include <cstddef>
#include <memory>
#include <stdexcept>

namespace vorl::test {

/// One whole operation of any cipher of OpenSSL by plain calls, for expected bytes that do not come from the
/// library. Throws std::runtime_error where a call fails, and where `key` or `iv` is shorter than what
/// OpenSSL reads.
inline bytes rawCipher(const EVP_CIPHER* cipher, bool encrypt, const bytes& key, const bytes& iv,
                       const bytes& data) {
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> ctx(EVP_CIPHER_CTX_new(),
                                                                              EVP_CIPHER_CTX_free);
    if (!ctx || key.size() < static_cast<std::size_t>(EVP_CIPHER_key_length(cipher)) ||
        iv.size() < static_cast<std::size_t>(EVP_CIPHER_iv_length(cipher))) {
        throw std::runtime_error("rawCipher: arguments");
    }
    bytes out(data.size() + EVP_MAX_BLOCK_LENGTH);
    int updated = 0;
    int finished = 0;
    if (EVP_CipherInit_ex(ctx.get(), cipher, nullptr, key.data(), iv.data(), encrypt ? 1 : 0) != 1 ||
        EVP_CipherUpdate(ctx.get(), out.data(), &updated, data.data(), static_cast<int>(data.size())) != 1 ||
        EVP_CipherFinal_ex(ctx.get(), out.data() + updated, &finished) != 1) {
        throw std::runtime_error("rawCipher: OpenSSL");
    }
    out.resize(static_cast<std::size_t>(updated) + static_cast<std::size_t>(finished));
    return out;
}

}  // namespace vorl::test

#endif
