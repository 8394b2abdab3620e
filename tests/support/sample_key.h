#ifndef VORL_TESTS_SAMPLE_KEY_H
#define VORL_TESTS_SAMPLE_KEY_H

#include "octets.h"
#include "vorl/bytes.h"

namespace vorl::test {

/// The AES-128 key and the IV of NIST SP 800-38A, appendix F, for tests to which any would do.
inline const bytes KEY = fromHex("2b7e151628aed2a6abf7158809cf4f3c");
inline const bytes IV = fromHex("000102030405060708090a0b0c0d0e0f");

}  // namespace vorl::test

#endif
