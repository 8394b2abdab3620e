#include "octets.h"
#include "raw_http_signature.h"
#include "signed_drafts.h"
#include "signed_messages.h"

#include <tarvik/crypto/HttpRequestSigner.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

// When a signature is good, and how often.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::HttpSignatureProfile;
using Request = tarvik::http::IHttpStream::Request;

struct JudgedTime {
    const char* name;
    // In seconds from the verifier's clock.
    std::int64_t created;
    std::int64_t expires;
    bool accepted;
};

class SignatureTime : public ::testing::TestWithParam<JudgedTime> {};

Request requestWithNonce(const std::string& nonce, std::int64_t created = DRAFT_TIME) {
    RequestDraft draft = getDraft();
    replaceOnce(draft.signature.parameters, DRAFT_NONCE, nonce);
    replaceOnce(draft.signature.parameters, "created=1700000000", "created=" + std::to_string(created));
    replaceOnce(draft.signature.parameters, "expires=1700000300",
                "expires=" + std::to_string(created + 1000));
    return sealed(draft);
}

// A signer whose clock a test sets.
class SignerWithAClock : public ::testing::Test {
protected:
    bool verifies(HttpRequestSigner& signer, const Request& request) const {
        return signer.verifyRequest(DRAFT_KEYID, request);
    }

    HttpSignatureProfile profile(std::size_t mostNonces = 65536) {
        HttpSignatureProfile result;
        result.clock = [this] { return now_; };
        result.mostNonces = mostNonces;
        return result;
    }

    std::int64_t now_ = DRAFT_TIME;
};

}  // namespace

TEST_P(SignatureTime, IsJudged) {
    RequestDraft draft = getDraft();
    const JudgedTime& time = GetParam();
    for (const std::int64_t now : {DRAFT_TIME, std::int64_t(0)}) {
        draft.signature.parameters = DRAFT_PARAMETERS;
        replaceOnce(draft.signature.parameters, "created=1700000000",
                    "created=" + std::to_string(now + time.created));
        replaceOnce(draft.signature.parameters, "expires=1700000300",
                    "expires=" + std::to_string(now + time.expires));
        EXPECT_EQ(isAccepted(sealed(draft), now), time.accepted) << now;

        ResponseDraft answer = answerDraft();
        answer.signature.parameters = draft.signature.parameters;
        EXPECT_EQ(isAccepted(sealed(answer), now), time.accepted) << now;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Bounds, SignatureTime,
    ::testing::Values(JudgedTime{"Now", 0, 300, true}, JudgedTime{"300SecondsOld", -300, 1000, true},
                      JudgedTime{"301SecondsOld", -301, 1000, false},
                      JudgedTime{"5SecondsAhead", 5, 1000, true}, JudgedTime{"6SecondsAhead", 6, 1000, false},
                      JudgedTime{"ExpiresNow", -10, 0, true}, JudgedTime{"ExpiredASecondAgo", -10, -1, false},
                      JudgedTime{"ExpiredAsItWasMade", -1, -1, false},
                      JudgedTime{"LongAgo", -1000000000, 1000, false},
                      JudgedTime{"LongAhead", 1000000000, 2000000000, false},
                      JudgedTime{"OldThoughItNeverExpires", -301, 900000000000000, false}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SignatureExpiry, IsNotNeededWhereTheProfileHasNone) {
    HttpSignatureProfile profile = profileAt(DRAFT_TIME);
    profile.parameters = {"created", "keyid"};
    RequestDraft draft = getDraft();
    draft.signature.parameters = ";created=1700000000;keyid=\"device-7\"";
    EXPECT_TRUE(HttpRequestSigner(DRAFT_KEY, profile).verifyRequest(DRAFT_KEYID, sealed(draft)));
    draft.signature.parameters += ";expires=1699999999";
    EXPECT_FALSE(HttpRequestSigner(DRAFT_KEY, profile).verifyRequest(DRAFT_KEYID, sealed(draft)));
    draft.signature.parameters = ";keyid=\"device-7\"";
    EXPECT_FALSE(HttpRequestSigner(DRAFT_KEY, profile).verifyRequest(DRAFT_KEYID, sealed(draft)));
    profile.parameters = {"keyid"};
    EXPECT_FALSE(HttpRequestSigner(DRAFT_KEY, profile).verifyRequest(DRAFT_KEYID, sealed(draft)));
}

// What a message says beyond the profile's parameters must still be right.
TEST(SignatureParameters, ThatAreNotNeededMustNotBeWrong) {
    HttpSignatureProfile profile = profileAt(DRAFT_TIME);
    profile.parameters = {"created", "keyid"};
    const auto accepts = [&](const std::string& more) {
        RequestDraft draft = getDraft();
        draft.signature.parameters = ";created=1700000000;keyid=\"device-7\"" + more;
        return HttpRequestSigner(DRAFT_KEY, profile).verifyRequest(DRAFT_KEYID, sealed(draft));
    };
    EXPECT_TRUE(accepts(""));
    EXPECT_TRUE(accepts(";alg=\"hmac-sha256\""));
    EXPECT_FALSE(accepts(";alg=\"hmac-sha512\""));
    EXPECT_FALSE(accepts(";alg=hmac-sha256"));
    EXPECT_TRUE(accepts(";tag=\"any\""));
    EXPECT_TRUE(accepts(";nonce=\"n\""));
    EXPECT_FALSE(accepts(";nonce=5"));
    EXPECT_FALSE(accepts(";expires=\"1700000300\""));
}

TEST_F(SignerWithAClock, AcceptsASignatureOnce) {
    HttpRequestSigner signer(DRAFT_KEY, profile());
    const Request request = requestWithNonce("a");
    EXPECT_TRUE(verifies(signer, request));
    EXPECT_FALSE(verifies(signer, request));
    now_ += 300;
    EXPECT_FALSE(verifies(signer, request));
    HttpRequestSigner another(DRAFT_KEY, profile());
    EXPECT_TRUE(verifies(another, request));
}

TEST_F(SignerWithAClock, AcceptsASignatureOfAResponseOnce) {
    HttpRequestSigner signer(DRAFT_KEY, profile());
    tarvik::http::HttpResponse response = sealed(answerDraft());
    EXPECT_TRUE(signer.verify(DRAFT_KEYID, response));
    EXPECT_FALSE(signer.verify(DRAFT_KEYID, response));
    now_ += 300;
    EXPECT_FALSE(signer.verify(DRAFT_KEYID, response));
}

TEST_F(SignerWithAClock, AcceptsANonceOnceInBothDirections) {
    HttpRequestSigner signer(DRAFT_KEY, profile());
    EXPECT_TRUE(signer.verifyRequest(DRAFT_KEYID, sealed(postDraft())));
    tarvik::http::HttpResponse response = sealed(answerDraft());
    EXPECT_FALSE(signer.verify(DRAFT_KEYID, response));
}

// A made-up message must not use up the nonce of the real one.
TEST_F(SignerWithAClock, RemembersNoNonceOfARefusedSignature) {
    HttpRequestSigner signer(DRAFT_KEY, profile());
    const Request request = requestWithNonce("a");
    Request forged = request;
    forged.method = "PUT";
    EXPECT_FALSE(verifies(signer, forged));
    EXPECT_FALSE(signer.verifyRequest("other", request));
    now_ += 301;
    EXPECT_FALSE(verifies(signer, request));
    now_ -= 301;
    EXPECT_TRUE(verifies(signer, request));
}

TEST_F(SignerWithAClock, AcceptsANonceAnewWhenItsSignatureHasLapsed) {
    HttpRequestSigner signer(DRAFT_KEY, profile());
    EXPECT_TRUE(verifies(signer, requestWithNonce("a")));
    now_ += 300;
    EXPECT_FALSE(verifies(signer, requestWithNonce("a", now_)));
    now_ += 1;
    EXPECT_TRUE(verifies(signer, requestWithNonce("a", now_)));
}

// A signature that is made ahead of time lives longer, and so does its nonce.
TEST_F(SignerWithAClock, RemembersANonceForAsLongAsItsSignatureIsGood) {
    HttpRequestSigner signer(DRAFT_KEY, profile(1));
    const Request ahead = requestWithNonce("a", DRAFT_TIME + 5);
    EXPECT_TRUE(verifies(signer, ahead));
    now_ += 305;
    EXPECT_FALSE(verifies(signer, ahead));
    EXPECT_FALSE(verifies(signer, requestWithNonce("b", now_)));
    now_ += 1;
    EXPECT_TRUE(verifies(signer, requestWithNonce("b", now_)));
}

TEST_F(SignerWithAClock, RefusesWhatItCouldNotRemember) {
    HttpRequestSigner signer(DRAFT_KEY, profile(2));
    EXPECT_TRUE(verifies(signer, requestWithNonce("a")));
    EXPECT_TRUE(verifies(signer, requestWithNonce("b")));
    EXPECT_FALSE(verifies(signer, requestWithNonce("c")));
    EXPECT_FALSE(verifies(signer, requestWithNonce("a")));
    now_ += 301;
    EXPECT_TRUE(verifies(signer, requestWithNonce("c", now_)));
    HttpRequestSigner none(DRAFT_KEY, profile(0));
    EXPECT_FALSE(verifies(none, requestWithNonce("a", now_)));
}

TEST_F(SignerWithAClock, RefusesAReplayWhenTheClockWentBack) {
    HttpRequestSigner signer(DRAFT_KEY, profile(2));
    const Request old = requestWithNonce("a");
    EXPECT_TRUE(verifies(signer, old));
    EXPECT_TRUE(verifies(signer, requestWithNonce("b")));
    // Now both are forgotten.
    now_ += 301;
    EXPECT_TRUE(verifies(signer, requestWithNonce("c", now_)));
    now_ -= 1;
    EXPECT_FALSE(verifies(signer, old));
    EXPECT_TRUE(verifies(signer, requestWithNonce("d", now_)));
}

TEST_F(SignerWithAClock, AsksForNoNonceWhereTheProfileHasNone) {
    HttpSignatureProfile withoutNonce = profile();
    withoutNonce.parameters = {"created", "keyid"};
    RequestDraft draft = getDraft();
    draft.signature.parameters = ";created=1700000000;keyid=\"device-7\"";
    HttpRequestSigner signer(DRAFT_KEY, withoutNonce);
    EXPECT_TRUE(verifies(signer, sealed(draft)));
    EXPECT_TRUE(verifies(signer, sealed(draft)));
    // One that is there counts all the same.
    draft.signature.parameters += ";nonce=\"a\"";
    EXPECT_TRUE(verifies(signer, sealed(draft)));
    EXPECT_FALSE(verifies(signer, sealed(draft)));
}

}  // namespace vorl::test
