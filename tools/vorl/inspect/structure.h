#ifndef VORL_TOOL_INSPECT_STRUCTURE_H
#define VORL_TOOL_INSPECT_STRUCTURE_H

#include "vorl/bytes.h"

#include <optional>
#include <string>

namespace vorl::tool {

/// What the library says against the structure of an envelope, which it reads without a key: nothing where
/// the envelope is well-formed, else the text of its exception. The level of the envelope has to be allowed.
std::optional<std::string> structureFault(const bytes& envelope);

}  // namespace vorl::tool

#endif
