#include "envelope.h"

#include "core/index32.h"
#include "core/length_determinant.h"

#include <algorithm>

namespace vorl {

namespace {

const std::uint64_t LARGEST_SIZE = 0xffffffff;
const char TOO_LONG[] = "CipherWrapper: an envelope would pass 2^32-1 bytes";

}  // namespace

bytes beginEnvelope(unsigned char version, const bytes& iv, std::uint64_t bodyOctets) {
    const std::uint64_t size = 1 + encodedBlockSize(iv.size()) + encodedBlockSize(bodyOctets);
    bytes envelope;
    envelope.reserve(static_cast<std::size_t>(std::min(size, LARGEST_SIZE)));
    envelope.assign(1, version);
    BodyWriter(envelope, iv.size()).append(iv);
    return envelope;
}

BodyWriter::BodyWriter(bytes& envelope, std::uint64_t octets) : envelope_(envelope), rest_(octets) {
    index32(envelope.size() + encodedBlockSize(octets), TOO_LONG);
}

std::size_t BodyWriter::nextRun(std::size_t most) {
    if (fragmentRest_ == 0) {
        const Fragment fragment = nextFragment(rest_);
        const LengthDeterminant determinant = determinantOf(fragment);
        envelope_.push_back(determinant.octets[0]);
        if (determinant.size == 2) {
            envelope_.push_back(determinant.octets[1]);
        }
        fragmentRest_ = fragment.units;
    }
    const std::size_t run = std::min(fragmentRest_, most);
    fragmentRest_ -= run;
    rest_ -= run;
    return run;
}

void BodyWriter::append(const bytes& octets) {
    for (std::size_t done = 0; done < octets.size();) {
        const std::size_t run = nextRun(octets.size() - done);
        const auto from = octets.begin() + static_cast<std::ptrdiff_t>(done);
        envelope_.insert(envelope_.end(), from, from + static_cast<std::ptrdiff_t>(run));
        done += run;
    }
}

}  // namespace vorl
