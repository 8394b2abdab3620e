#include "brisclient/Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorl::test {

namespace {

using Tarvik::BrisClient::Mutex;

// Eight threads add to a plain number; without exclusion some of the additions get lost.
void expectExcludes(Mutex& mutex) {
    const int THREADS = 8;
    const int ROUNDS = 20000;
    int counter = 0;
    std::atomic<int> inside{0};
    std::atomic<bool> shared{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < ROUNDS; ++round) {
                const std::lock_guard<Mutex> lock(mutex);
                if (inside.fetch_add(1) != 0) {
                    shared = true;
                }
                ++counter;
                inside.fetch_sub(1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, THREADS * ROUNDS);
    EXPECT_FALSE(shared);
}

}  // namespace

TEST(Mutex, ExcludesOtherThreads) {
    Mutex mutex(false);
    expectExcludes(mutex);
}

TEST(Mutex, RecursiveOneExcludesOtherThreadsToo) {
    Mutex mutex(true);
    expectExcludes(mutex);
}

TEST(Mutex, RecursiveOneMayBeLockedAgainByItsHolder) {
    Mutex mutex(true);
    const std::lock_guard<Mutex> first(mutex);
    const std::lock_guard<Mutex> second(mutex);
    mutex.lock();
    mutex.unlock();
}

// It is free only after as many unlocks: until then the other thread must not have come in.
TEST(Mutex, RecursiveOneIsFreeAfterAsManyUnlocks) {
    Mutex mutex(true);
    bool finished = false;
    mutex.lock();
    mutex.lock();
    std::thread other([&] {
        const std::lock_guard<Mutex> lock(mutex);
        EXPECT_TRUE(finished);
    });
    mutex.unlock();
    std::this_thread::yield();
    finished = true;
    mutex.unlock();
    other.join();
}

TEST(Mutex, IsFreeAgainAfterAnException) {
    Mutex mutex(false);
    try {
        const std::lock_guard<Mutex> lock(mutex);
        throw 1;
    } catch (int) {
    }
    mutex.lock();
    mutex.unlock();
}

TEST(Mutex, TwoAreIndependent) {
    Mutex one(false);
    Mutex other(false);
    const std::lock_guard<Mutex> first(one);
    const std::lock_guard<Mutex> second(other);
}

TEST(Mutex, CannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<Mutex>);
    EXPECT_FALSE(std::is_copy_assignable_v<Mutex>);
    EXPECT_FALSE((std::is_convertible_v<bool, Mutex>));
}

}  // namespace vorl::test
