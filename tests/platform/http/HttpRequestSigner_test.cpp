#include "tarvik/crypto/HttpRequestSigner.h"

#include "messageOf.h"
#include "octets.h"
#include "raw_http_signature.h"
#include "signed_messages.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Random.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::HttpSignatureProfile;
using tarvik::http::HttpResponse;
using Fields = tarvik::http::IHttpStream::Fields;
using Request = tarvik::http::IHttpStream::Request;

const bytes SIGNING_KEY = octets(32);
const std::int64_t NOW = 1700000000;
const char KEYID[] = "device-7";

Request postRequest() {
    return {"POST",
            "https://service.example/v1/messages?kind=report",
            {{"Host", "service.example"}, {"Content-Type", "text/plain"}},
            octetsOf("hello")};
}

Request getRequest() {
    return {"GET", "https://service.example/v1/messages", {{"Host", "service.example"}}, {}};
}

// "x-0", "x-1" and so on.
std::vector<std::string> fieldNames(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) {
        names.push_back("x-" + std::to_string(i));
    }
    return names;
}

std::size_t sizeOf(const Fields& fields) {
    std::size_t size = 0;
    for (const auto& [name, value] : fields) {
        size += name.size() + value.size();
    }
    return size;
}

// The nonce of a signature: the text in quotation marks.
std::string nonceIn(const Fields& fields) {
    const std::string input = fieldOf(fields, "Signature-Input").value_or("");
    const std::string name = ";nonce=\"";
    const std::size_t start = input.find(name);
    return start == std::string::npos
               ? ""
               : input.substr(start + name.size(),
                              input.find('"', start + name.size()) - start - name.size());
}

// The parameters of the software platform.
std::string usualParameters(std::int64_t created, const std::string& nonce, const std::string& keyid) {
    return ";created=" + std::to_string(created) + ";expires=" + std::to_string(created + 300) + ";nonce=\"" +
           nonce + "\";keyid=\"" + keyid + R"(";alg="hmac-sha256";tag="vorl-1")";
}

class HttpRequestSignerTest : public ::testing::Test {
protected:
    void SetUp() override { Random::init_ = true; }
    void TearDown() override { Random::init_ = false; }

    Fields signedFields(Request request) {
        signer_.sign(KEYID, request);
        return request.fields;
    }

    HttpRequestSigner signer_{SIGNING_KEY, profileAt(NOW)};
};

// What a signature of these fields is, whose nonce is told by itself.
void expectSigned(const Fields& before, const Fields& after, RawHttpSignature expected,
                  const std::string& digest) {
    Fields fields = before;
    if (!digest.empty()) {
        fields.emplace_back("Content-Digest", digest);
    }
    expected.label = "vorl";
    expected.parameters = usualParameters(NOW, nonceIn(after), KEYID);
    expected.addTo(fields, SIGNING_KEY);
    EXPECT_EQ(after, fields);
}

struct RefusedProfile {
    const char* name;
    void (*spoil)(HttpSignatureProfile&);
    const char* text;
};

class SignatureProfile : public ::testing::TestWithParam<RefusedProfile> {};

struct RefusedNames {
    const char* name;
    std::vector<std::string> names;
    const char* text;
};

class ComponentsOfAProfile : public ::testing::TestWithParam<RefusedNames> {};
class ParametersOfAProfile : public ::testing::TestWithParam<RefusedNames> {};

struct RefusedRequest {
    const char* name;
    void (*spoil)(Request&);
    const char* text;
};

class RequestThatCannotBeSigned : public ::testing::TestWithParam<RefusedRequest> {
protected:
    void SetUp() override { Random::init_ = true; }
    void TearDown() override { Random::init_ = false; }
};

}  // namespace

TEST_F(HttpRequestSignerTest, SignsARequestWithABody) {
    const Request request = postRequest();
    const std::string digest = rawContentDigest(request.body);
    expectSigned(request.fields, signedFields(request),
                 {"",
                  {{"\"@method\"", "POST"},
                   {"\"@authority\"", "service.example"},
                   {"\"@path\"", "/v1/messages"},
                   {"\"@query\"", "?kind=report"},
                   {"\"content-digest\"", digest},
                   {"\"content-type\"", "text/plain"}},
                  ""},
                 digest);
}

TEST_F(HttpRequestSignerTest, SignsARequestWithoutABody) {
    const Request request = getRequest();
    expectSigned(request.fields, signedFields(request),
                 {"",
                  {{"\"@method\"", "GET"},
                   {"\"@authority\"", "service.example"},
                   {"\"@path\"", "/v1/messages"},
                   {"\"@query\"", "?"}},
                  ""},
                 "");
}

TEST_F(HttpRequestSignerTest, SignsAResponseOfItself) {
    HttpResponse response;
    response.statusCode = 404;
    response.content = octetsOf("nothing here");
    signer_.signResponse(KEYID, response);
    const std::string digest = rawContentDigest(response.content);
    expectSigned({}, response.headerFields,
                 {"", {{"\"@status\"", "404"}, {"\"content-digest\"", digest}}, ""}, digest);
}

TEST_F(HttpRequestSignerTest, SignsAResponseWithTheRequestThatItAnswers) {
    HttpResponse response;
    response.answered = postRequest();
    signer_.sign(KEYID, *response.answered);
    signer_.signResponse(KEYID, response);
    const std::string digest = rawContentDigest({});
    expectSigned({}, response.headerFields,
                 {"",
                  {{"\"@status\"", "200"},
                   {"\"content-digest\"", digest},
                   {"\"@method\";req", "POST"},
                   {"\"@authority\";req", "service.example"},
                   {"\"@path\";req", "/v1/messages"},
                   {"\"@query\";req", "?kind=report"},
                   {"\"content-digest\";req", rawContentDigest(octetsOf("hello"))},
                   {"\"signature\";req", fieldOf(response.answered->fields, "Signature").value()}},
                  ""},
                 digest);
}

TEST_F(HttpRequestSignerTest, SignsAResponseToAnUnsignedRequest) {
    HttpResponse response;
    response.answered = getRequest();
    signer_.signResponse(KEYID, response);
    const std::string digest = rawContentDigest({});
    expectSigned({}, response.headerFields,
                 {"",
                  {{"\"@status\"", "200"},
                   {"\"content-digest\"", digest},
                   {"\"@method\";req", "GET"},
                   {"\"@authority\";req", "service.example"},
                   {"\"@path\";req", "/v1/messages"},
                   {"\"@query\";req", "?"}},
                  ""},
                 digest);
}

TEST_F(HttpRequestSignerTest, SignsWithAKeyOfAnyLengthButNone) {
    HttpSignatureProfile profile = profileAt(NOW);
    profile.parameters = {"created", "keyid"};
    profile.components = {"@method"};
    for (const std::size_t size : {1U, 64U, 65U, 1000U}) {
        Request request = getRequest();
        HttpRequestSigner(octets(size), profile).sign(KEYID, request);
        const RawHttpSignature expected{
            "vorl", {{"\"@method\"", "GET"}}, R"(;created=1700000000;keyid="device-7")"};
        EXPECT_EQ(fieldOf(request.fields, "Signature"), "vorl=" + rawOctetField(expected.code(octets(size))))
            << size;
    }
}

TEST_F(HttpRequestSignerTest, FollowsItsProfile) {
    HttpSignatureProfile profile = profileAt(-5);
    profile.label = "*my.sig-1";
    profile.components = {"host", "@query", "@scheme"};
    profile.parameters = {"tag", "expires", "keyid", "created"};
    profile.tag = R"(a "b" \c)";
    profile.lifetime = 7;
    Request request = postRequest();
    const RawHttpSignature expected{
        "*my.sig-1",
        {{"\"host\"", "service.example"}, {"\"@query\"", "?kind=report"}, {"\"@scheme\"", "https"}},
        R"(;tag="a \"b\" \\c";expires=2;keyid="k\"1";created=-5)"};
    Fields fields = request.fields;
    expected.addTo(fields, SIGNING_KEY);
    HttpRequestSigner signer(SIGNING_KEY, profile);
    signer.sign("k\"1", request);
    EXPECT_EQ(request.fields, fields);
    EXPECT_TRUE(signer.verifyRequest("k\"1", request));
}

TEST_F(HttpRequestSignerTest, DrawsANonceOf16OctetsForEachSignature) {
    std::set<std::string> nonces;
    for (int i = 0; i < 100; ++i) {
        const std::string nonce = nonceIn(signedFields(getRequest()));
        ASSERT_EQ(nonce.size(), 24U);
        EXPECT_EQ(rawUnbase64(fromText(nonce)).size(), 16U);
        nonces.insert(nonce);
    }
    EXPECT_EQ(nonces.size(), 100U);
}

TEST_F(HttpRequestSignerTest, TellsTheTimeByTheSystemsClock) {
    HttpRequestSigner signer(SIGNING_KEY);
    const std::int64_t before = std::time(nullptr);
    Request request = getRequest();
    signer.sign(KEYID, request);
    const std::int64_t after = std::time(nullptr);
    const std::string input = fieldOf(request.fields, "Signature-Input").value();
    const std::size_t at = input.find(";created=") + 9;
    const std::int64_t created = std::stoll(input.substr(at));
    EXPECT_LE(before, created);
    EXPECT_LE(created, after);
    EXPECT_NE(input.find(";expires=" + std::to_string(created + 300) + ";"), std::string::npos);
    EXPECT_TRUE(signer.verifyRequest(KEYID, request));
}

TEST_F(HttpRequestSignerTest, ReplacesItsOwnSignatureWhenItSignsAgain) {
    Request request = postRequest();
    signer_.sign(KEYID, request);
    const Fields first = request.fields;
    request.body = octetsOf("other");
    signer_.sign(KEYID, request);
    ASSERT_EQ(request.fields.size(), first.size());
    EXPECT_EQ(fieldOf(request.fields, "Content-Digest"), rawContentDigest(request.body));
    EXPECT_NE(fieldOf(request.fields, "Signature"), fieldOf(first, "Signature"));
    EXPECT_TRUE(signer_.verifyRequest(KEYID, request));
}

TEST_F(HttpRequestSignerTest, KeepsTheSignaturesOfOthers) {
    const Fields foreign = {{"Signature-Input", "sig1=(\"@method\");created=1, sig2=()"},
                            {"signature", "sig1=:AAAA:, sig2=:AQID:"},
                            {"SIGNATURE-INPUT", "sig3=()"},
                            {"Signature", "sig3=:BBBB:"}};
    Request request = getRequest();
    request.fields.insert(request.fields.end(), foreign.begin(), foreign.end());
    const Fields before = request.fields;
    for (int i = 0; i < 3; ++i) {
        signer_.sign(KEYID, request);
        ASSERT_EQ(request.fields.size(), before.size() + 2);
        EXPECT_EQ(Fields(request.fields.begin(), request.fields.end() - 2), before);
        EXPECT_EQ((request.fields.end() - 2)->first, "Signature-Input");
        EXPECT_EQ((request.fields.end() - 1)->first, "Signature");
        EXPECT_TRUE(signer_.verifyRequest(KEYID, request));
    }
}

TEST_F(HttpRequestSignerTest, TwoLabelsStandSideBySide) {
    HttpSignatureProfile other = profileAt(NOW);
    other.label = "second";
    HttpRequestSigner second(octets(20), other);
    Request request = postRequest();
    signer_.sign(KEYID, request);
    second.sign("other", request);
    EXPECT_TRUE(HttpRequestSigner(SIGNING_KEY, profileAt(NOW)).verifyRequest(KEYID, request));
    EXPECT_TRUE(second.verifyRequest("other", request));
    signer_.sign(KEYID, request);
    EXPECT_TRUE(signer_.verifyRequest(KEYID, request));
    EXPECT_TRUE(HttpRequestSigner(octets(20), other).verifyRequest("other", request));
}

// Somebody else may have signed it.
TEST_F(HttpRequestSignerTest, KeepsADigestThatIsRight) {
    Request request = postRequest();
    const std::string both = "sha-512=" + rawOctetField(rawDigest(EVP_sha512(), request.body)) + ", " +
                             rawContentDigest(request.body);
    request.fields.insert(request.fields.begin(), {"content-digest", both});
    const Fields before = request.fields;
    signer_.sign(KEYID, request);
    EXPECT_EQ(Fields(request.fields.begin(), request.fields.end() - 2), before);
    EXPECT_TRUE(signer_.verifyRequest(KEYID, request));
}

TEST_F(HttpRequestSignerTest, ReplacesADigestThatIsNot) {
    const bytes body = postRequest().body;
    for (const std::string& wrong :
         {rawContentDigest(octetsOf("other")), "sha-512=" + rawOctetField(rawDigest(EVP_sha512(), body)),
          std::string(""), std::string("no dictionary"),
          rawContentDigest(body) + ", " + rawContentDigest(body)}) {
        Request request = postRequest();
        request.fields.emplace_back("CONTENT-DIGEST", wrong);
        request.fields.emplace_back("Content-Digest", "sha-384=:AAAA:");
        const Fields after = signedFields(request);
        Fields expected = postRequest().fields;
        expected.emplace_back("Content-Digest", rawContentDigest(body));
        EXPECT_EQ(Fields(after.begin(), after.end() - 2), expected) << wrong;
    }
}

TEST_F(HttpRequestSignerTest, LeavesADigestAloneThatItDoesNotCover) {
    Request request = getRequest();
    request.fields.emplace_back("Content-Digest", "sha-384=:AAAA:");
    const Fields before = request.fields;
    signer_.sign(KEYID, request);
    EXPECT_EQ(Fields(request.fields.begin(), request.fields.end() - 2), before);
}

TEST_P(RequestThatCannotBeSigned, IsRefusedAndLeftAsItWas) {
    Request request = postRequest();
    HttpRequestSigner signer(SIGNING_KEY, profileAt(NOW));
    signer.sign(KEYID, request);
    request.body = octetsOf("other");
    GetParam().spoil(request);
    const Request before = request;
    EXPECT_EQ(messageOf<VORLException>([&] { signer.sign(KEYID, request); }), GetParam().text);
    EXPECT_EQ(request.method, before.method);
    EXPECT_EQ(request.targetUri, before.targetUri);
    EXPECT_EQ(request.fields, before.fields);
    EXPECT_EQ(request.body, before.body);
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, RequestThatCannotBeSigned,
    ::testing::Values(
        RefusedRequest{"RelativeUri", [](Request& r) { r.targetUri = "/v1/messages"; },
                       "the request's URI is no absolute one of http or https"},
        RefusedRequest{"LineFeedInTheMethod", [](Request& r) { r.method = "GET\n"; },
                       R"(component "@method" has characters that cannot be signed)"},
        RefusedRequest{"NoContentType", [](Request& r) { r.fields.erase(r.fields.begin() + 1); },
                       R"(the message has no component "content-type")"},
        RefusedRequest{"ContentTypeInUtf8", [](Request& r) { r.fields[1].second = "text/\xc3\xa4"; },
                       R"(component "content-type" has characters that cannot be signed)"},
        RefusedRequest{"UnreadableInput",
                       [](Request& r) { r.fields.emplace_back("signature-Input", "other=("); },
                       "the message has a field signature-Input that cannot be read"},
        RefusedRequest{"UnreadableSignature",
                       [](Request& r) { r.fields.emplace_back("Signature", "vorl=1.5"); },
                       "the message has a field Signature that cannot be read"},
        RefusedRequest{"SignaturesOfOthersUnderOneLabel",
                       [](Request& r) {
                           r.fields.emplace_back("Signature", "other=:AAAA:");
                           r.fields.emplace_back("Signature", "other=:BBBB:");
                       },
                       "the message has signatures of others that cannot be read"},
        RefusedRequest{"InputsOfOthersUnderOneLabel",
                       [](Request& r) {
                           r.fields.emplace_back("Signature-Input", "other=()");
                           r.fields.emplace_back("Signature-Input", "other=()");
                       },
                       "the message has signatures of others that cannot be read"},
        RefusedRequest{"EmptySignature", [](Request& r) { r.fields.emplace_back("Signature", ""); },
                       "the message has signatures of others that cannot be read"},
        RefusedRequest{"SignatureBesideOthers",
                       [](Request& r) { r.fields.emplace_back("Signature", "other=:AAAA:, vorl=:AAAA:"); },
                       "the message has a signature vorl beside others in one field"},
        RefusedRequest{"InputBesideOthers",
                       [](Request& r) { r.fields.emplace_back("Signature-Input", "vorl=(), other=()"); },
                       "the message has a signature vorl beside others in one field"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(HttpRequestSignerTest, RefusesAKeyidThatCannotBeWritten) {
    for (const char* keyid : {"a\nb", "\x7f", "\xc3\xa4", "\t"}) {
        Request request = postRequest();
        EXPECT_EQ(messageOf<VORLException>([&] { signer_.sign(keyid, request); }),
                  "the keyid has characters that cannot be signed");
        EXPECT_EQ(request.fields, postRequest().fields);
        EXPECT_FALSE(signer_.verifyRequest(keyid, request));
    }
    Request request = postRequest();
    EXPECT_NO_THROW(signer_.sign("", request));
    EXPECT_TRUE(signer_.verifyRequest("", request));
}

TEST_F(HttpRequestSignerTest, RefusesToSignWithoutRandomOctets) {
    Random::init_ = false;
    Request request = postRequest();
    EXPECT_EQ(messageOf<OpenSSLException>([&] { signer_.sign(KEYID, request); }),
              "Random must be initialized before use");
    EXPECT_EQ(request.fields, postRequest().fields);
    HttpResponse response;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { signer_.signResponse(KEYID, response); }),
              "Random must be initialized before use");
    EXPECT_TRUE(response.headerFields.empty());
}

TEST_F(HttpRequestSignerTest, VerifiesWithoutRandomOctets) {
    Request request = postRequest();
    signer_.sign(KEYID, request);
    Random::init_ = false;
    EXPECT_TRUE(signer_.verifyRequest(KEYID, request));
}

TEST_F(HttpRequestSignerTest, RefusesTimesThatCannotBeWritten) {
    const std::int64_t most = 999999999999999;
    for (const std::int64_t time : {most + 1, -most - 1, std::numeric_limits<std::int64_t>::max(),
                                    std::numeric_limits<std::int64_t>::min()}) {
        HttpRequestSigner signer(SIGNING_KEY, profileAt(time));
        Request request = postRequest();
        EXPECT_EQ(messageOf<VORLException>([&] { signer.sign(KEYID, request); }),
                  "the signature's time cannot be written");
        EXPECT_EQ(request.fields, postRequest().fields);
        signer_.sign(KEYID, request);
        EXPECT_FALSE(signer.verifyRequest(KEYID, request));
    }
    for (const std::int64_t time : {most - 300, -most}) {
        HttpRequestSigner signer(SIGNING_KEY, profileAt(time));
        Request request = postRequest();
        signer.sign(KEYID, request);
        EXPECT_TRUE(signer.verifyRequest(KEYID, request)) << time;
    }
    HttpRequestSigner expiresTooLate(SIGNING_KEY, profileAt(most - 299));
    Request request = postRequest();
    EXPECT_EQ(messageOf<VORLException>([&] { expiresTooLate.sign(KEYID, request); }),
              "the signature's time cannot be written");
}

TEST_P(SignatureProfile, IsRefused) {
    HttpSignatureProfile profile;
    EXPECT_NO_THROW(HttpRequestSigner(SIGNING_KEY, profile));
    GetParam().spoil(profile);
    EXPECT_EQ(messageOf<VORLException>([&] { HttpRequestSigner signer(SIGNING_KEY, profile); }),
              GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, SignatureProfile,
    ::testing::Values(
        RefusedProfile{"NoLabel", [](HttpSignatureProfile& p) { p.label = ""; },
                       "the signature's label or tag cannot be written"},
        RefusedProfile{"LabelWithACapital", [](HttpSignatureProfile& p) { p.label = "Vorl"; },
                       "the signature's label or tag cannot be written"},
        RefusedProfile{"LabelWithABlank", [](HttpSignatureProfile& p) { p.label = "a b"; },
                       "the signature's label or tag cannot be written"},
        RefusedProfile{"LabelThatStartsWithADigit", [](HttpSignatureProfile& p) { p.label = "1a"; },
                       "the signature's label or tag cannot be written"},
        RefusedProfile{"TagInUtf8", [](HttpSignatureProfile& p) { p.tag = "\xc3\xa4"; },
                       "the signature's label or tag cannot be written"},
        RefusedProfile{"TagWithALineFeed", [](HttpSignatureProfile& p) { p.tag = "a\n"; },
                       "the signature's label or tag cannot be written"},
        RefusedProfile{"NegativeLifetime", [](HttpSignatureProfile& p) { p.lifetime = -1; },
                       "the signature's lifetime is negative"},
        RefusedProfile{"LifetimeOfSixteenDigits",
                       [](HttpSignatureProfile& p) { p.lifetime = 1000000000000000; },
                       "the signature's time cannot be written"},
        RefusedProfile{"EndlessLifetime",
                       [](HttpSignatureProfile& p) { p.lifetime = std::numeric_limits<std::int64_t>::max(); },
                       "the signature's time cannot be written"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_P(ComponentsOfAProfile, AreRefused) {
    HttpSignatureProfile profile;
    profile.components = GetParam().names;
    EXPECT_EQ(messageOf<VORLException>([&] { HttpRequestSigner signer(SIGNING_KEY, profile); }),
              GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, ComponentsOfAProfile,
    ::testing::Values(
        RefusedNames{"UnknownDerived", {"@method", "@nothing"}, "unknown component @nothing"},
        RefusedNames{"Capital", {"Date"}, "unknown component Date"},
        RefusedNames{"Empty", {""}, "unknown component "},
        RefusedNames{"Parameter", {"date;sf"}, "unknown component date;sf"},
        RefusedNames{"Twice", {"date", "@method", "date"}, "a component stands twice"},
        RefusedNames{"OfTheRequestTwice", {"date;req", "date", "date;req"}, "a component stands twice"},
        RefusedNames{"Seventeen", fieldNames(17), "17 components are too many, 16 are verified at the most"},
        RefusedNames{"OwnSignature",
                     {"date", "signature"},
                     "a signature cannot cover the field signature that it becomes a part of"},
        RefusedNames{"OwnInput",
                     {"signature-input", "date"},
                     "a signature cannot cover the field signature-input that it becomes a part of"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_P(ParametersOfAProfile, AreRefused) {
    HttpSignatureProfile profile;
    profile.parameters = GetParam().names;
    EXPECT_EQ(messageOf<VORLException>([&] { HttpRequestSigner signer(SIGNING_KEY, profile); }),
              GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, ParametersOfAProfile,
    ::testing::Values(
        RefusedNames{"Unknown", {"created", "keyid", "x"}, "unknown signature parameter x"},
        RefusedNames{"Twice", {"created", "keyid", "created"}, "signature parameter created stands twice"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(HttpRequestSignerTest, TakesTheOuterBoundsOfAProfile) {
    HttpSignatureProfile profile = profileAt(0);
    profile.lifetime = 0;
    profile.tag = "";
    profile.components = {"date", "date;req", "signature;req", "signature-input;req"};
    EXPECT_NO_THROW(HttpRequestSigner(SIGNING_KEY, profile));
    profile.lifetime = 999999999999999;
    EXPECT_NO_THROW(HttpRequestSigner(SIGNING_KEY, profile));
}

TEST_F(HttpRequestSignerTest, SignsAsManyComponentsAsAreVerified) {
    HttpSignatureProfile profile = profileAt(NOW);
    profile.components = fieldNames(16);
    Request request = getRequest();
    for (const std::string& name : profile.components) {
        request.fields.emplace_back(name, "v");
    }
    HttpRequestSigner signer(SIGNING_KEY, profile);
    signer.sign(KEYID, request);
    EXPECT_TRUE(signer.verifyRequest(KEYID, request));
}

// Of which a verifier looks at 8192 bytes.
TEST_F(HttpRequestSignerTest, SignsNoMoreFieldsThanAreVerified) {
    Request request = getRequest();
    request.fields.emplace_back("X", "");
    HttpResponse response;
    response.headerFields = {{"X", ""}};
    const auto pad = [](Fields& before, const Fields& after, std::size_t size) {
        for (auto& [name, value] : before) {
            value.append(name == "X" ? size - sizeOf(after) : 0, 'p');
        }
    };
    HttpResponse signedResponse = response;
    signer_.signResponse(KEYID, signedResponse);
    pad(request.fields, signedFields(request), 8192);
    pad(response.headerFields, signedResponse.headerFields, 8192);

    Request largest = request;
    signer_.sign(KEYID, largest);
    EXPECT_EQ(sizeOf(largest.fields), 8192U);
    EXPECT_TRUE(signer_.verifyRequest(KEYID, largest));
    HttpResponse largestResponse = response;
    signer_.signResponse(KEYID, largestResponse);
    EXPECT_EQ(sizeOf(largestResponse.headerFields), 8192U);
    EXPECT_TRUE(signer_.verify(KEYID, largestResponse));

    const std::string text = "the signed message has 8193 bytes of fields, 8192 are verified at the most";
    request.fields.back().second += 'p';
    response.headerFields.back().second += 'p';
    const Fields before = request.fields;
    const Fields beforeOfResponse = response.headerFields;
    EXPECT_EQ(messageOf<VORLException>([&] { signer_.sign(KEYID, request); }), text);
    EXPECT_EQ(messageOf<VORLException>([&] { signer_.signResponse(KEYID, response); }), text);
    EXPECT_EQ(messageOf<VORLException>([&] { signer_.signatureBase(KEYID, request); }), text);
    EXPECT_EQ(request.fields, before);
    EXPECT_EQ(response.headerFields, beforeOfResponse);
}

// Whom would it tell from anybody else?
TEST_F(HttpRequestSignerTest, RefusesAnEmptyKey) {
    EXPECT_EQ(messageOf<VORLException>([] { HttpRequestSigner signer(bytes{}); }),
              "the signing key is empty");
    EXPECT_EQ(messageOf<VORLException>([] { HttpRequestSigner signer(bytes{}, profileAt(NOW)); }),
              "the signing key is empty");
    EXPECT_EQ(messageOf<VORLException>([] { HttpRequestSigner::keyOfContext({}); }),
              "the key of the context is empty");
}

TEST_F(HttpRequestSignerTest, DerivesItsKeyFromThatOfAContext) {
    for (const std::size_t size : {1U, 16U, 100U}) {
        EXPECT_EQ(HttpRequestSigner::keyOfContext(octets(size)),
                  rawHmac(EVP_sha256(), octets(size), octetsOf("libVORL HTTP request signing key")));
    }
}

TEST_F(HttpRequestSignerTest, TellsTheKeyidOfAMessage) {
    EXPECT_EQ(HttpRequestSigner::keyidOf(signedFields(postRequest())), KEYID);
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"SIGNATURE-INPUT", R"(vorl=();keyid="a \"b\"")"}}), "a \"b\"");
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature-Input", R"(a=();keyid="x", b=();keyid="y")"}}, "b"),
              "y");
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature-Input", R"(vorl=();keyid="")"}}), "");
}

TEST_F(HttpRequestSignerTest, TellsNoKeyidWhereThereIsNone) {
    const std::optional<std::string> none;
    EXPECT_EQ(HttpRequestSigner::keyidOf({}), none);
    EXPECT_EQ(HttpRequestSigner::keyidOf(signedFields(postRequest()), "other"), none);
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature-Input", "vorl=()"}}), none);
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature-Input", "vorl=();keyid=a"}}), none);
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature-Input", R"(vorl=1;keyid="a")"}}), none);
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature-Input", R"(vorl=();keyid="a)"}}), none);
    EXPECT_EQ(HttpRequestSigner::keyidOf({{"Signature", R"(vorl=();keyid="a")"}}), none);
    const Fields twice = {{"Signature-Input", R"(vorl=();keyid="a")"},
                          {"Signature-Input", R"(vorl=();keyid="a")"}};
    EXPECT_EQ(HttpRequestSigner::keyidOf(twice), none);
}

TEST_F(HttpRequestSignerTest, LooksForAKeyidInNoMoreThan8KiB) {
    Fields fields = {{"Signature-Input", R"(vorl=();keyid="a")"}, {"X", ""}};
    const std::size_t size = 15 + 17 + 1;
    fields[1].second.assign(8192 - size, 'x');
    EXPECT_EQ(HttpRequestSigner::keyidOf(fields), "a");
    fields[1].second += 'x';
    EXPECT_EQ(HttpRequestSigner::keyidOf(fields), std::nullopt);
}

TEST_F(HttpRequestSignerTest, ShowsTheBaseOfASignedRequestAsItsFieldsTellIt) {
    const RawHttpSignature raw{"vorl",
                               {{"\"@path\"", "/v1/messages"}, {"\"host\"", "service.example"}},
                               ";created=7;x;keyid=\"other\""};
    Request request = postRequest();
    raw.addTo(request.fields, octets(5));
    EXPECT_EQ(signer_.signatureBase(KEYID, request), raw.base());

    HttpResponse response;
    response.statusCode = 201;
    const RawHttpSignature ofResponse{"vorl", {{"\"@status\"", "201"}}, ";created=7"};
    ofResponse.addTo(response.headerFields, octets(5));
    EXPECT_EQ(signer_.signatureBase(KEYID, response), ofResponse.base());
}

TEST_F(HttpRequestSignerTest, ShowsTheBaseOfAnUnsignedMessageAsItWouldBeSigned) {
    HttpSignatureProfile profile = profileAt(NOW);
    profile.parameters = {"created", "keyid"};
    HttpRequestSigner signer(SIGNING_KEY, profile);
    const Request request = getRequest();
    EXPECT_EQ(signer.signatureBase("k", request),
              "\"@method\": GET\n\"@authority\": service.example\n\"@path\": /v1/messages\n\"@query\": ?\n"
              "\"@signature-params\": (\"@method\" \"@authority\" \"@path\" \"@query\")"
              ";created=1700000000;keyid=\"k\"");
    EXPECT_EQ(request.fields, getRequest().fields);

    const HttpResponse response;
    EXPECT_EQ(signer.signatureBase("k", response),
              "\"@status\": 200\n\"content-digest\": " + rawContentDigest({}) +
                  "\n\"@signature-params\": (\"@status\" \"content-digest\");created=1700000000;keyid=\"k\"");
}

TEST_F(HttpRequestSignerTest, ShowsNoBaseWhereThereIsNone) {
    Request request = getRequest();
    request.fields.emplace_back("Signature-Input", "vorl=(\"etag\");keyid=\"a\"");
    EXPECT_EQ(messageOf<VORLException>([&] { signer_.signatureBase(KEYID, request); }),
              R"(the message has no component "etag")");
    Request withoutAUri = getRequest();
    withoutAUri.targetUri = "*";
    EXPECT_EQ(messageOf<VORLException>([&] { signer_.signatureBase(KEYID, withoutAUri); }),
              "the request's URI is no absolute one of http or https");
}

}  // namespace vorl::test
