#ifndef VORL_TESTS_RAW_PEM_H
#define VORL_TESTS_RAW_PEM_H

#include "raw_certs.h"

#include <openssl/bio.h>
#include <openssl/pem.h>

#include <fstream>
#include <memory>
#include <string>

namespace vorl::test {

// PEM texts that are unlike what a writer makes by itself, and places to read them from.

using RawBio = std::shared_ptr<BIO>;

/// A BIO that holds a copy of the text.
inline RawBio bioWith(const std::string& text) {
    const RawBio bio(BIO_new(BIO_s_mem()), BIO_free);
    raw_keys::require(bio && BIO_write(bio.get(), text.data(), static_cast<int>(text.size())) ==
                                 static_cast<int>(text.size()),
                      "BIO_write");
    return bio;
}

inline std::string savedAs(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

inline const char* const PASSWORD = "secret";

inline int derOfPublicKey(const void* key, unsigned char** out) {
    return i2d_PUBKEY(static_cast<const EVP_PKEY*>(key), out);
}

inline int derOfCertificate(const void* cert, unsigned char** out) {
    return i2d_X509(static_cast<const X509*>(cert), out);
}

/// A block in PEM's own encryption, which a block of any kind may have.
inline std::string encryptedPem(i2d_of_void* der, const char* label, const void* object) {
    const bytes secret = fromText(PASSWORD);
    return rawText([&](BIO* bio) {
        return PEM_ASN1_write_bio(der, label, bio, object, EVP_aes_128_cbc(), secret.data(),
                                  static_cast<int>(secret.size()), nullptr, nullptr);
    });
}

}  // namespace vorl::test

#endif
