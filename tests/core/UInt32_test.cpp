#include "vorl/UInt32.h"

#include "messageOf.h"
#include "octets.h"

#include "vorl/Buffer.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {
namespace {

struct UInt32Case {
    const char* name;
    unsigned int value;
    bytes wire;
};

const UInt32Case UINT32_WIRES[] = {
    {"Zero", 0, {0x00, 0x00, 0x00, 0x00}},
    {"One", 1, {0x00, 0x00, 0x00, 0x01}},
    {"SecondByte", 0x100, {0x00, 0x00, 0x01, 0x00}},
    {"ThirdByte", 0x10000, {0x00, 0x01, 0x00, 0x00}},
    {"FourthByte", 0x1000000, {0x01, 0x00, 0x00, 0x00}},
    {"Example", 0x01020304, {0x01, 0x02, 0x03, 0x04}},
    {"BelowTheSign", 0x7fffffff, {0x7f, 0xff, 0xff, 0xff}},
    {"Sign", 0x80000000, {0x80, 0x00, 0x00, 0x00}},
    {"HighBits", 0xfedcba98, {0xfe, 0xdc, 0xba, 0x98}},
    {"Largest", 0xffffffff, {0xff, 0xff, 0xff, 0xff}},
};

class UInt32Wire : public ::testing::TestWithParam<UInt32Case> {};

TEST_P(UInt32Wire, IsWrittenMostSignificantByteFirst) {
    Buffer b(bytes{0x55});
    UInt32(GetParam().value).encode(b);

    EXPECT_EQ(b.toByteArray(), bytes{0x55} + GetParam().wire);
    EXPECT_EQ(UInt32::encodeBytes(GetParam().value), GetParam().wire);
}

TEST_P(UInt32Wire, IsReadMostSignificantByteFirst) {
    Buffer b(GetParam().wire + bytes{0x55});
    UInt32 field(0x5a5a5a5a);
    field.decode(b);

    EXPECT_EQ(field.val(), GetParam().value);
    EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
    EXPECT_EQ(UInt32::decodeBytes(GetParam().wire), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Values, UInt32Wire, ::testing::ValuesIn(UINT32_WIRES),
                         [](const auto& test) { return test.param.name; });

TEST(UInt32, IsRefusedByTooFewUnreadBytesAndLeavesThem) {
    for (unsigned int available = 0; available < 4; ++available) {
        // Bytes before the read index do not count, nor does the store's reserve behind the write index.
        Buffer b(16);
        b.put(octets(5 + available));
        b.skip(5);
        UInt32 field(0x42434445);

        EXPECT_EQ(
            messageOf<VORLException>([&] { field.decode(b); }),
            "Buffer only contains " + std::string(1, "0123"[available]) + " bytes; unable to decode UInt32");
        EXPECT_EQ(field.val(), 0x42434445U);
        EXPECT_EQ(b.ridx(), 5U);
    }
}

TEST(UInt32, IsMadeOfExactlyFourBytes) {
    EXPECT_EQ(messageOf<VORLException>([] { UInt32::decodeBytes({}); }),
              "Unable to decode input; input length (0) out of range");
    EXPECT_EQ(messageOf<VORLException>([] {
                  UInt32::decodeBytes({1, 2, 3});
              }),
              "Unable to decode input; input length (3) out of range");
    EXPECT_EQ(messageOf<VORLException>([] {
                  UInt32::decodeBytes({1, 2, 3, 4, 5});
              }),
              "Unable to decode input; input length (5) out of range");
}

TEST(UInt32, KeepsItsValueWhenCopied) {
    UInt32 copy(1);
    {
        const UInt32 original(0xfedcba98);
        copy = original;
    }
    EXPECT_EQ(copy.val(), 0xfedcba98U);
    EXPECT_EQ(UInt32(copy).val(), 0xfedcba98U);
}

TEST(UInt32, PrintsItsBytesInHex) {
    EXPECT_EQ(UInt32(1).toString(), "[UInt32: 0x 00 00 00 01]");
    EXPECT_EQ(UInt32(0x01020304).toString(), "[UInt32: 0x 01 02 03 04]");
    EXPECT_EQ(UInt32(0xfedcba98).toString(), "[UInt32: 0x fe dc ba 98]");
}

TEST(UInt32, PrintsItselfAsABlock) {
    EXPECT_EQ(UInt32(0x01020304).toFormatString("count", 80, 1, ":", 4), "    count:  01:02:03:04\n");
    EXPECT_EQ(UInt32(0x01020304).toFormatString("count", 80, 3, "", 2), "      count:  01020304\n");
    EXPECT_EQ(UInt32(0x01020304).toFormatString("n", 10, 1, ":", 2), "  n:\n    01:02\n    03:04\n");
}

}  // namespace
}  // namespace vorl::test
