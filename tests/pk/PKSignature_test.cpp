#include "vorl/PKSignature.h"

#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "signature_algos.h"
#include "signature_record.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/DigestAlgo.h"
#include "vorl/PKAlgo.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(std::is_abstract_v<PKSignature> && std::is_base_of_v<FormatPrintable, PKSignature>);

// A record of a version that the library does not know, which leaves to the base all that it can.
class FutureSignature : public PKSignature {
public:
    std::string toFormatString(const std::string& name, unsigned int /*width*/, unsigned int /*level*/,
                               const std::string& /*separator*/, unsigned int /*indentSize*/) const override {
        return name;
    }
    UInt8 version() const override { return UInt8(0x0a); }
    std::shared_ptr<const PKSignatureAlgo> algo() const override { return sha256WithRsa(); }
    bytes val() const override { return octets(5); }
};

class LongerFutureSignature : public FutureSignature {
public:
    using PKSignature::encode;
    void encode(Buffer& out) const override {
        PKSignature::encode(out);
        out.put(octets(2));
    }
};

// Writing

TEST(PKSignature, BaseWritesTheVersion) {
    Buffer out(bytes{0x55});
    const PKSignature& signature = FutureSignature();
    signature.encode(out);

    EXPECT_EQ(out.toByteArray(), (bytes{0x55, 0x0a}));
}

TEST(PKSignature, BytesAndTextAreOfWhatTheRecordItselfWrites) {
    const LongerFutureSignature signature;

    EXPECT_EQ(signature.encode(), bytes{0x0a} + octets(2));
    EXPECT_EQ(signature.encodeB64(), rawBase64(bytes{0x0a} + octets(2)));
}

TEST(PKSignature, TextNamesVersionAndAlgorithm) {
    EXPECT_EQ(PKSignature01(octets(128)).toString(), "Public-Key-Signature (Version 0x01, SHA1withRSA)");
}

// The algorithm's name is the one that the process began with.
TEST(PKSignature, TextHasTheVersionInTwoHexDigits) {
    EXPECT_EQ(FutureSignature().toString(),
              "Public-Key-Signature (Version 0x0a, " + NAME_IN_THIS_PROCESS + ")");
}

// Reading

TEST(PKSignature, VersionOneIsRead) {
    const bytes val = octets(128);
    const std::shared_ptr<const PKSignature> fromBytes = PKSignature::decode(signatureRecord(val));
    Buffer in(signatureRecord(val));
    const std::shared_ptr<const PKSignature> fromBuffer = PKSignature::decode(in);

    for (const auto& signature : {fromBytes, fromBuffer}) {
        EXPECT_NE(dynamic_cast<const PKSignature01*>(signature.get()), nullptr);
        EXPECT_EQ(signature->version().val(), 1);
        EXPECT_EQ(signature->algo(), PKSignatureAlgo::SHA1withRSA());
        EXPECT_EQ(signature->val(), val);
    }
    EXPECT_EQ(in.ridx(), in.widx());
}

TEST(PKSignature, BytesBehindTheRecordStayUnread) {
    Buffer in(bytes{0x55} + signatureRecord(octets(3)) + signatureRecord(octets(4)) + bytes{0x66});
    in.get();

    EXPECT_EQ(PKSignature::decode(in)->val(), octets(3));
    EXPECT_EQ(in.toByteArrayRemain(), signatureRecord(octets(4)) + bytes{0x66});
    EXPECT_EQ(PKSignature::decode(in)->val(), octets(4));
    EXPECT_EQ(in.toByteArrayRemain(), bytes{0x66});
    EXPECT_EQ(PKSignature::decode(signatureRecord(octets(3)) + octets(1000))->val(), octets(3));
}

struct VersionCase {
    const char* name;
    unsigned char version;
    const char* message;
};

const VersionCase UNKNOWN_VERSIONS[] = {
    {"Zero", 0x00, "Unknown PKSignature version: [UInt8: 0x 00]"},
    {"Two", 0x02, "Unknown PKSignature version: [UInt8: 0x 02]"},
    {"Ten", 0x0a, "Unknown PKSignature version: [UInt8: 0x 0a]"},
    {"HighBit", 0x81, "Unknown PKSignature version: [UInt8: 0x 81]"},
    {"Largest", 0xff, "Unknown PKSignature version: [UInt8: 0x ff]"},
};

class UnknownVersion : public ::testing::TestWithParam<VersionCase> {};

TEST_P(UnknownVersion, IsRefusedWithNothingReadBehindIt) {
    bytes record = signatureRecord(octets(3));
    record[0] = GetParam().version;
    Buffer in(record);
    Buffer alone(bytes{GetParam().version});

    EXPECT_EQ(messageOf<VORLException>([&] { PKSignature::decode(in); }), GetParam().message);
    EXPECT_EQ(in.ridx(), 1U);
    EXPECT_EQ(messageOf<VORLException>([&] { PKSignature::decode(record); }), GetParam().message);
    EXPECT_EQ(messageOf<VORLException>([&] { PKSignature::decode(alone); }), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Versions, UnknownVersion, ::testing::ValuesIn(UNKNOWN_VERSIONS),
                         [](const auto& test) { return test.param.name; });

TEST(PKSignature, NoVersionAtAllIsRefused) {
    const std::string message = "index out of bounds: read index(0) >= write index(0)";
    Buffer empty;

    EXPECT_EQ(messageOf<ASN1Exception>([] { PKSignature::decode(bytes()); }), message);
    EXPECT_EQ(messageOf<ASN1Exception>([&] { PKSignature::decode(empty); }), message);
}

// By algorithm

TEST(PKSignature, IsMadeForTheAlgorithmItself) {
    const bytes val = octets(128);
    const std::shared_ptr<const PKSignature> signature =
        PKSignature::create(val, PKSignatureAlgo::SHA1withRSA());

    EXPECT_NE(dynamic_cast<const PKSignature01*>(signature.get()), nullptr);
    EXPECT_EQ(signature->val(), val);
    EXPECT_EQ(signature->algo(), PKSignatureAlgo::SHA1withRSA());
}

TEST(PKSignature, AlgorithmOfTheSameNameIsRefused) {
    const auto twin = std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA1(), PKAlgo::RSA());
    ASSERT_EQ(twin->initName(), "SHA1withRSA");

    EXPECT_EQ(messageOf<VORLException>([&] { PKSignature::create(octets(128), twin); }),
              "Unknown signature algorithm: SHA1withRSA");
}

TEST(PKSignature, AnotherAlgorithmIsRefused) {
    EXPECT_EQ(messageOf<VORLException>([] { PKSignature::create(octets(128), sha256WithRsa()); }),
              "Unknown signature algorithm: " + NAME_IN_THIS_PROCESS);
}

}  // namespace
}  // namespace vorl::test
