#include "vectors/sample_bytes.h"
#include "vectors/vector_json.h"
#include "vectors/vectors.h"
#include "vorl/ClientKeys.h"

#include <string>

namespace vorl::tool {

namespace {

Json keysJson(const char* material, const std::string& value, const ClientKeys& keys) {
    return {{material, value},
            {"encryptionKey", hexOf(keys.encryptionKey())},
            {"hmacKey", hexOf(keys.hmacKey())},
            {"text", keys.toString()}};
}

Json refusedSecret(std::size_t size) {
    const bytes secret = sampleBytes("vorl refused secret", size);
    return {{"secret", hexOf(secret)}, {"refusal", refusalOf([&] { const ClientKeys keys(secret); })}};
}

Json refusedIdentifier(const std::string& id) {
    return {{"identifier", id}, {"refusal", refusalOf([&] { const ClientKeys keys(id); })}};
}

}  // namespace

Json clientKeyVectors() {
    // As an agreement ends: the last byte of a secret is 0.
    bytes agreed = sampleBytes("vorl secret", 128);
    agreed.back() = 0;
    Json json = newVectors();
    json["ofSecrets"] = Json::array();
    for (const bytes& secret : {agreed, bytes(128, 0x00), sampleBytes("vorl secret 48", 48),
                                sampleBytes("vorl secret 64", 64), sampleBytes("vorl secret 129", 129)}) {
        json["ofSecrets"].push_back(keysJson("secret", hexOf(secret), ClientKeys(secret)));
    }
    json["ofIdentifiers"] = Json::array();
    for (const std::string& id : {std::string("123456789"), std::string("VORL-01-0000000000000001"),
                                  std::string("Gr\xc3\xbc\xc3\x9f"
                                              "e-01"),
                                  std::string("with a \0 zero", 13)}) {
        json["ofIdentifiers"].push_back(keysJson("identifier", id, ClientKeys(id)));
    }
    json["refusedSecrets"] = {refusedSecret(0), refusedSecret(47)};
    json["refusedIdentifiers"] = {refusedIdentifier(""), refusedIdentifier("12345678")};
    return json;
}

}  // namespace vorl::tool
