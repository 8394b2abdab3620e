#ifndef VORL_CORE_ERRORQUEUEMARK_H
#define VORL_CORE_ERRORQUEUEMARK_H

#include <openssl/err.h>

namespace vorl {

/// Takes off, at the end of its scope, what OpenSSL has put into the calling thread's error queue since.
/// For failures that no exception reports: the application's own entries stay.
class ErrorQueueMark {
public:
    ErrorQueueMark() : isSet_(ERR_set_mark() != 0) {}
    ~ErrorQueueMark() {
        if (isSet_ || mayHaveEntries_) {
            ERR_pop_to_mark();
        }
    }
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;

    /// Everything succeeded. An empty queue, which takes no mark, is then not looked at again: each look
    /// takes as long as a tenth of a short HMAC.
    void nothingFailed() { mayHaveEntries_ = false; }

private:
    const bool isSet_;
    bool mayHaveEntries_ = true;
};

}  // namespace vorl

#endif
