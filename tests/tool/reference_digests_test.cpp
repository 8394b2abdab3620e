#include "raw_base64.h"
#include "reference_vectors.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/HMAC.h"

#include <openssl/evp.h>

#include <map>
#include <memory>
#include <string>

namespace vorl::test {
namespace {

struct Algo {
    std::shared_ptr<const DigestAlgo> algo;
    const EVP_MD* md;
};

Algo algoNamed(const std::string& name) {
    const std::map<std::string, Algo> ALGOS = {{"SHA1", {DigestAlgo::SHA1(), EVP_sha1()}},
                                               {"SHA224", {DigestAlgo::SHA224(), EVP_sha224()}},
                                               {"SHA256", {DigestAlgo::SHA256(), EVP_sha256()}},
                                               {"SHA384", {DigestAlgo::SHA384(), EVP_sha384()}},
                                               {"SHA512", {DigestAlgo::SHA512(), EVP_sha512()}}};
    return ALGOS.at(name);
}

void expectDigest(JsonFields& fields) {
    const Algo algo = algoNamed(fields.text("algorithm"));
    const bytes message = sampleMessage(fields.number("messageBytes"));
    EXPECT_EQ(fields.number("nid"), static_cast<std::size_t>(EVP_MD_type(algo.md))) << fields.place();
    EXPECT_EQ(fields.octets("digest"), rawDigest(algo.md, message)) << fields.place();
    Digester digester(algo.algo);
    digester.init();
    digester.update(message);
    EXPECT_EQ(digester.final(), fields.octets("digest")) << fields.place();
}

void expectHmac(JsonFields& fields) {
    const Algo algo = algoNamed(fields.text("algorithm"));
    const bytes key = fields.octets("key");
    const bytes message = sampleMessage(fields.number("messageBytes"));
    const bytes code = rawHmac(algo.md, key, message);
    EXPECT_EQ(fields.octets("code"), code) << fields.place();
    EXPECT_EQ(fields.text("base64"), toText(rawBase64(code))) << fields.place();
    HMAC hmac(key, algo.algo);
    hmac.update(message);
    EXPECT_EQ(hmac.final(), code) << fields.place();
    EXPECT_EQ(hmac.hmac(message), rawBase64(code)) << fields.place();
}

TEST(ReferenceDigests, AreThoseOfOpenSSL) {
    inReferenceFile("digests.json", [](JsonFields& file) {
        EXPECT_EQ(file.each("digests", expectDigest), 5U * 13U);
        EXPECT_EQ(file.each("hmacs", expectHmac), 5U * 12U);
    });
}

}  // namespace
}  // namespace vorl::test
