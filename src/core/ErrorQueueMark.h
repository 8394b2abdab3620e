#ifndef VORL_CORE_ERRORQUEUEMARK_H
#define VORL_CORE_ERRORQUEUEMARK_H

#include <openssl/err.h>

namespace vorl {

/// Takes off, at the end of its scope, what OpenSSL has put into the calling thread's error queue since.
/// For failures that no exception reports: the application's own entries stay.
class ErrorQueueMark {
public:
    ErrorQueueMark() { ERR_set_mark(); }
    ~ErrorQueueMark() { ERR_pop_to_mark(); }
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
};

}  // namespace vorl

#endif
