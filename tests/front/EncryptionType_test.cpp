#include "vorl/EncryptionType.h"

#include "vorl/CipherWrapper.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

TEST(EncryptionType, NamedObjectsTieALevelToItsWrapper) {
    EXPECT_EQ(EncryptionType::FULL_CIPHER()->name, "Full");
    EXPECT_EQ(EncryptionType::FULL_CIPHER()->wrapper, CipherWrapper::FULL_CIPHER());
    EXPECT_EQ(EncryptionType::TEST_CIPHER()->name, "Test");
    EXPECT_EQ(EncryptionType::TEST_CIPHER()->wrapper, CipherWrapper::TEST_CIPHER());
    EXPECT_EQ(EncryptionType::NULL_CIPHER()->name, "None");
    EXPECT_EQ(EncryptionType::NULL_CIPHER()->wrapper, CipherWrapper::NULL_CIPHER());
}

TEST(EncryptionType, NamedObjectsAreMadeOnce) {
    EXPECT_EQ(EncryptionType::FULL_CIPHER(), EncryptionType::FULL_CIPHER());
    EXPECT_EQ(EncryptionType::TEST_CIPHER(), EncryptionType::TEST_CIPHER());
    EXPECT_EQ(EncryptionType::NULL_CIPHER(), EncryptionType::NULL_CIPHER());
    EXPECT_NE(EncryptionType::FULL_CIPHER(), EncryptionType::TEST_CIPHER());
    EXPECT_NE(EncryptionType::FULL_CIPHER(), EncryptionType::NULL_CIPHER());
}

// The level is "None", its wrapper "Null": both spellings are in use.
TEST(EncryptionType, PrintsNameAndWrapper) {
    EXPECT_EQ(EncryptionType::FULL_CIPHER()->toString(), "EncryptionType[Full:CipherWrapper[Full:0x02]]");
    EXPECT_EQ(EncryptionType::TEST_CIPHER()->toString(), "EncryptionType[Test:CipherWrapper[Test:0x01]]");
    EXPECT_EQ(EncryptionType::NULL_CIPHER()->toString(), "EncryptionType[None:CipherWrapper[Null:0x00]]");
}

TEST(EncryptionType, KeepsWhatItWasGiven) {
    const EncryptionType own("Own", CipherWrapper::TEST_CIPHER());
    EXPECT_EQ(own.name, "Own");
    EXPECT_EQ(own.wrapper, CipherWrapper::TEST_CIPHER());
    EXPECT_EQ(own.toString(), "EncryptionType[Own:CipherWrapper[Test:0x01]]");
}

TEST(EncryptionType, HasNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<EncryptionType>);
}

}  // namespace vorl::test
