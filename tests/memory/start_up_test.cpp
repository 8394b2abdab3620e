#include "replaced_new.h"
#include "vorl/VORLLib.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <iostream>

// What happens before a program that links the library begins. scripts/footprint shows what this program
// prints.

namespace vorl::test {

namespace {

std::size_t allocations = 0;
std::size_t allocationsOfLibraries = 0;

// Shared objects start before the program's own objects, and this is the first of those.
__attribute__((constructor(101))) void startOfTheProgram() {
    allocationsOfLibraries = allocations;
}

}  // namespace

void* allocate(std::size_t size) noexcept {
    ++allocations;
    return std::malloc(size);
}

void release(void* block) noexcept {
    std::free(block);
}

namespace {

TEST(StartUp, OfTheLibraryAllocatesNothing) {
    EXPECT_GT(allocations, 0U) << "GoogleTest's own start is counted";
    EXPECT_FALSE(VORLLib::type_) << "the library is linked";
    EXPECT_EQ(allocationsOfLibraries, 0U);
    std::cout << "start-up: " << allocationsOfLibraries << " allocations\n";
}

}  // namespace

}  // namespace vorl::test
