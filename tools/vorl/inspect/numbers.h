#ifndef VORL_TOOL_INSPECT_NUMBERS_H
#define VORL_TOOL_INSPECT_NUMBERS_H

#include <cstdint>
#include <string>

namespace vorl::tool {

/// "1 byte", "2 bytes".
inline std::string bytesText(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

/// "1 more byte follows", "2 more bytes follow".
inline std::string moreText(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " more byte follows" : " more bytes follow");
}

}  // namespace vorl::tool

#endif
