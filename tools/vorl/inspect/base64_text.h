#ifndef VORL_TOOL_INSPECT_BASE64_TEXT_H
#define VORL_TOOL_INSPECT_BASE64_TEXT_H

#include "inspect/Report.h"

#include <cstddef>

namespace vorl::tool {

/// The size of a text without the one newline, LF or CRLF, that may end it.
std::size_t sizeWithoutNewline(const bytes& text);

/// What a Base64 text stands for.
struct DecodedText {
    bytes data;
    /// What is wrong with the text, at which character. `data` is empty then.
    std::optional<Problem> problem;
};

/// Decodes a text, behind which one newline is tolerated. Whether it is Base64 is the platform's codec's to
/// say; only the words for a refusal are found here.
DecodedText decodeBase64Text(const bytes& input);

/// Whether the input looks as if it was meant to be Base64: its alphabet and white space, nothing else.
bool resemblesBase64(const bytes& input);

}  // namespace vorl::tool

#endif
