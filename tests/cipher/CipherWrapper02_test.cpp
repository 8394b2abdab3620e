#include "vorl/CipherWrapper02.h"

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

class CipherWrapper02Test : public StartedLibrary {
protected:
    const CipherWrapper02 wrapper_{"Own"};
    PlatformContext cipher_{tarvik::crypto::ICipherContext::SPEC_AES_128_CBC, KEY};
};

}  // namespace

TEST_F(CipherWrapper02Test, IsVersion2OfTheCbcSpec) {
    EXPECT_EQ(wrapper_.id(), 0x02);
    EXPECT_EQ(wrapper_.getCipherSpec(), CipherSpec::AES_128_CBC_PKCS5());
    EXPECT_EQ(wrapper_.toString(), "CipherWrapper[Own:0x02]");
}

TEST_F(CipherWrapper02Test, WritesTheIvBehindItsLength) {
    for (const std::size_t size : {0U, 1U, 20U, 112U, 20000U}) {
        const bytes envelope = wrapper_.encrypt(octets(size), cipher_);
        EXPECT_EQ(slice(envelope, 0, 2), fromHex("02 10"));
        EXPECT_TRUE(envelope == expectedEnvelope(FULL, KEY, ivOf(envelope), octets(size))) << size;
    }
}

TEST_F(CipherWrapper02Test, SameMessageIsAnotherEnvelopeOfTheSameLength) {
    const bytes one = wrapper_.encrypt(octets(50), cipher_);
    const bytes other = wrapper_.encrypt(octets(50), cipher_);
    EXPECT_NE(one, other);
    EXPECT_NE(ivOf(one), ivOf(other));
    EXPECT_EQ(one.size(), other.size());
}

// The named wrapper answers for the version, whoever wrote the envelope.
TEST_F(CipherWrapper02Test, EnvelopeOpens) {
    EXPECT_EQ(CipherWrapper::decrypt(wrapper_.encrypt(octets(50), cipher_), cipher_), octets(50));
    EXPECT_EQ(CipherWrapper::decrypt(expectedEnvelope(FULL, KEY, octets(16), {}), cipher_), bytes());
}

TEST_F(CipherWrapper02Test, RefusesBytesBehindTheBody) {
    EXPECT_EQ(messageOf<VORLException>([&] {
                  CipherWrapper::decrypt(expectedEnvelope(FULL, KEY, octets(16), octets(5)) + bytes(1),
                                         cipher_);
              }),
              "Buffer is not empty after parsing decrypted data; 1 bytes remain");
}

}  // namespace vorl::test
