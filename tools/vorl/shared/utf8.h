#ifndef VORL_TOOL_SHARED_UTF8_H
#define VORL_TOOL_SHARED_UTF8_H

#include <cstddef>
#include <string_view>

namespace vorl::tool {

/// A character of a UTF-8 text: how many bytes it takes, and its code point.
struct Character {
    std::size_t size;
    unsigned long codePoint;
};

/// The first character of a text that is not empty. Its size is 0 where the text does not begin with UTF-8.
Character firstCharacter(std::string_view text);

/// Whether a character, or a byte that belongs to none, controls a terminal: C0, DEL and C1.
inline bool isControl(unsigned long codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7f && codePoint < 0xa0);
}

}  // namespace vorl::tool

#endif
