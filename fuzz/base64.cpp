// Base64::decode() on any text: never an exception, and never a result that another text would have as well.

#include "require.h"

#include <brisclient/Base64.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Tarvik::BrisClient::Base64;
using vorl::fuzz::require;

namespace {

// RFC 4648, section 4, bit by bit: whether encode() could have produced the text.
bool isCanonical(const std::vector<unsigned char>& text) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (text.size() % 4 != 0) {
        return false;
    }
    std::size_t characters = text.size();
    while (characters > 0 && text.size() - characters < 2 && text[characters - 1] == '=') {
        --characters;
    }
    std::size_t lastValue = 0;
    for (std::size_t i = 0; i < characters; ++i) {
        lastValue = alphabet.find(static_cast<char>(text[i]));
        if (lastValue == std::string::npos) {
            return false;
        }
    }
    const std::size_t unusedBits = (text.size() - characters) * 2;
    return (lastValue & ((1U << unusedBits) - 1)) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<unsigned char> text(data, data + size);

    const auto decoded = Base64::decode(text);
    require(decoded.empty() == (text.empty() || !isCanonical(text)), "exactly the canonical texts decode");
    require(decoded.empty() || Base64::encode(decoded) == text, "what was decoded encodes to the same text");
    require(Base64::decode(Base64::encode(text)) == text, "what was encoded decodes to the same octets");
    return 0;
}
