#include "vorl/PKSignature01.h"

#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "signature_algos.h"
#include "signature_record.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/PKSignatureAlgo.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(std::is_base_of_v<PKSignature, PKSignature01>);

TEST(PKSignature01, OwnsACopyOfItsValue) {
    bytes val = octets(128);
    const std::shared_ptr<const PKSignature01> signature = PKSignature01::create(val);
    val[0] ^= 1;
    signature->val()[1] ^= 1;

    EXPECT_EQ(signature->val(), octets(128));
}

TEST(PKSignature01, IsVersionOneOfSha1WithRsa) {
    const PKSignature01 signature(octets(3));

    EXPECT_EQ(signature.version().val(), 1);
    EXPECT_EQ(signature.algo(), PKSignatureAlgo::SHA1withRSA());
    EXPECT_EQ(signature.toString(), "Public-Key-Signature (Version 0x01, SHA1withRSA)");
}

TEST(PKSignature01, BlockIsTheHexOfItsValue) {
    const PKSignature01 signature(bytes{0x01, 0x02, 0xab});
    const PKSignature01 empty{bytes()};

    EXPECT_EQ(signature.toFormatString("sig", 80, 1, ":", 4), "    sig:  01:02:ab\n");
    EXPECT_EQ(signature.toFormatString("sig", 80, 3, " ", 2), "      sig:  01 02 ab\n");
    EXPECT_EQ(signature.toFormatString("sig", 14, 0, ":", 4), "sig:\n    01:02:ab\n");
    EXPECT_EQ(empty.toFormatString("sig", 80, 1, ":", 4), "    sig:  (NULL)");
}

// Written by hand, for the forms that an RSA signature has.
TEST(PKSignature01, RecordIsVersionLengthAndValue) {
    EXPECT_EQ(PKSignature01(bytes()).encode(), (bytes{0x01, 0x00}));
    EXPECT_EQ(PKSignature01(bytes{0xaa}).encode(), (bytes{0x01, 0x01, 0xaa}));
    EXPECT_EQ(PKSignature01(octets(128)).encode(), (bytes{0x01, 0x80, 0x80}) + octets(128));
    EXPECT_EQ(PKSignature01(octets(256)).encode(), (bytes{0x01, 0x81, 0x00}) + octets(256));
    EXPECT_TRUE(PKSignature01(octets(16384)).encode() == (bytes{0x01, 0xc1}) + octets(16384) + bytes{0x00});
}

struct SizeCase {
    const char* name;
    std::size_t octets;
};

const SizeCase SIZES[] = {
    {"Empty", 0},
    {"One", 1},
    {"OneByteLengthLargest", 127},
    {"TwoByteLengthSmallest", 128},
    {"Rsa2048", 256},
    {"Rsa4096", 512},
    {"TwoByteLengthLargest", 16383},
    {"OneFragment", 16384},
    {"OneFragmentAndOne", 16385},
    {"TwoFragmentsLessOne", 32767},
    {"TwoFragments", 32768},
    {"ThreeFragments", 49152},
    {"FourFragmentsLessOne", 65535},
    {"FourFragments", 65536},
    {"FourFragmentsAndOne", 65537},
    {"FourFragmentsAndMore", 70000},
    {"FiveFragments", 81920},
    {"EightFragments", 131072},
    {"EightFragmentsAndOne", 131073},
};

class SignatureValueSize : public ::testing::TestWithParam<SizeCase> {
protected:
    const bytes val_ = octets(GetParam().octets);
    const bytes record_ = signatureRecord(val_);
};

TEST_P(SignatureValueSize, IsWrittenAsTheFormatSays) {
    const PKSignature01 signature(val_);
    Buffer out(bytes{0x55});
    signature.encode(out);

    EXPECT_TRUE(signature.encode() == record_);
    EXPECT_TRUE(signature.encodeB64() == rawBase64(record_));
    EXPECT_TRUE(out.toByteArray() == bytes{0x55} + record_);
}

TEST_P(SignatureValueSize, IsReadBack) {
    Buffer in(record_ + bytes{0x66});
    const std::shared_ptr<const PKSignature> signature = PKSignature::decode(in);

    EXPECT_TRUE(signature->val() == val_);
    EXPECT_EQ(in.toByteArrayRemain(), bytes{0x66});
    EXPECT_TRUE(PKSignature::decode(record_)->val() == val_);
    EXPECT_TRUE(signature->encode() == record_);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SignatureValueSize, ::testing::ValuesIn(SIZES),
                         [](const auto& test) { return test.param.name; });

TEST(PKSignature01, IsReadWithoutItsVersion) {
    Buffer in(bytes{0x03, 0xaa, 0xbb, 0xcc, 0x66});
    const std::shared_ptr<const PKSignature01> signature = PKSignature01::decode(in);

    EXPECT_EQ(signature->val(), fromHex("aabbcc"));
    EXPECT_EQ(in.toByteArrayRemain(), bytes{0x66});
}

TEST(PKSignature01, FormsOfItsBaseStayVisible) {
    const PKSignature01 signature(fromHex("aabb"));

    EXPECT_EQ(signature.encode(), fromHex("01 02 aabb"));
    EXPECT_EQ(PKSignature01::decode(fromHex("01 02 aabb"))->val(), fromHex("aabb"));
}

// What other writers may choose, and is read all the same.
TEST(PKSignature01, ValueMayBeInMoreFragmentsThanNeeded) {
    const bytes val = octets(32768 + 5);
    const bytes record = bytes{0x01, 0xc1} + slice(val, 0, 16384) + bytes{0xc1} + slice(val, 16384, 16384) +
                         bytes{0x80, 0x05} + slice(val, 32768, 5);

    EXPECT_TRUE(PKSignature::decode(record)->val() == val);
}

// Cut short

std::string outOfBounds(std::size_t size) {
    return "index out of bounds: read index(" + std::to_string(size) + ") >= write index(" +
           std::to_string(size) + ")";
}

std::string unreadable(std::size_t wanted, std::size_t available) {
    return "Unable to read " + std::to_string(wanted) + " bytes from buffer, only " +
           std::to_string(available) + " available";
}

std::string refusalOfTheFirst(const bytes& record, std::size_t size) {
    return messageOf<ASN1Exception>([&] { PKSignature::decode(slice(record, 0, size)); });
}

TEST(TruncatedSignature, IsRefusedAtEveryByte) {
    const bytes record = signatureRecord(octets(200));

    EXPECT_EQ(refusalOfTheFirst(record, 0), outOfBounds(0));
    EXPECT_EQ(refusalOfTheFirst(record, 1), outOfBounds(1));
    EXPECT_EQ(refusalOfTheFirst(record, 2), outOfBounds(2));
    for (std::size_t size = 3; size < record.size(); ++size) {
        EXPECT_EQ(refusalOfTheFirst(record, size), unreadable(200, size - 3));
    }
}

TEST(TruncatedSignature, WithAOneByteLengthIsRefusedAtEveryByte) {
    const bytes record = signatureRecord(octets(20));

    EXPECT_EQ(refusalOfTheFirst(record, 1), outOfBounds(1));
    for (std::size_t size = 2; size < record.size(); ++size) {
        EXPECT_EQ(refusalOfTheFirst(record, size), unreadable(20, size - 2));
    }
}

TEST(TruncatedSignature, OfSeveralFragmentsIsRefusedInEach) {
    const bytes record = signatureRecord(octets(70000));
    ASSERT_EQ(record.size(), 2U + 65536 + 2 + 4464);

    EXPECT_EQ(refusalOfTheFirst(record, 2), unreadable(65536, 0));
    EXPECT_EQ(refusalOfTheFirst(record, 3), unreadable(65536, 1));
    EXPECT_EQ(refusalOfTheFirst(record, 65537), unreadable(65536, 65535));
    EXPECT_EQ(refusalOfTheFirst(record, 65538), outOfBounds(65538));
    EXPECT_EQ(refusalOfTheFirst(record, 65539), outOfBounds(65539));
    EXPECT_EQ(refusalOfTheFirst(record, 65540), unreadable(4464, 0));
    EXPECT_EQ(refusalOfTheFirst(record, record.size() - 1), unreadable(4464, 4463));
}

TEST(TruncatedSignature, OfWholeFragmentsIsRefusedWithoutItsEnd) {
    for (const std::size_t size : {16384U, 32768U, 65536U, 131072U}) {
        const bytes record = signatureRecord(octets(size));

        EXPECT_EQ(refusalOfTheFirst(record, record.size() - 1), outOfBounds(record.size() - 1));
        EXPECT_EQ(refusalOfTheFirst(record, record.size() - 2),
                  size < 131072 ? unreadable(size, size - 1) : unreadable(65536, 65535));
    }
}

TEST(TruncatedSignature, HasBeenReadUpToTheFault) {
    Buffer in(fromHex("01 05 aabb"));

    EXPECT_EQ(messageOf<ASN1Exception>([&] { PKSignature::decode(in); }), unreadable(5, 2));
    EXPECT_EQ(in.ridx(), 4U);
}

TEST(PKSignature01, LengthThatNoBlockHasIsRefused) {
    EXPECT_EQ(messageOf<ASN1Exception>([] { PKSignature::decode(fromHex("01 c0 aa")); }),
              "Unknown ASN.1 length value: b11000000");
    EXPECT_EQ(messageOf<ASN1Exception>([] { PKSignature::decode(fromHex("01 c5 aa")); }),
              "Unknown ASN.1 length value: b11000101");
    EXPECT_EQ(messageOf<ASN1Exception>([] { PKSignature::decode(fromHex("01 ff")); }),
              "Unknown ASN.1 length value: b11111111");
}

}  // namespace
}  // namespace vorl::test
