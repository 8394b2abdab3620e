#ifndef VORL_TOOL_SHARED_MESSAGES_H
#define VORL_TOOL_SHARED_MESSAGES_H

#include <string>

namespace vorl::tool {

/// Writes "vorl: error: ..." to standard error, as one line. Control characters, which file names may have,
/// become '?'. A standard error that is closed is nobody's loss.
void sayError(const std::string& text);
/// The same as "vorl: hint: ..."; nothing for an empty text.
void sayHint(const std::string& text);

}  // namespace vorl::tool

#endif
