#ifndef VORL_CIPHER_ENVELOPE_H
#define VORL_CIPHER_ENVELOPE_H

#include "vorl/bytes.h"

#include <cstddef>
#include <cstdint>

namespace vorl {

// An envelope, field by field:
//
//   version   1 byte
//   IV        OctetString, absent where the cipher takes none
//   body      OctetString, the ciphertext; in the null envelope the message

/// The envelope up to its body, with room reserved for `bodyOctets` more octets and their determinants: a
/// hint, which the body need not keep to.
bytes beginEnvelope(unsigned char version, const bytes& iv, std::uint64_t bodyOctets);

/// Writes an OctetString of a known length behind an envelope, piece by piece.
class BodyWriter {
public:
    /// Throws std::length_error where the whole would pass 2^32 - 1 bytes.
    BodyWriter(bytes& envelope, std::uint64_t octets);

    /// Octets that are still to be written.
    std::uint64_t rest() const { return rest_; }

    /// Writes the next determinant where one is due. Returns how many of up to `most` further octets follow
    /// without another: the caller appends them.
    std::size_t nextRun(std::size_t most);

    void append(const bytes& octets);

private:
    bytes& envelope_;
    std::uint64_t rest_;
    std::size_t fragmentRest_ = 0;
};

}  // namespace vorl

#endif
