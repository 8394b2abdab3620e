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

/// Whether the input is printable ASCII and white space, as no record is.
bool isPrintableText(const bytes& input);

/// Whether the input is of Base64's alphabet and white space, but for one byte in 16 at most: a text that was
/// damaged on its way still is one.
bool isNearlyBase64(const bytes& input);

/// Whether the input looks as if it was meant to be Base64: plain text, and nearly Base64.
bool resemblesBase64(const bytes& input);

}  // namespace vorl::tool

#endif
