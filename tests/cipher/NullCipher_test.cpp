#include "vorl/NullCipher.h"

#include "octets.h"
#include "vorl/CipherSpec.h"

#include <gtest/gtest.h>

namespace vorl::test {

TEST(NullCipher, ImplementsTheNullSpec) {
    NullCipher cipher;
    EXPECT_EQ(static_cast<unsigned int>(cipher.id()), 0U);
    EXPECT_TRUE(cipher.isBoundTo(*CipherSpec::NULL_CIPHER()));
    EXPECT_FALSE(cipher.isBoundTo(*CipherSpec::AES_128_ECB_PKCS5()));
}

TEST(NullCipher, ReturnsWhatItIsGivenInEitherDirection) {
    NullCipher cipher;
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 70000U}) {
        cipher.encryptInit({});
        EXPECT_EQ(cipher.update(octets(size)), octets(size));
        EXPECT_EQ(cipher.final(), bytes());
        cipher.decryptInit({});
        EXPECT_EQ(cipher.update(octets(size)), octets(size));
        EXPECT_EQ(cipher.final(), bytes());
    }
}

TEST(NullCipher, IgnoresTheIv) {
    NullCipher cipher;
    cipher.encryptInit(octets(16));
    EXPECT_EQ(cipher.update(octets(3)), octets(3));
    cipher.decryptInit(octets(1));
    EXPECT_EQ(cipher.update(octets(3)), octets(3));
}

TEST(NullCipher, NeedsNoInit) {
    NullCipher cipher;
    EXPECT_EQ(cipher.update(octets(5)), octets(5));
    EXPECT_EQ(cipher.update(octets(2)), octets(2));
    EXPECT_EQ(cipher.final(), bytes());
    EXPECT_EQ(cipher.final(), bytes());
}

TEST(NullCipher, CopiesItsInput) {
    NullCipher cipher;
    const bytes in = octets(20);
    const bytes out = cipher.update(in);
    EXPECT_NE(out.data(), in.data());
}

}  // namespace vorl::test
