#ifndef VORL_TESTS_RAW_BASE64_H
#define VORL_TESTS_RAW_BASE64_H

#include "octets.h"

#include <openssl/evp.h>

#include <stdexcept>

namespace vorl::test {

/// Base64 by plain calls of OpenSSL, for expected text that does not come from the library.
inline bytes rawBase64(const bytes& data) {
    bytes text((data.size() + 2) / 3 * 4 + 1);
    const int size = EVP_EncodeBlock(text.data(), data.data(), static_cast<int>(data.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

/// The other way, for text of which it is known that it was encoded. Throws std::runtime_error where OpenSSL
/// refuses it.
inline bytes rawUnbase64(const bytes& text) {
    bytes data(text.size() / 4 * 3);
    const int size = EVP_DecodeBlock(data.data(), text.data(), static_cast<int>(text.size()));
    if (size != static_cast<int>(data.size())) {
        throw std::runtime_error("rawUnbase64");
    }
    for (std::size_t at = text.size(); at > 0 && text[at - 1] == '='; --at) {
        data.pop_back();
    }
    return data;
}

}  // namespace vorl::test

#endif
