#include "vorl/Random.h"

#include "errorStackOf.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/OpenSSLException.h"

#include <openssl/err.h>
#include <openssl/rand.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace vorl::test {

namespace {

// Read before main, so before any test has set it.
const bool READY_AT_LOAD = Random::init_;

const unsigned int INT_LIMIT = static_cast<unsigned int>(std::numeric_limits<int>::max());

// A generator of the application, which fills with 01 02 03 ... and answers as it is told.
struct Generator {
    int result = 1;
    int fillAtMost = std::numeric_limits<int>::max();
    bool queuesAnError = false;
    int seeded = 0;
    std::vector<int> asked;
};

Generator generator;

int fill(unsigned char* out, int n) {
    generator.asked.push_back(n);
    const int filled = std::min(n, generator.fillAtMost);
    for (int i = 0; i < filled; ++i) {
        out[i] = static_cast<unsigned char>(i + 1);
    }
    if (generator.queuesAnError) {
        leaveApplicationError();
    }
    return generator.result;
}

int seed(const void* /*from*/, int /*n*/) {
    ++generator.seeded;
    return 1;
}

int add(const void* /*from*/, int /*n*/, double /*entropy*/) {
    ++generator.seeded;
    return 1;
}

int status() {
    return 1;
}

const RAND_METHOD OWN_METHOD = {seed, fill, nullptr, add, fill, status};
const RAND_METHOD METHOD_WITHOUT_BYTES = {seed, nullptr, nullptr, add, nullptr, status};

class RandomTest : public ::testing::Test {
protected:
    void SetUp() override {
        methodBefore_ = RAND_get_rand_method();
        generator = Generator();
        ERR_clear_error();
        Random::init_ = true;
    }
    void TearDown() override {
        RAND_set_rand_method(methodBefore_);
        ERR_clear_error();
        Random::init_ = false;
    }

private:
    const RAND_METHOD* methodBefore_ = nullptr;
};

}  // namespace

TEST_F(RandomTest, IsNotReadyUntilTheApplicationSaysSo) {
    EXPECT_FALSE(READY_AT_LOAD);
}

TEST_F(RandomTest, NothingIsDrawnWhileNotReady) {
    RAND_set_rand_method(&OWN_METHOD);
    Random::init_ = false;

    for (const unsigned int n :
         {0U, 1U, 16U, INT_LIMIT, INT_LIMIT + 1, std::numeric_limits<unsigned int>::max()}) {
        EXPECT_EQ(messageOf<OpenSSLException>([n] { Random::next(n); }),
                  "Random must be initialized before use")
            << n;
    }
    EXPECT_TRUE(generator.asked.empty());
}

TEST_F(RandomTest, RefusalBeforeReadinessDoesNotTouchTheErrorQueue) {
    Random::init_ = false;
    const unsigned long left = leaveApplicationError();

    EXPECT_EQ(errorStackOf([] { Random::next(16); }), "");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_F(RandomTest, ReadinessCanBeTakenBack) {
    EXPECT_EQ(Random::next(16).size(), 16U);
    Random::init_ = false;
    EXPECT_EQ(messageOf<OpenSSLException>([] { Random::next(16); }), "Random must be initialized before use");
}

TEST_F(RandomTest, BytesAreThoseOfOpenSSLsGenerator) {
    RAND_set_rand_method(&OWN_METHOD);

    EXPECT_EQ(Random::next(5), fromHex("01 02 03 04 05"));
    EXPECT_EQ(Random::next(1), fromHex("01"));
    EXPECT_EQ(generator.asked, (std::vector<int>{5, 1}));
}

TEST_F(RandomTest, DrawsDiffer) {
    const bytes first = Random::next(32);
    EXPECT_EQ(first.size(), 32U);
    EXPECT_NE(first, Random::next(32));
}

TEST_F(RandomTest, NoBytesAreAnEmptyVector) {
    EXPECT_TRUE(Random::next(0).empty());
}

TEST_F(RandomTest, ManyBytesComeInOneDraw) {
    RAND_set_rand_method(&OWN_METHOD);

    EXPECT_EQ(Random::next(1U << 20).size(), std::size_t{1} << 20);
    EXPECT_EQ(generator.asked, std::vector<int>{1 << 20});
}

TEST_F(RandomTest, ResultOfZeroIsAFailure) {
    RAND_set_rand_method(&OWN_METHOD);
    generator.result = 0;

    EXPECT_EQ(messageOf<OpenSSLException>([] { Random::next(16); }), "RAND_bytes");
    EXPECT_EQ(errorStackOf([] { Random::next(16); }), "");
}

TEST_F(RandomTest, FailureCarriesTheErrorQueueAndEmptiesIt) {
    RAND_set_rand_method(&OWN_METHOD);
    generator.result = 0;
    generator.queuesAnError = true;

    EXPECT_NE(errorStackOf([] { Random::next(16); }), "");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

TEST_F(RandomTest, ResultOfMinusOneCountsAsSuccess) {
    RAND_set_rand_method(&OWN_METHOD);
    generator.result = -1;
    generator.fillAtMost = 2;

    EXPECT_EQ(Random::next(4), fromHex("01 02 00 00"));
}

TEST_F(RandomTest, MethodThatCannotDrawCountsAsSuccess) {
    RAND_set_rand_method(&METHOD_WITHOUT_BYTES);

    EXPECT_EQ(Random::next(4), fromHex("00 00 00 00"));
}

// A failure that no exception reports must not turn up in the next one that is.
TEST_F(RandomTest, FailureThatCountsAsSuccessLeavesTheErrorQueueAsItWas) {
    RAND_set_rand_method(&METHOD_WITHOUT_BYTES);

    Random::next(4);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());

    const unsigned long left = leaveApplicationError();
    Random::next(4);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// OpenSSL counts in ints and would take the number for a negative one.
TEST_F(RandomTest, MoreThanAnIntIsRefusedBeforeOpenSSLIsAsked) {
    RAND_set_rand_method(&OWN_METHOD);

    for (const unsigned int n : {INT_LIMIT + 1, std::numeric_limits<unsigned int>::max()}) {
        EXPECT_EQ(messageOf<OpenSSLException>([n] { Random::next(n); }), "RAND_bytes") << n;
    }
    EXPECT_TRUE(generator.asked.empty());
}

TEST_F(RandomTest, GeneratorIsNeverSeededByTheLibrary) {
    RAND_set_rand_method(&OWN_METHOD);
    Random::next(16);
    EXPECT_EQ(generator.seeded, 0);
}

TEST_F(RandomTest, FixedSeedHas64BytesThatTheApplicationMayReplace) {
    unsigned char(&seedBytes)[64] = Random::NON_RANDOM_SEED;
    const bytes before(std::begin(seedBytes), std::end(seedBytes));

    std::fill(std::begin(seedBytes), std::end(seedBytes), static_cast<unsigned char>(0x5a));
    EXPECT_EQ(bytes(std::begin(Random::NON_RANDOM_SEED), std::end(Random::NON_RANDOM_SEED)), bytes(64, 0x5a));

    std::copy(before.begin(), before.end(), std::begin(seedBytes));
}

}  // namespace vorl::test
