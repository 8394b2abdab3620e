#include "octets.h"
#include "raw_http_signature.h"
#include "signed_drafts.h"
#include "signed_messages.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

// Responses of which one thing is another than was signed, and such as were signed so.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::http::HttpResponse;

std::string& inputOf(HttpResponse& response) {
    return existingField(response.headerFields, "Signature-Input");
}

struct ResponseTampering {
    const char* name;
    void (*tamper)(HttpResponse&);
};

struct AnotherResponse {
    const char* name;
    void (*change)(ResponseDraft&);
};

class TamperedResponse : public ::testing::TestWithParam<ResponseTampering> {};
class UnchangedAnswer : public ::testing::TestWithParam<ResponseTampering> {};
class AcceptedResponse : public ::testing::TestWithParam<AnotherResponse> {};
class RefusedResponse : public ::testing::TestWithParam<AnotherResponse> {};

template <typename Case>
std::string nameOfResponseCase(const ::testing::TestParamInfo<Case>& test) {
    return test.param.name;
}

void setAnswerDigest(ResponseDraft& draft, const std::string& digest) {
    existingField(draft.response.headerFields, "Content-Digest") = digest;
    lineOf(draft, "\"content-digest\"") = digest;
}

// Takes out all that speaks of the request.
void dropRequestLines(ResponseDraft& draft) {
    auto& lines = draft.signature.lines;
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const auto& line) { return line.first.find(";req") != std::string::npos; }),
                lines.end());
}

}  // namespace

TEST_P(TamperedResponse, IsRefused) {
    const HttpResponse whole = sealed(answerDraft());
    EXPECT_TRUE(isAccepted(whole));
    HttpResponse tampered = whole;
    GetParam().tamper(tampered);
    EXPECT_FALSE(isAccepted(tampered));
}

INSTANTIATE_TEST_SUITE_P(
    Response, TamperedResponse,
    ::testing::Values(
        ResponseTampering{"Status", [](HttpResponse& r) { r.statusCode = 500; }},
        ResponseTampering{"NoStatus", [](HttpResponse& r) { r.statusCode = 0; }},
        ResponseTampering{"Body", [](HttpResponse& r) { r.content[0] ^= 1; }},
        ResponseTampering{"NoBody", [](HttpResponse& r) { r.content.clear(); }},
        ResponseTampering{"BodyWithItsDigest",
                          [](HttpResponse& r) {
                              r.content = octetsOf("other");
                              existingField(r.headerFields, "Content-Digest") = rawContentDigest(r.content);
                          }},
        ResponseTampering{
            "Digest",
            [](HttpResponse& r) { existingField(r.headerFields, "Content-Digest") = rawContentDigest({}); }},
        ResponseTampering{"NoDigest", [](HttpResponse& r) { removeField(r.headerFields, "Content-Digest"); }},
        ResponseTampering{"DigestTwice",
                          [](HttpResponse& r) {
                              r.headerFields.emplace_back("Content-Digest", rawContentDigest(r.content));
                          }},
        ResponseTampering{"WithoutStatus",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@status\" ", ""); }},
        ResponseTampering{"WithoutDigest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), " \"content-digest\" ", " "); }},
        ResponseTampering{"WithoutMethodOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@method\";req ", ""); }},
        ResponseTampering{"WithoutAuthorityOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@authority\";req ", ""); }},
        ResponseTampering{"WithoutPathOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@path\";req ", ""); }},
        ResponseTampering{"WithoutQueryOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@query\";req ", ""); }},
        ResponseTampering{"WithoutDigestOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"content-digest\";req ", ""); }},
        ResponseTampering{"WithoutSignatureOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), " \"signature\";req", ""); }},
        ResponseTampering{"OtherOrder",
                          [](HttpResponse& r) {
                              replaceOnce(inputOf(r), R"("@status" "content-digest")",
                                          R"("content-digest" "@status")");
                          }},
        ResponseTampering{
            "Twice",
            [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@status\"", R"("@status" "@status")"); }},
        ResponseTampering{"MethodWithoutReq",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@method\";req", "\"@method\""); }},
        ResponseTampering{"ReqFalse",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "d\";req", "d\";req=?0"); }},
        ResponseTampering{"StatusOfTheRequest",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "\"@status\"", "\"@status\";req"); }},
        ResponseTampering{"NoList",
                          [](HttpResponse& r) { inputOf(r) = std::string("vorl=()") + DRAFT_PARAMETERS; }},
        ResponseTampering{"NoSignature", [](HttpResponse& r) { removeField(r.headerFields, "Signature"); }},
        ResponseTampering{"NoFields", [](HttpResponse& r) { r.headerFields.clear(); }}),
    nameOfResponseCase<ResponseTampering>);

INSTANTIATE_TEST_SUITE_P(
    Parameters, TamperedResponse,
    ::testing::Values(
        ResponseTampering{"Created",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "=1700000000", "=1700000001"); }},
        ResponseTampering{"NoCreated",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), ";created=1700000000", ""); }},
        ResponseTampering{"Expires",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "=1700000300", "=1700000301"); }},
        ResponseTampering{"NoExpires",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), ";expires=1700000300", ""); }},
        ResponseTampering{"Nonce", [](HttpResponse& r) { replaceOnce(inputOf(r), "\"AAEC", "\"BAEC"); }},
        ResponseTampering{
            "NoNonce",
            [](HttpResponse& r) { replaceOnce(inputOf(r), ";nonce=\"AAECAwQFBgcICQoLDA0ODw==\"", ""); }},
        ResponseTampering{"Keyid", [](HttpResponse& r) { replaceOnce(inputOf(r), "device-7", "device-8"); }},
        ResponseTampering{"NoKeyid",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), ";keyid=\"device-7\"", ""); }},
        ResponseTampering{"Algorithm",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), "hmac-sha256", "hmac-sha512"); }},
        ResponseTampering{"NoAlgorithm",
                          [](HttpResponse& r) { replaceOnce(inputOf(r), ";alg=\"hmac-sha256\"", ""); }},
        ResponseTampering{"Tag", [](HttpResponse& r) { replaceOnce(inputOf(r), "vorl-1", "vorl-2"); }},
        ResponseTampering{"NoTag", [](HttpResponse& r) { replaceOnce(inputOf(r), ";tag=\"vorl-1\"", ""); }},
        ResponseTampering{"Another", [](HttpResponse& r) { inputOf(r) += ";more=1"; }},
        ResponseTampering{"None", [](HttpResponse& r) { replaceOnce(inputOf(r), DRAFT_PARAMETERS, ""); }}),
    nameOfResponseCase<ResponseTampering>);

INSTANTIATE_TEST_SUITE_P(
    Signatures, TamperedResponse,
    ::testing::Values(
        ResponseTampering{"OfZeros",
                          [](HttpResponse& r) {
                              existingField(r.headerFields, "Signature") = "vorl=" + rawOctetField(bytes(32));
                          }},
        ResponseTampering{
            "WithAParameter",
            [](HttpResponse& r) { existingField(r.headerFields, "Signature") += ";alg=\"hmac-sha256\""; }},
        ResponseTampering{"TwiceOnTwoLines",
                          [](HttpResponse& r) {
                              r.headerFields.emplace_back("Signature",
                                                          existingField(r.headerFields, "Signature"));
                          }},
        ResponseTampering{"AnotherBehindIt",
                          [](HttpResponse& r) {
                              r.headerFields.emplace_back("Signature", "vorl=" + rawOctetField(bytes(32)));
                          }},
        ResponseTampering{
            "InputTwiceOnTwoLines",
            [](HttpResponse& r) { r.headerFields.emplace_back("Signature-Input", inputOf(r)); }},
        ResponseTampering{"InputRemoved",
                          [](HttpResponse& r) { removeField(r.headerFields, "Signature-Input"); }},
        ResponseTampering{"OfTheRequest",
                          [](HttpResponse& r) {
                              for (const char* name : {"Signature-Input", "Signature"}) {
                                  existingField(r.headerFields, name) =
                                      existingField(r.answered->fields, name);
                              }
                          }}),
    nameOfResponseCase<ResponseTampering>);

// The response to one request is none to another.
INSTANTIATE_TEST_SUITE_P(
    Request, TamperedResponse,
    ::testing::Values(
        ResponseTampering{"Method", [](HttpResponse& r) { r.answered->method = "PUT"; }},
        ResponseTampering{"Host",
                          [](HttpResponse& r) { replaceOnce(r.answered->targetUri, "service", "other"); }},
        ResponseTampering{"Path", [](HttpResponse& r) { replaceOnce(r.answered->targetUri, "v1", "v2"); }},
        ResponseTampering{"Query", [](HttpResponse& r) { r.answered->targetUri += "&a"; }},
        ResponseTampering{"BadUri", [](HttpResponse& r) { r.answered->targetUri = "/v1"; }},
        ResponseTampering{"Body",
                          [](HttpResponse& r) {
                              existingField(r.answered->fields, "Content-Digest") = rawContentDigest({});
                          }},
        ResponseTampering{"NoDigest",
                          [](HttpResponse& r) { removeField(r.answered->fields, "Content-Digest"); }},
        ResponseTampering{"SignedAgain",
                          [](HttpResponse& r) {
                              RequestDraft again = postDraft();
                              replaceOnce(again.signature.parameters, "AAEC", "BBBB");
                              r.answered = sealed(again);
                          }},
        ResponseTampering{"NotSigned", [](HttpResponse& r) { removeField(r.answered->fields, "Signature"); }},
        ResponseTampering{"NotKnown", [](HttpResponse& r) { r.answered.reset(); }}),
    nameOfResponseCase<ResponseTampering>);

TEST_P(UnchangedAnswer, IsAccepted) {
    HttpResponse response = sealed(answerDraft());
    GetParam().tamper(response);
    EXPECT_TRUE(isAccepted(response));
}

INSTANTIATE_TEST_SUITE_P(
    Uncovered, UnchangedAnswer,
    ::testing::Values(
        ResponseTampering{"AnotherField", [](HttpResponse& r) { r.headerFields.emplace_back("Age", "7"); }},
        ResponseTampering{"FieldOfTheRequest",
                          [](HttpResponse& r) { r.answered->fields.emplace_back("Via", "1.1 a"); }},
        ResponseTampering{
            "OrderOfFields",
            [](HttpResponse& r) { std::reverse(r.headerFields.begin(), r.headerFields.end()); }}),
    nameOfResponseCase<ResponseTampering>);

TEST_P(AcceptedResponse, IsSignedByTheRules) {
    ResponseDraft draft = answerDraft();
    GetParam().change(draft);
    EXPECT_TRUE(isAccepted(sealed(draft)));
}

INSTANTIATE_TEST_SUITE_P(Drafts, AcceptedResponse,
                         ::testing::Values(AnotherResponse{"AsItIs", [](ResponseDraft&) {}},
                                           AnotherResponse{"AnotherStatus",
                                                           [](ResponseDraft& d) {
                                                               d.response.statusCode = 404;
                                                               lineOf(d, "\"@status\"") = "404";
                                                           }},
                                           AnotherResponse{"NoBody",
                                                           [](ResponseDraft& d) {
                                                               d.response.content.clear();
                                                               setAnswerDigest(d, rawContentDigest({}));
                                                           }},
                                           AnotherResponse{"UnknownRequest",
                                                           [](ResponseDraft& d) {
                                                               d.response.answered.reset();
                                                               dropRequestLines(d);
                                                           }},
                                           AnotherResponse{"RequestWithoutDigestAndSignature",
                                                           [](ResponseDraft& d) {
                                                               d.response.answered->fields.clear();
                                                               dropLine(d, "\"content-digest\";req");
                                                               dropLine(d, "\"signature\";req");
                                                           }}),
                         nameOfResponseCase<AnotherResponse>);

TEST_P(RefusedResponse, IsRefusedThoughItsCodeIsRight) {
    ResponseDraft draft = answerDraft();
    EXPECT_TRUE(isAccepted(sealed(draft)));
    GetParam().change(draft);
    EXPECT_FALSE(isAccepted(sealed(draft)));
}

INSTANTIATE_TEST_SUITE_P(
    Drafts, RefusedResponse,
    ::testing::Values(
        AnotherResponse{"WithoutStatus", [](ResponseDraft& d) { dropLine(d, "\"@status\""); }},
        AnotherResponse{"WithoutDigest", [](ResponseDraft& d) { dropLine(d, "\"content-digest\""); }},
        AnotherResponse{"WithoutMethod", [](ResponseDraft& d) { dropLine(d, "\"@method\";req"); }},
        AnotherResponse{"WithoutAuthority", [](ResponseDraft& d) { dropLine(d, "\"@authority\";req"); }},
        AnotherResponse{"WithoutPath", [](ResponseDraft& d) { dropLine(d, "\"@path\";req"); }},
        AnotherResponse{"WithoutQuery", [](ResponseDraft& d) { dropLine(d, "\"@query\";req"); }},
        AnotherResponse{"WithoutDigestOfTheRequest",
                        [](ResponseDraft& d) { dropLine(d, "\"content-digest\";req"); }},
        AnotherResponse{"WithoutSignatureOfTheRequest",
                        [](ResponseDraft& d) { dropLine(d, "\"signature\";req"); }},
        AnotherResponse{"OfNoRequest", [](ResponseDraft& d) { dropRequestLines(d); }},
        AnotherResponse{"Empty", [](ResponseDraft& d) { d.signature.lines.clear(); }},
        AnotherResponse{"RequestIsNotKnown", [](ResponseDraft& d) { d.response.answered.reset(); }},
        AnotherResponse{"MethodOfAResponse",
                        [](ResponseDraft& d) { d.signature.lines.emplace_back("\"@method\"", "POST"); }},
        AnotherResponse{"OfAnotherBody", [](ResponseDraft& d) { setAnswerDigest(d, rawContentDigest({})); }},
        AnotherResponse{"AnotherTag",
                        [](ResponseDraft& d) { replaceOnce(d.signature.parameters, "vorl-1", "vorl-2"); }},
        AnotherResponse{"AnotherKey", [](ResponseDraft& d) { d.key = octets(31); }}),
    nameOfResponseCase<AnotherResponse>);

TEST(ReflectedResponse, IsNoSignatureOfARequest) {
    const HttpResponse response = sealed(answerDraft());
    ASSERT_TRUE(isAccepted(response));
    tarvik::http::IHttpStream::Request reflected = *response.answered;
    reflected.fields = response.headerFields;
    reflected.body = response.content;
    EXPECT_FALSE(isAccepted(reflected));
}

// The components of a profile hold for both directions, so that a list with "@status" is none for requests.
TEST(VerifiedResponse, IsJudgedByTheComponentsOfTheProfile) {
    auto profile = profileAt(DRAFT_TIME);
    profile.components = {"@status"};
    HttpResponse response;
    response.statusCode = 204;
    RawHttpSignature raw{"vorl", {{"\"@status\"", "204"}}, DRAFT_PARAMETERS};
    raw.addTo(response.headerFields, DRAFT_KEY);
    EXPECT_TRUE(HttpRequestSigner(DRAFT_KEY, profile).verify(DRAFT_KEYID, response));
    EXPECT_FALSE(isAccepted(response));
    EXPECT_FALSE(HttpRequestSigner(DRAFT_KEY, profile).verifyRequest(DRAFT_KEYID, sealed(postDraft())));
}

}  // namespace vorl::test
