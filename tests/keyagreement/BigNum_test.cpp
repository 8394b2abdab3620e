#include "vorl/BigNum.h"

#include "octets.h"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

TEST(BigNum, LeadingZeroBytesVanish) {
    const BigNum number(fromHex("00 00 01 00"));
    EXPECT_EQ(number.size(), 2U);
    EXPECT_EQ(number.encode(), fromHex("01 00"));
}

}  // namespace
}  // namespace vorl::test
