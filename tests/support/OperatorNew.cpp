#include "OperatorNew.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t refusalLimit = SIZE_MAX;
thread_local std::size_t largestRequest = 0;
thread_local std::size_t totalRequested = 0;

}  // namespace

// The array and the nothrow forms of the standard library come down to these.

void* operator new(std::size_t size) {
    largestRequest = size > largestRequest ? size : largestRequest;
    totalRequested += size;
    void* const p = size < refusalLimit ? std::malloc(size != 0 ? size : 1) : nullptr;
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    return p;
}

void operator delete(void* p) noexcept {
    std::free(p);
}

void operator delete(void* p, std::size_t /*size*/) noexcept {
    std::free(p);
}

namespace vorl::test {

OperatorNew::OperatorNew(std::size_t refusedFrom) {
    largestRequest = 0;
    totalRequested = 0;
    refusalLimit = refusedFrom;
}

OperatorNew::~OperatorNew() {
    refusalLimit = SIZE_MAX;
}

std::size_t OperatorNew::largest() const {
    return largestRequest;
}

std::size_t OperatorNew::total() const {
    return totalRequested;
}

}  // namespace vorl::test
