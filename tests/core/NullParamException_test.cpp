#include "vorl/NullParamException.h"

#include "isCaughtBy.h"

#include "vorl/ASN1Exception.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(std::is_same_v<decltype(&NullParamException::what), decltype(&std::runtime_error::what)>,
              "what() is the one of std::runtime_error");

TEST(NullParamException, SaysThatAParameterIsNullAndKeepsItsNameApart) {
    const NullParamException e("key");

    EXPECT_STREQ(e.what(), "parameter is null");
    EXPECT_EQ(e.code(), NULL_PARAMETER);
    EXPECT_EQ(e.paramName(), "key");
}

TEST(NullParamException, HasTheSameMessageForEveryName) {
    const NullParamException e("");

    EXPECT_STREQ(e.what(), "parameter is null");
    EXPECT_EQ(e.paramName(), "");
}

TEST(NullParamException, IsCaughtAsAVORLExceptionButNotAsAnASN1Exception) {
    const auto raise = [] { throw NullParamException("key"); };

    EXPECT_TRUE(isCaughtBy<VORLException>(raise));
    EXPECT_TRUE(isCaughtBy<std::runtime_error>(raise));
    EXPECT_FALSE(isCaughtBy<ASN1Exception>(raise));
}

TEST(NullParamException, ShowsItsCodeToAHandlerForTheBase) {
    try {
        throw NullParamException("key");
    } catch (const VORLException& e) {
        EXPECT_EQ(e.code(), NULL_PARAMETER);
        EXPECT_STREQ(e.what(), "parameter is null");
    }
}

TEST(NullParamException, OwnsTheNameItCarries) {
    NullParamException copy("another");
    {
        const NullParamException original("a name that is too long for any small-string store");
        copy = original;
    }

    EXPECT_EQ(copy.paramName(), "a name that is too long for any small-string store");
}

}  // namespace
}  // namespace vorl::test
