#include <brisclient/Base64.h>

#include <array>
#include <cstddef>

// Base64 after RFC 4648, section 4. A text is right when encoding what it decodes to gives the text again.

namespace Tarvik::BrisClient {

namespace {

using Octets = std::vector<unsigned char>;

const unsigned char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const unsigned char FOREIGN = 0xff;

std::array<unsigned char, 256> valuesOfCharacters() {
    std::array<unsigned char, 256> values{};
    values.fill(FOREIGN);
    for (unsigned char value = 0; value < 64; ++value) {
        values[ALPHABET[value]] = value;
    }
    return values;
}

}  // namespace

Octets Base64::encode(const Octets& data) {
    Octets text;
    text.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < data.size(); at += 3) {
        unsigned int bits = static_cast<unsigned int>(data[at]) << 16;
        bits |= at + 1 < data.size() ? static_cast<unsigned int>(data[at + 1]) << 8 : 0;
        bits |= at + 2 < data.size() ? data[at + 2] : 0U;
        text.push_back(ALPHABET[bits >> 18]);
        text.push_back(ALPHABET[bits >> 12 & 63]);
        text.push_back(at + 1 < data.size() ? ALPHABET[bits >> 6 & 63] : '=');
        text.push_back(at + 2 < data.size() ? ALPHABET[bits & 63] : '=');
    }
    return text;
}

Octets Base64::decode(const Octets& text) {
    static const std::array<unsigned char, 256> VALUES = valuesOfCharacters();
    if (text.size() % 4 != 0) {
        return {};
    }
    Octets data;
    data.reserve(text.size() / 4 * 3);
    unsigned int bits = 0;
    unsigned int count = 0;
    std::size_t at = 0;
    for (; at < text.size() && VALUES[text[at]] != FOREIGN; ++at) {
        bits = bits << 6 | VALUES[text[at]];
        count += 6;
        if (count >= 8) {
            count -= 8;
            data.push_back(static_cast<unsigned char>(bits >> count & 0xff));
        }
    }
    if (encode(data) != text) {
        return {};
    }
    // Not a copy, which would leave what may be a secret behind.
    return data;
}

}  // namespace Tarvik::BrisClient
