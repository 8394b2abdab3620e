#include "block_content.h"

#include "length_determinant.h"
#include "vorl/Buffer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vorl {

bytes readBlockContent(Buffer& in, unsigned int unitSize) {
    bytes content;
    Fragment fragment{};
    do {
        fragment = readFragment(in);
        // Not (unitSize * units) / 8, with which the encoder counts: the two agree for octets, the only unit
        // in use.
        const std::uint64_t count = std::uint64_t{8} * fragment.units / unitSize;
        const std::uint64_t available = in.widx() - in.ridx();
        const std::size_t before = content.size();
        // An announced length is believed only as far as there are bytes for it.
        content.resize(before + static_cast<std::size_t>(std::min(count, available)));
        const unsigned int received =
            in.get(content.data() + before, static_cast<unsigned int>(content.size() - before));
        if (received < count) {
            refuseShortContent(count, received);
        }
    } while (!fragment.last);
    return content;
}

}  // namespace vorl
