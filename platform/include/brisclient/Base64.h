#ifndef BRISCLIENT_BASE64_H
#define BRISCLIENT_BASE64_H

#include "tarvik/export.h"

#include <vector>

namespace Tarvik::BrisClient {

/// Base64 after RFC 4648, section 4: the standard alphabet, with padding, without line breaks.
/// The text is held as a vector of ASCII characters.
class TARVIK_API Base64 {
public:
    Base64() = delete;

    static std::vector<unsigned char> encode(const std::vector<unsigned char>& data);

    /// Strict: empty for a text that encode() does not produce (a length that is no multiple of 4, a foreign
    /// character, white space, misplaced padding, bits under the padding). Never throws for bad text.
    static std::vector<unsigned char> decode(const std::vector<unsigned char>& text);
};

}  // namespace Tarvik::BrisClient

#endif
