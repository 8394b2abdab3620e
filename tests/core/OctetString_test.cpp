#include "vorl/OctetString.h"

#include "block_encoder.h"
#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"

#include <gtest/gtest.h>

#include <bitset>
#include <string>
#include <type_traits>
#include <utility>

namespace vorl::test {
namespace {

static_assert(!std::is_convertible_v<bytes, OctetString>);

bytes encoded(const OctetString& field) {
    Buffer b;
    field.encode(b);
    return b.toByteArray();
}

std::string outOfBounds(std::size_t index) {
    return "index out of bounds: read index(" + std::to_string(index) + ") >= write index(" +
           std::to_string(index) + ")";
}

// What a decoder that refuses `in` says; it must leave the old value.
std::string refusalOf(Buffer& in) {
    OctetString field(bytes{0x11, 0x22});
    const std::string message = messageOf<ASN1Exception>([&] { field.decode(in); });
    EXPECT_EQ(field.toByteArray(), (bytes{0x11, 0x22}));
    return message;
}

// The value.

TEST(OctetString, StartsEmpty) {
    const OctetString field;

    EXPECT_EQ(field.toByteArray(), bytes());
    EXPECT_EQ(field.unitLength(), 0U);
    EXPECT_EQ(field.byteLength(), 0U);
}

TEST(OctetString, CountsUnitsOfEightBits) {
    const OctetString field(octets(300));

    EXPECT_EQ(field.unitSize(), 8U);
    EXPECT_EQ(field.unitLength(), 300U);
    EXPECT_EQ(field.byteLength(), 300U);
    EXPECT_EQ(field.getName(), "OCTET STRING");
}

TEST(OctetString, HoldsACopyOfItsOctets) {
    bytes source = octets(3);
    OctetString field(source);
    source[0] = 0xff;
    EXPECT_EQ(field.toByteArray(), octets(3));

    source = octets(5);
    field.setVal(source);
    source[0] = 0xff;
    EXPECT_EQ(field.toByteArray(), octets(5));

    bytes given = field.toByteArray();
    given[0] = 0xff;
    EXPECT_EQ(field.toByteArray(), octets(5));
}

TEST(OctetString, MovesItsOctetsInAndOut) {
    bytes source = octets(100);
    const unsigned char* const storage = source.data();
    OctetString field(std::move(source));
    EXPECT_EQ(field.toByteArray(), octets(100));

    const bytes taken = std::move(field).takeBytes();
    EXPECT_EQ(taken.data(), storage);
    EXPECT_EQ(taken, octets(100));
}

TEST(OctetString, EqualsTheSameOctetsOnly) {
    const OctetString field(bytes{1, 2, 3});

    EXPECT_TRUE(field == OctetString(bytes{1, 2, 3}));
    EXPECT_FALSE(field != OctetString(bytes{1, 2, 3}));
    for (const bytes& other : {bytes{0, 2, 3}, bytes{1, 2, 4}, bytes{1, 2, 3, 0}, bytes{1, 2}, bytes()}) {
        EXPECT_FALSE(field == OctetString(other));
        EXPECT_TRUE(field != OctetString(other));
        EXPECT_FALSE(OctetString(other) == field);
    }
    EXPECT_TRUE(OctetString() == OctetString(bytes()));
    EXPECT_FALSE(OctetString() != OctetString());
}

// Writing.

struct LengthCase {
    const char* name;
    unsigned int octets;
    bytes determinant;      // the first one
    unsigned int fragment;  // octets behind it
    bytes nextDeterminant;  // and the one behind those
};

const LengthCase LENGTHS[] = {
    {"One", 1, {0x01}, 1, {}},
    {"OneByteLargest", 127, {0x7f}, 127, {}},
    {"TwoBytesSmallest", 128, {0x80, 0x80}, 128, {}},
    {"TwoBytesExample", 200, {0x80, 0xc8}, 200, {}},
    {"LowByteFull", 255, {0x80, 0xff}, 255, {}},
    {"HighByteOne", 256, {0x81, 0x00}, 256, {}},
    {"TwoBytesLargest", 16383, {0xbf, 0xff}, 16383, {}},
    {"OneFragmentExactly", 16384, {0xc1}, 16384, {}},
    {"OneFragmentAndOne", 16385, {0xc1}, 16384, {0x01}},
    {"OneFragmentAndOneByteLargest", 16384 + 127, {0xc1}, 16384, {0x7f}},
    {"OneFragmentAndTwoBytesSmallest", 16384 + 128, {0xc1}, 16384, {0x80, 0x80}},
    {"OneFragmentExample", 20000, {0xc1}, 16384, {0x8e, 0x20}},
    {"BelowTwo", 32767, {0xc1}, 16384, {0xbf, 0xff}},
    {"TwoExactly", 32768, {0xc2}, 32768, {}},
    {"TwoAndOne", 32769, {0xc2}, 32768, {0x01}},
    {"BelowThree", 49151, {0xc2}, 32768, {0xbf, 0xff}},
    {"ThreeExactly", 49152, {0xc3}, 49152, {}},
    {"ThreeAndOne", 49153, {0xc3}, 49152, {0x01}},
    {"BelowFour", 65535, {0xc3}, 49152, {0xbf, 0xff}},
    {"FourExactly", 65536, {0xc4}, 65536, {}},
    {"FourAndOne", 65537, {0xc4}, 65536, {0x01}},
    {"BelowFive", 81919, {0xc4}, 65536, {0xbf, 0xff}},
    {"FourAndOneFragment", 81920, {0xc4}, 65536, {0xc1}},
    {"FourAndOneFragmentAndOne", 81921, {0xc4}, 65536, {0xc1}},
    {"FourAndThreeFragments", 65536 + 65535, {0xc4}, 65536, {0xc3}},
    {"TwiceFour", 131072, {0xc4}, 65536, {0xc4}},
    {"TwiceFourAndOne", 131073, {0xc4}, 65536, {0xc4}},
    {"Many", 5 * 65536 + 3 * 16384 + 300, {0xc4}, 65536, {0xc4}},
};

class OctetStringLength : public ::testing::TestWithParam<LengthCase> {};

TEST_P(OctetStringLength, IsWrittenBeforeTheOctets) {
    const LengthCase& c = GetParam();
    const bytes content = octets(c.octets);
    const bytes written = encoded(OctetString(content));
    const bytes start = c.determinant + slice(content, 0, c.fragment) + c.nextDeterminant;

    ASSERT_GE(written.size(), start.size());
    EXPECT_EQ(slice(written, 0, start.size()), start);
    EXPECT_EQ(written, block(content));
}

TEST_P(OctetStringLength, IsReadBackUnlessNothingClosesItsFragments) {
    const LengthCase& c = GetParam();
    const bytes content = octets(c.octets);
    const bytes written = block(content);
    const bool closed = c.octets % 16384 != 0;

    Buffer alone(written);
    if (closed) {
        EXPECT_EQ(alone.nextOctetString().toByteArray(), content);
        EXPECT_EQ(alone.ridx(), alone.widx());
    } else {
        EXPECT_EQ(refusalOf(alone), outOfBounds(written.size()));
    }

    Buffer followed(written + bytes{0x00, 0x55});
    EXPECT_EQ(followed.nextOctetString().toByteArray(), content);
    EXPECT_EQ(followed.toByteArrayRemain(), closed ? (bytes{0x00, 0x55}) : bytes{0x55});
}

INSTANTIATE_TEST_SUITE_P(Boundaries, OctetStringLength, ::testing::ValuesIn(LENGTHS),
                         [](const auto& test) { return test.param.name; });

TEST(OctetString, IsWrittenBehindWhatIsThere) {
    Buffer b(bytes{0x55});
    b.put(OctetString(bytes{0xaa, 0xbb, 0xcc}));
    b.put(OctetString(bytes{0xdd}));

    EXPECT_EQ(b.toByteArray(), fromHex("55 03aabbcc 01dd"));
}

TEST(OctetString, EmptyIsWrittenAsNothing) {
    EXPECT_EQ(encoded(OctetString()), bytes());
    EXPECT_EQ(encoded(OctetString(bytes())), bytes());
}

// The other side of that: a record with an empty block is taken for one whose next byte is a length.
TEST(OctetString, EmptyInARecordCannotBeReadBack) {
    Buffer b;
    b.put(OctetString());
    b.put(OctetString(bytes{0xaa}));

    EXPECT_EQ(b.nextOctetString().toByteArray(), bytes{0xaa});
    EXPECT_EQ(refusalOf(b), outOfBounds(2));
}

// Reading.

TEST(OctetString, IsReadAsEmptyFromAZeroLength) {
    for (const bytes& zero : {bytes{0x00}, bytes{0x80, 0x00}}) {
        Buffer b(zero + bytes{0x55});
        OctetString field(bytes{0x11});
        field.decode(b);
        EXPECT_EQ(field.toByteArray(), bytes());
        EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
    }
}

TEST(OctetString, IsReadFromALongerLengthThanNeeded) {
    for (unsigned int n = 0; n < 128; ++n) {
        Buffer b(bytes{0x80, static_cast<unsigned char>(n)} + octets(n) + bytes{0x55});
        EXPECT_EQ(b.nextOctetString().toByteArray(), octets(n));
        EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
    }
}

TEST(OctetString, IsReadFromFragmentsOfAnyOrder) {
    const bytes content = octets(16384 + 65536 + 32768 + 49152 + 16384 + 5);
    Buffer b(bytes{0xc1} + slice(content, 0, 16384) + bytes{0xc4} + slice(content, 16384, 65536) +
             bytes{0xc2} + slice(content, 81920, 32768) + bytes{0xc3} + slice(content, 114688, 49152) +
             bytes{0xc1} + slice(content, 163840, 16384) + bytes{0x80, 0x05} + slice(content, 180224, 5) +
             bytes{0x55});

    EXPECT_EQ(b.nextOctetString().toByteArray(), content);
    EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
}

TEST(OctetString, IsReadFromTheReadIndexOn) {
    Buffer b(fromHex("ffff 02aabb 01cc"));
    b.skip(2);

    EXPECT_EQ(b.nextOctetString().toByteArray(), (bytes{0xaa, 0xbb}));
    EXPECT_EQ(b.nextOctetString().toByteArray(), bytes{0xcc});
    EXPECT_EQ(refusalOf(b), outOfBounds(7));
}

struct TruncationCase {
    const char* name;
    bytes input;
    const char* message;
    unsigned int ridx;
};

const TruncationCase TRUNCATIONS[] = {
    {"NoLength", {}, "index out of bounds: read index(0) >= write index(0)", 0},
    {"HalfALength", {0x80}, "index out of bounds: read index(1) >= write index(1)", 1},
    {"HalfTheLargestLength", {0xbf}, "index out of bounds: read index(1) >= write index(1)", 1},
    {"NoContent", {0x01}, "Unable to read 1 bytes from buffer, only 0 available", 1},
    {"SomeContent", {0x05, 0xaa, 0xbb}, "Unable to read 5 bytes from buffer, only 2 available", 3},
    {"AllContentButOne", {0x03, 0xaa, 0xbb}, "Unable to read 3 bytes from buffer, only 2 available", 3},
    {"OneByteLargest", {0x7f, 0xaa}, "Unable to read 127 bytes from buffer, only 1 available", 2},
    {"NotMinimal", {0x80, 0x10, 0xaa}, "Unable to read 16 bytes from buffer, only 1 available", 3},
    {"TwoBytesLargest", {0xbf, 0xff, 0xaa}, "Unable to read 16383 bytes from buffer, only 1 available", 3},
    {"FragmentC1", {0xc1, 0xaa}, "Unable to read 16384 bytes from buffer, only 1 available", 2},
    {"FragmentC2", {0xc2, 0xaa}, "Unable to read 32768 bytes from buffer, only 1 available", 2},
    {"FragmentC3", {0xc3, 0xaa}, "Unable to read 49152 bytes from buffer, only 1 available", 2},
    {"FragmentC4", {0xc4}, "Unable to read 65536 bytes from buffer, only 0 available", 1},
};

class OctetStringTruncation : public ::testing::TestWithParam<TruncationCase> {};

TEST_P(OctetStringTruncation, IsRefusedWithTheOldValueKeptAndTheBytesConsumed) {
    const TruncationCase& c = GetParam();
    Buffer b(c.input);

    EXPECT_EQ(refusalOf(b), c.message);
    EXPECT_EQ(b.ridx(), c.ridx);
}

// What lies in the store behind the write index is not content.
TEST_P(OctetStringTruncation, IsNotFilledUpFromTheReserve) {
    const TruncationCase& c = GetParam();
    Buffer b(4096);
    b.put(c.input);

    EXPECT_EQ(refusalOf(b), c.message);
    EXPECT_EQ(b.ridx(), c.ridx);
}

INSTANTIATE_TEST_SUITE_P(Inputs, OctetStringTruncation, ::testing::ValuesIn(TRUNCATIONS),
                         [](const auto& test) { return test.param.name; });

TEST(OctetString, IsRefusedWhereAFurtherFragmentIsMissingOrCut) {
    const bytes fragment = bytes{0xc1} + octets(16384);

    Buffer missing(fragment);
    EXPECT_EQ(refusalOf(missing), "index out of bounds: read index(16385) >= write index(16385)");
    EXPECT_EQ(missing.ridx(), 16385U);

    Buffer cut(fragment + bytes{0x03, 0xaa});
    EXPECT_EQ(refusalOf(cut), "Unable to read 3 bytes from buffer, only 1 available");
    EXPECT_EQ(cut.ridx(), 16387U);

    Buffer cutFragment(fragment + bytes{0xc2} + octets(100));
    EXPECT_EQ(refusalOf(cutFragment), "Unable to read 32768 bytes from buffer, only 100 available");
    EXPECT_EQ(cutFragment.ridx(), 16486U);

    Buffer unknown(fragment + bytes{0xff});
    EXPECT_EQ(refusalOf(unknown), "Unknown ASN.1 length value: b11111111");
    EXPECT_EQ(unknown.ridx(), 16386U);
}

TEST(OctetString, IsRefusedForEachTruncationOfItsEncoding) {
    const bytes whole = block(octets(300));
    for (std::size_t n = 0; n < whole.size(); ++n) {
        Buffer b(slice(whole, 0, n));
        const std::string expected =
            n < 2 ? outOfBounds(n)
                  : "Unable to read 300 bytes from buffer, only " + std::to_string(n - 2) + " available";
        EXPECT_EQ(refusalOf(b), expected);
        EXPECT_EQ(b.ridx(), n);
    }
}

TEST(OctetString, IsRefusedForEachUnknownLength) {
    Buffer c5(bytes{0xc5});
    EXPECT_EQ(refusalOf(c5), "Unknown ASN.1 length value: b11000101");

    for (unsigned int head = 0xc0; head <= 0xff; ++head) {
        if (head >= 0xc1 && head <= 0xc4) {
            continue;
        }
        Buffer b(bytes{static_cast<unsigned char>(head)} + octets(70000));
        EXPECT_EQ(refusalOf(b), "Unknown ASN.1 length value: b" + std::bitset<8>(head).to_string());
        EXPECT_EQ(b.ridx(), 1U);
    }
}

// Texts.

TEST(OctetString, PrintsItselfWithTheDefaults) {
    EXPECT_EQ(OctetString(bytes{0x01, 0x02, 0x03}).toString(), "    OCTET STRING:  01:02:03\n");
    EXPECT_EQ(OctetString().toString(), "    OCTET STRING:  (NULL)");
}

TEST(OctetString, PrintsItselfAsItIsTold) {
    const OctetString field(bytes{0x01, 0x02, 0xff});

    EXPECT_EQ(field.toFormatString("IV", 80, 0, ", ", 9), "IV:  01, 02, ff\n");
    EXPECT_EQ(field.toFormatString("IV", 12, 1, ":", 2), "  IV:\n    01:02\n    ff\n");
    EXPECT_EQ(OctetString().toFormatString("IV", 80, 2, ":", 2), "    IV:  (NULL)");
}

// The class may be derived from: what it prints is as long as the subclass says, and never longer than there
// is.
TEST(OctetString, PrintsItsFirstByteLengthOctets) {
    struct Two : OctetString {
        using OctetString::OctetString;
        unsigned int byteLength() const override { return 2; }
    };
    struct Words : OctetString {
        using OctetString::OctetString;
        unsigned int unitSize() const override { return 16; }
    };
    EXPECT_EQ(Two(bytes{1, 2, 3}).toFormatString("n", 80, 0, ":", 4), "n:  01:02\n");
    EXPECT_EQ(Words(bytes{1, 2, 3}).toFormatString("n", 80, 0, ":", 4), "n:  01:02:03\n");
}

}  // namespace
}  // namespace vorl::test
