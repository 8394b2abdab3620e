#include "vorl/CipherMode.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

TEST(CipherMode, NamedObjectsBearTheirNames) {
    EXPECT_EQ(CipherMode::CBC()->name, "CBC");
    EXPECT_EQ(CipherMode::ECB()->name, "ECB");
    EXPECT_EQ(CipherMode::NONE()->name, "NONE");
}

TEST(CipherMode, NamedObjectsAreMadeOnce) {
    EXPECT_EQ(CipherMode::CBC(), CipherMode::CBC());
    EXPECT_EQ(CipherMode::ECB(), CipherMode::ECB());
    EXPECT_EQ(CipherMode::NONE(), CipherMode::NONE());
    EXPECT_NE(CipherMode::CBC(), CipherMode::ECB());
    EXPECT_NE(CipherMode::CBC(), CipherMode::NONE());
    EXPECT_NE(CipherMode::ECB(), CipherMode::NONE());
}

TEST(CipherMode, KeepsTheNameThatItWasGiven) {
    EXPECT_EQ(CipherMode("CTR").name, "CTR");
    EXPECT_EQ(CipherMode("").name, "");
}

TEST(CipherMode, HasNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<CipherMode>);
}

}  // namespace vorl::test
