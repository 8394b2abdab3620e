#ifndef VORL_TESTS_SECRETWATCH_H
#define VORL_TESTS_SECRETWATCH_H

#include "vorl/bytes.h"

namespace vorl::test {

/// While it lives, looks for a secret in each block that the thread gives back to operator delete, in a
/// program that links SecretWatch.cpp. One at a time. What OpenSSL holds is not part of it: that comes from
/// malloc.
class SecretWatch {
public:
    /// `secret` must outlive the watch.
    explicit SecretWatch(const bytes& secret);
    ~SecretWatch();
    SecretWatch(const SecretWatch&) = delete;
    SecretWatch& operator=(const SecretWatch&) = delete;

    /// Blocks that still held the secret.
    int releasedWithSecret() const;
};

}  // namespace vorl::test

#endif
