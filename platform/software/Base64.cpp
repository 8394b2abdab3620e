#include "brisclient/Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace Tarvik::BrisClient {

namespace {

using Octets = std::vector<unsigned char>;

// Work goes in pieces that stay in the first-level cache between the pass that provides storage and the
// codec.
const std::size_t PIECE_GROUPS = 1024;
const std::size_t GROUP_OCTETS = 3;
const std::size_t GROUP_CHARACTERS = 4;

// How many '=' the text ends with: 0 to 2.
std::size_t paddingOf(const Octets& text) {
    if (text.back() != '=') {
        return 0;
    }
    return text[text.size() - 2] == '=' ? 2 : 1;
}

// Appends the octets of whole groups of characters, of which the last `padding` are '='. False where OpenSSL
// refuses one, and where it would accept what is not Base64: '=' for a zero anywhere in the text, and white
// space at either end, which it passes over but which shows in its count.
bool appendDecoded(Octets& out, const unsigned char* text, std::size_t groups, std::size_t padding) {
    const std::size_t characters = groups * GROUP_CHARACTERS;
    const std::size_t at = out.size();
    out.resize(at + groups * GROUP_OCTETS);
    const int written = EVP_DecodeBlock(out.data() + at, text, static_cast<int>(characters));
    // The text is in the cache now; searching it first would wait for memory.
    return written == static_cast<int>(groups * GROUP_OCTETS) &&
           std::memchr(text, '=', characters - padding) == nullptr;
}

}  // namespace

Octets Base64::encode(const Octets& data) {
    const std::size_t groups = data.size() / GROUP_OCTETS + (data.size() % GROUP_OCTETS != 0 ? 1 : 0);
    Octets text;
    // One more for the NUL that OpenSSL puts behind each piece.
    if (groups > (text.max_size() - 1) / GROUP_CHARACTERS) {
        throw std::length_error("Base64: the text would be larger than memory");
    }
    text.reserve(groups * GROUP_CHARACTERS + 1);
    for (std::size_t done = 0; done < data.size();) {
        const std::size_t octets = std::min(data.size() - done, PIECE_GROUPS * GROUP_OCTETS);
        const std::size_t at = text.size();
        text.resize(at + (octets + GROUP_OCTETS - 1) / GROUP_OCTETS * GROUP_CHARACTERS + 1);
        EVP_EncodeBlock(text.data() + at, data.data() + done, static_cast<int>(octets));
        text.pop_back();
        done += octets;
    }
    return text;
}

Octets Base64::decode(const Octets& text) {
    if (text.empty() || text.size() % GROUP_CHARACTERS != 0) {
        return Octets();
    }
    const std::size_t padding = paddingOf(text);
    const std::size_t groups = text.size() / GROUP_CHARACTERS;
    Octets data;
    data.reserve(groups * GROUP_OCTETS);
    for (std::size_t done = 0; done < groups;) {
        const std::size_t piece = std::min(groups - done, PIECE_GROUPS);
        const bool isLast = done + piece == groups;
        if (!appendDecoded(data, text.data() + done * GROUP_CHARACTERS, piece, isLast ? padding : 0)) {
            return Octets();
        }
        done += piece;
    }

    // The padding decodes to zero octets, and so do the bits under it in a text that was really encoded.
    for (std::size_t i = 0; i < padding; ++i) {
        if (data.back() != 0) {
            return Octets();
        }
        data.pop_back();
    }
    return data;
}

}  // namespace Tarvik::BrisClient
