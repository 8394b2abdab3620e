#include "vorl/CipherWrapper.h"

#include "GroupedDigits.h"
#include "LibraryState.h"
#include "PlatformContext.h"
#include "block_encoder.h"
#include "cipher_contexts.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "raw_cipher.h"
#include "raw_openssl.h"
#include "sample_key.h"
#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/CipherAlgo.h"
#include "vorl/CipherMode.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper00.h"
#include "vorl/CipherWrapper01.h"
#include "vorl/CipherWrapper02.h"
#include "vorl/NullCipher.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PaddingType.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VORLException.h"
#include "vtable_slot.h"

#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;
using Wrapper = std::shared_ptr<const CipherWrapper>;

const char NOT_INITIALIZED[] = "CipherWrapper must be initialized before use";
const char LIBRARY_NOT_INITIALIZED[] = "VORLLib must be initialized before use";
const char SPEC_MISMATCH[] = "Cipher spec mismatch between cipher and wrapper";

// A full envelope, written out independently of the library.
bytes fullEnvelope(const bytes& iv, const bytes& body) {
    return bytes{0x02} + block(iv) + block(body);
}

bytes testEnvelope(const bytes& body) {
    return bytes{0x01} + block(body);
}

// Not an object, which would make them all before the first test.
std::vector<Wrapper> named() {
    return {CipherWrapper::NULL_CIPHER(), CipherWrapper::TEST_CIPHER(), CipherWrapper::FULL_CIPHER()};
}

// The registry alone, without the front of the library.
class CipherWrapperRegistry : public ::testing::Test {
protected:
    void SetUp() override { CipherWrapper::cleanup(); }
    void TearDown() override {
        CipherWrapper::cleanup();
        Random::init_ = false;
    }
};

class CipherWrapperTest : public StartedLibrary {};

// Forms that the front does not offer are reached through a subclass.
class OwnWrapper : public CipherWrapper {
public:
    OwnWrapper(const std::string& name, unsigned char id, std::shared_ptr<const CipherSpec> spec)
        : CipherWrapper(name), id_(id), ownSpec_(std::move(spec)) {}
    unsigned char id() const override { return id_; }
    std::shared_ptr<const CipherSpec> getCipherSpec() const override { return ownSpec_; }
    using CipherWrapper::doDecrypt;

private:
    const unsigned char id_;
    const std::shared_ptr<const CipherSpec> ownSpec_;
};

std::shared_ptr<const CipherSpec> wrapperSpec(const EVP_CIPHER* cipher, unsigned int keySize,
                                              unsigned int blockSize, unsigned int ivSize,
                                              unsigned int number = 9) {
    return std::make_shared<const CipherSpec>(static_cast<ICipherContext::Spec>(number), CipherAlgo::AES(),
                                              ivSize == 0 ? CipherMode::ECB() : CipherMode::CBC(),
                                              PaddingType::PKCS5Padding(), keySize, blockSize, ivSize,
                                              cipher);
}

}  // namespace

TEST(CipherWrapper, VirtualOperationsKeepTheirSlots) {
    class Slots : public CipherWrapper {
    public:
        static void expectDoDecryptInSlot8() { EXPECT_EQ(vtableSlot(&Slots::doDecrypt), 8); }
    };
    EXPECT_EQ(vtableSlot(&CipherWrapper::encrypt), 0);
    EXPECT_EQ(vtableSlot(&CipherWrapper::id), 1);
    EXPECT_EQ(vtableSlot(&CipherWrapper::toString), 2);
    EXPECT_EQ(vtableSlot(&CipherWrapper::operator==), 3);
    EXPECT_EQ(vtableSlot(&CipherWrapper::operator!=), 4);
    EXPECT_EQ(vtableSlot(&CipherWrapper::getCipherSpec), 5);
    // The destructor takes the slots 6 and 7.
    Slots::expectDoDecryptInSlot8();
    EXPECT_EQ(vtableSlot(&WithOneMore<CipherWrapper>::oneMore), 9);
}

TEST(CipherWrapper, NamedObjectsAreMadeOnceWithTheirClasses) {
    EXPECT_EQ(CipherWrapper::NULL_CIPHER(), CipherWrapper::NULL_CIPHER());
    EXPECT_EQ(CipherWrapper::TEST_CIPHER(), CipherWrapper::TEST_CIPHER());
    EXPECT_EQ(CipherWrapper::FULL_CIPHER(), CipherWrapper::FULL_CIPHER());
    EXPECT_NE(dynamic_cast<const CipherWrapper00*>(CipherWrapper::NULL_CIPHER().get()), nullptr);
    EXPECT_NE(dynamic_cast<const CipherWrapper01*>(CipherWrapper::TEST_CIPHER().get()), nullptr);
    EXPECT_NE(dynamic_cast<const CipherWrapper02*>(CipherWrapper::FULL_CIPHER().get()), nullptr);
}

TEST(CipherWrapper, PrintsNameAndVersion) {
    EXPECT_EQ(CipherWrapper::NULL_CIPHER()->toString(), "CipherWrapper[Null:0x00]");
    EXPECT_EQ(CipherWrapper::TEST_CIPHER()->toString(), "CipherWrapper[Test:0x01]");
    EXPECT_EQ(CipherWrapper::FULL_CIPHER()->toString(), "CipherWrapper[Full:0x02]");
    EXPECT_EQ(OwnWrapper("", 0xab, nullptr).toString(), "CipherWrapper[:0xab]");
    EXPECT_EQ(OwnWrapper("Own", 0x7f, nullptr).toString(), "CipherWrapper[Own:0x7f]");
}

TEST(CipherWrapper, EqualityIsIdentity) {
    for (const Wrapper& one : named()) {
        for (const Wrapper& other : named()) {
            EXPECT_EQ(*one == *other, one == other);
            EXPECT_EQ(*one != *other, one != other);
        }
    }
    const CipherWrapper02 twin("Full");
    EXPECT_FALSE(twin == *CipherWrapper::FULL_CIPHER());
    EXPECT_TRUE(twin != *CipherWrapper::FULL_CIPHER());
    EXPECT_TRUE(twin == twin);
    EXPECT_FALSE(twin != twin);
}

TEST(CipherWrapper, CannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<CipherWrapper02>);
    EXPECT_FALSE(std::is_copy_assignable_v<CipherWrapper02>);
}

TEST_F(CipherWrapperRegistry, IsEmptyBeforeInitAndAfterCleanup) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(messageOf<VORLException>([] { CipherWrapper::checkInit(); }), NOT_INITIALIZED);
        for (const int id : {0x00, 0x01, 0x02, 0x7f}) {
            EXPECT_EQ(
                messageOf<VORLException>([id] { CipherWrapper::forID(static_cast<unsigned char>(id)); }),
                NOT_INITIALIZED);
        }
        CipherWrapper::init();
        EXPECT_NO_THROW(CipherWrapper::checkInit());
        CipherWrapper::cleanup();
        CipherWrapper::cleanup();
    }
}

TEST_F(CipherWrapperRegistry, FindsTheNamedWrappersByVersion) {
    CipherWrapper::init();
    EXPECT_EQ(CipherWrapper::forID(0x00), CipherWrapper::NULL_CIPHER());
    EXPECT_EQ(CipherWrapper::forID(0x01), CipherWrapper::TEST_CIPHER());
    EXPECT_EQ(CipherWrapper::forID(0x02), CipherWrapper::FULL_CIPHER());
}

TEST_F(CipherWrapperRegistry, RepeatedInitIsHarmless) {
    CipherWrapper::init();
    CipherWrapper::init();
    EXPECT_EQ(CipherWrapper::forID(0x02), CipherWrapper::FULL_CIPHER());
    CipherWrapper::cleanup();
    EXPECT_EQ(messageOf<VORLException>([] { CipherWrapper::forID(0x02); }), NOT_INITIALIZED);
}

TEST_F(CipherWrapperRegistry, KnowsNoOtherVersion) {
    CipherWrapper::init();
    const std::string digits = "0123456789abcdef";
    for (unsigned int id = 0x03; id <= 0xff; ++id) {
        EXPECT_EQ(messageOf<VORLException>([id] { CipherWrapper::forID(static_cast<unsigned char>(id)); }),
                  std::string("Unknown CipherWrapper version: 0x") + digits[id / 16] + digits[id % 16]);
    }
}

TEST_F(CipherWrapperRegistry, OwnWrapperIsNotInIt) {
    const OwnWrapper own("Own", 0x7f, CipherSpec::AES_128_ECB_PKCS5());
    CipherWrapper::init();
    EXPECT_EQ(messageOf<VORLException>([] { CipherWrapper::forID(0x7f); }),
              "Unknown CipherWrapper version: 0x7f");
}

TEST_F(CipherWrapperRegistry, EnvelopesNeedIt) {
    NullCipher null;
    SoftwareKeyCipher full(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    Random::init_ = true;

    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::FULL_CIPHER()->encrypt(octets(3), full); }),
              NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(fromHex("00 01 61"), null); }),
              NOT_INITIALIZED);
    EXPECT_EQ(CipherWrapper::NULL_CIPHER()->encrypt(octets(1), full), fromHex("00 01 01"));
}

// The policy belongs to the front, which is asked after the version is known.
TEST_F(CipherWrapperRegistry, AloneDoesNotDecrypt) {
    CipherWrapper::init();
    RecordingContext context(2);
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(fromHex("00"), context); }),
              LIBRARY_NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(fromHex("03"), context); }),
              "Unknown CipherWrapper version: 0x03");
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(bytes(), context); }),
              "index out of bounds: read index(0) >= write index(0)");
    EXPECT_EQ(context.idCalls, 0);
}

TEST_F(CipherWrapperRegistry, AloneEncrypts) {
    CipherWrapper::init();
    SoftwareKeyCipher cipher(CipherSpec::AES_128_ECB_PKCS5(), KEY);
    EXPECT_EQ(CipherWrapper::TEST_CIPHER()->encrypt(octets(3), cipher),
              testEnvelope(rawEncrypt(KEY, {}, octets(3))));
}

TEST_F(CipherWrapperTest, NamedConstantLengths) {
    PlatformContext test(ICipherContext::SPEC_AES_128_ECB, KEY);
    PlatformContext full(ICipherContext::SPEC_AES_128_CBC, KEY);

    const bytes tested = CipherWrapper::TEST_CIPHER()->encrypt(octets(16), test);
    EXPECT_EQ(tested.size(), 34U);
    EXPECT_EQ(slice(tested, 0, 2), fromHex("01 20"));

    const bytes filled = CipherWrapper::FULL_CIPHER()->encrypt(octets(5), full);
    EXPECT_EQ(filled.size(), 35U);
    EXPECT_EQ(slice(filled, 0, 2), fromHex("02 10"));
    EXPECT_EQ(filled[18], 0x10);
}

namespace {

// One fault more with each line: the first that is still there is reported.
struct OrderedFault {
    const char* text;
    bool registry;
    bool knownVersion;
    bool allowed;
    bool sameSpec;
    bool ivLength;
    bool complete;
};

const OrderedFault DECRYPT_ORDER[] = {
    {NOT_INITIALIZED, false, false, false, false, false, false},
    {"Unknown CipherWrapper version: 0x03", true, false, false, false, false, false},
    {"CipherWrapper CipherWrapper[Full:0x02] not allowed", true, true, false, false, false, false},
    {SPEC_MISMATCH, true, true, true, false, false, false},
    {"Parsed IV length(8) != CipherSpec iv size(16", true, true, true, true, false, false},
    {"Buffer is not empty after parsing decrypted data; 1 bytes remain", true, true, true, true, true, false},
    {"fault in update", true, true, true, true, true, true},
};

}  // namespace

TEST_F(CipherWrapperTest, DecryptReportsTheFirstFaultInOrder) {
    for (const OrderedFault& line : DECRYPT_ORDER) {
        SetUp();
        VORLLib::setAllowedEncryptionType(EncryptionType::FULL_CIPHER(), line.allowed);
        if (!line.registry) {
            CipherWrapper::cleanup();
        }
        RecordingContext context(line.sameSpec ? 2 : 1);
        context.faultIn = "update";
        bytes envelope = fullEnvelope(octets(line.ivLength ? 16 : 8), octets(32));
        envelope[0] = line.knownVersion ? 0x02 : 0x03;
        if (!line.complete) {
            envelope.push_back(0x00);
        }

        if (line.complete) {
            EXPECT_EQ(messageOf<DeviceFault>([&] { CipherWrapper::decrypt(envelope, context); }), line.text);
        } else {
            EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(envelope, context); }),
                      line.text);
        }
    }
}

TEST_F(CipherWrapperTest, EmptyEnvelopeIsRefusedAfterTheRegistryIsChecked) {
    RecordingContext context(2);
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(bytes(), context); }),
              "index out of bounds: read index(0) >= write index(0)");
    CipherWrapper::cleanup();
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(bytes(), context); }), NOT_INITIALIZED);
}

TEST_F(CipherWrapperTest, FrontIsAskedBeforeTheSpec) {
    VORLLib::cleanup();
    CipherWrapper::init();
    RecordingContext context(1);
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(fromHex("02"), context); }),
              LIBRARY_NOT_INITIALIZED);
    EXPECT_EQ(context.idCalls, 0);
}

TEST_F(CipherWrapperTest, ForbiddenVersionIsRefusedBeforeItsBodyIsRead) {
    const std::shared_ptr<const EncryptionType> types[] = {
        EncryptionType::NULL_CIPHER(), EncryptionType::TEST_CIPHER(), EncryptionType::FULL_CIPHER()};
    const char* const texts[] = {"CipherWrapper CipherWrapper[Null:0x00] not allowed",
                                 "CipherWrapper CipherWrapper[Test:0x01] not allowed",
                                 "CipherWrapper CipherWrapper[Full:0x02] not allowed"};
    for (unsigned char version = 0; version < 3; ++version) {
        VORLLib::setAllowedEncryptionType(types[version], false);
        RecordingContext context(version);
        EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(bytes{version}, context); }),
                  texts[version]);
        EXPECT_EQ(messageOf<VORLException>([&] {
                      CipherWrapper::decrypt(bytes{version, 0xff}, context);
                  }),
                  texts[version]);
        EXPECT_TRUE(context.calls.empty());
    }
}

TEST_F(CipherWrapperTest, EachVersionNeedsAContextOfItsSpec) {
    for (unsigned char version = 0; version < 3; ++version) {
        for (const unsigned int id : {0U, 1U, 2U, 3U, 0xffffffffU}) {
            if (id == version) {
                continue;
            }
            RecordingContext context(id);
            EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(bytes{version}, context); }),
                      SPEC_MISMATCH);
            if (version != 0) {
                EXPECT_EQ(messageOf<VORLException>([&] { named()[version]->encrypt(octets(3), context); }),
                          SPEC_MISMATCH);
            }
            EXPECT_TRUE(context.calls.empty());
        }
    }
}

TEST_F(CipherWrapperTest, EncryptReportsTheFirstFaultInOrder) {
    RecordingContext wrongSpec(1);
    RecordingContext rightSpec(2);
    rightSpec.faultIn = "encryptInit";
    const CipherWrapper& full = *CipherWrapper::FULL_CIPHER();

    CipherWrapper::cleanup();
    Random::init_ = false;
    EXPECT_EQ(messageOf<VORLException>([&] { full.encrypt(octets(3), wrongSpec); }), NOT_INITIALIZED);
    CipherWrapper::init();
    EXPECT_EQ(messageOf<VORLException>([&] { full.encrypt(octets(3), wrongSpec); }), SPEC_MISMATCH);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { full.encrypt(octets(3), rightSpec); }),
              "Random must be initialized before use");
    EXPECT_TRUE(rightSpec.calls.empty());
    Random::init_ = true;
    EXPECT_EQ(messageOf<DeviceFault>([&] { full.encrypt(octets(3), rightSpec); }), "fault in encryptInit");
}

TEST_F(CipherWrapperTest, FrontIsNotNeededToEncrypt) {
    VORLLib::cleanup();
    CipherWrapper::init();
    RecordingContext context(2);
    context.finalOutput = octets(16);
    EXPECT_EQ(CipherWrapper::FULL_CIPHER()->encrypt(octets(3), context).size(), 35U);
}

TEST_F(CipherWrapperTest, OnlyTheFullVersionDrawsRandomBytes) {
    Random::init_ = false;
    PlatformContext test(ICipherContext::SPEC_AES_128_ECB, KEY);
    PlatformContext full(ICipherContext::SPEC_AES_128_CBC, KEY);
    EXPECT_EQ(CipherWrapper::NULL_CIPHER()->encrypt(octets(1), full), fromHex("00 01 01"));
    EXPECT_EQ(CipherWrapper::TEST_CIPHER()->encrypt(octets(1), test).size(), 18U);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { CipherWrapper::FULL_CIPHER()->encrypt(octets(1), full); }),
              "Random must be initialized before use");
}

TEST_F(CipherWrapperTest, EncryptDrivesTheContextOnce) {
    for (const std::size_t size : {0U, 1U, 5U, 16U, 70000U}) {
        RecordingContext context(2);
        context.updateOutput = octets(32);
        context.finalOutput = octets(16);

        const bytes envelope = CipherWrapper::FULL_CIPHER()->encrypt(octets(size), context);

        const std::vector<ContextCall> expected = {
            {"encryptInit", ivOf(envelope)}, {"update", octets(size)}, {"final", bytes()}};
        EXPECT_TRUE(context.calls == expected) << size;
        EXPECT_EQ(envelope, fullEnvelope(ivOf(envelope), octets(32) + octets(16)));
    }
}

TEST_F(CipherWrapperTest, EncryptWithoutAnIvHandsOverAnEmptyOne) {
    RecordingContext context(1);
    context.finalOutput = octets(16);
    EXPECT_EQ(CipherWrapper::TEST_CIPHER()->encrypt(octets(5), context), testEnvelope(octets(16)));
    const std::vector<ContextCall> expected = {
        {"encryptInit", bytes()}, {"update", octets(5)}, {"final", bytes()}};
    EXPECT_TRUE(context.calls == expected);
}

TEST_F(CipherWrapperTest, DecryptDrivesTheContextOnce) {
    for (const std::size_t size : {1U, 16U, 127U, 128U, 16383U, 16385U, 65535U, 65537U, 150000U}) {
        RecordingContext context(2);
        context.updateOutput = octets(3);
        context.finalOutput = octets(2);

        EXPECT_EQ(CipherWrapper::decrypt(fullEnvelope(IV, octets(size)), context), octets(3) + octets(2));

        const std::vector<ContextCall> expected = {
            {"decryptInit", IV}, {"update", octets(size)}, {"final", bytes()}};
        EXPECT_TRUE(context.calls == expected) << size;
    }
}

TEST_F(CipherWrapperTest, DecryptWithoutAnIvHandsOverAnEmptyOne) {
    RecordingContext context(1);
    EXPECT_EQ(CipherWrapper::decrypt(testEnvelope(octets(20)), context), bytes());
    const std::vector<ContextCall> expected = {
        {"decryptInit", bytes()}, {"update", octets(20)}, {"final", bytes()}};
    EXPECT_TRUE(context.calls == expected);
}

// A body of no octets is read, although it is never written.
TEST_F(CipherWrapperTest, EmptyBodyStillTakesOneUpdateAndOneFinal) {
    RecordingContext context(1);
    context.finalOutput = octets(4);
    EXPECT_EQ(CipherWrapper::decrypt(fromHex("01 00"), context), octets(4));
    const std::vector<ContextCall> expected = {
        {"decryptInit", bytes()}, {"update", bytes()}, {"final", bytes()}};
    EXPECT_TRUE(context.calls == expected);
}

TEST_F(CipherWrapperTest, BodyInFragmentsThatOthersWouldChooseReachesTheContextWhole) {
    // Two fragments of 16384 octets where this library writes one of 32768, a long form for a short length.
    const bytes body = octets(32768 + 5);
    const bytes envelope = bytes{0x01, 0xc1} + slice(body, 0, 16384) + bytes{0xc1} +
                           slice(body, 16384, 16384) + bytes{0x80, 0x05} + slice(body, 32768, 5);
    RecordingContext context(1);
    CipherWrapper::decrypt(envelope, context);
    ASSERT_EQ(context.calls.size(), 3U);
    EXPECT_TRUE(context.calls[1].argument == body);
}

// Closed by an empty fragment, a multiple of 16384 octets can be read: other writers do close it.
TEST_F(CipherWrapperTest, ClosedMultipleOf16384OctetsOpens) {
    const bytes message = octets(16384 - 5);
    const bytes body = rawEncrypt(KEY, {}, message);
    ASSERT_EQ(body.size(), 16384U);
    PlatformContext cipher(ICipherContext::SPEC_AES_128_ECB, KEY);
    ForwardingContext foreign(cipher.shared());

    EXPECT_TRUE(CipherWrapper::decrypt(testEnvelope(body) + bytes{0x00}, cipher) == message);
    EXPECT_TRUE(CipherWrapper::decrypt(testEnvelope(body) + bytes{0x00}, foreign) == message);
    EXPECT_TRUE(CipherWrapper::decrypt(testEnvelope(body) + bytes{0x80, 0x00}, cipher) == message);
}

TEST_F(CipherWrapperTest, OutputInOddPortionsIsJoined) {
    struct Portions {
        std::size_t updated;
        std::size_t finished;
    };
    for (const Portions portions : {Portions{0, 0}, {0, 1}, {1, 0}, {0, 48}, {7, 41}, {48, 0}, {0, 20000}}) {
        RecordingContext context(1);
        context.updateOutput = octets(portions.updated);
        context.finalOutput = bytes(portions.finished, 0xee);
        const bytes whole = context.updateOutput + context.finalOutput;

        EXPECT_EQ(CipherWrapper::TEST_CIPHER()->encrypt(octets(5), context), testEnvelope(whole));
        EXPECT_EQ(CipherWrapper::decrypt(testEnvelope(octets(16)), context), whole);
    }
}

TEST_F(CipherWrapperTest, ContextWithoutOutputLeavesTheBodyOut) {
    RecordingContext context(1);
    EXPECT_EQ(CipherWrapper::TEST_CIPHER()->encrypt(octets(5), context), fromHex("01"));
}

TEST_F(CipherWrapperTest, DecryptInitComesBeforeTheBodyIsRead) {
    RecordingContext context(2);
    const bytes noBody = bytes{0x02} + block(IV);
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(noBody, context); }),
              "index out of bounds: read index(18) >= write index(18)");
    const std::vector<ContextCall> expected = {{"decryptInit", IV}};
    EXPECT_TRUE(context.calls == expected);

    context.faultIn = "decryptInit";
    EXPECT_EQ(messageOf<DeviceFault>([&] { CipherWrapper::decrypt(noBody, context); }),
              "fault in decryptInit");
}

TEST_F(CipherWrapperTest, NothingIsDecryptedWhenBytesRemain) {
    for (const std::size_t rest : {1U, 2U, 1000U}) {
        RecordingContext context(2);
        EXPECT_EQ(
            messageOf<VORLException>(
                [&] { CipherWrapper::decrypt(fullEnvelope(IV, octets(32)) + bytes(rest), context); }),
            "Buffer is not empty after parsing decrypted data; " + std::to_string(rest) + " bytes remain");
        const std::vector<ContextCall> expected = {{"decryptInit", IV}};
        EXPECT_TRUE(context.calls == expected);
    }
}

TEST_F(CipherWrapperTest, ContextIsNotStartedWithAnIvOfAWrongLength) {
    for (const std::size_t size : {1U, 8U, 15U, 17U, 127U, 128U, 16385U}) {
        RecordingContext context(2);
        EXPECT_EQ(messageOf<VORLException>(
                      [&] { CipherWrapper::decrypt(fullEnvelope(octets(size), octets(32)), context); }),
                  "Parsed IV length(" + std::to_string(size) + ") != CipherSpec iv size(16");
        EXPECT_TRUE(context.calls.empty());
    }
}

TEST_F(CipherWrapperTest, EmptyIvIsAWrongLengthToo) {
    RecordingContext context(2);
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(fromHex("02 00 01 61"), context); }),
              "Parsed IV length(0) != CipherSpec iv size(16");
}

TEST_F(CipherWrapperTest, IvInSeveralFragmentsIsReadWhole) {
    RecordingContext context(2);
    const bytes longIv = bytes{0x02, 0x80, 0x10} + IV + bytes{0x01, 0x61};
    CipherWrapper::decrypt(longIv, context);
    ASSERT_FALSE(context.calls.empty());
    EXPECT_EQ(context.calls[0].argument, IV);
}

TEST_F(CipherWrapperTest, MalformedEnvelopeIsRefusedWhereItIs) {
    struct Malformed {
        const char* hex;
        const char* text;
    };
    const Malformed envelopes[] = {
        {"02", "index out of bounds: read index(1) >= write index(1)"},
        {"02 80", "index out of bounds: read index(2) >= write index(2)"},
        {"02 c0", "Unknown ASN.1 length value: b11000000"},
        {"02 c5", "Unknown ASN.1 length value: b11000101"},
        {"02 ff", "Unknown ASN.1 length value: b11111111"},
        {"02 10 00 01", "Unable to read 16 bytes from buffer, only 2 available"},
        {"02 c1 00", "Unable to read 16384 bytes from buffer, only 1 available"},
        {"02 c4", "Unable to read 65536 bytes from buffer, only 0 available"},
        {"02 10 000102030405060708090a0b0c0d0e0f 05 aa bb",
         "Unable to read 5 bytes from buffer, only 2 available"},
        {"02 10 000102030405060708090a0b0c0d0e0f c7", "Unknown ASN.1 length value: b11000111"},
    };
    for (const Malformed& malformed : envelopes) {
        RecordingContext context(2);
        PlatformContext own(ICipherContext::SPEC_AES_128_CBC, KEY);
        const bytes envelope = fromHex(malformed.hex);
        EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(envelope, context); }),
                  malformed.text);
        EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(envelope, own); }), malformed.text);
    }
}

TEST_F(CipherWrapperTest, FaultOfTheContextPassesThrough) {
    for (const char* operation : {"encryptInit", "update", "final"}) {
        RecordingContext context(2);
        context.faultIn = operation;
        EXPECT_EQ(messageOf<DeviceFault>([&] { CipherWrapper::FULL_CIPHER()->encrypt(octets(5), context); }),
                  std::string("fault in ") + operation);
        EXPECT_EQ(context.calls.back().operation, operation);
    }
    for (const char* operation : {"decryptInit", "update", "final"}) {
        RecordingContext context(2);
        context.faultIn = operation;
        EXPECT_EQ(
            messageOf<DeviceFault>([&] { CipherWrapper::decrypt(fullEnvelope(IV, octets(5)), context); }),
            std::string("fault in ") + operation);
        EXPECT_EQ(context.calls.back().operation, operation);
    }
}

TEST_F(CipherWrapperTest, FaultOfTheOwnCipherPassesThrough) {
    SoftwareKeyCipher shortKey(CipherSpec::AES_128_CBC_PKCS5(), octets(15));
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::FULL_CIPHER()->encrypt(octets(5), shortKey); }),
              "SoftwareKeyCipher key size (15) != CipherSpec key size (16)");

    SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    bytes damaged = rawEncrypt(KEY, IV, octets(20));
    damaged.back() ^= 0x01;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { CipherWrapper::decrypt(fullEnvelope(IV, damaged), cipher); }),
              "failed EVP final operation");
    EXPECT_EQ(
        messageOf<OpenSSLException>([&] { CipherWrapper::decrypt(fullEnvelope(IV, octets(15)), cipher); }),
        "failed EVP final operation");
    EXPECT_EQ(messageOf<OpenSSLException>(
                  [&] { CipherWrapper::decrypt(bytes{0x02} + block(IV) + bytes{0x00}, cipher); }),
              "failed EVP final operation");
    // And it works on afterwards.
    EXPECT_EQ(CipherWrapper::decrypt(fullEnvelope(IV, rawEncrypt(KEY, IV, octets(20))), cipher), octets(20));
}

TEST_F(CipherWrapperTest, IvIsFreshForEachMessage) {
    PlatformContext cipher(ICipherContext::SPEC_AES_128_CBC, KEY);
    const bytes one = CipherWrapper::FULL_CIPHER()->encrypt(octets(50), cipher);
    const bytes other = CipherWrapper::FULL_CIPHER()->encrypt(octets(50), cipher);
    EXPECT_NE(ivOf(one), ivOf(other));
    EXPECT_NE(one, other);
    EXPECT_EQ(one.size(), other.size());
}

TEST_F(CipherWrapperTest, ConstEnvelopeIsLeftAsItIs) {
    PlatformContext cipher(ICipherContext::SPEC_AES_128_CBC, KEY);
    const bytes envelope = fullEnvelope(IV, rawEncrypt(KEY, IV, octets(50)));
    const bytes before = envelope;
    EXPECT_EQ(CipherWrapper::decrypt(envelope, cipher), octets(50));
    EXPECT_EQ(envelope, before);
}

TEST_F(CipherWrapperTest, GivenAwayEnvelopeYieldsTheSame) {
    PlatformContext cipher(ICipherContext::SPEC_AES_128_CBC, KEY);
    EXPECT_EQ(CipherWrapper::decrypt(fullEnvelope(IV, rawEncrypt(KEY, IV, octets(50))), cipher), octets(50));
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(fromHex("02 c0"), cipher); }),
              "Unknown ASN.1 length value: b11000000");
}

namespace {

// A device's refinement of the library's cipher.
class CountingCipher : public SoftwareKeyCipher {
public:
    using SoftwareKeyCipher::SoftwareKeyCipher;
    void encryptInit(const bytes& iv) override {
        calls += "encryptInit ";
        SoftwareKeyCipher::encryptInit(iv);
    }
    void decryptInit(const bytes& iv) override {
        calls += "decryptInit ";
        SoftwareKeyCipher::decryptInit(iv);
    }
    bytes update(const bytes& data) override {
        calls += "update ";
        bytes out = SoftwareKeyCipher::update(data);
        for (unsigned char& octet : out) {
            octet ^= 0xff;
        }
        return out;
    }
    bytes final() override {
        calls += "final ";
        return SoftwareKeyCipher::final();
    }

    std::string calls;
};

bytes complement(bytes all, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        all[i] ^= 0xff;
    }
    return all;
}

}  // namespace

TEST_F(CipherWrapperTest, SubclassOfTheLibrarysCipherIsHeard) {
    CountingCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);

    const bytes envelope = CipherWrapper::FULL_CIPHER()->encrypt(octets(40), cipher);
    EXPECT_EQ(cipher.calls, "encryptInit update final ");
    // What update returned is complemented, the last block, from final, is not.
    EXPECT_EQ(slice(envelope, 19, 48), complement(rawEncrypt(KEY, ivOf(envelope), octets(40)), 32));

    cipher.calls.clear();
    EXPECT_EQ(CipherWrapper::decrypt(fullEnvelope(IV, rawEncrypt(KEY, IV, octets(40))), cipher),
              complement(octets(40), 32));
    EXPECT_EQ(cipher.calls, "decryptInit update final ");
}

namespace {

// A configuration of the caller's own under one of the library's numbers: the wrapper cannot foresee sizes.
struct OwnConfiguration {
    const char* name;
    const EVP_CIPHER* (*cipher)();
    unsigned int keySize;
    unsigned int blockSize;
};

const OwnConfiguration OWN_CONFIGURATIONS[] = {
    {"Counter", EVP_aes_128_ctr, 16, 16},          {"CounterBlockOfOne", EVP_aes_128_ctr, 16, 1},
    {"LongerKey", EVP_aes_256_cbc, 32, 16},        {"KeySizeBelowTheCiphers", EVP_aes_256_cbc, 16, 16},
    {"NoBlockSize", EVP_aes_128_cbc, 16, 0},       {"EqualToTheLibrarys", EVP_aes_128_cbc, 16, 16},
    {"OtherFeedback", EVP_aes_128_cfb128, 16, 16},
};

class CipherWrapperOwnConfiguration : public StartedLibrary,
                                      public ::testing::WithParamInterface<OwnConfiguration> {
protected:
    const bytes key_ = octets(GetParam().keySize);
    const EVP_CIPHER* cipher_ = GetParam().cipher();

    bytes raw(const bytes& iv, const bytes& message) const {
        bytes key = key_;
        key.resize(static_cast<std::size_t>(EVP_CIPHER_key_length(cipher_)));
        return rawCipher(cipher_, true, key, iv, message);
    }
};

const std::size_t SOME_SIZES[] = {0, 1, 15, 16, 17, 100, 8191, 8192, 8193, 16400, 40000, 70001};

}  // namespace

TEST_P(CipherWrapperOwnConfiguration, IsUsedAsItIs) {
    SoftwareKeyCipher cipher(wrapperSpec(cipher_, GetParam().keySize, GetParam().blockSize, 16, 2), key_);
    for (const std::size_t size : SOME_SIZES) {
        const bytes envelope = CipherWrapper::FULL_CIPHER()->encrypt(octets(size), cipher);
        const bytes expected = fullEnvelope(ivOf(envelope), raw(ivOf(envelope), octets(size)));
        EXPECT_TRUE(envelope == expected) << size;
        // A stream cipher's empty body is written as nothing.
        if (expected.size() > 18) {
            EXPECT_TRUE(CipherWrapper::decrypt(expected, cipher) == octets(size)) << size;
        }
    }
}

// The same under a wrapper whose spec is the very one that the cipher is bound to.
TEST_P(CipherWrapperOwnConfiguration, IsUsedAsItIsUnderAnOwnWrapper) {
    const auto spec = wrapperSpec(cipher_, GetParam().keySize, GetParam().blockSize, 16);
    const OwnWrapper wrapper("Own", 0x7f, spec);
    SoftwareKeyCipher cipher(spec, key_);
    for (const std::size_t size : SOME_SIZES) {
        const bytes envelope = wrapper.encrypt(octets(size), cipher);
        const bytes body = raw(ivOf(envelope), octets(size));
        EXPECT_TRUE(envelope == bytes{0x7f} + block(ivOf(envelope)) + block(body)) << size;

        if (!body.empty()) {
            Buffer in(block(IV) + block(raw(IV, octets(size))));
            EXPECT_TRUE(wrapper.doDecrypt(in, cipher) == octets(size)) << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Specs, CipherWrapperOwnConfiguration, ::testing::ValuesIn(OWN_CONFIGURATIONS),
                         [](const auto& test) { return test.param.name; });

TEST_F(CipherWrapperTest, OwnWrapperWritesItsVersionAndIv) {
    const OwnWrapper wrapper("Own", 0x7f, wrapperSpec(EVP_aes_128_cbc(), 16, 16, 16));
    RecordingContext context(9);
    context.updateOutput = octets(7);
    const bytes envelope = wrapper.encrypt(octets(5), context);

    EXPECT_EQ(envelope, bytes{0x7f} + block(ivOf(envelope)) + block(octets(7)));
    EXPECT_EQ(context.calls[0].argument, ivOf(envelope));
    // Nobody finds it by its version.
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(envelope, context); }),
              "Unknown CipherWrapper version: 0x7f");
}

TEST_F(CipherWrapperTest, OwnWrapperMayTakeAnIvOfAnyLength) {
    for (const unsigned int size : {1U, 8U, 17U, 32U, 127U, 128U, 300U, 16385U}) {
        const auto spec = wrapperSpec(EVP_aes_128_cbc(), 16, 16, size);
        const OwnWrapper wrapper("Own", 0x7f, spec);
        SoftwareKeyCipher own(spec, KEY);
        RecordingContext foreign(9);
        foreign.finalOutput = octets(1);

        const bytes recorded = wrapper.encrypt(octets(20), foreign);
        const bytes foreignIv = foreign.calls[0].argument;
        EXPECT_EQ(foreignIv.size(), size);
        EXPECT_TRUE(recorded == bytes{0x7f} + block(foreignIv) + block(octets(1))) << size;

        // OpenSSL's cipher takes 16 octets of it, zeros where there are fewer.
        const bytes envelope = wrapper.encrypt(octets(20), own);
        const std::size_t ivAt = 1 + block(octets(size)).size() - size;
        bytes iv = size < 16384 ? slice(envelope, ivAt, size) : slice(envelope, 2, 16);
        iv.resize(16);
        EXPECT_EQ(slice(envelope, envelope.size() - 32, 32), rawEncrypt(KEY, iv, octets(20))) << size;

        Buffer in(block(octets(size)) + block(rawEncrypt(KEY, IV, octets(40))));
        bytes cut = octets(size);
        cut.resize(16);
        EXPECT_EQ(wrapper.doDecrypt(in, own),
                  rawCipher(EVP_aes_128_cbc(), false, KEY, cut, rawEncrypt(KEY, IV, octets(40))))
            << size;
    }
}

TEST_F(CipherWrapperTest, OwnWrapperOfASmallerBlockIsPaddedToIt) {
    const auto spec = wrapperSpec(EVP_des_ede3_cbc(), 24, 8, 8);
    const OwnWrapper wrapper("Own", 0x7f, spec);
    const bytes key = octets(24);
    SoftwareKeyCipher cipher(spec, key);
    for (const std::size_t size : {0U, 1U, 7U, 8U, 9U, 15U, 16U, 8192U, 16376U, 16383U}) {
        const bytes envelope = wrapper.encrypt(octets(size), cipher);
        const bytes iv = slice(envelope, 2, 8);
        EXPECT_TRUE(envelope == bytes{0x7f} + block(iv) +
                                    block(rawCipher(EVP_des_ede3_cbc(), true, key, iv, octets(size))))
            << size;
    }
}

// The context may be read-only to the caller's eye, but its direction is set with each message.
TEST_F(CipherWrapperTest, OneContextServesBothDirectionsInTurn) {
    PlatformContext cipher(ICipherContext::SPEC_AES_128_CBC, KEY);
    for (std::size_t size = 0; size < 40; ++size) {
        const bytes envelope = CipherWrapper::FULL_CIPHER()->encrypt(octets(size), cipher);
        EXPECT_EQ(CipherWrapper::decrypt(envelope, cipher), octets(size));
        EXPECT_EQ(CipherWrapper::decrypt(envelope, cipher), octets(size));
    }
}

TEST_F(CipherWrapperTest, TextsDoNotFollowTheGlobalLocale) {
    RecordingContext full(2);
    RecordingContext null(0);
    const GroupedDigits grouped;
    EXPECT_EQ(messageOf<VORLException>(
                  [&] { CipherWrapper::decrypt(fullEnvelope(octets(1234), octets(1)), full); }),
              "Parsed IV length(1234) != CipherSpec iv size(16");
    EXPECT_EQ(messageOf<VORLException>(
                  [&] { CipherWrapper::decrypt(fullEnvelope(IV, octets(1)) + bytes(12345), full); }),
              "Buffer is not empty after parsing decrypted data; 12345 bytes remain");
    EXPECT_EQ(
        messageOf<VORLException>([&] { CipherWrapper::decrypt(fromHex("00 01 61") + bytes(12345), null); }),
        "Buffer is not empty after parsing NULL_CIPHER decrypted data; 12345 bytes remain");
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(fromHex("00 c1"), null); }),
              "Unable to read 16384 bytes from buffer, only 0 available");
    SoftwareKeyCipher longKey(CipherSpec::AES_128_CBC_PKCS5(), octets(1024));
    EXPECT_EQ(messageOf<VORLException>([&] { longKey.encryptInit(octets(16)); }),
              "SoftwareKeyCipher key size (1024) != CipherSpec key size (16)");
    EXPECT_EQ(messageOf<VORLException>([&] { longKey.encryptInit(octets(2048)); }),
              "input IV size (2048) != CipherSpec IV size (16)");
}

// An init comes before the body on both ways, so that a context is left in no operation of before.
TEST_F(CipherWrapperTest, DecryptionIsStartedBeforeTheBodyIsReadOnTheShortCutToo) {
    SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    cipher.encryptInit(IV);
    cipher.update(octets(5));
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(bytes{0x02} + block(IV), cipher); }),
              "index out of bounds: read index(18) >= write index(18)");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
}

}  // namespace vorl::test
