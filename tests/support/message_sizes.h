#ifndef VORL_TESTS_MESSAGE_SIZES_H
#define VORL_TESTS_MESSAGE_SIZES_H

#include "block_encoder.h"
#include "octets.h"
#include "raw_openssl.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace vorl::test {

/// A level of protection, by its version byte.
enum Level : unsigned char { NONE = 0, TEST = 1, FULL = 2 };

#ifdef VORL_EMULATED
/// For an emulator, enough to have fragments of each size and several of the largest.
inline const std::size_t LARGEST_MESSAGE = 131075;
#else
inline const std::size_t LARGEST_MESSAGE = std::size_t{4} << 20;
#endif

/// The message sizes at which something changes: blocks of the cipher, forms of the length determinant,
/// numbers and kinds of fragments, and the library's own pieces of work.
inline std::vector<std::size_t> messageSizes() {
    struct Range {
        std::size_t first;
        std::size_t last;
    };
    const std::size_t MIB = std::size_t{1} << 20;
    const Range ranges[] = {
        {0, 40},           {100, 130},         {3040, 3090},         {4060, 4130},
        {8170, 8210},      {16351, 16401},     {24560, 24590},       {32750, 32770},
        {49130, 49155},    {65519, 65537},     {81900, 81925},       {131055, 131075},
        {MIB - 17, MIB},   {MIB + 1, MIB + 1}, {MIB + 16, MIB + 16}, {3 * MIB + 5, 3 * MIB + 5},
        {4 * MIB, 4 * MIB}};
    std::vector<std::size_t> sizes;
    for (const Range& range : ranges) {
        for (std::size_t size = range.first; size <= std::min(range.last, LARGEST_MESSAGE); ++size) {
            sizes.push_back(size);
        }
    }
    return sizes;
}

/// Whether the format yields a message of this size back. It does not close a body of a multiple of 16384
/// octets, and padding makes the body of a protected message 1 to 16 octets longer.
inline bool canBeReadBack(Level level, std::size_t size) {
    return level == NONE ? size % 16384 != 0 : size % 16384 < 16368;
}

/// The envelope of a message, by the format and plain calls of OpenSSL. `iv` matters at the full level only.
inline bytes expectedEnvelope(Level level, const bytes& key, const bytes& iv, const bytes& message) {
    switch (level) {
        case NONE:
            return bytes{0x00} + block(message);
        case TEST:
            return bytes{0x01} + block(rawEncrypt(key, {}, message));
        default:
            return bytes{0x02} + block(iv) + block(rawEncrypt(key, iv, message));
    }
}

/// The IV of a full envelope.
inline bytes ivOf(const bytes& envelope) {
    return slice(envelope, 2, 16);
}

/// What reading such an envelope fails with: the next fragment is looked for behind its end.
inline std::string endsTooEarly(std::size_t envelopeSize) {
    const std::string size = std::to_string(envelopeSize);
    return "index out of bounds: read index(" + size + ") >= write index(" + size + ")";
}

}  // namespace vorl::test

#endif
