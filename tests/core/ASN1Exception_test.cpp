#include "vorl/ASN1Exception.h"

#include "isCaughtBy.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(std::is_same_v<decltype(&ASN1Exception::what), decltype(&std::runtime_error::what)>,
              "what() is the one of std::runtime_error");

TEST(ASN1Exception, CarriesItsMessageWithTheGeneralCode) {
    const ASN1Exception e("x");

    EXPECT_STREQ(e.what(), "x");
    EXPECT_EQ(e.code(), GENERAL_ERROR);
}

TEST(ASN1Exception, IsCaughtAsAVORLException) {
    const auto raise = [] { throw ASN1Exception("x"); };

    EXPECT_TRUE(isCaughtBy<ASN1Exception>(raise));
    EXPECT_TRUE(isCaughtBy<VORLException>(raise));
    EXPECT_TRUE(isCaughtBy<std::runtime_error>(raise));
}

TEST(ASN1Exception, IsNotCaughtWhereAPlainVORLExceptionIsThrown) {
    EXPECT_FALSE(isCaughtBy<ASN1Exception>([] { throw VORLException("x"); }));
}

}  // namespace
}  // namespace vorl::test
