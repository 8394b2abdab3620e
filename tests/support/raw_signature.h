#ifndef VORL_TESTS_RAW_SIGNATURE_H
#define VORL_TESTS_RAW_SIGNATURE_H

#include "raw_digest.h"
#include "raw_keys.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <cstddef>
#include <memory>

namespace vorl::test {

// RSA signatures (RSASSA-PKCS1-v1_5) by plain calls of OpenSSL, in its two interfaces. Signing throws
// std::runtime_error where OpenSSL fails.

inline bytes rawRsaSign(const RawKey& key, const EVP_MD* md, const bytes& data) {
    const std::shared_ptr<RSA> rsa = rawRsa(key);
    const bytes digest = rawDigest(md, data);
    bytes val(static_cast<std::size_t>(RSA_size(rsa.get())));
    unsigned int size = 0;
    raw_keys::require(RSA_sign(EVP_MD_type(md), digest.data(), static_cast<unsigned int>(digest.size()),
                               val.data(), &size, rsa.get()) == 1,
                      "RSA_sign");
    val.resize(size);
    return val;
}

inline bool rawRsaVerify(const RawKey& key, const EVP_MD* md, const bytes& data, const bytes& val) {
    const bytes digest = rawDigest(md, data);
    return RSA_verify(EVP_MD_type(md), digest.data(), static_cast<unsigned int>(digest.size()), val.data(),
                      static_cast<unsigned int>(val.size()), rawRsa(key).get()) == 1;
}

inline std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> rawDigestContext() {
    return {EVP_MD_CTX_new(), EVP_MD_CTX_free};
}

inline bytes rawDigestSign(const RawKey& key, const EVP_MD* md, const bytes& data) {
    const auto context = rawDigestContext();
    std::size_t size = 0;
    raw_keys::require(context && EVP_DigestSignInit(context.get(), nullptr, md, nullptr, key.get()) == 1 &&
                          EVP_DigestSign(context.get(), nullptr, &size, data.data(), data.size()) == 1,
                      "EVP_DigestSign, size");
    bytes val(size);
    raw_keys::require(EVP_DigestSign(context.get(), val.data(), &size, data.data(), data.size()) == 1,
                      "EVP_DigestSign");
    val.resize(size);
    return val;
}

inline bool rawDigestVerify(const RawKey& key, const EVP_MD* md, const bytes& data, const bytes& val) {
    const auto context = rawDigestContext();
    raw_keys::require(context && EVP_DigestVerifyInit(context.get(), nullptr, md, nullptr, key.get()) == 1,
                      "EVP_DigestVerifyInit");
    return EVP_DigestVerify(context.get(), val.data(), val.size(), data.data(), data.size()) == 1;
}

}  // namespace vorl::test

#endif
