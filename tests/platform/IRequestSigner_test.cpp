#include "tarvik/crypto/IRequestSigner.h"

#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

using tarvik::crypto::IRequestSigner;

// The destructor comes first and takes two slots.
TEST(IRequestSigner, VirtualOperationsKeepTheirSlots) {
    EXPECT_EQ(vtableSlot(&IRequestSigner::sign), 2);
    EXPECT_EQ(vtableSlot(&IRequestSigner::verify), 3);
    EXPECT_EQ(vtableSlot(&WithOneMore<IRequestSigner>::oneMore), 4);
}

TEST(IRequestSigner, IsAnInterface) {
    EXPECT_TRUE(std::is_abstract_v<IRequestSigner>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IRequestSigner>);
    EXPECT_EQ(sizeof(IRequestSigner), sizeof(void*));
}

}  // namespace vorl::test
