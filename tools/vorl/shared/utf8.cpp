#include "shared/utf8.h"

namespace vorl::tool {

namespace {

// UTF-8, by its first byte: how many bytes follow, and the smallest code point that needs them.
struct Sequence {
    std::size_t following;
    unsigned long smallest;
};

Sequence sequenceOf(unsigned char head) {
    if (head < 0x80) {
        return {0, 0};
    }
    if (head < 0xe0) {
        return {1, 0x80};
    }
    return head < 0xf0 ? Sequence{2, 0x800} : Sequence{3, 0x10000};
}

const Character NONE = {0, 0};

}  // namespace

Character firstCharacter(std::string_view text) {
    const auto head = static_cast<unsigned char>(text.front());
    // A continuation without a head, and heads of sequences that UTF-8 does not have.
    if ((head >= 0x80 && head < 0xc0) || head >= 0xf8) {
        return NONE;
    }
    const Sequence sequence = sequenceOf(head);
    unsigned long codePoint = sequence.following == 0 ? head : head & (0x3fU >> sequence.following);
    for (std::size_t i = 1; i <= sequence.following; ++i) {
        const auto next = static_cast<unsigned char>(i < text.size() ? text[i] : 0);
        if ((next & 0xc0U) != 0x80) {
            return NONE;
        }
        codePoint = codePoint << 6 | (next & 0x3fU);
    }
    const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
    if (codePoint < sequence.smallest || isSurrogate || codePoint >= 0x110000) {
        return NONE;
    }
    return {sequence.following + 1, codePoint};
}

}  // namespace vorl::tool
