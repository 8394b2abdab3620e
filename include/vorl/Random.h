#ifndef VORL_RANDOM_H
#define VORL_RANDOM_H

#include "vorl/bytes.h"
#include "vorl/export.h"

namespace vorl {

/// Cryptographically strong random bytes from OpenSSL's generator.
///
/// The application says when the generator is ready: it seeds it, where the system does not, and sets init_
/// during start-up, before threads use the library. Until then nothing that needs an IV works.
class VORL_API Random {
public:
    Random() = delete;

    /// `n` random bytes. Throws OpenSSLException while init_ is false, and where RAND_bytes() returns 0. Its
    /// other result of failure, -1 for a method that is not supported, counts as success: the bytes are
    /// returned as they are.
    static bytes next(unsigned int n);

    /// Set by the application, never by the library.
    static bool init_;

    /// A fixed seed for applications that want repeatable numbers in their tests. The library never reads it.
    static unsigned char NON_RANDOM_SEED[64];
};

}  // namespace vorl

#endif
