#include "core/ErrorQueueMark.h"

#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/err.h>

#include <memory>

namespace vorl::test {
namespace {

// A real failure: OpenSSL refuses to divide by zero and queues one error.
void queueADivisionByZero() {
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> zero(BN_new(), BN_free);
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> quotient(BN_new(), BN_free);
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
    ASSERT_EQ(BN_div(quotient.get(), nullptr, BN_value_one(), zero.get(), ctx.get()), 0);
}

// Another one, which can be told from the first.
void queueABadNumberOfBits() {
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(BN_new(), BN_free);
    ASSERT_EQ(BN_rand(number.get(), -1, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY), 0);
}

class ErrorQueueMarkTest : public ::testing::Test {
protected:
    void SetUp() override { ERR_clear_error(); }
    void TearDown() override { ERR_clear_error(); }
};

TEST_F(ErrorQueueMarkTest, TakesOffWhatWasQueuedSince) {
    {
        const ErrorQueueMark mark;
        queueADivisionByZero();
        queueADivisionByZero();
        ASSERT_NE(ERR_peek_error(), 0U);
    }
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST_F(ErrorQueueMarkTest, LeavesTheEntriesOfTheApplication) {
    queueADivisionByZero();
    const unsigned long ofTheApplication = ERR_peek_last_error();
    {
        const ErrorQueueMark mark;
        queueABadNumberOfBits();
        ASSERT_NE(ERR_peek_last_error(), ofTheApplication);
    }
    EXPECT_EQ(ERR_get_error(), ofTheApplication);
    EXPECT_EQ(ERR_get_error(), 0U);
}

TEST_F(ErrorQueueMarkTest, LeavesThemWhereNothingFailed) {
    queueADivisionByZero();
    { const ErrorQueueMark mark; }
    EXPECT_NE(ERR_get_error(), 0U);
    EXPECT_EQ(ERR_get_error(), 0U);
}

}  // namespace
}  // namespace vorl::test
