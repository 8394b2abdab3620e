#include "vorl/OpenSSLException.h"

#include "isCaughtBy.h"
#include "messageOf.h"

#include "vorl/VORLException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/err.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>

namespace vorl::test {
namespace {

using ::testing::HasSubstr;

static_assert(!std::is_base_of_v<VORLException, OpenSSLException>,
              "a handler for the library's own checks does not swallow a failure of OpenSSL");
static_assert(std::is_same_v<decltype(&OpenSSLException::what), decltype(&std::runtime_error::what)>,
              "what() is the one of std::runtime_error");

// A real failure: OpenSSL refuses to divide by zero and queues one error.
void queueAnOpenSSLError() {
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> zero(BN_new(), BN_free);
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> quotient(BN_new(), BN_free);
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
    ASSERT_EQ(BN_div(quotient.get(), nullptr, BN_value_one(), zero.get(), ctx.get()), 0);
    ASSERT_NE(ERR_peek_error(), 0U);
}

const std::string DIVISION_BY_ZERO = "div by zero";

OpenSSLException thrownMessage() {
    try {
        OpenSSLException::throw_message("BN_bin2bn", "BigNum", 37, "BigNum");
    } catch (const OpenSSLException& e) {
        return e;
    }
}

class OpenSSLExceptionTest : public ::testing::Test {
protected:
    void SetUp() override { ERR_clear_error(); }
    void TearDown() override { ERR_clear_error(); }
};

TEST_F(OpenSSLExceptionTest, OfAMessageAloneHasAnEmptyErrorStack) {
    queueAnOpenSSLError();
    const OpenSSLException e("not ready");

    EXPECT_STREQ(e.what(), "not ready");
    EXPECT_EQ(e.errorStack(), "");
    EXPECT_NE(ERR_peek_error(), 0U) << "the queue is somebody else's";
}

TEST_F(OpenSSLExceptionTest, CarriesTheErrorStackThatIsGiven) {
    const OpenSSLException e("RSA_sign", "line one\nline two\n");

    EXPECT_STREQ(e.what(), "RSA_sign");
    EXPECT_EQ(e.errorStack(), "line one\nline two\n");
}

TEST_F(OpenSSLExceptionTest, IsNotCaughtAsAVORLExceptionButAsARuntimeError) {
    const auto raise = [] { OpenSSLException::throw_message("BN_dup()", "BigNum", 12, "BigNum"); };

    EXPECT_FALSE(isCaughtBy<VORLException>(raise));
    EXPECT_TRUE(isCaughtBy<std::runtime_error>(raise));
}

TEST_F(OpenSSLExceptionTest, ThrowMessageSaysOnlyTheContext) {
    EXPECT_EQ(messageOf<OpenSSLException>(
                  [] { OpenSSLException::throw_message("BN_bin2bn", "BigNum", 37, "BigNum"); }),
              "BN_bin2bn");
}

TEST_F(OpenSSLExceptionTest, ThrowMessageWithAnEmptyQueueHasAnEmptyErrorStack) {
    EXPECT_EQ(thrownMessage().errorStack(), "");
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST_F(OpenSSLExceptionTest, ThrowMessageMovesTheQueueIntoTheErrorStack) {
    queueAnOpenSSLError();
    const OpenSSLException e = thrownMessage();

    EXPECT_STREQ(e.what(), "BN_bin2bn");
    EXPECT_THAT(e.errorStack(), HasSubstr(DIVISION_BY_ZERO));
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST_F(OpenSSLExceptionTest, ThrowMessageGivesEachQueuedErrorALine) {
    queueAnOpenSSLError();
    queueAnOpenSSLError();
    queueAnOpenSSLError();
    const std::string stack = thrownMessage().errorStack();

    EXPECT_EQ(std::count(stack.begin(), stack.end(), '\n'), 3);
    EXPECT_EQ(stack.back(), '\n');
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST_F(OpenSSLExceptionTest, ThrowMessageReportsAnErrorOnce) {
    queueAnOpenSSLError();
    EXPECT_NE(thrownMessage().errorStack(), "");
    EXPECT_EQ(thrownMessage().errorStack(), "");
}

TEST_F(OpenSSLExceptionTest, ThrowMessageReadsTheQueueOfItsOwnThreadOnly) {
    queueAnOpenSSLError();
    std::string stackOfTheOther = "<not run>";
    std::thread([&] { stackOfTheOther = thrownMessage().errorStack(); }).join();

    EXPECT_EQ(stackOfTheOther, "");
    EXPECT_THAT(thrownMessage().errorStack(), HasSubstr(DIVISION_BY_ZERO));
}

TEST_F(OpenSSLExceptionTest, OwnsItsTexts) {
    OpenSSLException copy("another");
    {
        std::string context = "EVP_DigestInit_ex(), with a text that is too long for a small string";
        try {
            OpenSSLException::throw_message(context.c_str(), "Digester", 1, "Digester");
        } catch (const OpenSSLException& e) {
            copy = e;
        }
        context.assign(context.size(), '#');
    }

    EXPECT_STREQ(copy.what(), "EVP_DigestInit_ex(), with a text that is too long for a small string");
}

}  // namespace
}  // namespace vorl::test
