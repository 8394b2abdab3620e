#include "LibraryState.h"
#include "levels.h"
#include "octets.h"
#include "replaced_new.h"
#include "vorl/VorlContext.h"

#include <openssl/crypto.h>

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <memory>

// What one context keeps on the heap, of OpenSSL's blocks too. scripts/footprint shows what this program
// prints.

namespace vorl::test {

namespace {

// Of all blocks, with what malloc rounds them up by and with the word that it keeps before each.
std::size_t inUse = 0;

std::size_t costOf(void* block) {
    return block != nullptr ? malloc_usable_size(block) + sizeof(std::size_t) : 0;
}

void* counted(void* block) {
    inUse += costOf(block);
    return block;
}

void* allocateForOpenSSL(std::size_t size, const char* /*file*/, int /*line*/) {
    return size != 0 ? counted(std::malloc(size)) : nullptr;
}

void releaseForOpenSSL(void* block, const char* /*file*/, int /*line*/) {
    inUse -= costOf(block);
    std::free(block);
}

void* reallocateForOpenSSL(void* block, std::size_t size, const char* file, int line) {
    if (size == 0) {
        releaseForOpenSSL(block, file, line);
        return nullptr;
    }
    const std::size_t cost = costOf(block);
    void* const moved = std::realloc(block, size);
    if (moved != nullptr) {
        inUse -= cost;
        counted(moved);
    }
    return moved;
}

// OpenSSL takes other functions only before its first allocation.
const bool installed =
    CRYPTO_set_mem_functions(allocateForOpenSSL, reallocateForOpenSSL, releaseForOpenSSL) == 1;

}  // namespace

void* allocate(std::size_t size) noexcept {
    return counted(std::malloc(size));
}

void release(void* block) noexcept {
    inUse -= costOf(block);
    std::free(block);
}

namespace {

const std::size_t MESSAGE_BYTES = 1000;

struct LevelCase {
    const char* name;
    Level level;
    // Bytes that a context may take when it is new, and after messages in both directions.
    std::size_t mostWhenNew;
    std::size_t mostWhenUsed;
};

// Room for growth, but not for a context that keeps its messages.
const LevelCase LEVELS[] = {
    {"None", NONE, 512, 512},
    {"Test", TEST, 1024, 3072},
    {"Full", FULL, 1024, 3072},
};

void exchangeAMessage(VorlContext& context) {
    const bytes message = octets(MESSAGE_BYTES);
    ASSERT_EQ(context.decrypt(context.encrypt(message)), message);
}

class ContextHeap : public StartedLibrary, public ::testing::WithParamInterface<LevelCase> {};

TEST_P(ContextHeap, HoldsTheStateOfTheCiphersAndLittleElse) {
    ASSERT_TRUE(installed);
    VORLLib::type_ = typeOf(GetParam().level);
    {
        // What OpenSSL and the library keep for all contexts is not this one's.
        VorlContext first(octets(16));
        exchangeAMessage(first);
    }
    const std::size_t before = inUse;

    auto context = std::make_unique<VorlContext>(octets(16));
    const std::size_t whenNew = inUse - before;
    exchangeAMessage(*context);
    const std::size_t whenUsed = inUse - before;
    context.reset();

    EXPECT_LE(whenNew, GetParam().mostWhenNew);
    EXPECT_LE(whenUsed, GetParam().mostWhenUsed);
    EXPECT_GE(whenNew, sizeof(VorlContext));
    EXPECT_EQ(inUse, before) << "nothing is left";
    std::cout << "heap of one context, level " << GetParam().name << ": " << whenNew << " bytes new, "
              << whenUsed << " used\n";
}

INSTANTIATE_TEST_SUITE_P(Levels, ContextHeap, ::testing::ValuesIn(LEVELS),
                         [](const auto& test) { return test.param.name; });

}  // namespace

}  // namespace vorl::test
