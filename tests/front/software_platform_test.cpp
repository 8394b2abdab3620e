#include "GroupedDigits.h"
#include "LibraryState.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "raw_base64.h"
#include "sample_key.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"
#include "vorl/VorlContext.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>
#include <tarvik/http/IHttpStream.h>

#include <gtest/gtest.h>

#include <string>

// What holds for the software platform alone, which says it in words of its own.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::http::HttpResponse;
using tarvik::http::IHttpStream;

class SoftwarePlatform : public StartedLibrary {};

}  // namespace

TEST_F(SoftwarePlatform, MakesNoContextAfterCleanup) {
    VORLLib::cleanup();
    EXPECT_EQ(messageOf<VORLException>([] { VorlContext context(KEY); }),
              "VorlCryptoFactory must be initialized before use");
}

TEST_F(SoftwarePlatform, RefusesToEncryptUnderAKeyOfAWrongLength) {
    for (const std::size_t size : {0U, 15U, 17U, 32U}) {
        const std::string text =
            "SoftwareKeyCipher key size (" + std::to_string(size) + ") != CipherSpec key size (16)";
        VORLLib::type_ = EncryptionType::FULL_CIPHER();
        VorlContext full(octets(size));
        VORLLib::type_ = EncryptionType::TEST_CIPHER();
        VorlContext test(octets(size));
        VORLLib::type_ = EncryptionType::NULL_CIPHER();
        VorlContext none(octets(size));
        EXPECT_EQ(messageOf<VORLException>([&] { full.encrypt(octets(3)); }), text);
        EXPECT_EQ(messageOf<VORLException>([&] { test.encrypt(octets(3)); }), text);
        EXPECT_EQ(none.encrypt(octets(3)), rawBase64(expectedEnvelope(NONE, {}, {}, octets(3))));
    }
}

TEST_F(SoftwarePlatform, SaysWhichStepAnotherKeyFailsIn) {
    VorlContext other(octets(16));
    EXPECT_EQ(messageOf<OpenSSLException>(
                  [&] { other.decrypt(rawBase64(expectedEnvelope(FULL, KEY, IV, octets(20)))); }),
              "failed EVP final operation");
}

TEST_F(SoftwarePlatform, SpeaksWithoutTheGlobalLocale) {
    const GroupedDigits grouped;
    VorlContext longKey(octets(16384));
    EXPECT_EQ(messageOf<VORLException>([&] { longKey.encrypt(octets(3)); }),
              "SoftwareKeyCipher key size (16384) != CipherSpec key size (16)");
}

TEST_F(SoftwarePlatform, SignsRequestsAndVerifiesResponsesUnderAKeyOfItsOwn) {
    VorlContext device(KEY);
    HttpRequestSigner service(HttpRequestSigner::keyOfContext(KEY));
    IHttpStream::Request request{"GET", "http://example.com/", {{"Host", "example.com"}}, {}};
    device.sign("device-1", request);
    EXPECT_TRUE(service.verifyRequest("device-1", request));

    HttpResponse response;
    response.answered = request;
    service.signResponse("device-1", response);
    EXPECT_TRUE(device.verify("device-1", response));
    EXPECT_FALSE(device.verify("device-1", response)) << "its nonce has been seen";
}

}  // namespace vorl::test
