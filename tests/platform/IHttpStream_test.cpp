#include "tarvik/http/IHttpStream.h"

#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {

using tarvik::http::IHttpStream;

// The destructor comes first and takes two slots.
TEST(IHttpStream, VirtualOperationsKeepTheirSlots) {
    EXPECT_EQ(vtableSlot(&IHttpStream::status), 2);
    EXPECT_EQ(vtableSlot(&IHttpStream::fields), 3);
    EXPECT_EQ(vtableSlot(&IHttpStream::body), 4);
    EXPECT_EQ(vtableSlot(&IHttpStream::request), 5);
    EXPECT_EQ(vtableSlot(&WithOneMore<IHttpStream>::oneMore), 6);
}

TEST(IHttpStream, IsAnInterface) {
    EXPECT_TRUE(std::is_abstract_v<IHttpStream>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IHttpStream>);
    EXPECT_EQ(sizeof(IHttpStream), sizeof(void*));
}

}  // namespace vorl::test
