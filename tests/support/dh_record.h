#ifndef VORL_TESTS_DH_RECORD_H
#define VORL_TESTS_DH_RECORD_H

#include "block_encoder.h"
#include "dh_group.h"
#include "octets.h"

#include <cstddef>

namespace vorl::test {

// What two parties exchange and compute, written out independently of the library straight from the format.

/// A public key as it is sent: version 2 and the key, before Base64.
inline bytes dhRecord(const bytes& key) {
    return bytes{0x00, 0x00, 0x00, 0x02} + block(key);
}

/// A key of so many bytes, with zeros in front.
inline bytes paddedTo(std::size_t size, const bytes& key) {
    return bytes(size - key.size()) + key;
}

/// The shared secret that a number makes: 128 bytes, the number at the front and without leading zeros, and 0
/// for the last byte, whatever the number has there.
inline bytes secretOf(const BIGNUM* number) {
    bytes secret = bytesOf(number);
    secret.resize(128);
    secret.back() = 0;
    return secret;
}

}  // namespace vorl::test

#endif
