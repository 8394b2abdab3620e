#ifndef VORL_TESTS_ERROR_QUEUE_H
#define VORL_TESTS_ERROR_QUEUE_H

#include <openssl/err.h>

#include <vector>

namespace vorl::test {

using ErrorCodes = std::vector<unsigned long>;

/// Leaves an entry in the calling thread's OpenSSL error queue, as an application may have done before it
/// calls the library, and returns its code.
inline unsigned long leaveApplicationError() {
    ERR_put_error(ERR_LIB_USER, 0, 42, "application", 1);
    return ERR_peek_last_error();
}

/// The codes in the calling thread's queue, oldest first. The queue is empty afterwards.
inline ErrorCodes takeErrorQueue() {
    ErrorCodes codes;
    while (const unsigned long code = ERR_get_error()) {
        codes.push_back(code);
    }
    return codes;
}

}  // namespace vorl::test

#endif
