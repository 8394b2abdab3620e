#ifndef VORL_TESTS_BLOCK_ENCODER_H
#define VORL_TESTS_BLOCK_ENCODER_H

#include "octets.h"

#include <algorithm>

namespace vorl::test {

/// A length-prefixed block, written out independently of the library straight from the format: the
/// determinant of ITU-T X.691, clause 11.9, with nothing for an empty block and nothing to close a multiple
/// of 16384.
inline bytes block(const bytes& content) {
    const std::size_t K16 = 16384;
    bytes encoded;
    std::size_t at = 0;
    while (at < content.size()) {
        const std::size_t rest = content.size() - at;
        std::size_t take = rest;
        if (rest >= K16) {
            const std::size_t k = std::min<std::size_t>(rest / K16, 4);
            encoded.push_back(static_cast<unsigned char>(0xc0 + k));
            take = k * K16;
        } else if (rest >= 128) {
            encoded.push_back(static_cast<unsigned char>(0x80 + rest / 256));
            encoded.push_back(static_cast<unsigned char>(rest % 256));
        } else {
            encoded.push_back(static_cast<unsigned char>(rest));
        }
        encoded = encoded + slice(content, at, take);
        at += take;
    }
    return encoded;
}

}  // namespace vorl::test

#endif
