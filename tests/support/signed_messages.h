#ifndef VORL_TESTS_SIGNED_MESSAGES_H
#define VORL_TESTS_SIGNED_MESSAGES_H

#include "vorl/bytes.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/IHttpStream.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vorl::test {

inline bytes octetsOf(const std::string& text) {
    return bytes(text.begin(), text.end());
}

/// The value of the first field of that name, spelled so. Nothing where there is none.
inline std::optional<std::string> fieldOf(const tarvik::http::IHttpStream::Fields& fields,
                                          const std::string& name) {
    for (const auto& [own, value] : fields) {
        if (own == name) {
            return value;
        }
    }
    return std::nullopt;
}

/// A profile that signs at a fixed time, as published signatures were made.
inline tarvik::crypto::HttpSignatureProfile profileAt(std::int64_t created) {
    tarvik::crypto::HttpSignatureProfile profile;
    profile.clock = [created] { return created; };
    return profile;
}

}  // namespace vorl::test

#endif
