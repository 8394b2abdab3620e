#include "vorl/CipherAlgo.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

TEST(CipherAlgo, NamedObjectsBearTheirNames) {
    EXPECT_EQ(CipherAlgo::AES()->name, "AES");
    EXPECT_EQ(CipherAlgo::NULL_CIPHER()->name, "NULL_CIPHER");
}

TEST(CipherAlgo, NamedObjectsAreMadeOnce) {
    EXPECT_EQ(CipherAlgo::AES(), CipherAlgo::AES());
    EXPECT_EQ(CipherAlgo::NULL_CIPHER(), CipherAlgo::NULL_CIPHER());
    EXPECT_NE(CipherAlgo::AES(), CipherAlgo::NULL_CIPHER());
}

TEST(CipherAlgo, KeepsTheNameThatItWasGiven) {
    EXPECT_EQ(CipherAlgo("Camellia").name, "Camellia");
    EXPECT_EQ(CipherAlgo("").name, "");
}

TEST(CipherAlgo, HasNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<CipherAlgo>);
}

}  // namespace vorl::test
