#include "vorl/Util.h"

#include "FakeClock.h"

#include <gtest/gtest.h>

#include <ctime>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace vorl::test {
namespace {

std::string secondOf(const std::string& uniqueTime) {
    return uniqueTime.substr(0, uniqueTime.find('.'));
}

unsigned long countOf(const std::string& uniqueTime) {
    return std::stoul(uniqueTime.substr(uniqueTime.find('.') + 1));
}

TEST(UtilCurrentTime, IsWholeSecondsInDecimal) {
    const FakeClock clock;
    EXPECT_EQ(Util::currentTime(), std::to_string(clock.now()));
}

TEST(UtilCurrentTime, FollowsTheClock) {
    FakeClock clock;
    const long long before = clock.now();
    clock.advance(1);
    EXPECT_EQ(Util::currentTime(), std::to_string(before + 1));
}

TEST(UtilCurrentTime, IsTheRealTime) {
    const std::time_t before = std::time(nullptr);
    const long long now = std::stoll(Util::currentTime());
    const std::time_t after = std::time(nullptr);

    // time() may lag behind gettimeofday() by a tick of the kernel, at the turn of a second.
    EXPECT_GE(now, before);
    EXPECT_LE(now, after + 1);
}

TEST(UtilUniqueTime, CountsWithinASecondAndStartsAgainInTheNext) {
    FakeClock clock;
    const std::string first = std::to_string(clock.now());
    EXPECT_EQ(Util::uniqueTime(), first + ".0");
    EXPECT_EQ(Util::uniqueTime(), first + ".1");
    EXPECT_EQ(Util::uniqueTime(), first + ".2");

    clock.advance(1);
    const std::string second = std::to_string(clock.now());
    EXPECT_EQ(Util::uniqueTime(), second + ".0");
    EXPECT_EQ(Util::uniqueTime(), second + ".1");

    clock.advance(60);
    EXPECT_EQ(Util::uniqueTime(), std::to_string(clock.now()) + ".0");
}

TEST(UtilUniqueTime, IsNotCountedByCurrentTime) {
    const FakeClock clock;
    EXPECT_EQ(Util::uniqueTime(), std::to_string(clock.now()) + ".0");
    Util::currentTime();
    EXPECT_EQ(Util::uniqueTime(), std::to_string(clock.now()) + ".1");
}

TEST(UtilUniqueTime, CountsOnWithoutALimitOfDigits) {
    const FakeClock clock;
    std::string last;
    for (int i = 0; i <= 12345; ++i) {
        last = Util::uniqueTime();
    }
    EXPECT_EQ(last, std::to_string(clock.now()) + ".12345");
}

// The same with the clock of the machine: as long as it takes to see a second from its start to its end.
TEST(UtilUniqueTime, CountsWithinEachSecondOfTheRealClock) {
    std::string previous = Util::uniqueTime();
    bool seenFromItsStart = false;
    bool seenToItsEnd = false;
    while (!seenToItsEnd) {
        const std::string next = Util::uniqueTime();
        if (secondOf(next) == secondOf(previous)) {
            ASSERT_EQ(countOf(next), countOf(previous) + 1);
            seenFromItsStart = seenFromItsStart || countOf(next) == 2;
        } else {
            ASSERT_EQ(countOf(next), 0U);
            seenToItsEnd = seenFromItsStart;
        }
        previous = next;
    }
}

std::vector<std::string> uniqueTimesOf(unsigned int threads, unsigned int callsEach) {
    std::vector<std::vector<std::string>> seen(threads);
    std::vector<std::thread> running;
    for (auto& texts : seen) {
        running.emplace_back([&texts, callsEach] {
            for (unsigned int i = 0; i < callsEach; ++i) {
                texts.push_back(Util::uniqueTime());
            }
        });
    }
    std::vector<std::string> all;
    for (unsigned int i = 0; i < threads; ++i) {
        running[i].join();
        all.insert(all.end(), seen[i].begin(), seen[i].end());
    }
    return all;
}

TEST(UtilUniqueTime, GivesEachOfEightThreadsCountsOfItsOwn) {
    const FakeClock clock;
    const std::vector<std::string> all = uniqueTimesOf(8, 2000);

    std::set<std::string> expected;
    for (int count = 0; count < 16000; ++count) {
        expected.insert(std::to_string(clock.now()) + "." + std::to_string(count));
    }
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()), expected);
}

TEST(UtilUniqueTime, IsUniqueAcrossEightThreadsOnTheRealClock) {
    const std::vector<std::string> all = uniqueTimesOf(8, 2000);

    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 16000U);
}

// Uniqueness is the clock's as much as the count's.
TEST(UtilUniqueTime, RepeatsItselfWhenTheClockIsSetBack) {
    FakeClock clock;
    const std::string first = Util::uniqueTime();
    clock.advance(1);
    Util::uniqueTime();
    clock.advance(-1);
    EXPECT_EQ(Util::uniqueTime(), first);
}

}  // namespace
}  // namespace vorl::test
