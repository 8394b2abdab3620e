#include "vorl/ASN1BlockEncodable.h"

#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

// The only block in use counts octets. The coder is written for other units too, and has to stay within the
// content whatever a subclass says about it.

namespace vorl::test {
namespace {

class FakeBlock : public ASN1BlockEncodable {
public:
    FakeBlock(unsigned int unitSize, unsigned int unitLength, bytes content)
        : unitSize_(unitSize), unitLength_(unitLength), content_(std::move(content)) {}

    unsigned int unitSize() const override { return unitSize_; }
    unsigned int unitLength() const override { return unitLength_; }
    std::string getName() const override { return "FAKE"; }
    void setVal(const bytes& val) override {
        content_ = val;
        ++timesSet;
    }
    bytes toByteArray() const override { return content_; }

    int timesSet = 0;

private:
    unsigned int unitSize_;
    unsigned int unitLength_;
    bytes content_;
};

// Writing.

struct EncodeCase {
    const char* name;
    unsigned int unitSize;
    unsigned int units;
    unsigned int contentOctets;
    bytes determinant;
    unsigned int writtenOctets;
};

const EncodeCase ENCODINGS[] = {
    {"EightBits", 1, 8, 1, {0x08}, 1},
    {"SevenBitsLoseTheirPartOfAnOctet", 1, 7, 1, {0x07}, 0},
    {"LongSevenBitsWithOneToSpare", 1, 135, 17, {0x80, 0x87}, 17},
    {"LongBitsWithoutSpare", 1, 136, 17, {0x80, 0x88}, 17},
    {"FourPairs", 2, 4, 1, {0x04}, 1},
    {"LongPairsWithOneToSpare", 2, 203, 51, {0x80, 0xcb}, 51},
    {"TwoNibbles", 4, 2, 1, {0x02}, 1},
    {"ThreeNibblesLoseTheLast", 4, 3, 2, {0x03}, 1},
    {"ManyNibblesLoseTheLast", 4, 127, 64, {0x7f}, 63},
    {"LongNibblesWithOneToSpare", 4, 201, 101, {0x80, 0xc9}, 101},
    {"LongNibblesWithoutSpare", 4, 200, 100, {0x80, 0xc8}, 100},
    {"Octets", 8, 3, 3, {0x03}, 3},
    {"ShortOctetsWithOneToSpare", 8, 3, 4, {0x03}, 3},
    {"LongOctetsWithOneToSpare", 8, 200, 201, {0x80, 0xc8}, 201},
    {"Words", 16, 3, 6, {0x03}, 6},
    {"ShortWordsWithHalfOfOneToSpare", 16, 3, 7, {0x03}, 6},
    {"LongWordsWithHalfOfOneToSpare", 16, 200, 401, {0x80, 0xc8}, 401},
    {"LongWordsWithOneToSpare", 16, 200, 402, {0x80, 0xc8}, 401},
    {"LongDoubleWordsWithOneToSpare", 32, 200, 804, {0x80, 0xc8}, 801},
    {"OneHugeUnit", 0x80000, 1, 65536, {0x01}, 65536},
};

class BlockEncoding : public ::testing::TestWithParam<EncodeCase> {};

TEST_P(BlockEncoding, CountsUnitsAndWritesTheirWholeOctets) {
    const EncodeCase& c = GetParam();
    Buffer b(bytes{0x55});
    FakeBlock(c.unitSize, c.units, octets(c.contentOctets)).encode(b);

    EXPECT_EQ(b.toByteArray(),
              bytes{0x55} + c.determinant + slice(octets(c.contentOctets), 0, c.writtenOctets));
}

INSTANTIATE_TEST_SUITE_P(Units, BlockEncoding, ::testing::ValuesIn(ENCODINGS),
                         [](const auto& test) { return test.param.name; });

// A fragment holds 131072, 262144, 393216 or 524288 divided by the unit size octets, and the next one starts
// where 8 times the units before it, divided by the unit size, says. For octets both are the number of units.
TEST(BlockFragments, OfWordsHoldHalfAnOctetForEachUnit) {
    const bytes content = octets(40000);
    Buffer b;
    FakeBlock(16, 20000, content).encode(b);

    EXPECT_EQ(b.toByteArray(),
              bytes{0xc1} + slice(content, 0, 8192) + fromHex("8e20") + slice(content, 8192, 7232));
}

TEST(BlockFragments, OfDoubleWordsHoldAQuarterOfAnOctetForEachUnit) {
    const bytes content = octets(4 * 65537);
    Buffer b;
    FakeBlock(32, 65537, content).encode(b);

    EXPECT_EQ(b.toByteArray(),
              bytes{0xc4} + slice(content, 0, 16384) + bytes{0x01} + slice(content, 16384, 4));
}

struct FragmentCase {
    const char* name;
    unsigned int units;
    unsigned char determinant;
    unsigned int octetsOfWords;
};

const FragmentCase FRAGMENTS[] = {
    {"C1", 16384, 0xc1, 8192},
    {"C2", 32768, 0xc2, 16384},
    {"C3", 49152, 0xc3, 24576},
    {"C4", 65536, 0xc4, 32768},
};

class BlockFragment : public ::testing::TestWithParam<FragmentCase> {};

TEST_P(BlockFragment, OfWordsIsWrittenWithoutOneToCloseIt) {
    const FragmentCase& c = GetParam();
    const bytes content = octets(2 * c.units);
    Buffer b;
    FakeBlock(16, c.units, content).encode(b);

    EXPECT_EQ(b.toByteArray(), bytes{c.determinant} + slice(content, 0, c.octetsOfWords));
}

TEST_P(BlockFragment, OfWordsIsReadUpToTheNextDeterminant) {
    const FragmentCase& c = GetParam();
    const bytes content = octets(c.octetsOfWords + 1);
    Buffer b(bytes{c.determinant} + slice(content, 0, c.octetsOfWords) + bytes{0x02, content.back(), 0x55});
    FakeBlock block(16, 0, {});
    block.decode(b);

    EXPECT_EQ(block.toByteArray(), content);
    EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
}

INSTANTIATE_TEST_SUITE_P(Determinants, BlockFragment, ::testing::ValuesIn(FRAGMENTS),
                         [](const auto& test) { return test.param.name; });

TEST(BlockEncodable, WithoutUnitsIsWrittenAsNothing) {
    Buffer b(bytes{0x55});
    FakeBlock(8, 0, {}).encode(b);
    FakeBlock(8, 0, {0x11}).encode(b);
    FakeBlock(32, 0, {0x11, 0x22, 0x33, 0x44}).encode(b);

    EXPECT_EQ(b.toByteArray(), bytes{0x55});
}

// Refusals.

struct RefusalCase {
    const char* name;
    unsigned int unitSize;
    unsigned int units;
    unsigned int contentOctets;
    const char* message;
};

const RefusalCase REFUSALS[] = {
    {"UnitSize0", 0, 1, 1, "unit size(0) is not a power of 2"},
    {"UnitSize3", 3, 1, 1, "unit size(3) is not a power of 2"},
    {"UnitSize6", 6, 1, 1, "unit size(6) is not a power of 2"},
    {"UnitSize12", 12, 1, 2, "unit size(12) is not a power of 2"},
    {"LargestUnitSize", 0xffffffff, 1, 1, "unit size(4294967295) is not a power of 2"},
    {"UnitSizeBeforeContent", 0, 9, 1, "unit size(0) is not a power of 2"},

    {"BitsLongByTwo", 1, 6, 1, "data bit length(8) - ASN.1 obj bit length(6) > unit size(1)"},
    {"NibblesLongByTwo", 4, 2, 2, "data bit length(16) - ASN.1 obj bit length(8) > unit size(4)"},
    {"OctetsLongByTwo", 8, 1, 3, "data bit length(24) - ASN.1 obj bit length(8) > unit size(8)"},
    {"WordsLongByMoreThanOne", 16, 1, 5, "data bit length(40) - ASN.1 obj bit length(16) > unit size(16)"},
    {"LongWithoutUnits", 4, 0, 1, "data bit length(8) - ASN.1 obj bit length(0) > unit size(4)"},

    {"ShortByOneBit", 1, 9, 1, "data bit length(8) - ASN.1 obj bit length(9) > unit size(1)"},
    {"ShortByOneOctet", 8, 3, 2, "data bit length(16) - ASN.1 obj bit length(24) > unit size(8)"},
    {"Empty", 8, 1, 0, "data bit length(0) - ASN.1 obj bit length(8) > unit size(8)"},
    // 2^29 octets are 2^32 bits, which must not pass for none.
    {"EmptyOf2To32Bits", 8, 0x20000000, 0,
     "data bit length(0) - ASN.1 obj bit length(4294967296) > unit size(8)"},
    {"ShortBeyond2To32Bits", 8, 0x20000001, 1,
     "data bit length(8) - ASN.1 obj bit length(4294967304) > unit size(8)"},
    {"EmptyOfHugeUnits", 0x80000000, 2, 0,
     "data bit length(0) - ASN.1 obj bit length(4294967296) > unit size(2147483648)"},

    // Content of the right length, of which a full fragment would nevertheless take more than there is.
    {"FragmentOfBits", 1, 16384, 2048, "Unable to read 131072 bytes from buffer, only 2048 available"},
    {"FragmentOfPairs", 2, 16384, 4096, "Unable to read 65536 bytes from buffer, only 4096 available"},
    {"FragmentOfNibbles", 4, 20000, 10000, "Unable to read 32768 bytes from buffer, only 10000 available"},
    {"LargestFragmentOfNibbles", 4, 65536, 32768,
     "Unable to read 131072 bytes from buffer, only 32768 available"},
    {"LargestFragmentOfBits", 1, 65543, 8193, "Unable to read 524288 bytes from buffer, only 8193 available"},
};

class BlockRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(BlockRefusal, WritesNothing) {
    const RefusalCase& c = GetParam();
    Buffer b(bytes{0x55});
    const FakeBlock block(c.unitSize, c.units, octets(c.contentOctets));

    EXPECT_EQ(messageOf<ASN1Exception>([&] { block.encode(b); }), c.message);
    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=1,midx_=0,len=1]");
    EXPECT_EQ(b.toByteArray(), bytes{0x55});
}

INSTANTIATE_TEST_SUITE_P(Blocks, BlockRefusal, ::testing::ValuesIn(REFUSALS),
                         [](const auto& test) { return test.param.name; });

TEST(BlockEncodable, OfAWrongUnitSizeReadsNothing) {
    for (const unsigned int unitSize : {0U, 3U, 24U}) {
        Buffer b(bytes{0x01, 0xaa});
        FakeBlock block(unitSize, 1, {0x11});

        EXPECT_EQ(messageOf<ASN1Exception>([&] { block.decode(b); }), "unit size(" +
                                                                          std::string(unitSize == 24  ? "24"
                                                                                      : unitSize == 3 ? "3"
                                                                                                      : "0") +
                                                                          ") is not a power of 2");
        EXPECT_EQ(b.ridx(), 0U);
        EXPECT_EQ(block.timesSet, 0);
    }
}

// Reading.

struct DecodeCase {
    const char* name;
    unsigned int unitSize;
    bytes determinant;
    unsigned int contentOctets;
};

const DecodeCase DECODINGS[] = {
    {"OneBitTakesEightOctets", 1, {0x01}, 8},
    {"OnePairTakesFourOctets", 2, {0x01}, 4},
    {"ThreeNibblesTakeSixOctets", 4, {0x03}, 6},
    {"Octets", 8, {0x03}, 3},
    {"TwoWordsTakeOneOctet", 16, {0x02}, 1},
    {"ThreeWordsTakeOneOctetToo", 16, {0x03}, 1},
    {"ThreeDoubleWordsTakeNone", 32, {0x03}, 0},
    {"FourDoubleWordsTakeOne", 32, {0x04}, 1},
    {"LongWords", 16, {0x80, 0xc8}, 100},
    {"LongBits", 1, {0x80, 0xc8}, 1600},
    {"NothingAtAll", 16, {0x00}, 0},
    {"LongNothing", 16, {0x80, 0x00}, 0},
    {"HugeUnitsTakeNone", 0x80000000, {0xbf, 0xff}, 0},
};

class BlockDecoding : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(BlockDecoding, TakesEightTimesTheUnitsDividedByTheUnitSize) {
    const DecodeCase& c = GetParam();
    Buffer b(c.determinant + octets(c.contentOctets) + bytes{0x55});
    FakeBlock block(c.unitSize, 1, {0x11, 0x22});
    block.decode(b);

    EXPECT_EQ(block.toByteArray(), octets(c.contentOctets));
    EXPECT_EQ(block.timesSet, 1);
    EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
}

INSTANTIATE_TEST_SUITE_P(Units, BlockDecoding, ::testing::ValuesIn(DECODINGS),
                         [](const auto& test) { return test.param.name; });

TEST(BlockEncodable, IsNotReadFromLessThanWasAnnounced) {
    Buffer b(bytes{0x01, 0xaa});
    FakeBlock block(1, 1, {0x11});

    EXPECT_EQ(messageOf<ASN1Exception>([&] { block.decode(b); }),
              "Unable to read 8 bytes from buffer, only 1 available");
    EXPECT_EQ(b.ridx(), 2U);
    EXPECT_EQ(block.toByteArray(), bytes{0x11});
    EXPECT_EQ(block.timesSet, 0);
}

TEST(BlockEncodable, OfBitsAnnouncesUpToHalfAMebioctetInOneFragment) {
    Buffer b(bytes{0xc4, 0xaa, 0xbb});
    FakeBlock block(1, 1, {0x11});

    EXPECT_EQ(messageOf<ASN1Exception>([&] { block.decode(b); }),
              "Unable to read 524288 bytes from buffer, only 2 available");
    EXPECT_EQ(block.timesSet, 0);
}

// Sizes and texts.

struct ByteLengthCase {
    const char* name;
    unsigned int unitSize;
    unsigned int units;
    unsigned int octets;
};

const ByteLengthCase BYTE_LENGTHS[] = {
    {"NoBits", 1, 0, 0},
    {"OneBit", 1, 1, 1},
    {"EightBits", 1, 8, 1},
    {"NineBits", 1, 9, 2},
    {"OneNibble", 4, 1, 1},
    {"TwoNibbles", 4, 2, 1},
    {"ThreeNibbles", 4, 3, 2},
    {"ThreeOctets", 8, 3, 3},
    {"ThreeWords", 16, 3, 6},
    {"NoUnitSize", 0, 7, 0},
    {"AllBits", 1, 0xffffffff, 0x20000000},
    {"AllOctets", 8, 0xffffffff, 0xffffffff},
    {"LargestNumberOfWords", 16, 0x7fffffff, 0xfffffffe},
    {"LargestUnits", 0x80000000, 15, 0xf0000000},
};

class BlockByteLength : public ::testing::TestWithParam<ByteLengthCase> {};

TEST_P(BlockByteLength, RoundsTheBitsUpToWholeOctets) {
    const ByteLengthCase& c = GetParam();
    EXPECT_EQ(FakeBlock(c.unitSize, c.units, {}).byteLength(), c.octets);
}

INSTANTIATE_TEST_SUITE_P(Units, BlockByteLength, ::testing::ValuesIn(BYTE_LENGTHS),
                         [](const auto& test) { return test.param.name; });

TEST(BlockEncodable, HasNoByteLengthPast32Bits) {
    EXPECT_THROW(FakeBlock(16, 0x80000000, {}).byteLength(), std::length_error);
    EXPECT_THROW(FakeBlock(0x80000000, 16, {}).byteLength(), std::length_error);
    EXPECT_THROW(FakeBlock(0x80000000, 0xffffffff, {}).byteLength(), std::length_error);
}

TEST(BlockEncodable, PrintsItsContentUnderItsNameWithTheDefaults) {
    EXPECT_EQ(FakeBlock(8, 3, {0x01, 0x02, 0xfe}).toString(), "    FAKE:  01:02:fe\n");
    EXPECT_EQ(FakeBlock(8, 0, {}).toString(), "    FAKE:  (NULL)");
}

TEST(BlockEncodable, PrintsItsContentAsItIsTold) {
    const FakeBlock block(8, 3, {0x01, 0x02, 0xfe});

    EXPECT_EQ(block.toFormatString("key", 80, 2, "-", 3), "      key:  01-02-fe\n");
    EXPECT_EQ(block.toFormatString("key", 12, 1, ":", 2), "  key:\n    01:02\n    fe\n");
}

// Unlike an octet string, which has its own printing, a block prints all of its content.
TEST(BlockEncodable, PrintsAllContentWhateverItsUnitsSay) {
    EXPECT_EQ(FakeBlock(4, 3, {0x12, 0x30}).toString(), "    FAKE:  12:30\n");
    EXPECT_EQ(FakeBlock(8, 1, {0x12, 0x30}).toString(), "    FAKE:  12:30\n");
}

// 2^29 octets and one: more bits than 32 can count. The last octet shows whether the content began again.
TEST(ASN1BlockEncodable, ContentOfMoreBitsThan32CanCountIsWrittenToItsEnd) {
    class Large : public OctetString {
    public:
        unsigned int unitLength() const override { return 0x20000001; }
        bytes toByteArray() const override {
            bytes content(0x20000001);
            content.front() = 0x11;
            content.back() = 0xee;
            return content;
        }
    };
    Buffer b(0x20000001 + 8192 + 1);
    Large().encode(b);
    EXPECT_EQ(b.widx(), 0x20000001U + 8192 + 1);
    b.skip(b.widx() - 2);
    EXPECT_EQ(b.toByteArrayRemain(), (bytes{0x01, 0xee}));
}

}  // namespace
}  // namespace vorl::test
