#include "http/content_digest.h"

#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {

namespace {

using tarvik::http::contentDigest;
using tarvik::http::isContentDigestOf;

// RFC 9530, appendix B.
const char SHA_256_OF_HELLO_LINE[] = "sha-256=:RK/0qy18MlBSVnWgjwz6lZEWjP/lF5HF9bvEF8FabDg=:";
const char SHA_256_OF_NOTHING[] = "sha-256=:47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=:";
const bytes HELLO_LINE = fromText("{\"hello\": \"world\"}\n");

std::string rawDigestMember(const EVP_MD* md, const char* name, const bytes& body) {
    return std::string(name) + "=:" + toText(rawBase64(rawDigest(md, body))) + ":";
}

std::string rightDigest() {
    return rawDigestMember(EVP_sha256(), "sha-256", HELLO_LINE);
}

std::string sha512Digest() {
    return rawDigestMember(EVP_sha512(), "sha-512", HELLO_LINE);
}

}  // namespace

TEST(ContentDigest, IsThePublishedOne) {
    EXPECT_EQ(contentDigest(HELLO_LINE), SHA_256_OF_HELLO_LINE);
    EXPECT_EQ(contentDigest({}), SHA_256_OF_NOTHING);
}

TEST(ContentDigest, IsTheSha256OfTheBody) {
    for (const std::size_t size : {1U, 55U, 64U, 1000U}) {
        EXPECT_EQ(contentDigest(octets(size)), rawDigestMember(EVP_sha256(), "sha-256", octets(size)))
            << size;
    }
}

TEST(ContentDigest, BelongsToItsBodyOnly) {
    EXPECT_TRUE(isContentDigestOf(rightDigest(), HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf(rightDigest(), {}));
    EXPECT_FALSE(isContentDigestOf(SHA_256_OF_NOTHING, HELLO_LINE));
    EXPECT_TRUE(isContentDigestOf(SHA_256_OF_NOTHING, {}));
}

TEST(ContentDigest, PassesOverDigestsByOtherAlgorithms) {
    EXPECT_TRUE(isContentDigestOf(sha512Digest() + ", " + rightDigest(), HELLO_LINE));
    EXPECT_TRUE(isContentDigestOf(rightDigest() + ", unixsum=30637", HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf(sha512Digest(), HELLO_LINE));
}

TEST(ContentDigest, IsNotReadFromAnythingElse) {
    const std::string digest = rightDigest();
    const std::string value = digest.substr(digest.find('='));
    const std::string base64 = digest.substr(9, 44);
    EXPECT_TRUE(isContentDigestOf("sha-256" + value, HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf("", HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf("sha-256", HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf("SHA-256" + value, HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf("sha-512" + value, HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf("sha-256=\"" + base64 + "\"", HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf("sha-256=(" + value.substr(1) + ")", HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf(digest + ", " + digest, HELLO_LINE));
    EXPECT_FALSE(isContentDigestOf(digest + ",", HELLO_LINE));
}

TEST(ContentDigest, HasAllOfItsOctetsAndNoMore) {
    const bytes right = rawDigest(EVP_sha256(), HELLO_LINE);
    const auto isAccepted = [](const bytes& digest) {
        return isContentDigestOf("sha-256=:" + toText(rawBase64(digest)) + ":", HELLO_LINE);
    };
    EXPECT_TRUE(isAccepted(right));
    EXPECT_FALSE(isAccepted(slice(right, 0, 31)));
    EXPECT_FALSE(isAccepted(right + bytes{0}));
    EXPECT_FALSE(isAccepted({}));
    for (std::size_t i = 0; i < right.size(); ++i) {
        bytes changed = right;
        changed[i] ^= 1;
        EXPECT_FALSE(isAccepted(changed)) << i;
    }
}

}  // namespace vorl::test
