#include "http/NonceMemory.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {

namespace {

using tarvik::http::NonceMemory;

}  // namespace

TEST(NonceMemory, TakesANonceOnce) {
    NonceMemory memory(10);
    EXPECT_TRUE(memory.take("a", 100, 400));
    EXPECT_FALSE(memory.take("a", 100, 400));
    EXPECT_FALSE(memory.take("a", 101, 401));
    EXPECT_TRUE(memory.take("b", 100, 400));
    EXPECT_TRUE(memory.take("", 100, 400));
    EXPECT_FALSE(memory.take("", 100, 400));
}

TEST(NonceMemory, KeepsANonceUntilItLapses) {
    NonceMemory memory(10);
    ASSERT_TRUE(memory.take("a", 100, 400));
    EXPECT_FALSE(memory.take("a", 400, 700));
    EXPECT_TRUE(memory.take("a", 401, 701));
    EXPECT_FALSE(memory.take("a", 701, 1001));
}

TEST(NonceMemory, KeepsANonceInAFullMemoryUntilItLapses) {
    NonceMemory memory(1);
    ASSERT_TRUE(memory.take("a", 100, 400));
    EXPECT_FALSE(memory.take("a", 400, 700));
    EXPECT_TRUE(memory.take("a", 401, 701));
    EXPECT_FALSE(memory.take("b", 701, 1001));
    EXPECT_TRUE(memory.take("b", 702, 1002));
}

TEST(NonceMemory, TakesNoFurtherOneWhileItIsFull) {
    NonceMemory memory(2);
    ASSERT_TRUE(memory.take("a", 100, 400));
    ASSERT_TRUE(memory.take("b", 110, 410));
    EXPECT_FALSE(memory.take("c", 110, 410));
    EXPECT_FALSE(memory.take("c", 400, 700));
    // None that is kept was given up for it.
    EXPECT_FALSE(memory.take("a", 400, 700));
    EXPECT_FALSE(memory.take("b", 400, 700));
}

TEST(NonceMemory, TakesAsManyMoreAsHaveLapsed) {
    NonceMemory memory(2);
    ASSERT_TRUE(memory.take("a", 100, 400));
    ASSERT_TRUE(memory.take("b", 110, 410));
    EXPECT_TRUE(memory.take("c", 401, 701));
    EXPECT_FALSE(memory.take("d", 401, 701));
    EXPECT_FALSE(memory.take("b", 410, 710));
    EXPECT_TRUE(memory.take("d", 411, 711));
    EXPECT_FALSE(memory.take("e", 411, 711));
}

TEST(NonceMemory, ForgetsInWhateverOrderTheyLapse) {
    NonceMemory memory(3);
    ASSERT_TRUE(memory.take("late", 100, 405));
    ASSERT_TRUE(memory.take("early", 100, 150));
    ASSERT_TRUE(memory.take("middle", 100, 300));
    EXPECT_FALSE(memory.take("x", 150, 450));
    EXPECT_TRUE(memory.take("x", 151, 451));
    EXPECT_FALSE(memory.take("y", 300, 600));
    EXPECT_TRUE(memory.take("y", 301, 601));
    EXPECT_FALSE(memory.take("late", 301, 601));
    EXPECT_FALSE(memory.take("z", 405, 705));
    EXPECT_TRUE(memory.take("z", 406, 706));
}

TEST(NonceMemory, OfNoSizeTakesNone) {
    NonceMemory memory(0);
    EXPECT_FALSE(memory.take("a", 100, 400));
    EXPECT_FALSE(memory.take("a", 1000, 1300));
}

TEST(NonceMemory, WorksBeforeTheEpoch) {
    NonceMemory memory(1);
    EXPECT_TRUE(memory.take("a", -1000, -700));
    EXPECT_FALSE(memory.take("a", -700, -400));
    EXPECT_TRUE(memory.take("b", -699, -399));
}

TEST(NonceMemory, KnowsANonceWhenTheClockGoesBack) {
    NonceMemory memory(10);
    ASSERT_TRUE(memory.take("a", 1000, 1300));
    EXPECT_FALSE(memory.take("a", 500, 1300));
    EXPECT_TRUE(memory.take("b", 500, 800));
    EXPECT_FALSE(memory.take("b", 499, 800));
}

// The nonces that had lapsed are forgotten, so that whether one is new cannot be told any more.
TEST(NonceMemory, TakesNothingThatHadLapsedBeforeTheClockWentBack) {
    NonceMemory memory(2);
    ASSERT_TRUE(memory.take("a", 100, 400));
    ASSERT_TRUE(memory.take("b", 100, 400));
    ASSERT_TRUE(memory.take("c", 401, 701));
    EXPECT_FALSE(memory.take("a", 399, 400));
    EXPECT_FALSE(memory.take("new", 399, 400));
    EXPECT_TRUE(memory.take("new", 399, 401));
}

// A memory that is not full forgets as well: what it would not tell apart any more shows it.
TEST(NonceMemory, ForgetsWhatHasLapsedAlsoWhileItHasRoom) {
    NonceMemory memory(10);
    ASSERT_TRUE(memory.take("a", 100, 400));
    ASSERT_TRUE(memory.take("b", 401, 701));
    EXPECT_FALSE(memory.take("new", 399, 400));
    EXPECT_TRUE(memory.take("new", 399, 401));
}

}  // namespace vorl::test
