#ifndef VORL_TESTS_SIGNATURE_RECORD_H
#define VORL_TESTS_SIGNATURE_RECORD_H

#include "block_encoder.h"

namespace vorl::test {

/// A signature record of version 1, written out independently of the library: the value's block ends with a
/// determinant of less than a fragment, so that an empty value, and one of whole fragments, get a closing 00.
inline bytes signatureRecord(const bytes& val) {
    return bytes{0x01} + block(val) + (val.size() % 16384 == 0 ? bytes{0x00} : bytes());
}

}  // namespace vorl::test

#endif
