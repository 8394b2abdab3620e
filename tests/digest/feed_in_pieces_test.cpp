#include "feed_in_pieces.h"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace vorl::test {
namespace {

const std::size_t GIB = std::size_t{1} << 30;

// Addresses that nobody may read, so that they cost no memory.
class Addresses {
public:
    explicit Addresses(std::size_t size) : size_(size) {
        void* const room = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (room == MAP_FAILED) {
            throw std::bad_alloc();
        }
        begin_ = static_cast<unsigned char*>(room);
    }
    ~Addresses() { munmap(begin_, size_); }
    Addresses(const Addresses&) = delete;
    Addresses& operator=(const Addresses&) = delete;

    const unsigned char* begin() const { return begin_; }

private:
    std::size_t size_;
    unsigned char* begin_ = nullptr;
};

using Pieces = std::vector<std::pair<std::size_t, std::size_t>>;

// Where each piece begins, and its size.
Pieces piecesOf(std::size_t size) {
    const Addresses data(size + 1);
    Pieces pieces;
    EXPECT_TRUE(feedInPieces(data.begin(), size, [&](const unsigned char* piece, std::size_t n) {
        pieces.emplace_back(piece - data.begin(), n);
        return 1;
    }));
    return pieces;
}

TEST(FeedInPieces, CallsNothingWithoutData) {
    EXPECT_EQ(piecesOf(0), Pieces());
    EXPECT_TRUE(feedInPieces(nullptr, 0, [](const unsigned char*, std::size_t) { return 0; }));
}

TEST(FeedInPieces, GivesWhatCanBeCountedAsOnePiece) {
    EXPECT_EQ(piecesOf(1), (Pieces{{0, 1}}));
    EXPECT_EQ(piecesOf(GIB - 1), (Pieces{{0, GIB - 1}}));
    EXPECT_EQ(piecesOf(GIB), (Pieces{{0, GIB}}));
}

TEST(FeedInPieces, CutsMoreThanAGibibyte) {
    EXPECT_EQ(piecesOf(GIB + 1), (Pieces{{0, GIB}, {GIB, 1}}));
}

TEST(FeedInPieces, CutsMoreThanAnIntCounts) {
    if (sizeof(void*) < 8) {
        GTEST_SKIP() << "no room for so much in 32 bits";
    }
    EXPECT_EQ(piecesOf(2 * GIB + 5), (Pieces{{0, GIB}, {GIB, GIB}, {2 * GIB, 5}}));
    EXPECT_EQ(piecesOf(4 * GIB), (Pieces{{0, GIB}, {GIB, GIB}, {2 * GIB, GIB}, {3 * GIB, GIB}}));
}

TEST(FeedInPieces, StopsAtTheFirstFailure) {
    const Addresses data(GIB + 1);
    int calls = 0;
    EXPECT_FALSE(feedInPieces(data.begin(), GIB + 1, [&](const unsigned char*, std::size_t) {
        ++calls;
        return 0;
    }));
    EXPECT_EQ(calls, 1);
}

TEST(FeedInPieces, TakesAnyOtherResultForSuccess) {
    const unsigned char data[] = {1, 2, 3};
    EXPECT_TRUE(feedInPieces(data, sizeof(data), [](const unsigned char*, std::size_t) { return -1; }));
}

}  // namespace
}  // namespace vorl::test
