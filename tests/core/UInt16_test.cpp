#include "vorl/UInt16.h"

#include "messageOf.h"
#include "octets.h"

#include "vorl/Buffer.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {
namespace {

struct UInt16Case {
    const char* name;
    unsigned short value;
    bytes wire;
};

const UInt16Case UINT16_WIRES[] = {
    {"Zero", 0, {0x00, 0x00}},           {"One", 1, {0x00, 0x01}},
    {"LowByteFull", 0xff, {0x00, 0xff}}, {"HighByteOne", 0x100, {0x01, 0x00}},
    {"Example", 0x1234, {0x12, 0x34}},   {"BelowTheSign", 0x7fff, {0x7f, 0xff}},
    {"Sign", 0x8000, {0x80, 0x00}},      {"HighBits", 0xabcd, {0xab, 0xcd}},
    {"Largest", 0xffff, {0xff, 0xff}},
};

class UInt16Wire : public ::testing::TestWithParam<UInt16Case> {};

TEST_P(UInt16Wire, IsWrittenMostSignificantByteFirst) {
    Buffer b(bytes{0x55});
    UInt16(GetParam().value).encode(b);

    EXPECT_EQ(b.toByteArray(), bytes{0x55} + GetParam().wire);
    EXPECT_EQ(UInt16::encodeBytes(GetParam().value), GetParam().wire);
}

TEST_P(UInt16Wire, IsReadMostSignificantByteFirst) {
    Buffer b(GetParam().wire + bytes{0x55});
    UInt16 field(0x5a5a);
    field.decode(b);

    EXPECT_EQ(field.val(), GetParam().value);
    EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
    EXPECT_EQ(UInt16::decodeBytes(GetParam().wire), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Values, UInt16Wire, ::testing::ValuesIn(UINT16_WIRES),
                         [](const auto& test) { return test.param.name; });

TEST(UInt16, ExhaustsABufferOfTwoBytes) {
    Buffer b(bytes{0xab, 0xcd});
    UInt16 field(0);
    field.decode(b);

    EXPECT_EQ(field.val(), 0xabcd);
    EXPECT_EQ(b.ridx(), b.widx());
}

TEST(UInt16, IsRefusedByTooFewUnreadBytesAndLeavesThem) {
    for (unsigned int available = 0; available < 2; ++available) {
        // Bytes before the read index do not count, nor does the store's reserve behind the write index.
        Buffer b(16);
        b.put(octets(3 + available));
        b.skip(3);
        UInt16 field(0x4243);

        EXPECT_EQ(
            messageOf<VORLException>([&] { field.decode(b); }),
            "Buffer only contains " + std::string(1, "01"[available]) + " bytes; unable to decode UInt16");
        EXPECT_EQ(field.val(), 0x4243);
        EXPECT_EQ(b.ridx(), 3U);
    }
}

TEST(UInt16, IsMadeOfExactlyTwoBytes) {
    EXPECT_EQ(messageOf<VORLException>([] { UInt16::decodeBytes({}); }),
              "Unable to decode input; input length (0) out of range");
    EXPECT_EQ(messageOf<VORLException>([] { UInt16::decodeBytes({0x01}); }),
              "Unable to decode input; input length (1) out of range");
    EXPECT_EQ(messageOf<VORLException>([] {
                  UInt16::decodeBytes({0x01, 0x02, 0x03});
              }),
              "Unable to decode input; input length (3) out of range");
}

TEST(UInt16, KeepsItsValueWhenCopied) {
    UInt16 copy(1);
    {
        const UInt16 original(0xabcd);
        copy = original;
    }
    EXPECT_EQ(copy.val(), 0xabcd);
    EXPECT_EQ(UInt16(copy).val(), 0xabcd);
}

TEST(UInt16, PrintsItsBytesInHex) {
    EXPECT_EQ(UInt16(0x1234).toString(), "[UInt16: 0x 12 34]");
    EXPECT_EQ(UInt16(0).toString(), "[UInt16: 0x 00 00]");
    EXPECT_EQ(UInt16(0xabcd).toString(), "[UInt16: 0x ab cd]");
}

TEST(UInt16, PrintsItselfAsABlock) {
    EXPECT_EQ(UInt16(0x1234).toFormatString("count", 80, 1, ":", 4), "    count:  12:34\n");
    EXPECT_EQ(UInt16(0x1234).toFormatString("count", 80, 3, " - ", 2), "      count:  12 - 34\n");
    EXPECT_EQ(UInt16(0x1234).toFormatString("count", 9, 1, ":", 2), "  count:\n    12\n    34\n");
}

}  // namespace
}  // namespace vorl::test
