#ifndef VORL_TESTS_DER_ENCODER_H
#define VORL_TESTS_DER_ENCODER_H

#include "octets.h"

#include <cstddef>

namespace vorl::test {

// DER, written out independently of OpenSSL straight from ITU-T X.690.

inline bytes der(unsigned char tag, const bytes& content) {
    bytes encoded{tag};
    const std::size_t n = content.size();
    if (n >= 0x100) {
        encoded.insert(encoded.end(), {0x82, static_cast<unsigned char>(n >> 8)});
    } else if (n >= 0x80) {
        encoded.push_back(0x81);
    }
    encoded.push_back(static_cast<unsigned char>(n));
    return encoded + content;
}

/// `magnitude` is big-endian without leading zeros, and empty for 0.
inline bytes derInteger(const bytes& magnitude) {
    const bool looksNegative = magnitude.empty() || magnitude.front() >= 0x80;
    return der(0x02, (looksNegative ? bytes{0x00} : bytes()) + magnitude);
}

/// Of whole octets.
inline bytes derBitString(const bytes& octets) {
    return der(0x03, bytes{0x00} + octets);
}

inline bytes derSequence(const bytes& elements) {
    return der(0x30, elements);
}

}  // namespace vorl::test

#endif
