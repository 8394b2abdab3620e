#include "tarvik/crypto/VorlCryptoFactory.h"

#include "GroupedDigits.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_digest.h"
#include "raw_openssl.h"
#include "signed_messages.h"
#include "vorl/NullCipher.h"
#include "vorl/Random.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::ICipherContext;
using tarvik::crypto::VorlCryptoFactory;
using tarvik::http::HttpResponse;
using tarvik::http::IHttpStream;

const bytes KEY = octets(16);
const char NOT_INITIALIZED[] = "VorlCryptoFactory must be initialized before use";

ICipherContext::Spec spec(unsigned int number) {
    return static_cast<ICipherContext::Spec>(number);
}

class VorlCryptoFactoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        VorlCryptoFactory::init();
        Random::init_ = true;
    }
    void TearDown() override {
        Random::init_ = false;
        VorlCryptoFactory::cleanup();
    }
};

}  // namespace

TEST_F(VorlCryptoFactoryTest, MakesACipherForEachSpec) {
    for (const unsigned int number : {0U, 1U, 2U}) {
        const auto [cipher, signer] = VorlCryptoFactory::cryptContext(spec(number), KEY);
        ASSERT_NE(cipher, nullptr);
        ASSERT_NE(signer, nullptr);
        EXPECT_EQ(static_cast<unsigned int>(cipher->id()), number);
        ICipherContext& made = *cipher;
        EXPECT_TRUE(typeid(made) == (number == 0 ? typeid(NullCipher) : typeid(SoftwareKeyCipher)));
    }
}

TEST_F(VorlCryptoFactoryTest, CiphersWorkWithTheKey) {
    const auto ecb = VorlCryptoFactory::cryptContext(ICipherContext::SPEC_AES_128_ECB, KEY).first;
    ecb->encryptInit({});
    const bytes ecbStart = ecb->update(octets(20));
    EXPECT_EQ(ecbStart + ecb->final(), rawEncrypt(KEY, {}, octets(20)));

    const auto cbc = VorlCryptoFactory::cryptContext(ICipherContext::SPEC_AES_128_CBC, KEY).first;
    cbc->encryptInit(octets(16));
    const bytes cbcStart = cbc->update(octets(20));
    EXPECT_EQ(cbcStart + cbc->final(), rawEncrypt(KEY, octets(16), octets(20)));

    const auto null = VorlCryptoFactory::cryptContext(ICipherContext::SPEC_NULL, KEY).first;
    null->encryptInit({});
    EXPECT_EQ(null->update(octets(20)), octets(20));
}

TEST_F(VorlCryptoFactoryTest, MakesNewContextsEachTime) {
    const auto one = VorlCryptoFactory::cryptContext(ICipherContext::SPEC_AES_128_CBC, KEY);
    const auto other = VorlCryptoFactory::cryptContext(ICipherContext::SPEC_AES_128_CBC, KEY);
    EXPECT_NE(one.first, other.first);
}

TEST_F(VorlCryptoFactoryTest, TakesAnyKey) {
    for (const unsigned int number : {0U, 1U, 2U}) {
        for (const std::size_t size : {0U, 1U, 15U, 17U, 1000U}) {
            EXPECT_NO_THROW(VorlCryptoFactory::cryptContext(spec(number), octets(size)));
        }
    }
}

TEST_F(VorlCryptoFactoryTest, RefusesAnUnknownSpec) {
    const GroupedDigits grouped;
    for (const unsigned int number : {3U, 4U, 12345U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        EXPECT_EQ(messageOf<VORLException>([&] { VorlCryptoFactory::cryptContext(spec(number), KEY); }),
                  "unknown cipher spec: " + std::to_string(number));
    }
}

TEST_F(VorlCryptoFactoryTest, RefusesBeforeInitWhateverTheSpec) {
    VorlCryptoFactory::cleanup();
    for (const unsigned int number : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(messageOf<VORLException>([&] { VorlCryptoFactory::cryptContext(spec(number), KEY); }),
                  NOT_INITIALIZED);
    }
    VorlCryptoFactory::cleanup();
    VorlCryptoFactory::init();
    VorlCryptoFactory::init();
    EXPECT_NO_THROW(VorlCryptoFactory::cryptContext(spec(0), KEY));
    VorlCryptoFactory::cleanup();
    EXPECT_EQ(messageOf<VORLException>([] { VorlCryptoFactory::cryptContext(spec(0), KEY); }),
              NOT_INITIALIZED);
}

TEST_F(VorlCryptoFactoryTest, ContextsOutliveACleanup) {
    const auto [cipher, signer] = VorlCryptoFactory::cryptContext(ICipherContext::SPEC_AES_128_ECB, KEY);
    VorlCryptoFactory::cleanup();
    cipher->encryptInit({});
    const bytes start = cipher->update(octets(20));
    EXPECT_EQ(start + cipher->final(), rawEncrypt(KEY, {}, octets(20)));
    EXPECT_NE(signer, nullptr);
}

// Of the key for ciphers, and for all specs alike: a level is no reason for another signature.
TEST_F(VorlCryptoFactoryTest, SignerHasAKeyOfItsOwnThatIsDerivedFromTheCiphers) {
    for (const unsigned int number : {0U, 1U, 2U}) {
        const auto signer = VorlCryptoFactory::cryptContext(spec(number), KEY).second;
        HttpResponse response;
        const bytes derived = rawHmac(EVP_sha256(), KEY, octetsOf("libVORL HTTP request signing key"));
        HttpRequestSigner(derived).signResponse("key", response);
        EXPECT_TRUE(signer->verify("key", response));

        HttpResponse signedWithTheCiphersKey;
        HttpRequestSigner(KEY).signResponse("key", signedWithTheCiphersKey);
        EXPECT_FALSE(signer->verify("key", signedWithTheCiphersKey));
    }
}

// A null cipher needs none; everybody could derive the key that belongs to it.
TEST_F(VorlCryptoFactoryTest, SignerOfNoKeyNeitherSignsNorVerifies) {
    for (const unsigned int number : {0U, 1U, 2U}) {
        const auto signer = VorlCryptoFactory::cryptContext(spec(number), {}).second;
        ASSERT_NE(signer, nullptr);
        IHttpStream::Request request{"GET", "https://service.example/", {{"Host", "service.example"}}, {}};
        EXPECT_EQ(messageOf<VORLException>([&] { signer->sign("key", request); }),
                  "the key of the context is empty");
        EXPECT_EQ(request.fields.size(), 1U);

        HttpResponse response;
        HttpRequestSigner(rawHmac(EVP_sha256(), {}, octetsOf("libVORL HTTP request signing key")))
            .signResponse("key", response);
        EXPECT_FALSE(signer->verify("key", response));
    }
}

}  // namespace vorl::test
