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
        for (const std::size_t size :
             {0U, 1U, 55U, 56U, 63U, 64U, 65U, 111U, 112U, 127U, 128U, 129U, 100000U}) {
            json["digests"].push_back(digestJson(algo, size));
        }
        // Around the sizes from which on a key is replaced by its digest.
        for (const std::size_t keyBytes : {0U, 20U, 64U, 65U, 128U, 129U}) {
            json["hmacs"].push_back(hmacJson(algo, keyBytes, 0));
            json["hmacs"].push_back(hmacJson(algo, keyBytes, 50));
        }
    }
    return json;
}

}  // namespace vorl::tool
