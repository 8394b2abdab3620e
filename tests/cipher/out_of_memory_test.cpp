#include "OpenSSLMemory.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_openssl.h"
#include "sample_key.h"
#include "vorl/CipherSpec.h"
#include "vorl/OpenSSLException.h"
#include "vorl/SoftwareKeyCipher.h"

#include <openssl/err.h>

#include <gtest/gtest.h>

#include <memory>

// OpenSSL without memory: an init does not report it, so that what follows has to, and the next one has to
// work.

namespace vorl::test {

namespace {

bytes encryptWith(SoftwareKeyCipher& cipher, const bytes& data) {
    cipher.encryptInit(IV);
    const bytes updated = cipher.update(data);
    return updated + cipher.final();
}

class SoftwareKeyCipherWithoutMemory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(openssl_memory::isOurs());
        // What OpenSSL makes once, it makes now.
        SoftwareKeyCipher first(CipherSpec::AES_128_CBC_PKCS5(), KEY);
        encryptWith(first, octets(20));
        ERR_clear_error();
    }
    void TearDown() override { ERR_clear_error(); }

    static void expectNotStarted(SoftwareKeyCipher& cipher) {
        EXPECT_EQ(cipher.update(octets(15)), bytes());
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
    }
};

TEST_F(SoftwareKeyCipherWithoutMemory, IsMadeAllTheSameAndWorksWhenThereIsSome) {
    std::unique_ptr<SoftwareKeyCipher> cipher;
    {
        const OpenSSLOutOfMemory none;
        cipher = std::make_unique<SoftwareKeyCipher>(CipherSpec::AES_128_CBC_PKCS5(), KEY);
        cipher->encryptInit(IV);
        expectNotStarted(*cipher);
    }
    EXPECT_EQ(encryptWith(*cipher, octets(20)), rawEncrypt(KEY, IV, octets(20)));
}

TEST_F(SoftwareKeyCipherWithoutMemory, RemembersAFailedInitAndWorksAfterTheNext) {
    SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    for (int round = 0; round < 2; ++round) {
        {
            const OpenSSLOutOfMemory none;
            cipher.encryptInit(IV);
            expectNotStarted(cipher);
        }
        cipher.initObj();
    }
    EXPECT_EQ(encryptWith(cipher, octets(20)), rawEncrypt(KEY, IV, octets(20)));
}

TEST_F(SoftwareKeyCipherWithoutMemory, LeavesTheErrorQueueAsItWas) {
    const unsigned long left = leaveApplicationError();
    {
        const OpenSSLOutOfMemory none;
        SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);
        cipher.initObj();
        cipher.encryptInit(IV);
        cipher.decryptInit(IV);
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace

}  // namespace vorl::test
