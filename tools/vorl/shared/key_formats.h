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

}  // namespace vorl::tool

#endif
