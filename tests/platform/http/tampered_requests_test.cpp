#include "octets.h"
#include "raw_http_signature.h"
#include "signed_drafts.h"
#include "signed_messages.h"

#include <tarvik/crypto/HttpRequestSigner.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

// Requests of which one thing is another than was signed, and such as were signed so: the first are all
// refused, and the second tell which of the first the code alone gave away.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using Request = tarvik::http::IHttpStream::Request;

std::string& inputOf(Request& request) {
    return existingField(request.fields, "Signature-Input");
}

std::string& signatureOf(Request& request) {
    return existingField(request.fields, "Signature");
}

std::string& digestOf(Request& request) {
    return existingField(request.fields, "Content-Digest");
}

std::string sha512Of(const bytes& body) {
    return "sha-512=" + rawOctetField(rawDigest(EVP_sha512(), body));
}

struct Tampering {
    const char* name;
    void (*tamper)(Request&);
};

class TamperedRequest : public ::testing::TestWithParam<Tampering> {};

struct AnotherDraft {
    const char* name;
    void (*change)(RequestDraft&);
};

class AcceptedDraft : public ::testing::TestWithParam<AnotherDraft> {};
class RefusedDraft : public ::testing::TestWithParam<AnotherDraft> {};

struct SignedText {
    const char* name;
    std::string& (*of)(Request&);
    // Where it begins to be signed.
    std::size_t from;
};

class EachCharacter : public ::testing::TestWithParam<SignedText> {};

struct UncoveredChange {
    const char* name;
    void (*change)(Request&);
};

class UncoveredPart : public ::testing::TestWithParam<UncoveredChange> {};

template <typename Case>
std::string nameOfCase(const ::testing::TestParamInfo<Case>& test) {
    return test.param.name;
}

// Puts the body's digest into field and base.
void setDraftDigest(RequestDraft& draft, const std::string& digest) {
    digestOf(draft.request) = digest;
    lineOf(draft, "\"content-digest\"") = digest;
}

// Covers so many fields more, "x-0" and so on.
void addDraftFields(RequestDraft& draft, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = "x-" + std::to_string(i);
        draft.request.fields.emplace_back(name, "v");
        draft.signature.lines.emplace_back("\"" + name + "\"", "v");
    }
}

// Gives the sealed request fields of so many bytes in all.
void padDraftTo(RequestDraft& draft, std::size_t bytesOfFields) {
    draft.request.fields.emplace_back("X", "");
    std::size_t size = 0;
    for (const auto& [name, value] : sealed(draft).fields) {
        size += name.size() + value.size();
    }
    draft.request.fields.back().second.assign(bytesOfFields - size, 'p');
}

}  // namespace

TEST_P(TamperedRequest, IsRefused) {
    const Request whole = sealed(postDraft());
    EXPECT_TRUE(isAccepted(whole));
    Request tampered = whole;
    GetParam().tamper(tampered);
    EXPECT_TRUE(tampered.method != whole.method || tampered.targetUri != whole.targetUri ||
                tampered.fields != whole.fields || tampered.body != whole.body);
    EXPECT_FALSE(isAccepted(tampered));
}

INSTANTIATE_TEST_SUITE_P(
    Components, TamperedRequest,
    ::testing::Values(
        Tampering{"Method", [](Request& r) { r.method = "PUT"; }},
        Tampering{"MethodInSmallLetters", [](Request& r) { r.method = "post"; }},
        Tampering{"NoMethod", [](Request& r) { r.method = ""; }},
        Tampering{"Host", [](Request& r) { replaceOnce(r.targetUri, "service.", "other."); }},
        Tampering{"Port", [](Request& r) { replaceOnce(r.targetUri, "example/", "example:444/"); }},
        Tampering{"Path", [](Request& r) { replaceOnce(r.targetUri, "/v1", "/v2"); }},
        Tampering{"PathInCapitals", [](Request& r) { replaceOnce(r.targetUri, "messages", "Messages"); }},
        Tampering{"PathEncoded", [](Request& r) { replaceOnce(r.targetUri, "messages", "%6Dessages"); }},
        Tampering{"PathWithASlash", [](Request& r) { replaceOnce(r.targetUri, "messages", "messages/"); }},
        Tampering{"Query", [](Request& r) { replaceOnce(r.targetUri, "report", "other"); }},
        Tampering{"NoQuery", [](Request& r) { replaceOnce(r.targetUri, "?kind=report", ""); }},
        Tampering{"EmptyQuery", [](Request& r) { replaceOnce(r.targetUri, "?kind=report", "?"); }},
        Tampering{"LongerQuery", [](Request& r) { r.targetUri += "&a=b"; }},
        Tampering{"NoUri", [](Request& r) { r.targetUri = ""; }},
        Tampering{"RelativeUri", [](Request& r) { r.targetUri = "/v1/messages?kind=report"; }},
        Tampering{"ContentType", [](Request& r) { existingField(r.fields, "Content-Type") = "text/html"; }},
        Tampering{"NoContentType", [](Request& r) { removeField(r.fields, "Content-Type"); }},
        Tampering{"EmptyContentType", [](Request& r) { existingField(r.fields, "Content-Type") = ""; }},
        Tampering{"SecondContentType",
                  [](Request& r) { r.fields.emplace_back("content-type", "text/html"); }},
        Tampering{"SameContentTypeTwice",
                  [](Request& r) { r.fields.emplace_back("Content-Type", "text/plain"); }},
        Tampering{"SecondEmptyContentType", [](Request& r) { r.fields.emplace_back("Content-Type", ""); }},
        Tampering{"ContentTypeOfTwoLines",
                  [](Request& r) { existingField(r.fields, "Content-Type") = "text/plain\n\"x\": y"; }}),
    nameOfCase<Tampering>);

INSTANTIATE_TEST_SUITE_P(
    Bodies, TamperedRequest,
    ::testing::Values(
        Tampering{"Body", [](Request& r) { r.body[0] ^= 1; }},
        Tampering{"NoBody", [](Request& r) { r.body.clear(); }},
        Tampering{"LongerBody", [](Request& r) { r.body.push_back(0); }},
        Tampering{"ShorterBody", [](Request& r) { r.body.pop_back(); }},
        Tampering{"BodyWithItsDigest",
                  [](Request& r) {
                      r.body = octetsOf("other");
                      digestOf(r) = rawContentDigest(r.body);
                  }},
        Tampering{"NoBodyWithItsDigest",
                  [](Request& r) {
                      r.body.clear();
                      digestOf(r) = rawContentDigest({});
                  }},
        Tampering{"WrongDigest", [](Request& r) { digestOf(r) = rawContentDigest({}); }},
        Tampering{"NoDigest", [](Request& r) { removeField(r.fields, "Content-Digest"); }},
        Tampering{"EmptyDigest", [](Request& r) { digestOf(r) = ""; }},
        Tampering{"DigestBySha512Only", [](Request& r) { digestOf(r) = sha512Of(r.body); }},
        Tampering{"DigestBySha512Too", [](Request& r) { digestOf(r) += ", " + sha512Of(r.body); }},
        Tampering{"DigestTwice", [](Request& r) { digestOf(r) += ", " + digestOf(r); }},
        Tampering{"DigestOnASecondLine",
                  [](Request& r) { r.fields.emplace_back("Content-Digest", digestOf(r)); }},
        Tampering{"SecondDigestFirst",
                  [](Request& r) {
                      r.fields.insert(r.fields.begin(), {"Content-Digest", rawContentDigest({})});
                  }},
        Tampering{"DigestWithAParameter", [](Request& r) { digestOf(r) += ";a"; }},
        Tampering{"DigestAsAString",
                  [](Request& r) {
                      replaceOnce(digestOf(r), "sha-256=:", "sha-256=\"");
                      digestOf(r).back() = '"';
                  }}),
    nameOfCase<Tampering>);

INSTANTIATE_TEST_SUITE_P(
    Lists, TamperedRequest,
    ::testing::Values(
        Tampering{"WithoutMethod", [](Request& r) { replaceOnce(inputOf(r), "\"@method\" ", ""); }},
        Tampering{"WithoutAuthority", [](Request& r) { replaceOnce(inputOf(r), "\"@authority\" ", ""); }},
        Tampering{"WithoutPath", [](Request& r) { replaceOnce(inputOf(r), "\"@path\" ", ""); }},
        Tampering{"WithoutQuery", [](Request& r) { replaceOnce(inputOf(r), "\"@query\" ", ""); }},
        Tampering{"WithoutDigest", [](Request& r) { replaceOnce(inputOf(r), "\"content-digest\" ", ""); }},
        Tampering{"WithoutContentType", [](Request& r) { replaceOnce(inputOf(r), " \"content-type\"", ""); }},
        Tampering{"Empty", [](Request& r) { inputOf(r) = std::string("vorl=()") + DRAFT_PARAMETERS; }},
        Tampering{"OtherOrder",
                  [](Request& r) { replaceOnce(inputOf(r), R"("@path" "@query")", R"("@query" "@path")"); }},
        Tampering{"Longer", [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\" \"host\""); }},
        Tampering{"Unknown", [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\" \"@x\""); }},
        Tampering{"OfAFieldThatIsNotThere",
                  [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\" \"x\""); }},
        Tampering{"Twice", [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\" \"@path\""); }},
        Tampering{"TwiceAtTheEnd",
                  [](Request& r) { replaceOnce(inputOf(r), "-type\"", "-type\" \"@path\""); }},
        Tampering{
            "Parameters",
            [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\" \"@signature-params\""); }},
        Tampering{"Req", [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\";req"); }},
        Tampering{"Sf", [](Request& r) { replaceOnce(inputOf(r), "-type\"", "-type\";sf"); }},
        Tampering{"Capital", [](Request& r) { replaceOnce(inputOf(r), "\"content-t", "\"Content-t"); }},
        Tampering{"Token", [](Request& r) { replaceOnce(inputOf(r), "\"content-type\"", "content-type"); }},
        Tampering{"Comma", [](Request& r) { replaceOnce(inputOf(r), "\"@path\" ", "\"@path\", "); }}),
    nameOfCase<Tampering>);

INSTANTIATE_TEST_SUITE_P(
    Parameters, TamperedRequest,
    ::testing::Values(
        Tampering{"Created", [](Request& r) { replaceOnce(inputOf(r), "created=1700000000", "created=1700000001"); }},
        Tampering{"NoCreated", [](Request& r) { replaceOnce(inputOf(r), ";created=1700000000", ""); }},
        Tampering{"CreatedTwice",
                  [](Request& r) { replaceOnce(inputOf(r), ";expires", ";created=1700000000;expires"); }},
        Tampering{"CreatedAsAString",
                  [](Request& r) { replaceOnce(inputOf(r), "=1700000000", "=\"1700000000\""); }},
        Tampering{"CreatedAsADecimal", [](Request& r) { replaceOnce(inputOf(r), "=1700000000", "=1700000000.0"); }},
        Tampering{"CreatedOfSixteenDigits",
                  [](Request& r) { replaceOnce(inputOf(r), "=1700000000", "=0000001700000000"); }},
        Tampering{"Expires", [](Request& r) { replaceOnce(inputOf(r), "expires=1700000300", "expires=1700000301"); }},
        Tampering{"NoExpires", [](Request& r) { replaceOnce(inputOf(r), ";expires=1700000300", ""); }},
        Tampering{"ExpiresTwice",
                  [](Request& r) { replaceOnce(inputOf(r), ";nonce", ";expires=1700000300;nonce"); }},
        Tampering{"ExpiresAsABoolean", [](Request& r) { replaceOnce(inputOf(r), "expires=1700000300", "expires"); }},
        Tampering{"Nonce", [](Request& r) { replaceOnce(inputOf(r), "\"AAEC", "\"BAEC"); }},
        Tampering{"NoNonce",
                  [](Request& r) { replaceOnce(inputOf(r), ";nonce=\"AAECAwQFBgcICQoLDA0ODw==\"", ""); }},
        Tampering{"NonceTwice", [](Request& r) { replaceOnce(inputOf(r), ";keyid", ";nonce=\"a\";keyid"); }},
        Tampering{"EmptyNonce",
                  [](Request& r) { replaceOnce(inputOf(r), "AAECAwQFBgcICQoLDA0ODw==", ""); }},
        Tampering{"NonceAsOctets",
                  [](Request& r) {
                      replaceOnce(inputOf(r), "\"AAECAwQFBgcICQoLDA0ODw==\"", ":AAECAwQFBgcICQoLDA0ODw==:");
                  }},
        Tampering{"Keyid", [](Request& r) { replaceOnce(inputOf(r), "device-7", "device-8"); }},
        Tampering{"NoKeyid", [](Request& r) { replaceOnce(inputOf(r), ";keyid=\"device-7\"", ""); }},
        Tampering{"KeyidTwice", [](Request& r) { inputOf(r) += ";keyid=\"device-7\""; }},
        Tampering{"KeyidAsAToken", [](Request& r) { replaceOnce(inputOf(r), "\"device-7\"", "device-7"); }},
        Tampering{"Algorithm", [](Request& r) { replaceOnce(inputOf(r), "hmac-sha256", "hmac-sha512"); }},
        Tampering{"AlgorithmNone", [](Request& r) { replaceOnce(inputOf(r), "hmac-sha256", "none"); }},
        Tampering{"AlgorithmInCapitals", [](Request& r) { replaceOnce(inputOf(r), "hmac-sha256", "HMAC-SHA256"); }},
        Tampering{"NoAlgorithm", [](Request& r) { replaceOnce(inputOf(r), ";alg=\"hmac-sha256\"", ""); }},
        Tampering{"AlgorithmTwice", [](Request& r) { inputOf(r) += ";alg=\"hmac-sha256\""; }},
        Tampering{"AlgorithmAsAToken",
                  [](Request& r) { replaceOnce(inputOf(r), "\"hmac-sha256\"", "hmac-sha256"); }},
        Tampering{"Tag", [](Request& r) { replaceOnce(inputOf(r), "vorl-1", "vorl-2"); }},
        Tampering{"NoTag", [](Request& r) { replaceOnce(inputOf(r), ";tag=\"vorl-1\"", ""); }},
        Tampering{"TagTwice", [](Request& r) { inputOf(r) += ";tag=\"vorl-1\""; }},
        Tampering{"TagAsAToken", [](Request& r) { replaceOnce(inputOf(r), "\"vorl-1\"", "vorl-1"); }},
        Tampering{"CreatedBehindExpires",
                  [](Request& r) {
                      replaceOnce(inputOf(r), ";created=1700000000;expires=1700000300",
                                  ";expires=1700000300;created=1700000000");
                  }},
        Tampering{"KeyidAtTheEnd",
                  [](Request& r) {
                      replaceOnce(inputOf(r), ";keyid=\"device-7\"", "");
                      inputOf(r) += ";keyid=\"device-7\"";
                  }},
        Tampering{"None", [](Request& r) { replaceOnce(inputOf(r), DRAFT_PARAMETERS, ""); }},
        Tampering{"Another", [](Request& r) { inputOf(r) += ";more=1"; }},
        Tampering{"OnAComponent",
                  [](Request& r) { replaceOnce(inputOf(r), "\"@path\"", "\"@path\";created=1700000000"); }}),
    nameOfCase<Tampering>);

INSTANTIATE_TEST_SUITE_P(
    Signatures, TamperedRequest,
    ::testing::Values(
        Tampering{"OfThirtyOneOctets",
                  [](Request& r) {
                      signatureOf(r) =
                          "vorl=" + rawOctetField(slice(postDraft().signature.code(DRAFT_KEY), 0, 31));
                  }},
        Tampering{"OfThirtyThreeOctets",
                  [](Request& r) {
                      signatureOf(r) =
                          "vorl=" + rawOctetField(postDraft().signature.code(DRAFT_KEY) + bytes{0});
                  }},
        Tampering{"OfNoOctets", [](Request& r) { signatureOf(r) = "vorl=::"; }},
        Tampering{"OfZeros", [](Request& r) { signatureOf(r) = "vorl=" + rawOctetField(bytes(32)); }},
        Tampering{"ByAnotherKey",
                  [](Request& r) {
                      signatureOf(r) = "vorl=" + rawOctetField(postDraft().signature.code(octets(31)));
                  }},
        Tampering{
            "ByNoKey",
            [](Request& r) { signatureOf(r) = "vorl=" + rawOctetField(postDraft().signature.code({})); }},
        Tampering{"NoBase64", [](Request& r) { replaceOnce(signatureOf(r), "vorl=:", "vorl=:!"); }},
        Tampering{"WithoutPadding", [](Request& r) { signatureOf(r).erase(signatureOf(r).size() - 2, 1); }},
        Tampering{"AsAString",
                  [](Request& r) {
                      signatureOf(r) =
                          "vorl=\"" + toText(rawBase64(postDraft().signature.code(DRAFT_KEY))) + "\"";
                  }},
        Tampering{"AsAList",
                  [](Request& r) {
                      signatureOf(r) = "vorl=(" + rawOctetField(postDraft().signature.code(DRAFT_KEY)) + ")";
                  }},
        Tampering{"WithAParameter", [](Request& r) { signatureOf(r) += ";a=1"; }},
        Tampering{"WithAnAlgorithm", [](Request& r) { signatureOf(r) += ";alg=\"hmac-sha256\""; }},
        Tampering{"WithAFlag", [](Request& r) { signatureOf(r) += ";a"; }},
        Tampering{"Alone", [](Request& r) { signatureOf(r) = "vorl"; }},
        Tampering{"Removed", [](Request& r) { removeField(r.fields, "Signature"); }},
        Tampering{"Emptied", [](Request& r) { signatureOf(r) = ""; }},
        Tampering{"TwiceInTheField", [](Request& r) { signatureOf(r) += ", " + signatureOf(r); }},
        Tampering{"TwiceOnTwoLines", [](Request& r) { r.fields.emplace_back("Signature", signatureOf(r)); }},
        Tampering{"AnotherBefore",
                  [](Request& r) { signatureOf(r).insert(0, "vorl=" + rawOctetField(bytes(32)) + ", "); }},
        Tampering{"AnotherBehindIt",
                  [](Request& r) { r.fields.emplace_back("signature", "vorl=" + rawOctetField(bytes(32))); }},
        Tampering{"OfAnotherLabel", [](Request& r) { replaceOnce(signatureOf(r), "vorl=", "verl="); }},
        Tampering{"CommaBehindIt", [](Request& r) { signatureOf(r) += ","; }},
        Tampering{"EmptyLineBehindIt", [](Request& r) { r.fields.emplace_back("Signature", ""); }},
        Tampering{"UnreadableOneBehindIt", [](Request& r) { r.fields.emplace_back("Signature", "x=1.5"); }},
        Tampering{"InputRemoved", [](Request& r) { removeField(r.fields, "Signature-Input"); }},
        Tampering{"InputTwiceInTheField", [](Request& r) { inputOf(r) += ", " + inputOf(r); }},
        Tampering{"InputTwiceOnTwoLines",
                  [](Request& r) { r.fields.emplace_back("Signature-Input", inputOf(r)); }},
        Tampering{"AnotherInputBefore",
                  [](Request& r) {
                      r.fields.insert(r.fields.begin(), {"Signature-Input", "vorl=()"});
                  }},
        Tampering{"InputOfAnotherLabel", [](Request& r) { replaceOnce(inputOf(r), "vorl=", "verl="); }},
        Tampering{"BothOfAnotherLabel",
                  [](Request& r) {
                      replaceOnce(inputOf(r), "vorl=", "verl=");
                      replaceOnce(signatureOf(r), "vorl=", "verl=");
                  }},
        Tampering{"InputAsAnItem", [](Request& r) { inputOf(r) = std::string("vorl=1") + DRAFT_PARAMETERS; }},
        Tampering{"InputCutShort", [](Request& r) { inputOf(r).pop_back(); }},
        Tampering{"InputAndSignatureExchanged", [](Request& r) { inputOf(r).swap(signatureOf(r)); }}),
    nameOfCase<Tampering>);

// Whatever the tables forget.
TEST_P(EachCharacter, IsRefusedAsAnotherOne) {
    Request request = sealed(postDraft());
    EXPECT_TRUE(isAccepted(request));
    std::string& text = GetParam().of(request);
    for (std::size_t i = GetParam().from; i < text.size(); ++i) {
        const char whole = text[i];
        for (int bit = 0x01; bit <= 0x80; bit *= 2) {
            text[i] = static_cast<char>(whole ^ bit);
            EXPECT_FALSE(isAccepted(request)) << text;
        }
        text[i] = whole;
    }
}

TEST_P(EachCharacter, IsMissedWhenItIsGone) {
    const Request whole = sealed(postDraft());
    Request request = whole;
    const std::size_t size = GetParam().of(request).size();
    for (std::size_t i = GetParam().from; i < size; ++i) {
        request = whole;
        GetParam().of(request).erase(i, 1);
        EXPECT_FALSE(isAccepted(request)) << GetParam().of(request);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, EachCharacter,
    ::testing::Values(
        SignedText{"Method", [](Request& r) -> std::string& { return r.method; }, 0},
        SignedText{"PathAndQuery", [](Request& r) -> std::string& { return r.targetUri; },
                   std::string("https://service.example").size()},
        SignedText{"ContentType",
                   [](Request& r) -> std::string& { return existingField(r.fields, "Content-Type"); }, 0},
        SignedText{"Digest", digestOf, 0}, SignedText{"Input", inputOf, 0},
        SignedText{"Signature", signatureOf, 0}),
    nameOfCase<SignedText>);

TEST(TamperedRequestSignature, IsRefusedWithAnyOctetChanged) {
    const bytes code = postDraft().signature.code(DRAFT_KEY);
    for (std::size_t i = 0; i < code.size(); ++i) {
        for (const int bit : {0x01, 0x80}) {
            Request request = sealed(postDraft());
            bytes changed = code;
            changed[i] = static_cast<unsigned char>(changed[i] ^ bit);
            signatureOf(request) = "vorl=" + rawOctetField(changed);
            EXPECT_FALSE(isAccepted(request)) << i;
        }
    }
    Request request = sealed(postDraft());
    signatureOf(request) = "vorl=" + rawOctetField(code);
    EXPECT_TRUE(isAccepted(request));
}

// A body that nobody has signed must not ride along.
TEST(TamperedRequestWithoutABody, IsRefusedWithOne) {
    Request request = sealed(getDraft());
    EXPECT_TRUE(isAccepted(request));
    request.body = octetsOf("x");
    EXPECT_FALSE(isAccepted(request));
    request.fields.emplace_back("Content-Digest", rawContentDigest(request.body));
    request.fields.emplace_back("Content-Type", "text/plain");
    EXPECT_FALSE(isAccepted(request));
}

TEST(ReflectedRequest, IsNoSignatureOfAResponse) {
    const Request request = sealed(postDraft());
    tarvik::http::HttpResponse reflected;
    reflected.headerFields = request.fields;
    reflected.content = request.body;
    EXPECT_FALSE(isAccepted(reflected));
    reflected.answered = request;
    EXPECT_FALSE(isAccepted(reflected));
}

TEST(VerifiedRequest, IsByTheKeyOfItsKeyidOnly) {
    const Request request = sealed(postDraft());
    EXPECT_TRUE(HttpRequestSigner(DRAFT_KEY, profileAt(DRAFT_TIME)).verifyRequest(DRAFT_KEYID, request));
    for (const char* keyid : {"", "device-8", "device-", "device-77", "Device-7"}) {
        EXPECT_FALSE(HttpRequestSigner(DRAFT_KEY, profileAt(DRAFT_TIME)).verifyRequest(keyid, request))
            << keyid;
    }
    EXPECT_FALSE(HttpRequestSigner(octets(31), profileAt(DRAFT_TIME)).verifyRequest(DRAFT_KEYID, request));
}

TEST_P(UncoveredPart, MayChangeOnTheWay) {
    Request request = sealed(postDraft());
    GetParam().change(request);
    EXPECT_TRUE(isAccepted(request));
}

INSTANTIATE_TEST_SUITE_P(
    Changes, UncoveredPart,
    ::testing::Values(
        UncoveredChange{"HostInCapitals", [](Request& r) { replaceOnce(r.targetUri, "service", "SERVICE"); }},
        UncoveredChange{"PortOfTheScheme",
                        [](Request& r) { replaceOnce(r.targetUri, "example/", "example:443/"); }},
        // Who needs it covered adds "@scheme" to the components of the profile.
        UncoveredChange{"Scheme", [](Request& r) { replaceOnce(r.targetUri, "https:", "http:"); }},
        UncoveredChange{"AnotherField", [](Request& r) { r.fields.emplace_back("Via", "1.1 proxy"); }},
        UncoveredChange{"OrderOfFields", [](Request& r) { std::reverse(r.fields.begin(), r.fields.end()); }},
        UncoveredChange{"NamesInCapitals",
                        [](Request& r) {
                            for (auto& [name, value] : r.fields) {
                                for (char& c : name) {
                                    c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
                                }
                            }
                        }},
        UncoveredChange{"BlanksAroundValues",
                        [](Request& r) {
                            for (auto& [name, value] : r.fields) {
                                value = " \t" + value + "\t ";
                            }
                        }},
        UncoveredChange{"SignatureOfAnotherBeside",
                        [](Request& r) {
                            inputOf(r).insert(0, "proxy=(\"via\");created=1, ");
                            signatureOf(r) += ", proxy=:AAAA:";
                        }},
        UncoveredChange{"SignatureOfAnotherBehind",
                        [](Request& r) {
                            r.fields.emplace_back("Signature-Input", "proxy=(\"via\");created=1");
                            r.fields.emplace_back("Signature", "proxy=:AAAA:");
                        }},
        UncoveredChange{"BlanksInTheInput",
                        [](Request& r) {
                            replaceOnce(inputOf(r), "\"@path\" ", "\"@path\"   ");
                            replaceOnce(inputOf(r), ";tag", ";  tag");
                        }}),
    nameOfCase<UncoveredChange>);

TEST_P(AcceptedDraft, IsSignedByTheRules) {
    RequestDraft draft = postDraft();
    GetParam().change(draft);
    EXPECT_TRUE(isAccepted(sealed(draft)));
}

INSTANTIATE_TEST_SUITE_P(
    Drafts, AcceptedDraft,
    ::testing::Values(
        AnotherDraft{"AsItIs", [](RequestDraft&) {}},
        AnotherDraft{"MethodChanged",
                     [](RequestDraft& d) {
                         d.request.method = "PUT";
                         lineOf(d, "\"@method\"") = "PUT";
                     }},
        AnotherDraft{"AnotherUri",
                     [](RequestDraft& d) {
                         d.request.targetUri = "http://Other.example:8080";
                         lineOf(d, "\"@authority\"") = "other.example:8080";
                         lineOf(d, "\"@path\"") = "/";
                         lineOf(d, "\"@query\"") = "?";
                     }},
        AnotherDraft{"AnotherBody",
                     [](RequestDraft& d) {
                         d.request.body = octetsOf("other");
                         setDraftDigest(d, rawContentDigest(d.request.body));
                     }},
        AnotherDraft{"NoBody",
                     [](RequestDraft& d) {
                         d.request.body.clear();
                         setDraftDigest(d, rawContentDigest({}));
                     }},
        AnotherDraft{"DigestBySha512Too",
                     [](RequestDraft& d) {
                         setDraftDigest(d,
                                        sha512Of(d.request.body) + ", " + rawContentDigest(d.request.body));
                     }},
        AnotherDraft{"ContentTypeOnTwoLines",
                     [](RequestDraft& d) {
                         d.request.fields.emplace_back("content-type", "text/html");
                         lineOf(d, "\"content-type\"") = "text/plain, text/html";
                     }},
        AnotherDraft{
            "OtherOrder",
            [](RequestDraft& d) { std::reverse(d.signature.lines.begin(), d.signature.lines.end()); }},
        AnotherDraft{"SixteenComponents", [](RequestDraft& d) { addDraftFields(d, 10); }},
        AnotherDraft{"8192BytesOfFields", [](RequestDraft& d) { padDraftTo(d, 8192); }},
        AnotherDraft{"ParametersInAnotherOrder",
                     [](RequestDraft& d) {
                         replaceOnce(d.signature.parameters, ";keyid=\"device-7\"", "");
                         d.signature.parameters += ";keyid=\"device-7\"";
                     }},
        AnotherDraft{"AParameterMore", [](RequestDraft& d) { d.signature.parameters += ";more=1"; }},
        AnotherDraft{
            "NonceOf64Characters",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, DRAFT_NONCE, std::string(64, 'n')); }},
        AnotherDraft{"EmptyNonce",
                     [](RequestDraft& d) { replaceOnce(d.signature.parameters, DRAFT_NONCE, ""); }},
        AnotherDraft{"ExpiresBeforeCreated",
                     [](RequestDraft& d) {
                         replaceOnce(d.signature.parameters, "created=1700000000", "created=1700000005");
                         replaceOnce(d.signature.parameters, "expires=1700000300", "expires=1700000000");
                     }}),
    nameOfCase<AnotherDraft>);

TEST_P(RefusedDraft, IsRefusedThoughItsCodeIsRight) {
    RequestDraft draft = postDraft();
    EXPECT_TRUE(isAccepted(sealed(draft)));
    GetParam().change(draft);
    EXPECT_FALSE(isAccepted(sealed(draft)));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, RefusedDraft,
    ::testing::Values(
        AnotherDraft{"WithoutMethod", [](RequestDraft& d) { dropLine(d, "\"@method\""); }},
        AnotherDraft{"WithoutAuthority", [](RequestDraft& d) { dropLine(d, "\"@authority\""); }},
        AnotherDraft{"WithoutPath", [](RequestDraft& d) { dropLine(d, "\"@path\""); }},
        AnotherDraft{"WithoutQuery", [](RequestDraft& d) { dropLine(d, "\"@query\""); }},
        AnotherDraft{"WithoutDigest", [](RequestDraft& d) { dropLine(d, "\"content-digest\""); }},
        AnotherDraft{"WithoutContentType", [](RequestDraft& d) { dropLine(d, "\"content-type\""); }},
        AnotherDraft{"Empty", [](RequestDraft& d) { d.signature.lines.clear(); }},
        AnotherDraft{"Twice", [](RequestDraft& d) { d.signature.lines.push_back(d.signature.lines[2]); }},
        AnotherDraft{"UnknownDerived", [](RequestDraft& d) { d.signature.lines.emplace_back("\"@x\"", ""); }},
        AnotherDraft{"Status", [](RequestDraft& d) { d.signature.lines.emplace_back("\"@status\"", "200"); }},
        AnotherDraft{"MissingField", [](RequestDraft& d) { d.signature.lines.emplace_back("\"x\"", ""); }},
        AnotherDraft{"Capital",
                     [](RequestDraft& d) { d.signature.lines.emplace_back("\"Host\"", "service.example"); }},
        AnotherDraft{"Req",
                     [](RequestDraft& d) { d.signature.lines.emplace_back("\"@method\";req", "POST"); }},
        AnotherDraft{
            "Sf", [](RequestDraft& d) { d.signature.lines.emplace_back("\"host\";sf", "service.example"); }},
        AnotherDraft{"ReqInsteadOfTheRequests",
                     [](RequestDraft& d) { d.signature.lines[0].first = "\"@method\";req"; }},
        AnotherDraft{"Token",
                     [](RequestDraft& d) { d.signature.lines.emplace_back("host", "service.example"); }},
        AnotherDraft{"SeventeenComponents", [](RequestDraft& d) { addDraftFields(d, 11); }},
        AnotherDraft{"8193BytesOfFields", [](RequestDraft& d) { padDraftTo(d, 8193); }},
        AnotherDraft{"ContentTypeInUtf8",
                     [](RequestDraft& d) {
                         existingField(d.request.fields, "Content-Type") = "\xc3\xa4";
                         lineOf(d, "\"content-type\"") = "\xc3\xa4";
                     }},
        AnotherDraft{"LineFeedInAValue",
                     [](RequestDraft& d) {
                         existingField(d.request.fields, "Content-Type") = "a\n\"x\": b";
                         lineOf(d, "\"content-type\"") = "a\n\"x\": b";
                     }}),
    nameOfCase<AnotherDraft>);

INSTANTIATE_TEST_SUITE_P(
    Digests, RefusedDraft,
    ::testing::Values(
        AnotherDraft{"OfAnotherBody", [](RequestDraft& d) { setDraftDigest(d, rawContentDigest({})); }},
        AnotherDraft{"BySha512Only", [](RequestDraft& d) { setDraftDigest(d, sha512Of(d.request.body)); }},
        AnotherDraft{"WrongBesideARightSha512",
                     [](RequestDraft& d) {
                         setDraftDigest(d, sha512Of(d.request.body) + ", " + rawContentDigest({}));
                     }},
        AnotherDraft{"Twice",
                     [](RequestDraft& d) {
                         const std::string digest = rawContentDigest(d.request.body);
                         setDraftDigest(d, digest + ", " + digest);
                     }},
        AnotherDraft{"OnTwoLines",
                     [](RequestDraft& d) {
                         const std::string digest = rawContentDigest(d.request.body);
                         d.request.fields.emplace_back("Content-Digest", digest);
                         lineOf(d, "\"content-digest\"") = digest + ", " + digest;
                     }},
        AnotherDraft{"Empty", [](RequestDraft& d) { setDraftDigest(d, ""); }},
        AnotherDraft{"Truncated",
                     [](RequestDraft& d) {
                         const bytes digest = rawDigest(EVP_sha256(), d.request.body);
                         setDraftDigest(d, "sha-256=" + rawOctetField(slice(digest, 0, 31)));
                     }}),
    nameOfCase<AnotherDraft>);

INSTANTIATE_TEST_SUITE_P(
    Parameters, RefusedDraft,
    ::testing::Values(
        AnotherDraft{"NoCreated",
                     [](RequestDraft& d) { replaceOnce(d.signature.parameters, ";created=1700000000", ""); }},
        AnotherDraft{
            "CreatedAsAString",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, "=1700000000", "=\"1700000000\""); }},
        AnotherDraft{"NoExpires",
                     [](RequestDraft& d) { replaceOnce(d.signature.parameters, ";expires=1700000300", ""); }},
        AnotherDraft{
            "ExpiresAsAString",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, "=1700000300", "=\"1700000300\""); }},
        AnotherDraft{"NoNonce",
                     [](RequestDraft& d) {
                         replaceOnce(d.signature.parameters, ";nonce=\"AAECAwQFBgcICQoLDA0ODw==\"", "");
                     }},
        AnotherDraft{
            "NonceOf65Characters",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, DRAFT_NONCE, std::string(65, 'n')); }},
        AnotherDraft{"NonceAsANumber",
                     [](RequestDraft& d) {
                         replaceOnce(d.signature.parameters, "\"AAECAwQFBgcICQoLDA0ODw==\"", "5");
                     }},
        AnotherDraft{"NoKeyid",
                     [](RequestDraft& d) { replaceOnce(d.signature.parameters, ";keyid=\"device-7\"", ""); }},
        AnotherDraft{"Keyid",
                     [](RequestDraft& d) { replaceOnce(d.signature.parameters, "device-7", "device-8"); }},
        AnotherDraft{
            "KeyidAsAToken",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, "\"device-7\"", "device-7"); }},
        AnotherDraft{
            "NoAlgorithm",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, ";alg=\"hmac-sha256\"", ""); }},
        AnotherDraft{
            "Algorithm",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, "hmac-sha256", "rsa-pss-sha512"); }},
        AnotherDraft{
            "AlgorithmAsAToken",
            [](RequestDraft& d) { replaceOnce(d.signature.parameters, "\"hmac-sha256\"", "hmac-sha256"); }},
        AnotherDraft{"NoTag",
                     [](RequestDraft& d) { replaceOnce(d.signature.parameters, ";tag=\"vorl-1\"", ""); }},
        AnotherDraft{"Tag", [](RequestDraft& d) { replaceOnce(d.signature.parameters, "vorl-1", "vorl-2"); }},
        AnotherDraft{"Twice", [](RequestDraft& d) { d.signature.parameters += ";tag=\"vorl-1\""; }},
        AnotherDraft{"None", [](RequestDraft& d) { d.signature.parameters = ""; }}),
    nameOfCase<AnotherDraft>);

INSTANTIATE_TEST_SUITE_P(
    Keys, RefusedDraft,
    ::testing::Values(AnotherDraft{"AnotherKey", [](RequestDraft& d) { d.key = octets(31); }},
                      AnotherDraft{"NoKey", [](RequestDraft& d) { d.key.clear(); }},
                      AnotherDraft{"AnotherLabel", [](RequestDraft& d) { d.signature.label = "sig1"; }}),
    nameOfCase<AnotherDraft>);

}  // namespace vorl::test
