#ifndef VORL_TOOL_SHARED_EXIT_STATUS_H
#define VORL_TOOL_SHARED_EXIT_STATUS_H

namespace vorl::tool {

/// What a run of the tool ends with. Scripts rely on the numbers.
enum class ExitStatus {
    SUCCESS = 0,
    /// A clean "no": everything worked, and the answer is negative.
    REFUSED = 1,
    USAGE = 2,
    /// The input cannot be read, or is not what it has to be.
    BAD_INPUT = 3,
    /// A wrong key or damaged data; which of the two is not told.
    CANNOT_OPEN = 4,
    /// The platform, the output or the tool itself.
    FAULT = 5,
};

}  // namespace vorl::tool

#endif
