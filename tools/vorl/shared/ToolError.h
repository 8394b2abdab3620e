#ifndef VORL_TOOL_SHARED_TOOLERROR_H
#define VORL_TOOL_SHARED_TOOLERROR_H

#include "shared/exit_status.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace vorl::tool {

/// Ends a run: what went wrong, what the user may do about it, and the exit status.
class ToolError : public std::runtime_error {
public:
    ToolError(ExitStatus status, const std::string& message, std::string hint = "")
        : std::runtime_error(message), status_(status), hint_(std::move(hint)) {}

    ExitStatus status() const { return status_; }
    /// Empty where there is nothing to add.
    const std::string& hint() const { return hint_; }

private:
    ExitStatus status_;
    std::string hint_;
};

}  // namespace vorl::tool

#endif
