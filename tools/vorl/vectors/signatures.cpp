#include "vectors/sample_bytes.h"
#include "vectors/sample_keys.h"
#include "vectors/vector_json.h"
#include "vectors/vectors.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"

#include <memory>

namespace vorl::tool {

namespace {

struct SampleKey {
    const char* name;
    const char* privatePem;
    const char* publicPem;

    std::shared_ptr<PrivKey> privateKey() const { return PrivKey::loadFromPEMStr(privatePem); }
    std::shared_ptr<PubKey> publicKey() const { return PubKey::loadFromPEMStr(publicPem); }
};

Json keyJson(const SampleKey& key) {
    return {{"name", key.name},
            {"privatePem", key.privatePem},
            {"publicPem", key.publicPem},
            {"privateText", key.privateKey()->toString()},
            {"publicText", key.publicKey()->toString()},
            {"publicFormatted", key.publicKey()->toFormatString("key", 80, 2, ":", 3)}};
}

// The digest by its own class, beside the one that the signature is made of.
bytes sha1(const bytes& data) {
    Digester digester(DigestAlgo::SHA1());
    digester.init();
    digester.update(data);
    return digester.final();
}

Json signatureJson(const SampleKey& key, std::size_t messageBytes) {
    const bytes message = sampleMessage(messageBytes);
    const std::shared_ptr<const PKSignature> signature =
        PKSignatureProcessor::sign(key.privateKey(), message);
    return {{"key", key.name},
            {"messageBytes", messageBytes},
            {"digest", hexOf(sha1(message))},
            {"value", hexOf(signature->val())},
            {"record", hexOf(signature->encode())},
            {"base64", textOf(signature->encodeB64())},
            {"text", signature->toString()},
            {"formatted", signature->toFormatString("signature", 60, 1, " ", 2)}};
}

// A record of any value; none of these is a signature.
Json recordJson(std::size_t valueBytes) {
    const std::shared_ptr<const PKSignature01> record = PKSignature01::create(sampleMessage(valueBytes));
    const bytes encoded = record->encode();
    Json json = {{"valueBytes", valueBytes}, {"recordBytes", encoded.size()}};
    addBytes(json, "record", encoded);
    addText(json, "base64", record->encodeB64());
    return json;
}

Json mismatchJson(const char* name, const SampleKey& key, std::size_t messageBytes, const bytes& record) {
    return {{"name", name}, {"key", key.name}, {"messageBytes", messageBytes}, {"record", hexOf(record)}};
}

Json mismatches(const SampleKey& key, const SampleKey& other) {
    const bytes record = PKSignatureProcessor::sign(key.privateKey(), sampleMessage(20))->encode();
    bytes changed = record;
    changed.back() ^= 0x01;
    return {mismatchJson("another message", key, 21, record), mismatchJson("another key", other, 20, record),
            mismatchJson("another last bit", key, 20, changed),
            mismatchJson("an empty value", key, 20, {0x01, 0x00})};
}

Json refusedJson(const bytes& record) {
    return {{"record", hexOf(record)}, {"refusal", refusalOf([&] { PKSignature::decode(record); })}};
}

}  // namespace

Json signatureVectors() {
    const SampleKey KEYS[] = {{"RSA 1024", SAMPLE_RSA_1024, SAMPLE_RSA_1024_PUBLIC},
                              {"RSA 2048", SAMPLE_RSA_2048, SAMPLE_RSA_2048_PUBLIC}};
    Json json = newVectors();
    json["keys"] = Json::array();
    json["signatures"] = Json::array();
    for (const SampleKey& key : KEYS) {
        json["keys"].push_back(keyJson(key));
        for (const std::size_t size : {0U, 1U, 20U, 64U, 65U, 16384U, 100000U}) {
            json["signatures"].push_back(signatureJson(key, size));
        }
    }
    json["mismatches"] = mismatches(KEYS[0], KEYS[1]);
    json["records"] = Json::array();
    for (const std::size_t size : {0U, 1U, 127U, 128U, 16383U, 16384U, 16385U, 65536U, 65537U}) {
        json["records"].push_back(recordJson(size));
    }
    json["refused"] = {refusedJson({}), refusedJson({0x00}), refusedJson({0x02, 0x01, 0xff}),
                       refusedJson({0x01}), refusedJson({0x01, 0x05, 0xaa, 0xbb})};
    return json;
}

}  // namespace vorl::tool
