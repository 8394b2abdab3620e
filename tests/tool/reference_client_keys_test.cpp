#include "reference_vectors.h"
#include "vorl/ClientKeys.h"

#include <string>

namespace vorl::test {
namespace {

void expectKeys(JsonFields& fields, const bytes& material, const ClientKeys& keys) {
    const bytes digest = rawDigest(EVP_sha384(), material);
    EXPECT_EQ(fields.octets("encryptionKey"), slice(digest, 0, 16)) << fields.place();
    EXPECT_EQ(fields.octets("hmacKey"), slice(digest, 16, 32)) << fields.place();
    EXPECT_EQ(keys.encryptionKey(), slice(digest, 0, 16)) << fields.place();
    EXPECT_EQ(keys.hmacKey(), slice(digest, 16, 32)) << fields.place();
    EXPECT_EQ(keys.toString(), fields.text("text")) << fields.place();
}

void expectKeysOfSecret(JsonFields& fields) {
    const bytes secret = fields.octets("secret");
    expectKeys(fields, secret, ClientKeys(secret));
}

void expectKeysOfIdentifier(JsonFields& fields) {
    const std::string id = fields.text("identifier");
    expectKeys(fields, fromText(id), ClientKeys(id));
}

void expectRefusedSecret(JsonFields& fields) {
    const bytes secret = fields.octets("secret");
    expectRefusal(fields, {"VORLException", "shared secret too small"},
                  [&] { const ClientKeys keys(secret); });
}

void expectRefusedIdentifier(JsonFields& fields) {
    const std::string id = fields.text("identifier");
    const std::string expected = "ShopperID/esn length (" + std::to_string(id.size()) + ") < 9";
    expectRefusal(fields, {"VORLException", expected}, [&] { const ClientKeys keys(id); });
}

TEST(ReferenceClientKeys, AreSlicesOfADigestOfTheirMaterial) {
    inReferenceFile("client_keys.json", [](JsonFields& file) {
        EXPECT_EQ(file.each("ofSecrets", expectKeysOfSecret), 5U);
        EXPECT_EQ(file.each("ofIdentifiers", expectKeysOfIdentifier), 4U);
        EXPECT_EQ(file.each("refusedSecrets", expectRefusedSecret), 2U);
        EXPECT_EQ(file.each("refusedIdentifiers", expectRefusedIdentifier), 2U);
    });
}

}  // namespace
}  // namespace vorl::test
