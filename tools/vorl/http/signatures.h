#ifndef VORL_TOOL_HTTP_SIGNATURES_H
#define VORL_TOOL_HTTP_SIGNATURES_H

#include "shared/exit_status.h"

namespace vorl::tool {

struct HttpOptions;

// What the commands do. Where the library has no signer of HTTP messages that could be asked, all of them
// throw ToolError, FAULT.

/// Writes what the signature of a message is computed of, or would be.
ExitStatus writeSignatureBase(const HttpOptions& options);

/// Writes a message with a signature.
ExitStatus signHttpMessage(const HttpOptions& options);

/// Says whether the signature of a message holds.
ExitStatus verifyHttpMessage(const HttpOptions& options);

}  // namespace vorl::tool

#endif
