#include "vorl/PaddingType.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

TEST(PaddingType, NamedObjectsBearTheirNames) {
    EXPECT_EQ(PaddingType::PKCS5Padding()->name, "PKCS5Padding");
    EXPECT_EQ(PaddingType::NONE()->name, "NONE");
}

TEST(PaddingType, NamedObjectsAreMadeOnce) {
    EXPECT_EQ(PaddingType::PKCS5Padding(), PaddingType::PKCS5Padding());
    EXPECT_EQ(PaddingType::NONE(), PaddingType::NONE());
    EXPECT_NE(PaddingType::PKCS5Padding(), PaddingType::NONE());
}

TEST(PaddingType, KeepsTheNameThatItWasGiven) {
    EXPECT_EQ(PaddingType("ISO7816").name, "ISO7816");
    EXPECT_EQ(PaddingType("").name, "");
}

TEST(PaddingType, HasNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<PaddingType>);
}

}  // namespace vorl::test
