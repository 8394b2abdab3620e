#ifndef VORL_TESTS_OPENSSLMEMORY_H
#define VORL_TESTS_OPENSSLMEMORY_H

namespace vorl::test {

/// OpenSSL's memory, which it takes from functions of ours in a program that links OpenSSLMemory.cpp.
namespace openssl_memory {

/// Whether OpenSSL has agreed to use them.
bool isOurs();

/// Blocks that are allocated and not yet freed.
long liveBlocks();

}  // namespace openssl_memory

/// While it lives, OpenSSL gets no memory in this thread, or none after so many more blocks.
class OpenSSLOutOfMemory {
public:
    explicit OpenSSLOutOfMemory(long blocksLeft = 0);
    ~OpenSSLOutOfMemory();
    OpenSSLOutOfMemory(const OpenSSLOutOfMemory&) = delete;
    OpenSSLOutOfMemory& operator=(const OpenSSLOutOfMemory&) = delete;
};

/// Counts how often OpenSSL frees one of its blocks. The block stays allocated until the end of the watch,
/// so that a second free is counted as well instead of ending in the unknown.
class FreeWatch {
public:
    explicit FreeWatch(void* block);
    ~FreeWatch();
    FreeWatch(const FreeWatch&) = delete;
    FreeWatch& operator=(const FreeWatch&) = delete;

    int frees() const;
};

}  // namespace vorl::test

#endif
