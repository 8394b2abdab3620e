#include "SecretWatch.h"

#include "replaced_new.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

thread_local const vorl::bytes* watched = nullptr;
thread_local int released = 0;

}  // namespace

namespace vorl::test {

void* allocate(std::size_t size) noexcept {
    void* const block = std::malloc(size != 0 ? size : 1);
    if (block != nullptr) {
        // What a block held in an earlier life is not what its next owner leaves behind.
        std::memset(block, 0xa5, malloc_usable_size(block));
    }
    return block;
}

void release(void* block) noexcept {
    if (watched != nullptr) {
        const auto* const begin = static_cast<const unsigned char*>(block);
        const auto* const end = begin + malloc_usable_size(block);
        released += std::search(begin, end, watched->begin(), watched->end()) != end ? 1 : 0;
    }
    std::free(block);
}

SecretWatch::SecretWatch(const bytes& secret) {
    released = 0;
    watched = &secret;
}

SecretWatch::~SecretWatch() {
    watched = nullptr;
}

int SecretWatch::releasedWithSecret() const {
    return released;
}

}  // namespace vorl::test
