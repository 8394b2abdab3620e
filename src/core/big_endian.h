#ifndef VORL_CORE_BIG_ENDIAN_H
#define VORL_CORE_BIG_ENDIAN_H

#include "vorl/Buffer.h"
#include "vorl/VORLException.h"
#include "vorl/bytes.h"

#include <cstddef>
#include <string>

namespace vorl {

/// The bytes of `v`, the most significant first, whatever the host's order.
template <typename Unsigned>
bytes encodeBigEndian(Unsigned v) {
    bytes encoded(sizeof(Unsigned));
    for (std::size_t i = encoded.size(); i-- > 0; v = static_cast<Unsigned>(v >> 8)) {
        encoded[i] = static_cast<unsigned char>(v & 0xff);
    }
    return encoded;
}

/// Throws VORLException unless `v` is as long as the number.
template <typename Unsigned>
Unsigned decodeBigEndian(const bytes& v) {
    if (v.size() != sizeof(Unsigned)) {
        throw VORLException("Unable to decode input; input length (" + std::to_string(v.size()) +
                            ") out of range");
    }
    Unsigned number = 0;
    for (const unsigned char b : v) {
        number = static_cast<Unsigned>(number << 8 | b);
    }
    return number;
}

/// Reads a number of the field class `field` at the read index of `in`.
/// Throws VORLException where too few bytes are left, and reads none of them.
template <typename Unsigned>
Unsigned readBigEndian(Buffer& in, const char* field) {
    const unsigned int available = in.widx() - in.ridx();
    if (available < sizeof(Unsigned)) {
        throw VORLException("Buffer only contains " + std::to_string(available) +
                            " bytes; unable to decode " + field);
    }
    bytes encoded(sizeof(Unsigned));
    if (in.get(encoded.data(), sizeof(Unsigned)) != sizeof(Unsigned)) {
        throw VORLException("Unable to read " + std::to_string(sizeof(Unsigned)) + " bytes; failed " + field +
                            " decode");
    }
    return decodeBigEndian<Unsigned>(encoded);
}

}  // namespace vorl

#endif
