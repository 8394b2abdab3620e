#ifndef VORL_TESTS_REPLACED_NEW_H
#define VORL_TESTS_REPLACED_NEW_H

#include <cstddef>
#include <new>

// Replaces every operator new and delete of the program that includes this (in one source only) by
//
//   void* vorl::test::allocate(std::size_t size) noexcept;   null for a lack of memory
//   void vorl::test::release(void* block) noexcept;          never null
//
// which that source defines. All forms are replaced, since a sanitizer's own would not call one another.
// Only the forms for types of an extended alignment are left; the library has none.

namespace vorl::test {

void* allocate(std::size_t size) noexcept;
void release(void* block) noexcept;

inline void* allocateOrThrow(std::size_t size) {
    if (void* const block = allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}

inline void releaseIfAny(void* block) noexcept {
    if (block != nullptr) {
        release(block);
    }
}

}  // namespace vorl::test

void* operator new(std::size_t size) {
    return vorl::test::allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return vorl::test::allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return vorl::test::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return vorl::test::allocate(size);
}
void operator delete(void* block) noexcept {
    vorl::test::releaseIfAny(block);
}
void operator delete[](void* block) noexcept {
    vorl::test::releaseIfAny(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    vorl::test::releaseIfAny(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    vorl::test::releaseIfAny(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    vorl::test::releaseIfAny(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    vorl::test::releaseIfAny(block);
}

#endif
