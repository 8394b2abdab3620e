// The fields of a record on any bytes: only the library's exceptions, nothing read past the end, and a block
// that was read is written again as a block that reads the same.

#include "require.h"

#include "vorl/Buffer.h"
#include "vorl/VORLException.h"

#include <cstddef>
#include <cstdint>

using vorl::Buffer;
using vorl::OctetString;
using vorl::fuzz::require;

namespace {

// An empty block has no encoding, and a multiple of 16384 octets is not closed.
bool canBeReadBack(std::size_t octets) {
    return octets % 16384 != 0;
}

void readBlocks(Buffer& in) {
    while (in.ridx() < in.widx()) {
        const unsigned int before = in.ridx();
        const OctetString block = in.nextOctetString();
        require(in.ridx() > before && in.ridx() <= in.widx(), "reading goes forward and stays inside");
        require(block.byteLength() < in.ridx() - before, "no more octets than bytes were read");
        if (canBeReadBack(block.byteLength())) {
            Buffer again;
            again.put(block);
            require(again.nextOctetString() == block && again.ridx() == again.widx(), "a block reads back");
        }
    }
}

void readFields(Buffer& in) {
    in.nextUInt8();
    in.nextUInt16();
    in.nextUInt32();
}

template <typename Read>
void letOurExceptionsThrough(Buffer in, Read read) {
    try {
        read(in);
    } catch (const vorl::VORLException&) {
        require(in.ridx() <= in.widx(), "a failure leaves the read index inside");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Buffer in(data, static_cast<unsigned int>(size));
    letOurExceptionsThrough(in, readBlocks);
    letOurExceptionsThrough(in, readFields);
    return 0;
}
