#include "envelope.h"

#include "core/index32.h"
#include "core/length_determinant.h"

#include <cstddef>

namespace vorl {

bytes beginEnvelope(unsigned char version, const bytes& iv, std::uint64_t bodyOctets) {
    const std::uint64_t size = 1 + encodedBlockSize(iv.size()) + encodedBlockSize(bodyOctets);
    bytes envelope;
    envelope.reserve(index32(size, "CipherWrapper: an envelope would pass 2^32-1 bytes"));
    envelope.push_back(version);
    appendBody(envelope, iv);
    return envelope;
}

Fragment appendDeterminant(bytes& envelope, std::uint64_t rest) {
    const Fragment fragment = nextFragment(rest);
    const LengthDeterminant determinant = determinantOf(fragment);
    envelope.insert(envelope.end(), determinant.octets, determinant.octets + determinant.size);
    return fragment;
}

void appendBody(bytes& envelope, const bytes& body) {
    for (std::size_t done = 0; done < body.size();) {
        const unsigned char* from = body.data() + done;
        const unsigned int octets = appendDeterminant(envelope, body.size() - done).units;
        envelope.insert(envelope.end(), from, from + octets);
        done += octets;
    }
}

}  // namespace vorl
