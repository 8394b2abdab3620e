#include "inspect/number_blocks.h"

#include "shared/SecretBuffer.h"
#include "vorl/ASN1Exception.h"

namespace vorl::tool {

namespace {

// A record that begins with a smaller prime would begin as an envelope does.
const std::size_t MIN_PRIME_BYTES = 8;

}  // namespace

std::size_t numberBlocksIn(const bytes& record) {
    SecretBuffer in(record);
    std::size_t count = 0;
    try {
        while (in.get().ridx() < in.get().widx()) {
            const SecretBytes number(in.get().nextOctetString().takeBytes());
            const bool isTooSmall = count == 0 && number.size() < MIN_PRIME_BYTES;
            if (number.size() == 0 || number.get().front() == 0 || isTooSmall) {
                return 0;
            }
            ++count;
        }
    } catch (const ASN1Exception&) {
        return 0;
    }
    return count;
}

}  // namespace vorl::tool
