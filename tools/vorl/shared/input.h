#ifndef VORL_TOOL_SHARED_INPUT_H
#define VORL_TOOL_SHARED_INPUT_H

#include "vorl/bytes.h"

#include <functional>
#include <string>
#include <vector>

namespace vorl::tool {

/// How a path is written that means standard input or output.
inline const char STANDARD_STREAM[] = "-";

/// How messages name an input: "'path'" or "standard input".
std::string inputName(const std::string& path);

/// All of a file, or of standard input. Throws ToolError where it cannot be read or is too large.
bytes readInput(const std::string& path);

/// The same for what is small by nature, such as a certificate: more than 1 MiB is refused.
bytes readSmallInput(const std::string& path);

/// Hands a file, or standard input, to `take` piece by piece, so that it may have any size. Throws ToolError
/// where it cannot be read, and whatever `take` throws.
void readInPieces(const std::string& path, const std::function<void(const bytes&)>& take);

/// An input of a command, and what it is to it, for example "signature".
struct NamedInput {
    std::string role;
    std::string path;
};

/// Throws ToolError where two of the inputs are one stream, of which each would take its part. Two of them
/// may be one file.
void refuseSharedStreams(const std::vector<NamedInput>& inputs);

}  // namespace vorl::tool

#endif
