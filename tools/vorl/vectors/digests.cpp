#include "vectors/sample_bytes.h"
#include "vectors/vector_json.h"
#include "vectors/vectors.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/HMAC.h"

#include <memory>

namespace vorl::tool {

namespace {

using Algo = std::shared_ptr<const DigestAlgo>;

Json digestJson(const Algo& algo, std::size_t messageBytes) {
    Digester digester(algo);
    digester.init();
    digester.update(sampleMessage(messageBytes));
    return {{"algorithm", algo->name},
            {"nid", algo->nid},
            {"messageBytes", messageBytes},
            {"digest", hexOf(digester.final())}};
}

Json hmacJson(const Algo& algo, std::size_t keyBytes, std::size_t messageBytes) {
    const bytes key = sampleBytes("vorl hmac", keyBytes);
    const bytes message = sampleMessage(messageBytes);
    HMAC hmac(key, algo);
    hmac.update(message);
    const bytes code = hmac.final();
    return {{"algorithm", algo->name},
            {"key", hexOf(key)},
            {"messageBytes", messageBytes},
            {"code", hexOf(code)},
            {"base64", textOf(hmac.hmac(message))}};
}

}  // namespace

Json digestVectors() {
    Json json = newVectors();
    json["digests"] = Json::array();
    json["hmacs"] = Json::array();
    for (const Algo& algo : {DigestAlgo::SHA1(), DigestAlgo::SHA224(), DigestAlgo::SHA256(),
                             DigestAlgo::SHA384(), DigestAlgo::SHA512()}) {
        // Around the last places where the length of the message still fits into its last block.
        for (const std::size_t size : {0, 1, 55, 56, 63, 64, 65, 111, 112, 127, 128, 129, 100000}) {
            json["digests"].push_back(digestJson(algo, size));
        }
        // Around the sizes from which on a key is replaced by its digest.
        for (const std::size_t keyBytes : {0, 20, 64, 65, 128, 129}) {
            json["hmacs"].push_back(hmacJson(algo, keyBytes, 0));
            json["hmacs"].push_back(hmacJson(algo, keyBytes, 50));
        }
    }
    return json;
}

}  // namespace vorl::tool
