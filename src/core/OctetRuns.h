#ifndef VORL_CORE_OCTETRUNS_H
#define VORL_CORE_OCTETRUNS_H

#include "vorl/bytes.h"

#include <cstddef>
#include <vector>

namespace vorl {

class Buffer;

/// Octets of a block that lie together in the buffer's store: those of one fragment.
struct OctetRun {
    unsigned int offset;
    unsigned int octets;
};

/// The octets of an encoded OctetString where they lie in their buffer, found without copying them.
class OctetRuns {
public:
    /// No octets, of no block.
    OctetRuns() = default;

    /// Reads the block at the read index of `in`, as Buffer::nextOctetString() does and with its exceptions.
    explicit OctetRuns(Buffer& in);

    std::size_t octets() const { return octets_; }

    /// Calls `visit` with each run, in order.
    template <typename Visit>
    void forEach(Visit visit) const {
        visit(first_);
        for (const OctetRun& run : further_) {
            visit(run);
        }
    }

    /// Copies all octets from the buffer that they were found in.
    void copyFrom(const Buffer& in, unsigned char* dst) const;

    /// The octets of all runs, moved together in the storage that holds them.
    bytes joinIn(bytes store) const;

private:
    // Most blocks are a single fragment, which then costs no allocation.
    OctetRun first_{0, 0};
    std::vector<OctetRun> further_;
    std::size_t octets_ = 0;
};

}  // namespace vorl

#endif
