#include "vorl/Buffer.h"

#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<Buffer>);
static_assert(!std::is_convertible_v<unsigned int, Buffer>, "a number is no content");
static_assert(std::is_convertible_v<const bytes&, Buffer>);

// What the text of a buffer says about its store.
std::string lenOf(const Buffer& b) {
    const std::string text = b.toString();
    const std::size_t at = text.rfind(",len=");
    return text.substr(at + 5, text.size() - at - 6);
}

Buffer readBy(unsigned int n, Buffer b) {
    b.skip(n);
    return b;
}

// Construction.

TEST(Buffer, StartsEmptyWithoutAStore) {
    const Buffer b;

    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=0,midx_=0,len=0]");
    EXPECT_EQ(b.toByteArray(), bytes());
    EXPECT_EQ(b.toByteArrayRemain(), bytes());
}

TEST(Buffer, OfASizeIsEmptyWithRoom) {
    const Buffer b(8);

    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=0,midx_=0,len=8]");
    EXPECT_EQ(b.toByteArray(), bytes());
    EXPECT_EQ(b.toByteArrayRemain(), bytes());
}

TEST(Buffer, OfAPointerCopiesTheBytesReadyToBeRead) {
    unsigned char source[] = {1, 2, 3, 4};
    Buffer b(source, 3);
    source[0] = 0xff;

    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=3,midx_=0,len=3]");
    EXPECT_EQ(b.toByteArray(), (bytes{1, 2, 3}));
    EXPECT_EQ(b.get(), 1);
}

TEST(Buffer, OfNoBytesAtANullPointerIsEmpty) {
    const Buffer b(nullptr, 0);

    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=0,midx_=0,len=0]");
}

TEST(Buffer, OfAVectorCopiesTheBytesReadyToBeRead) {
    bytes source{1, 2, 3};
    Buffer b(source);
    source[0] = 0xff;

    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=3,midx_=0,len=3]");
    EXPECT_EQ(b.toByteArray(), (bytes{1, 2, 3}));
    EXPECT_EQ(b.get(), 1);
}

TEST(Buffer, OfAnRvalueTakesItsStorageOver) {
    bytes source = octets(100);
    const unsigned char* const storage = source.data();
    Buffer b(std::move(source));

    EXPECT_EQ(b.widx(), 100U);
    EXPECT_EQ(b.ridx(), 0U);
    const bytes content = std::move(b).toByteArray();
    EXPECT_EQ(content.data(), storage);
    EXPECT_EQ(content, octets(100));
}

// Copying and moving.

TEST(Buffer, IsCopiedWithItsIndicesAndLivesOnItsOwn) {
    Buffer original(octets(5));
    original.skip(2);
    Buffer copy(original);
    EXPECT_EQ(copy.toString(), "Buffer[ridx_=2,widx_=5,midx_=0,len=5]");

    copy.put(0xee);
    copy.get();
    EXPECT_EQ(copy.toByteArray(), octets(5) + bytes{0xee});
    EXPECT_EQ(original.toString(), "Buffer[ridx_=2,widx_=5,midx_=0,len=5]");
    EXPECT_EQ(original.toByteArray(), octets(5));

    copy = original;
    EXPECT_EQ(copy.toString(), "Buffer[ridx_=2,widx_=5,midx_=0,len=5]");
    EXPECT_EQ(copy.toByteArrayRemain(), slice(octets(5), 2, 3));
}

void expectEmptyAndUsable(Buffer& b) {
    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=0,midx_=0,len=0]");
    EXPECT_EQ(b.toByteArray(), bytes());
    EXPECT_EQ(b.toByteArrayRemain(), bytes());
    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.get(); }),
              "index out of bounds: read index(0) >= write index(0)");
    unsigned char target = 0x55;
    EXPECT_EQ(b.get(&target, 1), 0U);
    EXPECT_EQ(target, 0x55);

    b.put(0x11);
    EXPECT_EQ(b.toByteArray(), bytes{0x11});
    EXPECT_EQ(b.get(), 0x11);
}

TEST(Buffer, MovedFromByConstructionIsEmptyAndUsable) {
    Buffer source = readBy(2, octets(5));
    const Buffer target(std::move(source));

    EXPECT_EQ(target.toString(), "Buffer[ridx_=2,widx_=5,midx_=0,len=5]");
    EXPECT_EQ(target.toByteArray(), octets(5));
    expectEmptyAndUsable(source);
}

TEST(Buffer, MovedFromByAssignmentIsEmptyAndUsable) {
    Buffer source = readBy(2, octets(5));
    Buffer target(octets(2000));
    target = std::move(source);

    EXPECT_EQ(target.toString(), "Buffer[ridx_=2,widx_=5,midx_=0,len=5]");
    EXPECT_EQ(target.toByteArray(), octets(5));
    expectEmptyAndUsable(source);
}

TEST(Buffer, MovedToItselfKeepsItsContent) {
    Buffer b = readBy(2, octets(5));
    Buffer& itself = b;
    b = std::move(itself);

    EXPECT_EQ(b.toString(), "Buffer[ridx_=2,widx_=5,midx_=0,len=5]");
    EXPECT_EQ(b.toByteArray(), octets(5));
}

// Writing.

TEST(Buffer, PutAppendsTheBytesFromAnOffset) {
    const bytes source{1, 2, 3, 4, 5};
    Buffer b(bytes{0xaa});
    b.put(source.data(), 1, 3);

    EXPECT_EQ(b.toByteArray(), (bytes{0xaa, 2, 3, 4}));
    EXPECT_EQ(b.widx(), 4U);
    EXPECT_EQ(b.ridx(), 0U);
}

TEST(Buffer, PutAppendsTheBytesAtAPointer) {
    const bytes source{1, 2, 3};
    Buffer b(bytes{0xaa});
    b.put(source.data(), 2);

    EXPECT_EQ(b.toByteArray(), (bytes{0xaa, 1, 2}));
}

TEST(Buffer, PutAppendsAVectorAndAByte) {
    Buffer b;
    b.put(bytes{1, 2});
    b.put(static_cast<unsigned char>(0xff));
    b.put(bytes{3});

    EXPECT_EQ(b.toByteArray(), (bytes{1, 2, 0xff, 3}));
}

TEST(Buffer, PutLetsAnObjectAppendItsOwnEncoding) {
    Buffer b(bytes{0xaa});
    b.put(UInt16(0x1234));
    b.put(OctetString(bytes{0x01, 0x02}));

    EXPECT_EQ(b.toByteArray(), (bytes{0xaa, 0x12, 0x34, 0x02, 0x01, 0x02}));
}

TEST(Buffer, PutOfNothingChangesNothing) {
    Buffer b;
    b.put(nullptr, 0);
    b.put(nullptr, 0, 0);
    b.put(bytes());
    b.put(OctetString());
    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=0,midx_=0,len=0]");

    Buffer full(octets(3));
    full.put(bytes());
    EXPECT_EQ(full.toString(), "Buffer[ridx_=0,widx_=3,midx_=0,len=3]");
}

TEST(Buffer, GoesOnWritingBehindWhatWasRead) {
    Buffer b(bytes{1, 2});
    EXPECT_EQ(b.get(), 1);
    b.put(3);

    EXPECT_EQ(b.toByteArrayRemain(), (bytes{2, 3}));
    EXPECT_EQ(b.get(), 2);
    EXPECT_EQ(b.get(), 3);
    EXPECT_EQ(b.toByteArray(), (bytes{1, 2, 3}));
}

// Growth.

struct GrowthCase {
    const char* name;
    unsigned int store;
    unsigned int written;
    unsigned int more;
    const char* len;
};

const GrowthCase GROWTHS[] = {
    {"FirstByteTakes1024", 0, 0, 1, "1024"},
    {"Exactly1024Fit", 0, 0, 1024, "1024"},
    {"MoreThan1024IsMetExactly", 0, 0, 1025, "1025"},
    {"RoomIsUsedUpFirst", 8, 0, 8, "8"},
    {"OneByteBeyondTheRoom", 8, 0, 9, "1024"},
    {"NeverLessThan1024", 16, 0, 20, "1024"},
    {"Below1024DoublesToLess", 511, 511, 1, "1024"},
    {"DoubleIsExactly1024", 512, 512, 1, "1024"},
    {"DoubleIsMoreThan1024", 513, 513, 1, "1026"},
    {"FullStoreDoubles", 1024, 1024, 1, "2048"},
    {"FullStoreDoublesForAsMuchAgain", 1024, 1024, 1024, "2048"},
    {"MoreThanDoubleIsMetExactly", 1024, 1024, 1025, "2049"},
    {"MuchMoreThanDoubleIsMetExactly", 1024, 1024, 5000, "6024"},
    {"OnlyWhatExceedsTheRoomCounts", 1024, 24, 5000, "5024"},
    {"OneByteOfRoom", 1024, 1023, 1, "1024"},
    {"OneByteOfRoomForTwo", 1024, 1023, 2, "2048"},
};

class BufferGrowth : public ::testing::TestWithParam<GrowthCase> {};

TEST_P(BufferGrowth, MakesRoomForTheBytesAndKeepsThoseBefore) {
    const GrowthCase& c = GetParam();
    Buffer b(c.store);
    b.put(octets(c.written));
    b.put(octets(c.more));

    EXPECT_EQ(lenOf(b), c.len);
    EXPECT_EQ(b.widx(), c.written + c.more);
    EXPECT_EQ(b.toByteArray(), octets(c.written) + octets(c.more));
}

INSTANTIATE_TEST_SUITE_P(Stores, BufferGrowth, ::testing::ValuesIn(GROWTHS),
                         [](const auto& test) { return test.param.name; });

struct ResizeCase {
    const char* name;
    unsigned int store;
    unsigned int extra;
    const char* len;
};

const ResizeCase RESIZES[] = {
    {"NothingMoreOfNothing", 0, 0, "1024"}, {"SmallStore", 100, 10, "1024"},
    {"Doubles", 1024, 1, "2048"},           {"DoublesForNothingMore", 2000, 0, "4000"},
    {"MeetsMore", 1024, 2000, "3024"},
};

class BufferResize : public ::testing::TestWithParam<ResizeCase> {};

TEST_P(BufferResize, GrowsTheStoreAndNothingElse) {
    const ResizeCase& c = GetParam();
    Buffer b(c.store);
    b.put(octets(c.store));
    b.skip(c.store / 2);
    b.resize(c.extra);

    EXPECT_EQ(lenOf(b), c.len);
    EXPECT_EQ(b.ridx(), c.store / 2);
    EXPECT_EQ(b.widx(), c.store);
    EXPECT_EQ(b.toByteArray(), octets(c.store));
}

INSTANTIATE_TEST_SUITE_P(Stores, BufferResize, ::testing::ValuesIn(RESIZES),
                         [](const auto& test) { return test.param.name; });

TEST(Buffer, RefusesAnIndexPast32BitsBeforeItTouchesTheBytes) {
    Buffer b(bytes{0x11});
    b.get();
    const unsigned char one = 0;

    EXPECT_THROW(b.put(&one, 0, 0xffffffff), std::length_error);
    EXPECT_THROW(b.put(&one, 0xffffffff), std::length_error);
    EXPECT_EQ(b.toString(), "Buffer[ridx_=1,widx_=1,midx_=0,len=1]");
    EXPECT_EQ(b.toByteArray(), bytes{0x11});
}

// Reading.

TEST(Buffer, GetOfAnEmptyBufferIsRefused) {
    Buffer b;

    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.get(); }),
              "index out of bounds: read index(0) >= write index(0)");
}

TEST(Buffer, GetDoesNotReadTheReserve) {
    Buffer b(8);
    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.get(); }),
              "index out of bounds: read index(0) >= write index(0)");

    b.put(1);
    EXPECT_EQ(b.get(), 1);
    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.get(); }),
              "index out of bounds: read index(1) >= write index(1)");
}

TEST(Buffer, GetReturnsTheBytesInOrderAndThenRefuses) {
    Buffer b(bytes{0x00, 0x80, 0xff});

    EXPECT_EQ(b.get(), 0x00);
    EXPECT_EQ(b.get(), 0x80);
    EXPECT_EQ(b.ridx(), 2U);
    EXPECT_EQ(b.get(), 0xff);
    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.get(); }),
              "index out of bounds: read index(3) >= write index(3)");
    EXPECT_EQ(b.toString(), "Buffer[ridx_=3,widx_=3,midx_=0,len=3]");
}

struct ReadCase {
    const char* name;
    unsigned int wanted;
    unsigned int received;
};

const ReadCase READS[] = {
    {"Nothing", 0, 0}, {"Fewer", 3, 3}, {"All", 4, 4}, {"OneMore", 5, 4}, {"ManyMore", 10, 4},
};

class BufferReads : public ::testing::TestWithParam<ReadCase> {};

TEST_P(BufferReads, AsManyBytesAsThereAre) {
    const ReadCase& c = GetParam();
    Buffer b = readBy(2, octets(6));
    bytes target(10, 0x55);

    EXPECT_EQ(b.get(target.data(), c.wanted), c.received);
    EXPECT_EQ(target, slice(octets(6), 2, c.received) + bytes(10 - c.received, 0x55));
    EXPECT_EQ(b.ridx(), 2 + c.received);
    EXPECT_EQ(b.widx(), 6U);
}

TEST_P(BufferReads, OrPassesOverAsManyAsThereAre) {
    const ReadCase& c = GetParam();
    Buffer b = readBy(2, octets(6));

    EXPECT_EQ(b.skip(c.wanted), c.received);
    EXPECT_EQ(b.ridx(), 2 + c.received);
    EXPECT_EQ(b.toByteArrayRemain(), slice(octets(6), 2 + c.received, 4 - c.received));
    EXPECT_EQ(b.toByteArray(), octets(6));
}

INSTANTIATE_TEST_SUITE_P(Counts, BufferReads, ::testing::ValuesIn(READS),
                         [](const auto& test) { return test.param.name; });

TEST(Buffer, ReadsTheLargestCountWithoutWrappingAround) {
    Buffer b = readBy(2, octets(6));
    unsigned char target[4] = {};

    EXPECT_EQ(b.get(target, 0xffffffff), 4U);
    EXPECT_EQ(bytes(target, target + 4), slice(octets(6), 2, 4));
    EXPECT_EQ(b.skip(0xffffffff), 0U);
    EXPECT_EQ(b.ridx(), 6U);
}

TEST(Buffer, ReadsNothingFromAnExhaustedBuffer) {
    Buffer b;
    EXPECT_EQ(b.get(nullptr, 0), 0U);
    EXPECT_EQ(b.skip(1), 0U);
    unsigned char target = 0x55;
    EXPECT_EQ(b.get(&target, 1), 0U);
    EXPECT_EQ(target, 0x55);
}

// Fields.

TEST(Buffer, ReadsTheFieldsOfARecordInOrder) {
    Buffer b(fromHex("7f 1234 01020304 03aabbcc 55"));

    EXPECT_EQ(b.nextUInt8().val(), 0x7f);
    EXPECT_EQ(b.nextUInt16().val(), 0x1234);
    EXPECT_EQ(b.nextUInt32().val(), 0x01020304U);
    EXPECT_EQ(b.nextOctetString().toByteArray(), (bytes{0xaa, 0xbb, 0xcc}));
    EXPECT_EQ(b.toByteArrayRemain(), bytes{0x55});
}

TEST(Buffer, PassesOnTheRefusalOfAField) {
    Buffer empty;
    EXPECT_EQ(messageOf<ASN1Exception>([&] { empty.nextUInt8(); }),
              "index out of bounds: read index(0) >= write index(0)");
    EXPECT_EQ(messageOf<VORLException>([&] { empty.nextUInt16(); }),
              "Buffer only contains 0 bytes; unable to decode UInt16");
    EXPECT_EQ(messageOf<VORLException>([&] { empty.nextUInt32(); }),
              "Buffer only contains 0 bytes; unable to decode UInt32");
    EXPECT_EQ(messageOf<ASN1Exception>([&] { empty.nextOctetString(); }),
              "index out of bounds: read index(0) >= write index(0)");
    EXPECT_EQ(empty.ridx(), 0U);

    Buffer truncated(bytes{0x05, 0xaa, 0xbb});
    EXPECT_EQ(messageOf<ASN1Exception>([&] { truncated.nextOctetString(); }),
              "Unable to read 5 bytes from buffer, only 2 available");
    EXPECT_EQ(truncated.ridx(), 3U);
}

// Conversion.

TEST(Buffer, GivesAllThatWasWrittenAndWhatIsUnread) {
    Buffer b(octets(5));
    b.skip(2);

    EXPECT_EQ(b.toByteArray(), octets(5));
    EXPECT_EQ(b.toByteArrayRemain(), slice(octets(5), 2, 3));
    EXPECT_EQ(b.ridx(), 2U) << "converting reads nothing";

    b.skip(3);
    EXPECT_EQ(b.toByteArray(), octets(5));
    EXPECT_EQ(b.toByteArrayRemain(), bytes());
}

TEST(Buffer, GivesTheWrittenBytesWithoutTheReserve) {
    Buffer b(8);
    b.put(octets(3));
    b.skip(1);

    EXPECT_EQ(b.toByteArray(), octets(3));
    EXPECT_EQ(b.toByteArrayRemain(), slice(octets(3), 1, 2));
    EXPECT_EQ(std::move(b).toByteArray(), octets(3));
}

TEST(Buffer, IsEmptyAndUsableAfterItsBytesWereMovedOut) {
    Buffer b = readBy(2, octets(5));
    EXPECT_EQ(std::move(b).toByteArray(), octets(5));
    expectEmptyAndUsable(b);

    EXPECT_EQ(Buffer().toByteArray(), bytes());
}

TEST(Buffer, ShowsItsIndicesAndTheSizeOfItsStore) {
    Buffer b(16);
    b.put(octets(20));
    b.skip(3);

    EXPECT_EQ(b.toString(), "Buffer[ridx_=3,widx_=20,midx_=0,len=1024]");
    EXPECT_EQ(b.ridx(), 3U);
    EXPECT_EQ(b.widx(), 20U);
    EXPECT_EQ(b.midx(), 0U);
}

TEST(Buffer, PutFromALargeOffset) {
    const bytes all = octets(70010);
    Buffer b;
    b.put(all.data(), 70000, 10);
    EXPECT_EQ(b.toByteArray(), slice(all, 70000, 10));
}

}  // namespace
}  // namespace vorl::test
