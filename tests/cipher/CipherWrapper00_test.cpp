#include "vorl/CipherWrapper00.h"

#include "LibraryState.h"
#include "block_encoder.h"
#include "cipher_contexts.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/ASN1Exception.h"
#include "vorl/CipherSpec.h"
#include "vorl/NullCipher.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {

namespace {

class CipherWrapper00Test : public StartedLibrary {
protected:
    const CipherWrapper00 wrapper_{"Own"};
    NullCipher null_;
};

}  // namespace

TEST_F(CipherWrapper00Test, IsVersion0OfTheNullSpec) {
    EXPECT_EQ(wrapper_.id(), 0x00);
    EXPECT_EQ(wrapper_.getCipherSpec(), CipherSpec::NULL_CIPHER());
    EXPECT_EQ(wrapper_.toString(), "CipherWrapper[Own:0x00]");
}

TEST_F(CipherWrapper00Test, CarriesTheMessageAsItIs) {
    EXPECT_EQ(wrapper_.encrypt(fromText("abc"), null_), fromHex("00 03 61 62 63"));
    EXPECT_EQ(CipherWrapper::decrypt(fromHex("00 03 61 62 63"), null_), fromText("abc"));
}

TEST_F(CipherWrapper00Test, LengthTakesItsForms) {
    EXPECT_EQ(slice(wrapper_.encrypt(octets(127), null_), 0, 2), fromHex("00 7f"));
    EXPECT_EQ(slice(wrapper_.encrypt(octets(128), null_), 0, 3), fromHex("00 80 80"));
    EXPECT_EQ(slice(wrapper_.encrypt(octets(16383), null_), 0, 3), fromHex("00 bf ff"));
    EXPECT_EQ(slice(wrapper_.encrypt(octets(16384), null_), 0, 2), fromHex("00 c1"));
    EXPECT_EQ(slice(wrapper_.encrypt(octets(65536), null_), 0, 2), fromHex("00 c4"));
}

TEST_F(CipherWrapper00Test, EncryptUsesNeitherContextNorRegistryNorRandom) {
    VORLLib::cleanup();
    Random::init_ = false;
    for (const unsigned int id : {0U, 1U, 2U, 77U}) {
        RecordingContext context(id);
        EXPECT_EQ(wrapper_.encrypt(fromText("abc"), context), fromHex("00 03 61 62 63"));
        EXPECT_EQ(context.idCalls, 0);
        EXPECT_TRUE(context.calls.empty());
    }
}

TEST_F(CipherWrapper00Test, DecryptAsksTheContextForItsIdOnly) {
    RecordingContext context(0);
    context.updateOutput = octets(5);
    context.finalOutput = octets(5);
    EXPECT_EQ(CipherWrapper::decrypt(fromHex("00 03 61 62 63"), context), fromText("abc"));
    EXPECT_TRUE(context.calls.empty());
}

TEST_F(CipherWrapper00Test, EmptyMessageIsOneByteThatDoesNotOpen) {
    EXPECT_EQ(wrapper_.encrypt(bytes(), null_), fromHex("00"));
    EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(fromHex("00"), null_); }),
              "index out of bounds: read index(1) >= write index(1)");
}

TEST_F(CipherWrapper00Test, EmptyMessageOpensWhereAnotherWriterGaveItsLength) {
    EXPECT_EQ(CipherWrapper::decrypt(fromHex("00 00"), null_), bytes());
    EXPECT_EQ(CipherWrapper::decrypt(fromHex("00 80 00"), null_), bytes());
}

TEST_F(CipherWrapper00Test, BodyInSeveralFragmentsIsJoined) {
    const bytes message = octets(32768 + 3);
    const bytes envelope = bytes{0x00, 0xc1} + slice(message, 0, 16384) + bytes{0xc1} +
                           slice(message, 16384, 16384) + bytes{0x80, 0x03} + slice(message, 32768, 3);
    EXPECT_TRUE(CipherWrapper::decrypt(envelope, null_) == message);
}

TEST_F(CipherWrapper00Test, ClosedMultipleOf16384OctetsOpens) {
    EXPECT_TRUE(CipherWrapper::decrypt(bytes{0x00} + block(octets(16384)) + bytes{0x00}, null_) ==
                octets(16384));
}

TEST_F(CipherWrapper00Test, RefusesBytesBehindTheBody) {
    for (const std::size_t rest : {1U, 2U, 999U}) {
        EXPECT_EQ(messageOf<VORLException>(
                      [&] { CipherWrapper::decrypt(fromHex("00 03 61 62 63") + bytes(rest), null_); }),
                  "Buffer is not empty after parsing NULL_CIPHER decrypted data; " + std::to_string(rest) +
                      " bytes remain");
    }
}

TEST_F(CipherWrapper00Test, RefusesAMalformedBody) {
    struct Malformed {
        const char* hex;
        const char* text;
    };
    const Malformed envelopes[] = {
        {"00 05 aa bb", "Unable to read 5 bytes from buffer, only 2 available"},
        {"00 80", "index out of bounds: read index(2) >= write index(2)"},
        {"00 bf ff 00", "Unable to read 16383 bytes from buffer, only 1 available"},
        {"00 c0", "Unknown ASN.1 length value: b11000000"},
        {"00 c5", "Unknown ASN.1 length value: b11000101"},
        {"00 e0", "Unknown ASN.1 length value: b11100000"},
    };
    for (const Malformed& malformed : envelopes) {
        EXPECT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(fromHex(malformed.hex), null_); }),
                  malformed.text);
    }
}

}  // namespace vorl::test
