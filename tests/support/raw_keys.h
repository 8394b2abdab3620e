#ifndef VORL_TESTS_RAW_KEYS_H
#define VORL_TESTS_RAW_KEYS_H

#include "octets.h"

#include <openssl/bio.h>
#include <openssl/dsa.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/obj_mac.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

namespace vorl::test {

// Keys by plain calls of OpenSSL. Making one costs time, so that each of those with a name is made once in a
// program. All throw std::runtime_error where OpenSSL fails.

using RawKey = std::shared_ptr<EVP_PKEY>;

namespace raw_keys {

inline void require(bool succeeded, const char* call) {
    if (!succeeded) {
        throw std::runtime_error(std::string("OpenSSL: ") + call);
    }
}

inline RawKey owned(EVP_PKEY* key, const char* call) {
    require(key != nullptr, call);
    return RawKey(key, EVP_PKEY_free);
}

/// What `generate` makes with a context that `configure` has prepared.
template <typename Configure>
RawKey make(EVP_PKEY_CTX* newContext, int (*init)(EVP_PKEY_CTX*), int (*generate)(EVP_PKEY_CTX*, EVP_PKEY**),
            Configure&& configure) {
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(newContext, EVP_PKEY_CTX_free);
    EVP_PKEY* key = nullptr;
    require(
        context && init(context.get()) == 1 && configure(context.get()) && generate(context.get(), &key) == 1,
        "key generation");
    return owned(key, "key generation");
}

inline RawKey makeRsa(int type, int bits) {
    return make(
        EVP_PKEY_CTX_new_id(type, nullptr), EVP_PKEY_keygen_init, EVP_PKEY_keygen,
        [bits](EVP_PKEY_CTX* context) { return EVP_PKEY_CTX_set_rsa_keygen_bits(context, bits) == 1; });
}

inline RawKey makeDsa() {
    const RawKey parameters = make(EVP_PKEY_CTX_new_id(EVP_PKEY_DSA, nullptr), EVP_PKEY_paramgen_init,
                                   EVP_PKEY_paramgen, [](EVP_PKEY_CTX* context) {
                                       return EVP_PKEY_CTX_set_dsa_paramgen_bits(context, 1024) == 1 &&
                                              EVP_PKEY_CTX_set_dsa_paramgen_q_bits(context, 160) == 1;
                                   });
    return make(EVP_PKEY_CTX_new(parameters.get(), nullptr), EVP_PKEY_keygen_init, EVP_PKEY_keygen,
                [](EVP_PKEY_CTX*) { return true; });
}

inline RawKey makeEc() {
    return make(EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr), EVP_PKEY_keygen_init, EVP_PKEY_keygen,
                [](EVP_PKEY_CTX* context) {
                    return EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context, NID_X9_62_prime256v1) == 1;
                });
}

inline RawKey makeEd25519() {
    return make(EVP_PKEY_CTX_new_id(EVP_PKEY_ED25519, nullptr), EVP_PKEY_keygen_init, EVP_PKEY_keygen,
                [](EVP_PKEY_CTX*) { return true; });
}

}  // namespace raw_keys

inline const RawKey& rsa1024() {
    static const RawKey key = raw_keys::makeRsa(EVP_PKEY_RSA, 1024);
    return key;
}

/// Another one of the same size.
inline const RawKey& otherRsa1024() {
    static const RawKey key = raw_keys::makeRsa(EVP_PKEY_RSA, 1024);
    return key;
}

inline const RawKey& rsa2048() {
    static const RawKey key = raw_keys::makeRsa(EVP_PKEY_RSA, 2048);
    return key;
}

/// Too short for a signature over a SHA-512 digest.
inline const RawKey& rsa512() {
    static const RawKey key = raw_keys::makeRsa(EVP_PKEY_RSA, 512);
    return key;
}

inline const RawKey& rsaPss() {
    static const RawKey key = raw_keys::makeRsa(EVP_PKEY_RSA_PSS, 1024);
    return key;
}

inline const RawKey& dsa() {
    static const RawKey key = raw_keys::makeDsa();
    return key;
}

inline const RawKey& ec() {
    static const RawKey key = raw_keys::makeEc();
    return key;
}

inline const RawKey& ed25519() {
    static const RawKey key = raw_keys::makeEd25519();
    return key;
}

/// The RSA key inside, which the EVP_PKEY goes on holding.
inline std::shared_ptr<RSA> rawRsa(const RawKey& key) {
    RSA* const rsa = EVP_PKEY_get1_RSA(key.get());
    raw_keys::require(rsa != nullptr, "EVP_PKEY_get1_RSA");
    return std::shared_ptr<RSA>(rsa, RSA_free);
}

/// An EVP_PKEY around an RSA key that others hold too.
inline RawKey around(const std::shared_ptr<RSA>& rsa) {
    const RawKey key = raw_keys::owned(EVP_PKEY_new(), "EVP_PKEY_new");
    raw_keys::require(EVP_PKEY_set1_RSA(key.get(), rsa.get()) == 1, "EVP_PKEY_set1_RSA");
    return key;
}

/// An RSA key of the same numbers that has nothing in common with the given one.
inline RawKey separateCopy(const RawKey& key) {
    const std::shared_ptr<RSA> copy(RSAPrivateKey_dup(rawRsa(key).get()), RSA_free);
    raw_keys::require(copy != nullptr, "RSAPrivateKey_dup");
    return around(copy);
}

/// A key without the private half of the given one.
inline RawKey publicHalf(const RawKey& key) {
    unsigned char* der = nullptr;
    const int size = i2d_PUBKEY(key.get(), &der);
    raw_keys::require(size > 0, "i2d_PUBKEY");
    const unsigned char* at = der;
    EVP_PKEY* const half = d2i_PUBKEY(nullptr, &at, size);
    OPENSSL_free(der);
    return raw_keys::owned(half, "d2i_PUBKEY");
}

/// What `write` puts into a memory BIO.
template <typename Write>
std::string rawText(Write&& write) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), BIO_free);
    raw_keys::require(bio && write(bio.get()) > 0, "writing a text");
    char* text = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &text);
    return std::string(text, static_cast<std::size_t>(size));
}

inline std::string publicPem(const RawKey& key) {
    return rawText([&](BIO* bio) { return PEM_write_bio_PUBKEY(bio, key.get()); });
}

/// PKCS #8: "PRIVATE KEY", or with a cipher "ENCRYPTED PRIVATE KEY".
inline std::string privatePem(const RawKey& key, const EVP_CIPHER* cipher = nullptr,
                              const std::string& password = "") {
    return rawText([&](BIO* bio) {
        return PEM_write_bio_PKCS8PrivateKey(bio, key.get(), cipher, password.c_str(),
                                             static_cast<int>(password.size()), nullptr, nullptr);
    });
}

/// The older form: "RSA PRIVATE KEY", with a cipher under a "Proc-Type" header.
inline std::string traditionalPem(const RawKey& key, const EVP_CIPHER* cipher = nullptr,
                                  const std::string& password = "") {
    bytes secret = fromText(password);
    return rawText([&](BIO* bio) {
        return PEM_write_bio_RSAPrivateKey(bio, rawRsa(key).get(), cipher,
                                           cipher != nullptr ? secret.data() : nullptr,
                                           static_cast<int>(secret.size()), nullptr, nullptr);
    });
}

}  // namespace vorl::test

#endif
