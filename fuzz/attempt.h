#ifndef VORL_FUZZ_ATTEMPT_H
#define VORL_FUZZ_ATTEMPT_H

#include "error_queue.h"
#include "require.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

namespace vorl::fuzz {

enum class ErrorQueue { STAYS, MAY_BE_TAKEN };

/// Whether `use` came to its end. Only the library's exceptions are let through to here, and what OpenSSL
/// reports on the way belongs into them: an entry that the application left in OpenSSL's queue is still there
/// alone, unless an OpenSSLException, or what `queue` allows for, has taken the whole queue.
template <typename Use>
bool attempt(Use use, ErrorQueue queue = ErrorQueue::STAYS) {
    ERR_clear_error();
    const unsigned long application = test::leaveApplicationError();
    bool done = false;
    try {
        use();
        done = true;
    } catch (const OpenSSLException&) {
        require(ERR_peek_error() == 0, "an OpenSSLException takes the whole queue");
        return false;
    } catch (const VORLException&) {
        done = false;
    }
    const test::ErrorCodes left = test::takeErrorQueue();
    require(left == test::ErrorCodes{application} || (left.empty() && queue == ErrorQueue::MAY_BE_TAKEN),
            "OpenSSL's error queue is as it was");
    return done;
}

}  // namespace vorl::fuzz

#endif
