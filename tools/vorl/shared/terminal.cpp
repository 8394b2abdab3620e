#include "shared/terminal.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

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

bool isShown(unsigned long codePoint) {
    if (codePoint < 0x20) {
        return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    }
    const bool isControl = codePoint >= 0x7f && codePoint < 0xa0;
    const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
    return !isControl && !isSurrogate && codePoint < 0x110000;
}

bool isColourful() {
    const char* const refused = secure_getenv("NO_COLOR");
    const char* const terminal = secure_getenv("TERM");
    const bool isRefused = refused != nullptr && *refused != '\0';
    const bool isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    return !isRefused && !isDumb && isTerminal(STDOUT_FILENO);
}

}  // namespace

bool isTerminal(int fd) {
    return isatty(fd) == 1;
}

bool isPlainText(const bytes& data) {
    for (std::size_t at = 0; at < data.size();) {
        const unsigned char head = data[at++];
        // A continuation without a head, and heads of sequences that UTF-8 does not have.
        if ((head >= 0x80 && head < 0xc0) || head >= 0xf8) {
            return false;
        }
        const Sequence sequence = sequenceOf(head);
        unsigned long codePoint = sequence.following == 0 ? head : head & (0x3fU >> sequence.following);
        for (std::size_t i = 0; i < sequence.following; ++i, ++at) {
            if (at == data.size() || (data[at] & 0xc0) != 0x80) {
                return false;
            }
            codePoint = codePoint << 6 | (data[at] & 0x3fU);
        }
        if (codePoint < sequence.smallest || !isShown(codePoint)) {
            return false;
        }
    }
    return true;
}

Painter::Painter() : enabled_(isColourful()) {}

std::string Painter::operator()(Style style, const std::string& text) const {
    if (!enabled_) {
        return text;
    }
    const char* const code = style == Style::BOLD ? "1" : style == Style::GOOD ? "32" : "1;31";
    return "\033[" + std::string(code) + "m" + text + "\033[0m";
}

}  // namespace vorl::tool
