#ifndef VORL_TESTS_RAW_DIGEST_H
#define VORL_TESTS_RAW_DIGEST_H

#include "octets.h"

#include <openssl/evp.h>

#include <cstddef>
#include <stdexcept>

namespace vorl::test {

/// A digest by one plain call of OpenSSL, for expected bytes that do not come from the library.
inline bytes rawDigest(const EVP_MD* md, const bytes& data) {
    bytes digest(EVP_MAX_MD_SIZE);
    unsigned int size = 0;
    if (EVP_Digest(data.data(), data.size(), digest.data(), &size, md, nullptr) != 1) {
        throw std::runtime_error("rawDigest");
    }
    digest.resize(size);
    return digest;
}

/// An HMAC as RFC 2104, section 2, makes it out of two digests.
inline bytes rawHmac(const EVP_MD* md, const bytes& key, const bytes& data) {
    const std::size_t blockBytes = static_cast<std::size_t>(EVP_MD_block_size(md));
    bytes padded = key.size() > blockBytes ? rawDigest(md, key) : key;
    padded.resize(blockBytes);
    bytes inner = padded;
    bytes outer = padded;
    for (std::size_t i = 0; i < blockBytes; ++i) {
        inner[i] = static_cast<unsigned char>(inner[i] ^ 0x36);
        outer[i] = static_cast<unsigned char>(outer[i] ^ 0x5c);
    }
    return rawDigest(md, outer + rawDigest(md, inner + data));
}

}  // namespace vorl::test

#endif
