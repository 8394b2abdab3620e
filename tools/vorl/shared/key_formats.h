#ifndef VORL_TOOL_SHARED_KEY_FORMATS_H
#define VORL_TOOL_SHARED_KEY_FORMATS_H

#include "shared/SecretBytes.h"

#include <string>

namespace vorl::tool {

/// The key of `neededBytes` that the content of a key file stands for: raw bytes, hex digits or Base64.
///
/// `format` names the form, or is empty to have it told by length and alphabet. `source` is what messages
/// call the file. Throws ToolError: USAGE where two forms are possible and `format` is empty, BAD_INPUT where
/// the content is not of that form or the key has another size.
SecretBytes keyFrom(const SecretBytes& content, const std::string& format, std::size_t neededBytes,
                    const std::string& source);

/// The same for a key that may have any size but none. The size does not help to tell the forms apart, so
/// that only what could be raw bytes alone needs no `format`.
SecretBytes keyOfAnySizeFrom(const SecretBytes& content, const std::string& format,
                             const std::string& source);

/// Whether bytes that are meant to be random are a text instead, such as the hex or the Base64 of them.
bool isTextOfKey(const SecretBytes& content);

}  // namespace vorl::tool

#endif
