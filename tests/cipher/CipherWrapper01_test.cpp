#include "vorl/CipherWrapper01.h"

#include "LibraryState.h"
#include "PlatformContext.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "sample_key.h"
#include "vorl/CipherSpec.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

namespace vorl::test {

namespace {

class CipherWrapper01Test : public StartedLibrary {
protected:
    const CipherWrapper01 wrapper_{"Own"};
    PlatformContext cipher_{tarvik::crypto::ICipherContext::SPEC_AES_128_ECB, KEY};
};

}  // namespace

TEST_F(CipherWrapper01Test, IsVersion1OfTheEcbSpec) {
    EXPECT_EQ(wrapper_.id(), 0x01);
    EXPECT_EQ(wrapper_.getCipherSpec(), CipherSpec::AES_128_ECB_PKCS5());
    EXPECT_EQ(wrapper_.toString(), "CipherWrapper[Own:0x01]");
}

TEST_F(CipherWrapper01Test, WritesNoIv) {
    EXPECT_EQ(wrapper_.encrypt(octets(20), cipher_), expectedEnvelope(TEST, KEY, {}, octets(20)));
    EXPECT_EQ(wrapper_.encrypt(bytes(), cipher_), expectedEnvelope(TEST, KEY, {}, {}));
}

TEST_F(CipherWrapper01Test, SameMessageIsTheSameEnvelope) {
    EXPECT_EQ(wrapper_.encrypt(octets(50), cipher_), wrapper_.encrypt(octets(50), cipher_));
}

// The named wrapper answers for the version, whoever wrote the envelope.
TEST_F(CipherWrapper01Test, EnvelopeOpens) {
    EXPECT_EQ(CipherWrapper::decrypt(wrapper_.encrypt(octets(50), cipher_), cipher_), octets(50));
    EXPECT_EQ(CipherWrapper::decrypt(expectedEnvelope(TEST, KEY, {}, {}), cipher_), bytes());
}

TEST_F(CipherWrapper01Test, RefusesBytesBehindTheBody) {
    EXPECT_EQ(messageOf<VORLException>([&] {
                  CipherWrapper::decrypt(expectedEnvelope(TEST, KEY, {}, octets(5)) + bytes(1), cipher_);
              }),
              "Buffer is not empty after parsing decrypted data; 1 bytes remain");
}

}  // namespace vorl::test
