#include "UnavailableRequestSigner.h"

#include "messageOf.h"
#include "octets.h"
#include "request_signer.h"
#include "vorl/VORLException.h"

#include <tarvik/http/HttpResponse.h>

#include <gtest/gtest.h>

#include <memory>

namespace vorl::test {

namespace {

const char NOT_AVAILABLE[] = "request signing is not available in this build";

}  // namespace

TEST(UnavailableRequestSigner, IsWhatTheFactoryThenHandsOut) {
    const auto signer = tarvik::crypto::requestSignerFor(octets(16));
    EXPECT_NE(std::dynamic_pointer_cast<tarvik::crypto::UnavailableRequestSigner>(signer), nullptr);
}

TEST(UnavailableRequestSigner, RefusesToSignAndLeavesTheRequestAsItWas) {
    tarvik::http::IHttpStream::Request request{"GET", "http://example.com/", {{"Host", "example.com"}}, {}};
    const auto fields = request.fields;
    tarvik::crypto::UnavailableRequestSigner signer;
    EXPECT_EQ(messageOf<VORLException>([&] { signer.sign("key", request); }), NOT_AVAILABLE);
    EXPECT_EQ(request.fields, fields);
}

TEST(UnavailableRequestSigner, RefusesToVerify) {
    tarvik::http::HttpResponse response;
    tarvik::crypto::UnavailableRequestSigner signer;
    EXPECT_EQ(messageOf<VORLException>([&] { signer.verify("key", response); }), NOT_AVAILABLE);
}

}  // namespace vorl::test
