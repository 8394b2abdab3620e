#include "length_determinant.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Util.h"

#include <algorithm>

namespace vorl {

Fragment nextFragment(std::uint64_t rest) {
    if (rest < LONG_FORM_LIMIT) {
        return {static_cast<unsigned int>(rest), true};
    }
    const auto multiple = std::min<std::uint64_t>(rest / LONG_FORM_LIMIT, MAX_FRAGMENT_MULTIPLE);
    return {static_cast<unsigned int>(multiple) * LONG_FORM_LIMIT, false};
}

LengthDeterminant determinantOf(const Fragment& fragment) {
    if (!fragment.last) {
        return {{static_cast<unsigned char>(0xc0 | fragment.units / LONG_FORM_LIMIT), 0}, 1};
    }
    if (fragment.units < SHORT_FORM_LIMIT) {
        return {{static_cast<unsigned char>(fragment.units), 0}, 1};
    }
    return {{static_cast<unsigned char>(0x80 | fragment.units >> 8),
             static_cast<unsigned char>(fragment.units & 0xff)},
            2};
}

void refuseDeterminant(unsigned char head) {
    throw ASN1Exception("Unknown ASN.1 length value: b" + Util::toBinaryString(head));
}

void refuseShortContent(std::uint64_t announced, std::uint64_t available) {
    throw ASN1Exception("Unable to read " + std::to_string(announced) + " bytes from buffer, only " +
                        std::to_string(available) + " available");
}

std::uint64_t encodedBlockSize(std::uint64_t octets) {
    const std::uint64_t fullFragment = std::uint64_t{MAX_FRAGMENT_MULTIPLE} * LONG_FORM_LIMIT;
    const std::uint64_t full = octets / fullFragment;
    std::uint64_t size = full * (fullFragment + 1);
    // What is left needs two fragments at the most: a multiple of 16384 octets and a last one.
    for (std::uint64_t rest = octets % fullFragment; rest > 0;) {
        const Fragment fragment = nextFragment(rest);
        size += determinantOf(fragment).size + fragment.units;
        rest -= fragment.units;
    }
    return size;
}

}  // namespace vorl
