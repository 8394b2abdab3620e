#ifndef VORL_TESTS_RAW_OPENSSL_H
#define VORL_TESTS_RAW_OPENSSL_H

#include "vorl/bytes.h"

#include <openssl/evp.h>

#include <cstddef>
#include <memory>
#include <stdexcept>

namespace vorl::test {

/// AES-128 with PKCS #5 padding by plain calls of OpenSSL, for expected bytes that do not come from the
/// library. `iv` is empty for ECB, 16 octets for CBC.
inline bytes rawEncrypt(const bytes& key, const bytes& iv, const bytes& plain) {
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> ctx(EVP_CIPHER_CTX_new(),
                                                                              EVP_CIPHER_CTX_free);
    const EVP_CIPHER* cipher = iv.empty() ? EVP_aes_128_ecb() : EVP_aes_128_cbc();
    bytes out(plain.size() + 32);
    int updated = 0;
    int finished = 0;
    if (!ctx ||
        EVP_EncryptInit_ex(ctx.get(), cipher, nullptr, key.data(), iv.empty() ? nullptr : iv.data()) != 1 ||
        EVP_EncryptUpdate(ctx.get(), out.data(), &updated, plain.data(), static_cast<int>(plain.size())) !=
            1 ||
        EVP_EncryptFinal_ex(ctx.get(), out.data() + updated, &finished) != 1) {
        throw std::runtime_error("rawEncrypt");
    }
    out.resize(static_cast<std::size_t>(updated) + static_cast<std::size_t>(finished));
    return out;
}

}  // namespace vorl::test

#endif
