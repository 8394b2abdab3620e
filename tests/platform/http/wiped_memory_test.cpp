#include "SecretWatch.h"
#include "messageOf.h"
#include "octets.h"
#include "signed_messages.h"
#include "vorl/Random.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/crypto/VorlCryptoFactory.h>
#include <tarvik/http/HttpResponse.h>

#include <gtest/gtest.h>

// A signing key is gone from memory when it is given back.

namespace vorl::test {
namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::ICipherContext;
using tarvik::crypto::VorlCryptoFactory;
using tarvik::http::HttpResponse;

const bytes WATCHED_KEY = octets(40);

class SignerMemory : public ::testing::Test {
protected:
    void SetUp() override {
        Random::init_ = true;
        VorlCryptoFactory::init();
    }
    void TearDown() override {
        VorlCryptoFactory::cleanup();
        Random::init_ = false;
    }
};

TEST_F(SignerMemory, WatchSeesAKeyThatIsLeftBehind) {
    const SecretWatch watch(WATCHED_KEY);
    { const bytes copy(WATCHED_KEY); }
    EXPECT_EQ(watch.releasedWithSecret(), 1);
}

TEST_F(SignerMemory, HoldsNoKeyWhenItIsGivenBack) {
    const SecretWatch watch(WATCHED_KEY);
    {
        HttpRequestSigner signer(WATCHED_KEY, profileAt(1700000000));
        HttpResponse response;
        signer.signResponse("key", response);
        EXPECT_TRUE(signer.verify("key", response));
        EXPECT_FALSE(signer.verify("key", response));
        EXPECT_NE(signer.signatureBase("key", response), "");
    }
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

TEST_F(SignerMemory, HoldsNoKeyWhenTheProfileIsRefused) {
    tarvik::crypto::HttpSignatureProfile badLifetime;
    badLifetime.lifetime = -1;
    tarvik::crypto::HttpSignatureProfile badParameters;
    badParameters.parameters = {"x"};
    const SecretWatch watch(WATCHED_KEY);
    EXPECT_EQ(messageOf<VORLException>([&] { HttpRequestSigner signer(WATCHED_KEY, badLifetime); }),
              "the signature's lifetime is negative");
    EXPECT_EQ(messageOf<VORLException>([&] { HttpRequestSigner signer(WATCHED_KEY, badParameters); }),
              "unknown signature parameter x");
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

TEST_F(SignerMemory, HoldsNeitherAContextsKeyNorTheOneDerivedFromIt) {
    const bytes contextKey = octets(16);
    const bytes derived = HttpRequestSigner::keyOfContext(contextKey);
    for (const bytes* secret : {&contextKey, &derived}) {
        const SecretWatch watch(*secret);
        {
            const auto signer =
                VorlCryptoFactory::cryptContext(ICipherContext::SPEC_AES_128_CBC, contextKey).second;
            HttpResponse response;
            EXPECT_FALSE(signer->verify("key", response));
        }
        EXPECT_EQ(watch.releasedWithSecret(), 0);
    }
}

}  // namespace
}  // namespace vorl::test
