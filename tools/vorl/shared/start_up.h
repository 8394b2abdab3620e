#ifndef VORL_TOOL_SHARED_START_UP_H
#define VORL_TOOL_SHARED_START_UP_H

namespace vorl::tool {

/// What every process does before anything else: a standard stream that was closed is never taken for a file
/// that is opened later, and a reader that goes away, or a limit on sizes, is an error of a write instead of
/// the end of the process.
void prepareProcess();

/// Makes the library ready, as an application does it. Throws ToolError where OpenSSL has no random numbers,
/// and whatever the library throws.
void startLibrary();

}  // namespace vorl::tool

#endif
