#ifndef VORL_TOOL_INSPECT_STRUCTURE_H
#define VORL_TOOL_INSPECT_STRUCTURE_H

#include "vorl/bytes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vorl {
class CipherSpec;
}

namespace vorl::tool {

/// What the library says against the structure of an envelope, which it reads without a key: nothing where
/// the envelope is well-formed, else the text of its exception. The level of the envelope has to be allowed.
std::optional<std::string> structureFault(const bytes& envelope);

/// Why no key can open a body of that size, although the structure around it holds; nothing where one may.
std::optional<std::string> blockFault(std::uint64_t bodyBytes, const CipherSpec& spec);

/// Whatever of the two keeps an envelope of that spec from being opened with any key.
std::optional<std::string> openingFault(const bytes& envelope, const CipherSpec& spec);

}  // namespace vorl::tool

#endif
