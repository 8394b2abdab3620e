#include "vorl/UInt8.h"

#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace vorl::test {
namespace {

TEST(UInt8, IsWrittenAsItsByte) {
    for (unsigned int v = 0; v <= 0xff; ++v) {
        const auto byte = static_cast<unsigned char>(v);
        Buffer b;
        UInt8(byte).encode(b);
        EXPECT_EQ(b.toByteArray(), bytes{byte});
    }
}

TEST(UInt8, IsReadFromOneByte) {
    for (unsigned int v = 0; v <= 0xff; ++v) {
        const auto byte = static_cast<unsigned char>(v);
        Buffer b(bytes{byte, 0x55});
        UInt8 field(static_cast<unsigned char>(~v));
        field.decode(b);
        EXPECT_EQ(field.val(), byte);
        EXPECT_EQ(b.ridx(), 1U);
    }
}

TEST(UInt8, IsRefusedByAnExhaustedBufferAndKeepsItsValue) {
    Buffer b;
    UInt8 field(0x42);

    EXPECT_EQ(messageOf<ASN1Exception>([&] { field.decode(b); }),
              "index out of bounds: read index(0) >= write index(0)");
    EXPECT_EQ(field.val(), 0x42);
}

TEST(UInt8, KeepsItsValueWhenCopied) {
    UInt8 copy(1);
    {
        const UInt8 original(0xab);
        copy = original;
    }
    EXPECT_EQ(copy.val(), 0xab);
    EXPECT_EQ(UInt8(copy).val(), 0xab);
}

TEST(UInt8, PrintsTwoHexDigits) {
    EXPECT_EQ(UInt8(0x0a).toString(), "[UInt8: 0x 0a]");
    for (unsigned int v = 0; v <= 0xff; ++v) {
        char expected[16];
        std::snprintf(expected, sizeof(expected), "[UInt8: 0x %02x]", v);
        EXPECT_EQ(UInt8(static_cast<unsigned char>(v)).toString(), expected);
    }
}

TEST(UInt8, PrintsItselfAsABlock) {
    EXPECT_EQ(UInt8(0x0a).toFormatString("version", 80, 1, ":", 4), "    version:  0a\n");
    EXPECT_EQ(UInt8(0xff).toFormatString("version", 80, 3, "-", 2), "      version:  ff\n");
    EXPECT_EQ(UInt8(0xff).toFormatString("version", 10, 1, ":", 2), "  version:\n    ff\n");
}

}  // namespace
}  // namespace vorl::test
