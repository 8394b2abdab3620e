#ifndef VORL_TOOL_SHARED_INPUT_H
#define VORL_TOOL_SHARED_INPUT_H

#include "vorl/bytes.h"

#include <string>

namespace vorl::tool {

/// How a path is written that means standard input or output.
inline const char STANDARD_STREAM[] = "-";

/// How messages name an input: "'path'" or "standard input".
std::string inputName(const std::string& path);

/// All of a file, or of standard input. Throws ToolError where it cannot be read or is too large.
bytes readInput(const std::string& path);

}  // namespace vorl::tool

#endif
