#include "octets.h"
#include "vorl/Random.h"
#include "vorl/VORLLib.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// An application's own static objects may sign: before main, and after it, when what the first signer made
// could be destroyed already.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;

// Whether a new signer works in all of its parts.
bool signsAndVerifies() {
    Random::init_ = true;
    HttpRequestSigner signer(octets(32));
    tarvik::http::HttpResponse response;
    signer.signResponse("key", response);
    const bool isByUsualProfile = HttpRequestSigner::keyidOf(response.headerFields) == std::string("key");
    const bool holds = signer.verify("key", response);
    Random::init_ = false;
    return isByUsualProfile && holds;
}

class SigningObject {
public:
    // Younger than OpenSSL and older than what the first signer makes, and so destroyed in between.
    SigningObject() { VORLLib::init(); }
    ~SigningObject() {
        if (!signsAndVerifies()) {
            std::fputs("a signer made after main does not work\n", stderr);
            std::_Exit(EXIT_FAILURE);
        }
    }
    SigningObject(const SigningObject&) = delete;
    SigningObject& operator=(const SigningObject&) = delete;
};

const SigningObject atTheEnd;
const bool worksBeforeMain = signsAndVerifies();

}  // namespace

// The other half ends the program with a failure of its own.
TEST(HttpRequestSignerOfStaticObjects, SignsBeforeMain) {
    EXPECT_TRUE(worksBeforeMain);
}

}  // namespace vorl::test
