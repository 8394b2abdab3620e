#include "OpenSSLMemory.h"

#include <openssl/crypto.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>

namespace {

std::atomic<long> live{0};
thread_local bool limited = false;
thread_local long left = 0;
thread_local void* watched = nullptr;
thread_local int watchedFrees = 0;

bool isExhausted() {
    return limited && left-- <= 0;
}

void* allocate(std::size_t size, const char* /*file*/, int /*line*/) {
    if (size == 0 || isExhausted()) {
        return nullptr;
    }
    void* const p = std::malloc(size);
    live += p != nullptr ? 1 : 0;
    return p;
}

void release(void* p, const char* /*file*/, int /*line*/) {
    if (p == nullptr) {
        return;
    }
    if (p == watched) {
        ++watchedFrees;
        live -= watchedFrees == 1 ? 1 : 0;
        return;
    }
    --live;
    std::free(p);
}

void* reallocate(void* p, std::size_t size, const char* file, int line) {
    if (p == nullptr) {
        return allocate(size, file, line);
    }
    if (size == 0) {
        release(p, file, line);
        return nullptr;
    }
    return isExhausted() ? nullptr : std::realloc(p, size);
}

// OpenSSL takes other functions only before its first allocation.
const bool installed = CRYPTO_set_mem_functions(allocate, reallocate, release) == 1;

}  // namespace

namespace vorl::test {

bool openssl_memory::isOurs() {
    return installed;
}

long openssl_memory::liveBlocks() {
    return live;
}

OpenSSLOutOfMemory::OpenSSLOutOfMemory(long blocksLeft) {
    limited = true;
    left = blocksLeft;
}

OpenSSLOutOfMemory::~OpenSSLOutOfMemory() {
    limited = false;
}

FreeWatch::FreeWatch(void* block) {
    watched = block;
    watchedFrees = 0;
}

FreeWatch::~FreeWatch() {
    if (watchedFrees > 0) {
        std::free(watched);
    }
    watched = nullptr;
}

int FreeWatch::frees() const {
    return watchedFrees;
}

}  // namespace vorl::test
