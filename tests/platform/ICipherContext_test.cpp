#include "tarvik/crypto/ICipherContext.h"

#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

using tarvik::crypto::ICipherContext;

// The destructor comes first and takes two slots.
TEST(ICipherContext, VirtualOperationsKeepTheirSlots) {
    EXPECT_EQ(vtableSlot(&ICipherContext::id), 2);
    EXPECT_EQ(vtableSlot(&ICipherContext::encryptInit), 3);
    EXPECT_EQ(vtableSlot(&ICipherContext::decryptInit), 4);
    EXPECT_EQ(vtableSlot(&ICipherContext::update), 5);
    EXPECT_EQ(vtableSlot(&ICipherContext::final), 6);
    EXPECT_EQ(vtableSlot(&WithOneMore<ICipherContext>::oneMore), 7);
}

TEST(ICipherContext, IsAnInterface) {
    EXPECT_TRUE(std::is_abstract_v<ICipherContext>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ICipherContext>);
    // Nothing but the pointer to the virtual table.
    EXPECT_EQ(sizeof(ICipherContext), sizeof(void*));
}

TEST(ICipherContext, SpecsHaveTheirNumbers) {
    EXPECT_EQ(static_cast<unsigned int>(ICipherContext::SPEC_NULL), 0U);
    EXPECT_EQ(static_cast<unsigned int>(ICipherContext::SPEC_AES_128_ECB), 1U);
    EXPECT_EQ(static_cast<unsigned int>(ICipherContext::SPEC_AES_128_CBC), 2U);
}

TEST(ICipherContext, SpecCarriesAny32BitNumber) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ICipherContext::Spec>, unsigned int>));
    EXPECT_TRUE((std::is_convertible_v<ICipherContext::Spec, unsigned int>));
    EXPECT_EQ(static_cast<unsigned int>(static_cast<ICipherContext::Spec>(0xffffffffU)), 0xffffffffU);
}

}  // namespace vorl::test
