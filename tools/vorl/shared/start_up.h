#ifndef VORL_TOOL_SHARED_START_UP_H
#define VORL_TOOL_SHARED_START_UP_H

namespace vorl::tool {

/// A reader that goes away, or a limit on the size of files, becomes an error of the write that meets it,
/// instead of the end of the process.
void prepareProcess();

/// Makes the library ready, as an application does it. Throws whatever the library throws.
void startLibrary();

/// For what draws random numbers, once the library is ready. Throws ToolError where OpenSSL has none.
void requireRandom();

}  // namespace vorl::tool

#endif
