#include "vorl/DHPubKey.h"

#include "GroupedDigits.h"
#include "block_encoder.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/ASN1Exception.h"
#include "vorl/ASN1Primitive.h"
#include "vorl/Buffer.h"
#include "vorl/VORLException.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(std::is_base_of_v<ASN1Primitive, DHPubKey>);
static_assert(std::has_virtual_destructor_v<DHPubKey>);
static_assert(std::is_same_v<decltype(DHPubKey::DEFAULT_VERSION), const UInt32>);
static_assert(std::is_same_v<decltype(DHPubKey::create(bytes())), std::unique_ptr<DHPubKey>>);
static_assert(std::is_same_v<decltype(DHPubKey::createB64(bytes())), std::unique_ptr<DHPubKey>>);
static_assert(std::is_same_v<decltype(DHPubKey::decodeB64(bytes())), std::unique_ptr<DHPubKey>>);

// An application's own static objects may already make records.
const unsigned int VERSION_AT_LOAD = DHPubKey::create(bytes(128))->version().val();

// A version 2 record, written straight from the format.
bytes recordOf(const bytes& key) {
    return fromHex("00 00 00 02") + block(key);
}

bytes encodingOf(const DHPubKey& record) {
    Buffer out;
    record.encode(out);
    return out.toByteArray();
}

const bytes OLD_KEY = fromHex("01 02 03");

// A record that is to keep what it holds.
DHPubKey oldRecord() {
    return DHPubKey(OLD_KEY, UInt32(7));
}

void expectOld(const DHPubKey& record) {
    EXPECT_EQ(record.key(), OLD_KEY);
    EXPECT_EQ(record.version().val(), 7U);
}

TEST(DHPubKey, IsAPrimitiveInTheOrderOfItsBase) {
    EXPECT_EQ(vtableSlot(&DHPubKey::toFormatString), 0);
    EXPECT_EQ(vtableSlot(&DHPubKey::toString), 1);
    EXPECT_EQ(vtableSlot(&DHPubKey::encode), 4);
    EXPECT_EQ(vtableSlot(&DHPubKey::decode), 5);
    EXPECT_EQ(vtableSlot(&WithOneMore<DHPubKey>::oneMore), 6);
}

TEST(DHPubKey, IsMadeInVersion2) {
    EXPECT_EQ(DHPubKey::DEFAULT_VERSION.val(), 2U);
    EXPECT_EQ(VERSION_AT_LOAD, 2U);
}

TEST(DHPubKey, IsEmptyAndOfVersion0WithoutAKey) {
    const DHPubKey record;
    EXPECT_EQ(record.key(), bytes());
    EXPECT_EQ(record.version().val(), 0U);
}

TEST(DHPubKey, HoldsAnyKeyAndVersionThatItIsGiven) {
    const DHPubKey record(octets(3), UInt32(0xfedcba98));
    EXPECT_EQ(record.key(), octets(3));
    EXPECT_EQ(record.version().val(), 0xfedcba98U);

    const DHPubKey copy(record);
    EXPECT_EQ(copy.key(), octets(3));
    EXPECT_EQ(copy.version().val(), 0xfedcba98U);
}

TEST(DHPubKey, IsCreatedAroundAKeyOf125To129Bytes) {
    for (const std::size_t size : {125U, 126U, 127U, 128U, 129U}) {
        const std::unique_ptr<DHPubKey> record = DHPubKey::create(octets(size));
        EXPECT_EQ(record->key(), octets(size));
        EXPECT_EQ(record->version().val(), 2U);

        const std::unique_ptr<DHPubKey> ofText = DHPubKey::createB64(rawBase64(octets(size)));
        EXPECT_EQ(ofText->key(), octets(size));
        EXPECT_EQ(ofText->version().val(), 2U);
    }
}

struct LengthCase {
    const char* name;
    std::size_t size;
    const char* message;
};

class DHPubKeyCreation : public ::testing::TestWithParam<LengthCase> {};

TEST_P(DHPubKeyCreation, IsRefused) {
    const bytes key = octets(GetParam().size);
    EXPECT_EQ(messageOf<VORLException>([&] { DHPubKey::create(key); }), GetParam().message);
    EXPECT_EQ(messageOf<VORLException>([&] { DHPubKey::createB64(rawBase64(key)); }), GetParam().message);
}

const LengthCase NO_KEY_LENGTHS[] = {
    {"None", 0, "DH PubKey length (0) out of range"},
    {"One", 1, "DH PubKey length (1) out of range"},
    {"LargestTooSmall", 124, "DH PubKey length (124) out of range"},
    {"SmallestTooLarge", 130, "DH PubKey length (130) out of range"},
    {"ARecord", 134, "DH PubKey length (134) out of range"},
    {"Large", 1000, "DH PubKey length (1000) out of range"},
};

INSTANTIATE_TEST_SUITE_P(OfOtherLengths, DHPubKeyCreation, ::testing::ValuesIn(NO_KEY_LENGTHS),
                         [](const auto& test) { return test.param.name; });

TEST(DHPubKey, IsNotCreatedFromATextThatIsNotBase64) {
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::createB64(fromText("no Base64")); }),
              "DH PubKey length (0) out of range");
}

TEST(DHPubKey, WritesVersion2AsVersionAndBlock) {
    EXPECT_EQ(encodingOf(*DHPubKey::create(octets(127))), fromHex("00 00 00 02 7f") + octets(127));
    EXPECT_EQ(encodingOf(*DHPubKey::create(octets(128))), fromHex("00 00 00 02 80 80") + octets(128));
    EXPECT_EQ(encodingOf(*DHPubKey::create(octets(129))), fromHex("00 00 00 02 80 81") + octets(129));
    EXPECT_EQ(encodingOf(DHPubKey(octets(1), UInt32(2))), fromHex("00 00 00 02 01") + octets(1));
    // An empty block has no encoding, not even a length.
    EXPECT_EQ(encodingOf(DHPubKey(bytes(), UInt32(2))), fromHex("00 00 00 02"));
    EXPECT_EQ(encodingOf(DHPubKey(octets(20000), UInt32(2))), recordOf(octets(20000)));
}

TEST(DHPubKey, WritesVersion1AsTheBareKey) {
    EXPECT_EQ(encodingOf(DHPubKey(octets(128), UInt32(1))), octets(128));
    EXPECT_EQ(encodingOf(DHPubKey(octets(3), UInt32(1))), octets(3));
    EXPECT_EQ(encodingOf(DHPubKey(bytes(), UInt32(1))), bytes());
}

TEST(DHPubKey, IsWrittenBehindWhatTheBufferHolds) {
    Buffer out(bytes{0x55});
    out.put(DHPubKey(octets(125), UInt32(1)));
    out.put(*DHPubKey::create(octets(128)));
    EXPECT_EQ(out.toByteArray(), bytes{0x55} + octets(125) + recordOf(octets(128)));
}

struct VersionCase {
    const char* name;
    unsigned int version;
    const char* inHex;
    const char* inDecimal;
};

const VersionCase UNKNOWN_VERSIONS[] = {
    {"Zero", 0, "0", "0"},
    {"Next", 3, "3", "3"},
    {"Ten", 10, "a", "10"},
    {"Hundred", 100, "64", "100"},
    {"TwoInTheWrongOrder", 0x02000000, "2000000", "33554432"},
    {"TwoInHigherBits", 0x00010002, "10002", "65538"},
    {"Largest", 0xffffffff, "ffffffff", "4294967295"},
};

class DHPubKeyOfUnknownVersion : public ::testing::TestWithParam<VersionCase> {};

TEST_P(DHPubKeyOfUnknownVersion, IsNotWritten) {
    Buffer out(octets(3));
    EXPECT_EQ(
        messageOf<VORLException>([&] { DHPubKey(octets(128), UInt32(GetParam().version)).encode(out); }),
        std::string("Unknown Diffie-Hellman Public Key encoding version: 0x") + GetParam().inHex);
    EXPECT_EQ(out.toByteArray(), octets(3));
}

TEST_P(DHPubKeyOfUnknownVersion, IsNotRead) {
    Buffer in(UInt32::encodeBytes(GetParam().version) + octets(126));
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<VORLException>([&] { record.decode(in); }),
              std::string("Unknown DHPubKey version: ") + GetParam().inDecimal);
    expectOld(record);
    EXPECT_EQ(in.ridx(), 4U);
}

INSTANTIATE_TEST_SUITE_P(Versions, DHPubKeyOfUnknownVersion, ::testing::ValuesIn(UNKNOWN_VERSIONS),
                         [](const auto& test) { return test.param.name; });

// A bare key is written without a version, so that in a record 1 is as unknown as any.
TEST(DHPubKey, HasNoRecordOfVersion1) {
    Buffer in(fromHex("00 00 00 01") + block(octets(128)));
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<VORLException>([&] { record.decode(in); }), "Unknown DHPubKey version: 1");
    expectOld(record);
}

class DHPubKeyReading : public ::testing::TestWithParam<LengthCase> {};

TEST_P(DHPubKeyReading, IsRefused) {
    // Not even a whole record helps.
    const bytes data = slice(recordOf(octets(119)) + octets(10), 0, GetParam().size);
    Buffer in(data);
    DHPubKey record = oldRecord();

    EXPECT_EQ(messageOf<VORLException>([&] { record.decode(in); }), GetParam().message);
    expectOld(record);
    EXPECT_EQ(in.ridx(), 0U);
}

const LengthCase NO_RECORD_LENGTHS[] = {
    {"None", 0, "DH PubKey length (0) out of range"},
    {"OnlyAVersion", 4, "DH PubKey length (4) out of range"},
    {"Near", 119, "DH PubKey length (119) out of range"},
    {"Nearer", 120, "DH PubKey length (120) out of range"},
    {"Largest", 124, "DH PubKey length (124) out of range"},
};

INSTANTIATE_TEST_SUITE_P(OfTooFewBytes, DHPubKeyReading, ::testing::ValuesIn(NO_RECORD_LENGTHS),
                         [](const auto& test) { return test.param.name; });

TEST(DHPubKey, IsReadBareFrom125To129Bytes) {
    for (const std::size_t size : {125U, 126U, 127U, 128U, 129U}) {
        Buffer in(octets(size));
        DHPubKey record = oldRecord();
        record.decode(in);

        EXPECT_EQ(record.key(), octets(size));
        EXPECT_EQ(record.version().val(), 1U);
        EXPECT_EQ(in.ridx(), 0U) << size;
    }
}

// Nothing tells such a record from a bare key.
TEST(DHPubKey, IsReadBareFromARecordAroundAKeyOf120To124Bytes) {
    for (const std::size_t keyBytes : {120U, 121U, 122U, 123U, 124U}) {
        const bytes wire = recordOf(octets(keyBytes));
        Buffer in(wire);
        DHPubKey record;
        record.decode(in);

        EXPECT_EQ(record.key(), wire);
        EXPECT_EQ(record.version().val(), 1U);
    }
}

TEST(DHPubKey, IsReadAsARecordFrom130Bytes) {
    for (const std::size_t keyBytes : {125U, 126U, 127U, 128U, 129U, 130U, 200U, 16383U, 20000U}) {
        const bytes wire = recordOf(octets(keyBytes));
        Buffer in(wire);
        DHPubKey record = oldRecord();
        record.decode(in);

        EXPECT_EQ(record.key(), octets(keyBytes));
        EXPECT_EQ(record.version().val(), 2U);
        EXPECT_EQ(in.ridx(), wire.size());
    }
}

// How long a key must be is judged by who uses it.
TEST(DHPubKey, LeavesTheBytesBehindAShortKeyUnread) {
    for (const std::size_t keyBytes : {1U, 119U, 120U, 124U}) {
        Buffer in(recordOf(octets(keyBytes)) + octets(130));
        DHPubKey record;
        record.decode(in);

        EXPECT_EQ(record.key(), octets(keyBytes));
        EXPECT_EQ(record.version().val(), 2U);
        EXPECT_EQ(in.toByteArrayRemain(), octets(130)) << keyBytes;
    }
}

TEST(DHPubKey, OfARecordMayBeEmpty) {
    Buffer in(fromHex("00 00 00 02 00") + octets(125));
    DHPubKey record = oldRecord();
    record.decode(in);
    EXPECT_EQ(record.key(), bytes());
    EXPECT_EQ(record.version().val(), 2U);
    EXPECT_EQ(in.ridx(), 5U);
}

TEST(DHPubKey, IsReadFromWhereTheBufferWasReadTo) {
    // What was read before counts for the form: by itself each record is too short for one.
    Buffer in(octets(125) + recordOf(octets(3)) + recordOf(octets(4)));
    in.skip(125);
    DHPubKey record;
    record.decode(in);
    EXPECT_EQ(record.key(), octets(3));
    record.decode(in);
    EXPECT_EQ(record.key(), octets(4));
    EXPECT_EQ(record.version().val(), 2U);
    EXPECT_EQ(in.toByteArrayRemain(), bytes());
}

TEST(DHPubKey, IsReadBareFromTheWholeBufferWhateverWasRead) {
    for (const unsigned int read : {1U, 10U, 125U}) {
        Buffer in(octets(125));
        in.skip(read);
        DHPubKey record;
        record.decode(in);

        EXPECT_EQ(record.key(), octets(125));
        EXPECT_EQ(record.version().val(), 1U);
        EXPECT_EQ(in.ridx(), read);
    }
}

TEST(DHPubKey, DoesNotTakeRoomForContent) {
    Buffer in(2000);
    in.put(octets(124));
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<VORLException>([&] { record.decode(in); }), "DH PubKey length (124) out of range");

    in.put(bytes{0x55});
    record.decode(in);
    EXPECT_EQ(record.key(), octets(124) + bytes{0x55});
}

TEST(DHPubKey, KeepsItsValueWhereTheVersionIsCutShort) {
    Buffer in(octets(200));
    in.skip(197);
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<VORLException>([&] { record.decode(in); }),
              "Buffer only contains 3 bytes; unable to decode UInt32");
    expectOld(record);
    EXPECT_EQ(in.ridx(), 197U);
}

TEST(DHPubKey, KeepsItsValueWhereTheLengthIsMissing) {
    Buffer in(octets(126) + fromHex("00 00 00 02"));
    in.skip(126);
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<ASN1Exception>([&] { record.decode(in); }),
              "index out of bounds: read index(130) >= write index(130)");
    expectOld(record);
}

TEST(DHPubKey, KeepsItsValueWhereTheKeyIsCutShort) {
    Buffer in(fromHex("00 00 00 02 7e") + octets(125));
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<ASN1Exception>([&] { record.decode(in); }),
              "Unable to read 126 bytes from buffer, only 125 available");
    expectOld(record);
}

TEST(DHPubKey, KeepsItsValueWhereTheLengthIsNone) {
    Buffer in(fromHex("00 00 00 02 c5") + octets(125));
    DHPubKey record = oldRecord();
    EXPECT_EQ(messageOf<ASN1Exception>([&] { record.decode(in); }), "Unknown ASN.1 length value: b11000101");
    expectOld(record);
}

TEST(DHPubKey, TravelsAsBase64) {
    const std::unique_ptr<DHPubKey> sent = DHPubKey::create(octets(128));
    const bytes text = rawBase64(encodingOf(*sent));

    const std::unique_ptr<DHPubKey> received = DHPubKey::decodeB64(text);
    EXPECT_EQ(received->version().val(), 2U);
    EXPECT_EQ(received->key(), octets(128));
}

TEST(DHPubKey, OfABase64TextMayBeBare) {
    const std::unique_ptr<DHPubKey> received = DHPubKey::decodeB64(rawBase64(octets(128)));
    EXPECT_EQ(received->version().val(), 1U);
    EXPECT_EQ(received->key(), octets(128));
}

TEST(DHPubKey, OfABase64TextIsRefusedAsOfABuffer) {
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::decodeB64(rawBase64(octets(3))); }),
              "DH PubKey length (3) out of range");
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::decodeB64(rawBase64(octets(124))); }),
              "DH PubKey length (124) out of range");
    EXPECT_EQ(messageOf<VORLException>(
                  [] { DHPubKey::decodeB64(rawBase64(fromHex("00 00 00 03") + octets(126))); }),
              "Unknown DHPubKey version: 3");
    EXPECT_EQ(messageOf<ASN1Exception>(
                  [] { DHPubKey::decodeB64(rawBase64(fromHex("00 00 00 02 7e") + octets(125))); }),
              "Unable to read 126 bytes from buffer, only 125 available");
}

TEST(DHPubKey, OfTrailingBytesInABase64TextIsReadAllTheSame) {
    const std::unique_ptr<DHPubKey> received =
        DHPubKey::decodeB64(rawBase64(recordOf(octets(119)) + octets(6)));
    EXPECT_EQ(received->version().val(), 2U);
    EXPECT_EQ(received->key(), octets(119));
}

TEST(DHPubKey, DumpsATextThatIsNotBase64) {
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::decodeB64(fromText("AAA")); }),
              "Unable to Base64 decode input:\n"
              "     0: 41:41:41                                           AAA             \n"
              "\n");
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::decodeB64(fromText("0123456789-ABCDE")); }),
              "Unable to Base64 decode input:\n"
              "     0: 30:31:32:33:34:35:36:37:38:39:2d:41:42:43:44:45    0123456789-ABCDE\n"
              "\n");
    EXPECT_EQ(messageOf<VORLException>(
                  [] { DHPubKey::decodeB64(fromHex("00 0a 7e 7f 80 ff 20 41 41 41 41 41 41 41 41 41 42")); }),
              "Unable to Base64 decode input:\n"
              "     0: 00:0a:7e:7f:80:ff:20:41:41:41:41:41:41:41:41:41    ..~... AAAAAAAAA\n"
              "    10: 42                                                 B               \n"
              "\n");
}

TEST(DHPubKey, HasNothingToDumpOfNoText) {
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::decodeB64(bytes()); }),
              "Unable to Base64 decode input:\n\n");
}

TEST(DHPubKey, PrintsItsVersionAndKey) {
    EXPECT_EQ(DHPubKey(fromHex("01 02 ab"), UInt32(2)).toString(),
              "Diffie-Hellman-Public-Key (Version 0x2)\n"
              "    key:  01:02:ab\n");
    EXPECT_EQ(DHPubKey(bytes(27, 0x11), UInt32(0x1f)).toString(),
              "Diffie-Hellman-Public-Key (Version 0x1f)\n"
              "    key:\n"
              "        11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11\n"
              "        11:11:11\n");
    EXPECT_EQ(DHPubKey().toString(),
              "Diffie-Hellman-Public-Key (Version 0x0)\n"
              "    key:  (NULL)");
}

TEST(DHPubKey, PrintsItsKeyAsABlock) {
    const DHPubKey record(fromHex("01 02 ab"), UInt32(2));
    EXPECT_EQ(record.toFormatString("peer", 80, 1, ":", 4), "    peer:  01:02:ab\n");
    EXPECT_EQ(record.toFormatString("peer", 80, 3, "", 2), "      peer:  0102ab\n");
    EXPECT_EQ(record.toFormatString("peer", 10, 1, "-", 2), "  peer:\n    01-02\n    ab\n");
    EXPECT_EQ(DHPubKey().toFormatString("peer", 80, 2, ":", 4), "        peer:  (NULL)");
}

TEST(DHPubKey, WritesNumbersWithoutTheGroupingOfALocale) {
    const GroupedDigits grouped;
    EXPECT_EQ(messageOf<VORLException>([] { DHPubKey::create(bytes(16384)); }),
              "DH PubKey length (16384) out of range");

    Buffer in(fromHex("00 01 00 00") + octets(126));
    DHPubKey record;
    EXPECT_EQ(messageOf<VORLException>([&] { record.decode(in); }), "Unknown DHPubKey version: 65536");

    Buffer out;
    const DHPubKey unknown(octets(3), UInt32(0x12345));
    EXPECT_EQ(messageOf<VORLException>([&] { unknown.encode(out); }),
              "Unknown Diffie-Hellman Public Key encoding version: 0x12345");
    EXPECT_EQ(unknown.toString(), "Diffie-Hellman-Public-Key (Version 0x12345)\n    key:  01:20:3f\n");

    const std::string message = messageOf<VORLException>([] { DHPubKey::decodeB64(bytes(0x1001, 0x2d)); });
    EXPECT_NE(message.find("\n  1000: 2d "), std::string::npos);
}

}  // namespace
}  // namespace vorl::test
