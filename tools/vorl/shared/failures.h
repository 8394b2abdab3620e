#ifndef VORL_TOOL_SHARED_FAILURES_H
#define VORL_TOOL_SHARED_FAILURES_H

#include "shared/exit_status.h"

namespace vorl::tool {

/// Tells on standard error what ended a run, and returns the status for it. To be called where the exception
/// has been caught.
ExitStatus tellFailure();

}  // namespace vorl::tool

#endif
