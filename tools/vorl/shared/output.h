#ifndef VORL_TOOL_SHARED_OUTPUT_H
#define VORL_TOOL_SHARED_OUTPUT_H

#include "vorl/bytes.h"

#include <optional>
#include <string>

namespace vorl::tool {

/// Who may read a file that the tool writes.
enum class Readers {
    /// Whom the umask lets.
    ANYBODY,
    /// For whatever holds a message that can be read.
    OWNER,
};

/// Writes a result to the file `path`, or to standard output where there is none or it is "-".
///
/// A file appears whole or not at all, and what it replaces stays until then. It is open to nobody to whom
/// that was closed, and what the user may not write is not replaced. A link is followed, if it leads
/// somewhere. Standard output under another name, and what is not a file, such as a device or a pipe, is
/// written to as it is. Throws ToolError.
void writeOutput(const std::optional<std::string>& path, const bytes& data, Readers readers);

/// What one of two files is to hold.
struct FileContent {
    const std::string& path;
    const bytes& data;
};

/// Writes two results that belong together to their files, as writeOutput() does: both, or neither where one
/// of them cannot be written. Throws ToolError.
void writeBothFiles(const FileContent& first, const FileContent& second, Readers readers);

/// Throws ToolError where not everything could be written.
void writeStandardOutput(const std::string& text);

/// Throws ToolError where binary data would go to a terminal, under whatever name, and `path` is not "-".
void refuseBinaryOnTerminal(const std::optional<std::string>& path);

}  // namespace vorl::tool

#endif
