#ifndef VORL_CORE_LENGTH_DETERMINANT_H
#define VORL_CORE_LENGTH_DETERMINANT_H

#include "vorl/Buffer.h"

#include <cstdint>

namespace vorl {

/// A run of units that stands behind one length determinant (ITU-T X.691, clause 11.9).
///
///   units            determinant              what follows
///   0 to 127         the number               nothing
///   128 to 16383     0x80 | high, low         nothing
///   k * 16384        0xC0 + k, k = 1 to 4     further fragments
struct Fragment {
    unsigned int units;
    bool last;
};

/// A determinant as it stands in a record.
struct LengthDeterminant {
    unsigned char octets[2];
    unsigned int size;
};

const unsigned int SHORT_FORM_LIMIT = 0x80;   // one byte
const unsigned int LONG_FORM_LIMIT = 0x4000;  // two bytes; also what a fragment holds a multiple of
const unsigned int MAX_FRAGMENT_MULTIPLE = 4;

/// The fragment with which content of `rest` more units goes on.
Fragment nextFragment(std::uint64_t rest);

LengthDeterminant determinantOf(const Fragment& fragment);

/// Throws the ASN1Exception for a byte that begins no determinant.
[[noreturn]] void refuseDeterminant(unsigned char head);

/// Throws the ASN1Exception for content that ends before its announced length.
[[noreturn]] void refuseShortContent(std::uint64_t announced, std::uint64_t available);

/// Reads a determinant at the read index of `in`. Throws ASN1Exception for an unknown or a truncated one.
/// A longer form than the number of units needs is accepted.
inline Fragment readFragment(Buffer& in) {
    const unsigned char head = in.get();
    if (head < SHORT_FORM_LIMIT) {
        return {head, true};
    }
    if ((head & 0xc0) == 0x80) {
        return {(head & 0x3fU) << 8 | in.get(), true};
    }
    const unsigned int multiple = head & 0x3fU;
    if (multiple == 0 || multiple > MAX_FRAGMENT_MULTIPLE) {
        refuseDeterminant(head);
    }
    return {multiple * LONG_FORM_LIMIT, false};
}

/// The bytes that a block of `octets` octets takes with all of its determinants.
std::uint64_t encodedBlockSize(std::uint64_t octets);

}  // namespace vorl

#endif
