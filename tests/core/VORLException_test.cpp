#include "vorl/VORLException.h"

#include "isCaughtBy.h"
#include "messageOf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace vorl::test {
namespace {

using ::testing::Not;
using ::testing::StartsWith;

static_assert(std::is_base_of_v<std::runtime_error, VORLException>);
static_assert(sizeof(ErrorCode) == 4, "the codes are 32-bit numbers");
static_assert(!std::is_convertible_v<ErrorCode, VORLException>);
static_assert(std::is_same_v<decltype(&VORLException::what), decltype(&std::runtime_error::what)>,
              "what() is the one of std::runtime_error");

TEST(VORLException, CarriesItsMessageWithTheGeneralCode) {
    const VORLException e("the length is wrong");

    EXPECT_STREQ(e.what(), "the length is wrong");
    EXPECT_EQ(e.code(), GENERAL_ERROR);
}

TEST(VORLException, CarriesTheCodeThatIsGiven) {
    const VORLException general(GENERAL_ERROR, "first");
    const VORLException null(NULL_PARAMETER, "second");

    EXPECT_EQ(general.code(), GENERAL_ERROR);
    EXPECT_STREQ(general.what(), "first");
    EXPECT_EQ(null.code(), NULL_PARAMETER);
    EXPECT_STREQ(null.what(), "second");
}

TEST(VORLException, CodesKeepTheirNumbers) {
    EXPECT_EQ(static_cast<int>(GENERAL_ERROR), 0);
    EXPECT_EQ(static_cast<int>(NULL_PARAMETER), 1);
}

TEST(VORLException, AnEmptyMessageIsAMessage) {
    EXPECT_STREQ(VORLException("").what(), "");
}

TEST(VORLException, CannotBeMadeWithoutAMessage) {
    EXPECT_THAT(messageOf<std::logic_error>([] { VORLException e; }), Not(StartsWith("<")));
}

TEST(VORLException, CannotBeMadeOfACodeAlone) {
    EXPECT_THAT(messageOf<std::logic_error>([] { VORLException e(GENERAL_ERROR); }), Not(StartsWith("<")));
    EXPECT_THAT(messageOf<std::logic_error>([] { VORLException e(NULL_PARAMETER); }), Not(StartsWith("<")));
}

TEST(VORLException, IsCaughtAsARuntimeError) {
    EXPECT_TRUE(isCaughtBy<std::runtime_error>([] { throw VORLException("x"); }));
    EXPECT_FALSE(isCaughtBy<std::logic_error>([] { throw VORLException("x"); }));
}

TEST(VORLException, KeepsItsMessageAndCodeWhenCopied) {
    VORLException copy("another");
    {
        const VORLException original(NULL_PARAMETER, "the original");
        copy = original;
    }
    const VORLException second(copy);

    EXPECT_STREQ(second.what(), "the original");
    EXPECT_EQ(second.code(), NULL_PARAMETER);
}

}  // namespace
}  // namespace vorl::test
