#ifndef VORL_TESTS_OPENSSLFAULTS_H
#define VORL_TESTS_OPENSSLFAULTS_H

#include "vorl/bytes.h"

namespace vorl::test {

// Answers that OpenSSL gives the library, in a program that links OpenSSLFaults.cpp, though no input makes it
// give them. Each for the calling thread and as long as the object lives; one of a kind at a time.

/// BN_print() prints nothing and returns 0.
class UnprintableNumbers {
public:
    UnprintableNumbers();
    ~UnprintableNumbers();
    UnprintableNumbers(const UnprintableNumbers&) = delete;
    UnprintableNumbers& operator=(const UnprintableNumbers&) = delete;
};

/// BIO_read() reads nothing and returns 0.
class UnreadableBios {
public:
    UnreadableBios();
    ~UnreadableBios();
    UnreadableBios(const UnreadableBios&) = delete;
    UnreadableBios& operator=(const UnreadableBios&) = delete;
};

/// EVP_DigestFinal_ex() gives `digest`, of at most EVP_MAX_MD_SIZE bytes, whatever was fed.
class FixedDigest {
public:
    explicit FixedDigest(const bytes& digest);
    ~FixedDigest();
    FixedDigest(const FixedDigest&) = delete;
    FixedDigest& operator=(const FixedDigest&) = delete;
};

}  // namespace vorl::test

#endif
