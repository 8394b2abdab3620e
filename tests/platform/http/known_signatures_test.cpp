#include "octets.h"
#include "raw_base64.h"
#include "signed_messages.h"

#include <tarvik/crypto/HttpRequestSigner.h>

#include <gtest/gtest.h>

#include <string>

// Signatures of which the base and the code are known from elsewhere.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::HttpSignatureProfile;
using Request = tarvik::http::IHttpStream::Request;

// RFC 9421, appendix B.1.5.
const bytes SHARED_SECRET = rawUnbase64(
    octetsOf("uzvJfB4u3N0Jy4T7NZ75MDVcr8zSTInedJtkgcu46YW4XByzNJjxBdtjUkdJPBtbmHhIDi6pcl8jsasjlTMtDQ=="));

const char SHA_512_DIGEST[] =
    "sha-512=:WZDPaVn/7XgHaAy8pmojAkGWoRx2UFChF41A2svX+TaPm+AbwAgBWnrIiYllu7BNNyealdVLvRwEmTHWXvJwew==:";

// RFC 9421, appendix B.2.
Request testRequest() {
    return {"POST",
            "https://example.com/foo?param=Value&Pet=dog",
            {{"Host", "example.com"},
             {"Date", "Tue, 20 Apr 2021 02:07:55 GMT"},
             {"Content-Type", "application/json"},
             {"Content-Digest", SHA_512_DIGEST},
             {"Content-Length", "18"}},
            octetsOf(R"({"hello": "world"})")};
}

struct KnownSignature {
    const char* name;
    bytes key;
    std::string keyid;
    HttpSignatureProfile profile;
    Request request;
    std::string base;
    std::string signature;
};

// RFC 9421, appendix B.2.5.
KnownSignature rfc9421() {
    HttpSignatureProfile profile = profileAt(1618884473);
    profile.label = "sig-b25";
    profile.components = {"date", "@authority", "content-type"};
    profile.parameters = {"created", "keyid"};
    return {"Rfc9421B25",
            SHARED_SECRET,
            "test-shared-secret",
            profile,
            testRequest(),
            "\"date\": Tue, 20 Apr 2021 02:07:55 GMT\n"
            "\"@authority\": example.com\n"
            "\"content-type\": application/json\n"
            "\"@signature-params\": (\"date\" \"@authority\" \"content-type\")"
            ";created=1618884473;keyid=\"test-shared-secret\"",
            "sig-b25=:pxcQw6G3AjtMBQjwo8XzkZf/bws5LelbaMk5rGIGtE8=:"};
}

KnownSignature withAPort() {
    HttpSignatureProfile profile = profileAt(0);
    profile.components = {"@method", "@authority", "@path"};
    profile.parameters = {"created", "keyid", "alg"};
    return {"AuthorityWithAPort",
            fromHex("0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef"),
            "shared-key-1",
            profile,
            {"GET", "http://example.com:7000/5002/resource", {}, {}},
            "\"@method\": GET\n"
            "\"@authority\": example.com:7000\n"
            "\"@path\": /5002/resource\n"
            "\"@signature-params\": (\"@method\" \"@authority\" \"@path\")"
            ";created=0;keyid=\"shared-key-1\";alg=\"hmac-sha256\"",
            "vorl=:jvajJheXE4H/TqWfAn8m0d0Rx0XWYKADN/1P0qn+FLw=:"};
}

KnownSignature withADigest() {
    HttpSignatureProfile profile = profileAt(1618884473);
    profile.components = {"@method", "@authority", "@path", "content-digest", "content-type"};
    profile.parameters = {"created", "keyid", "alg"};
    Request request{"POST",
                    "https://example.com/foo",
                    {{"Content-Type", "application/json"}},
                    octetsOf(R"({"hello": "world"})")};
    return {
        "BodyWithADigest",
        SHARED_SECRET,
        "test-shared-secret",
        profile,
        request,
        "\"@method\": POST\n"
        "\"@authority\": example.com\n"
        "\"@path\": /foo\n"
        "\"content-digest\": sha-256=:X48E9qOokqqrvdts8nOJRJN3OWDUoyWxBf7kbu9DBPE=:\n"
        "\"content-type\": application/json\n"
        "\"@signature-params\": (\"@method\" \"@authority\" \"@path\" \"content-digest\" \"content-type\")"
        ";created=1618884473;keyid=\"test-shared-secret\";alg=\"hmac-sha256\"",
        "vorl=:LGBSsPkz9Ku3eThYqwoz1qigyzpeNDbHj5OyaVjkxQA=:"};
}

class KnownSignatures : public ::testing::TestWithParam<KnownSignature (*)()> {
protected:
    const KnownSignature known_ = GetParam()();
    HttpRequestSigner signer_{known_.key, known_.profile};
};

}  // namespace

TEST_P(KnownSignatures, AreMadeToTheCharacter) {
    Request request = known_.request;
    signer_.sign(known_.keyid, request);
    EXPECT_EQ(fieldOf(request.fields, "Signature"), known_.signature);
    EXPECT_EQ(signer_.signatureBase(known_.keyid, request), known_.base);
}

TEST_P(KnownSignatures, AreVerified) {
    Request request = known_.request;
    signer_.sign(known_.keyid, request);
    EXPECT_TRUE(signer_.verifyRequest(known_.keyid, request));
}

INSTANTIATE_TEST_SUITE_P(Published, KnownSignatures, ::testing::Values(rfc9421, withAPort, withADigest),
                         [](const auto& test) { return std::string(test.param().name); });

}  // namespace vorl::test
