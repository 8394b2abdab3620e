#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"
#include "raw_http_signature.h"
#include "signed_messages.h"
#include "test_vectors.h"

#include <tarvik/crypto/HttpRequestSigner.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

// Signatures of which the base and the code are known from elsewhere.

namespace vorl::test {

namespace {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::HttpSignatureProfile;
using Fields = tarvik::http::IHttpStream::Fields;
using Request = tarvik::http::IHttpStream::Request;

struct KnownSignature {
    bytes key;
    std::string keyid;
    HttpSignatureProfile profile;
    Request request;
    std::string base;
    // What the message has more when it is signed.
    Fields added;
    bytes code;
};

// The values of "NAME 1", "NAME 2" and so on.
std::vector<std::string> numbered(TestVector& vector, const std::string& name) {
    std::vector<std::string> values;
    for (std::size_t i = 1; vector.has(name + " " + std::to_string(i)); ++i) {
        values.push_back(vector.text(name + " " + std::to_string(i)));
    }
    return values;
}

std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream in(list);
    for (std::string name; std::getline(in, name, ',');) {
        names.push_back(name);
    }
    return names;
}

Request requestIn(TestVector& vector) {
    Request request;
    std::string target;
    std::istringstream(vector.text("Request")) >> request.method >> target;
    for (const std::string& line : numbered(vector, "Field")) {
        const std::size_t colon = line.find(": ");
        request.fields.emplace_back(line.substr(0, colon), line.substr(colon + 2));
    }
    request.targetUri = "http://" + fieldOf(request.fields, "Host").value() + target;
    request.body = fromText(vector.has("Body") ? vector.text("Body") : "");
    return request;
}

KnownSignature known(TestVector& vector) {
    vector.text("Name");
    KnownSignature known;
    known.key = vector.has("Key in hex") ? vector.octets("Key in hex")
                                         : rawUnbase64(fromText(vector.text("Key in Base64")));
    known.keyid = vector.text("Keyid");
    known.request = requestIn(vector);

    const std::string signature = vector.text("Signature");
    const std::size_t equals = signature.find("=:");
    known.code = rawUnbase64(fromText(signature.substr(equals + 2, signature.size() - equals - 3)));

    known.profile = profileAt(std::stoll(vector.text("Created")));
    known.profile.label = signature.substr(0, equals);
    known.profile.components = namesIn(vector.text("Cover"));
    known.profile.parameters = namesIn(vector.text("Parameters"));

    const std::vector<std::string> lines = numbered(vector, "Base");
    for (const std::string& line : lines) {
        known.base += (known.base.empty() ? "" : "\n") + line;
    }
    if (vector.has("Base bytes")) {
        EXPECT_EQ(std::to_string(known.base.size()), vector.text("Base bytes"));
    }
    if (vector.has("Added digest")) {
        known.added.emplace_back("Content-Digest", vector.text("Added digest"));
    }
    const std::string parameters = lines.back().substr(lines.back().find(": ") + 2);
    known.added.emplace_back("Signature-Input", known.profile.label + "=" + parameters);
    known.added.emplace_back("Signature", signature);
    return known;
}

// All of them.
template <typename Use>
void forEachSignature(Use use) {
    const std::size_t count =
        forEachVector(VORL_TEST_VECTORS "/http_signatures.txt", [&](TestVector& vector) {
            SCOPED_TRACE(vector.place());
            use(known(vector));
        });
    EXPECT_EQ(count, 3U);
}

}  // namespace

TEST(KnownSignatures, AreMadeToTheCharacter) {
    forEachSignature([](const KnownSignature& known) {
        HttpRequestSigner signer(known.key, known.profile);
        EXPECT_EQ(signer.signatureBase(known.keyid, known.request), known.base);
        Request request = known.request;
        signer.sign(known.keyid, request);
        Fields expected = known.request.fields;
        expected.insert(expected.end(), known.added.begin(), known.added.end());
        EXPECT_EQ(request.fields, expected);
        EXPECT_EQ(signer.signatureBase(known.keyid, request), known.base);
    });
}

TEST(KnownSignatures, AreVerified) {
    forEachSignature([](const KnownSignature& known) {
        Request request = known.request;
        request.fields.insert(request.fields.end(), known.added.begin(), known.added.end());
        EXPECT_TRUE(HttpRequestSigner(known.key, known.profile).verifyRequest(known.keyid, request));
        EXPECT_FALSE(HttpRequestSigner(octets(64), known.profile).verifyRequest(known.keyid, request));
    });
}

TEST(KnownSignatures, AreOpenSSLsHmacOfTheirBase) {
    forEachSignature([](const KnownSignature& known) {
        EXPECT_EQ(known.code, rawHmac(EVP_sha256(), known.key, fromText(known.base)));
        const auto digest = fieldOf(known.added, "Content-Digest");
        EXPECT_EQ(digest.value_or(rawContentDigest(known.request.body)),
                  rawContentDigest(known.request.body));
    });
}

}  // namespace vorl::test
