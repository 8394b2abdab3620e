#include "OpenSSLFaults.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/BigNum.h"
#include "vorl/ClientKeys.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <string>

// What the library makes of answers that OpenSSL gives it for no input, and what needs a digest that no input
// is known for.

namespace vorl::test {
namespace {

TEST(BigNumOfFaultyOpenSSL, ReportsANumberThatCannotBePrinted) {
    const BigNum number(bytes{0x12, 0x34});
    {
        const UnprintableNumbers fault;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { number.toString(); }),
                  "BN_print() in BigNum::toString()");
    }
    EXPECT_EQ(number.toString(), "1234");
}

TEST(BigNumOfFaultyOpenSSL, ReportsATextThatCannotBeReadBack) {
    const BigNum number(bytes{0x12, 0x34});
    {
        const UnreadableBios fault;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { number.toString(); }),
                  "BIO_read() in BigNum::toString()");
    }
    EXPECT_EQ(number.toString(), "1234");
}

TEST(ClientKeysOfFaultyOpenSSL, RefuseADigestOfAnyOtherSizeAndStayWhatTheyWere) {
    ClientKeys keys(octets(128));
    const ClientKeys before(keys);
    for (const std::size_t size : {0U, 16U, 32U, 47U, 49U, 64U}) {
        const bytes digest = octets(size);
        const FixedDigest fault(digest);
        EXPECT_EQ(messageOf<VORLException>([&] { keys.derive(octets(99)); }), "invalid digest output size")
            << size;
        EXPECT_EQ(messageOf<VORLException>([] { ClientKeys(octets(48)); }), "invalid digest output size");
        EXPECT_EQ(messageOf<VORLException>([] { ClientKeys("123456789"); }), "invalid digest output size");
        EXPECT_EQ(messageOf<VORLException>([] { ClientKeys(octets(9).data(), 9); }),
                  "invalid digest output size");
        EXPECT_EQ(keys.encryptionKey(), before.encryptionKey());
        EXPECT_EQ(keys.hmacKey(), before.hmacKey());
    }
}

ClientKeys keysOfDigest(const bytes& digest) {
    const FixedDigest fixed(digest);
    return ClientKeys(octets(128));
}

TEST(ClientKeysOfAChosenDigest, DifferWhereEitherKeyDiffers) {
    const ClientKeys keys = keysOfDigest(octets(48));
    EXPECT_EQ(keys.encryptionKey(), slice(octets(48), 0, 16));
    EXPECT_EQ(keys.hmacKey(), slice(octets(48), 16, 32));
    EXPECT_TRUE(keysOfDigest(octets(48)) == keys);

    // The first and the last byte of each.
    for (const std::size_t at : {0U, 15U, 16U, 47U}) {
        bytes digest = octets(48);
        digest[at] ^= 0x01;
        const ClientKeys others = keysOfDigest(digest);
        EXPECT_FALSE(others == keys) << at;
        EXPECT_TRUE(others != keys) << at;
        EXPECT_FALSE(keys == others) << at;
        EXPECT_EQ(others.encryptionKey() == keys.encryptionKey(), at >= 16) << at;
        EXPECT_EQ(others.hmacKey() == keys.hmacKey(), at < 16) << at;
    }
}

}  // namespace
}  // namespace vorl::test
