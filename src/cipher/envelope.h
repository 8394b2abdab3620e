#ifndef VORL_CIPHER_ENVELOPE_H
#define VORL_CIPHER_ENVELOPE_H

#include "vorl/bytes.h"

#include <cstdint>

namespace vorl {

struct Fragment;

// An envelope, field by field:
//
//   version   1 byte
//   IV        OctetString, absent where the cipher takes none
//   body      OctetString, the ciphertext; in the null envelope the message

/// The envelope up to its body, with room reserved for exactly `bodyOctets` more octets and their
/// determinants. Throws std::length_error where the whole would pass 2^32 - 1 bytes.
bytes beginEnvelope(unsigned char version, const bytes& iv, std::uint64_t bodyOctets);

/// Appends the determinant with which a body of `rest` more octets goes on.
Fragment appendDeterminant(bytes& envelope, std::uint64_t rest);

/// Appends a whole body with its determinants.
void appendBody(bytes& envelope, const bytes& body);

}  // namespace vorl

#endif
