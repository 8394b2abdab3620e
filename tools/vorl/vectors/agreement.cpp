#include "inspect/dh_numbers.h"
#include "vectors/sample_bytes.h"
#include "vectors/sample_keys.h"
#include "vectors/vector_json.h"
#include "vectors/vectors.h"
#include "vorl/BigNum.h"
#include "vorl/Buffer.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OctetString.h"
#include "vorl/OpenSSLException.h"
#include "vorl/safe_ptr.h"

#include <brisclient/Base64.h>

#include <openssl/bn.h>

#include <memory>
#include <stdexcept>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

const std::size_t GROUP_BYTES = 128;

// A key pair, and what it was made of. The private number is given, since how OpenSSL draws one differs from
// version to version.
struct SamplePair {
    std::string name;
    bytes privateNumber;
    bytes publicNumber;
    bytes state;
    std::unique_ptr<DiffieHellman> pair;
};

bytes power(const bytes& base, const bytes& exponent, const bytes& modulus) {
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context(BN_CTX_new(), BN_CTX_free);
    const std::shared_ptr<BIGNUM> result = safe_ptr(BN_new());
    if (!context || !result ||
        BN_mod_exp(result.get(), BigNum(base).getBIGNUM(), BigNum(exponent).getBIGNUM(),
                   BigNum(modulus).getBIGNUM(), context.get()) != 1) {
        OpenSSLException::throw_message("BN_mod_exp()", "agreement", __LINE__, __func__);
    }
    return BigNum(result.get()).encode();
}

bytes blocksOf(const std::vector<bytes>& numbers) {
    Buffer out;
    for (const bytes& number : numbers) {
        out.put(OctetString(number));
    }
    return out.toByteArray();
}

SamplePair pairIn(const GroupNumbers& group, const std::string& name, const bytes& privateNumber) {
    SamplePair made;
    made.name = name;
    made.privateNumber = privateNumber;
    made.publicNumber = power(group.generator, privateNumber, group.prime);
    made.state = blocksOf({group.prime, group.generator, made.publicNumber, privateNumber});
    Buffer in(made.state);
    made.pair = DiffieHellman::decode(in);
    return made;
}

std::vector<SamplePair> samplePairs(const GroupNumbers& group) {
    // Below 1024, a power of 2 is its own remainder, so that these have the sizes that are wanted.
    const bytes PUBLIC_OF_129_BYTES = {0x03, 0xff};
    const bytes PUBLIC_OF_127_BYTES = {0x03, 0xf2};
    const bytes PUBLIC_OF_51_BYTES = {0x01, 0x90};
    const bytes SMALLEST = {0x02};
    std::vector<SamplePair> pairs;
    pairs.push_back(pairIn(group, "first", sampleBytes("vorl agreement first", GROUP_BYTES - 1)));
    pairs.push_back(pairIn(group, "second", sampleBytes("vorl agreement second", GROUP_BYTES - 1)));
    pairs.push_back(pairIn(group, "public number with its top bit set", PUBLIC_OF_129_BYTES));
    pairs.push_back(pairIn(group, "public number of 127 bytes", PUBLIC_OF_127_BYTES));
    pairs.push_back(pairIn(group, "public number of 51 bytes", PUBLIC_OF_51_BYTES));
    pairs.push_back(pairIn(group, "public number of one byte", SMALLEST));
    return pairs;
}

Json groupJson(const DiffieHellmanParams& group, const GroupNumbers& numbers) {
    const std::string pem = SAMPLE_GROUP;
    std::string base64;
    // Between the first line and the last.
    const std::size_t begin = pem.find('\n') + 1;
    for (const char c : pem.substr(begin, pem.find("\n-----END") - begin)) {
        if (c != '\n') {
            base64 += c;
        }
    }
    Buffer encoded;
    group.encode(encoded);
    return {{"name", "RFC 2409, section 6.2"},
            {"pem", pem},
            {"der", hexOf(Base64::decode(bytesOf(base64)))},
            {"prime", hexOf(numbers.prime)},
            {"generator", hexOf(numbers.generator)},
            {"encoded", hexOf(encoded.toByteArray())},
            {"text", group.toString()}};
}

Json pairJson(const SamplePair& sample) {
    const bytes peerText = sample.pair->getPubKey();
    const std::unique_ptr<DHPubKey> record = DHPubKey::decodeB64(peerText);
    const bytes bareText = Base64::encode(record->key());
    return {{"name", sample.name},
            {"private", hexOf(sample.privateNumber)},
            {"public", hexOf(sample.publicNumber)},
            {"state", hexOf(sample.state)},
            {"text", sample.pair->toString()},
            {"versionTwo", textOf(peerText)},
            {"versionTwoText", record->toString()},
            {"versionOne", textOf(bareText)},
            {"versionOneText", DHPubKey::decodeB64(bareText)->toString()},
            {"formatted", record->toFormatString("peer", 60, 2, " ", 3)}};
}

Json secretJson(const SamplePair& own, const SamplePair& peer) {
    return {{"own", own.name},
            {"peer", peer.name},
            {"secret", hexOf(own.pair->computeSharedSecret(peer.pair->getPubKey()))}};
}

Json secretsJson(const std::vector<SamplePair>& pairs) {
    Json secrets = Json::array();
    for (const SamplePair& own : pairs) {
        for (const SamplePair& peer : pairs) {
            if (&own != &peer) {
                secrets.push_back(secretJson(own, peer));
            }
        }
    }
    return secrets;
}

bytes recordText(const bytes& key) {
    Buffer out;
    DHPubKey(key, DHPubKey::DEFAULT_VERSION).encode(out);
    return Base64::encode(out.toByteArray());
}

bytes padded(const bytes& number) {
    bytes key(GROUP_BYTES - number.size());
    key.insert(key.end(), number.begin(), number.end());
    return key;
}

// OpenSSL computes nothing with these, and what the library returns holds nothing.
Json refusedNumbers(const GroupNumbers& group, const SamplePair& own) {
    bytes primeMinusOne = group.prime;
    --primeMinusOne.back();
    Json all = Json::array();
    for (const bytes& number : {bytes{}, bytes{0x01}, primeMinusOne, group.prime}) {
        const bytes text = recordText(padded(number));
        all.push_back({{"number", hexOf(number)},
                       {"own", own.name},
                       {"peerText", textOf(text)},
                       {"secret", hexOf(own.pair->computeSharedSecret(text))}});
    }
    return all;
}

Json refusedText(const std::string& name, const SamplePair& own, const bytes& peerText) {
    return {{"name", name},
            {"own", own.name},
            {"peerText", textOf(peerText)},
            {"refusal", refusalOf([&] { static_cast<void>(own.pair->computeSharedSecret(peerText)); })}};
}

bytes base64OfRecord(unsigned char version, std::size_t keyBytes, std::size_t recordBytes) {
    bytes record = {0x00, 0x00, 0x00, version};
    const bytes block = blocksOf({sampleMessage(keyBytes)});
    record.insert(record.end(), block.begin(), block.end());
    record.resize(recordBytes);
    return Base64::encode(record);
}

Json refusedTexts(const SamplePair& own, const SamplePair& small, const SamplePair& peer) {
    return {refusedText("a bare key of 124 bytes", own, Base64::encode(sampleMessage(124))),
            refusedText("a whole record of 124 bytes", own, base64OfRecord(2, 119, 124)),
            refusedText("a key of 119 bytes in a record of 130", own, base64OfRecord(2, 119, 130)),
            refusedText("a key of 130 bytes", own, base64OfRecord(2, 130, 136)),
            refusedText("version 3", own, base64OfRecord(3, 128, 134)),
            refusedText("a key that is cut short", own, base64OfRecord(2, 128, 133)),
            refusedText("no Base64", own, bytesOf("no Base64 at all")),
            refusedText("nothing", own, bytes()),
            refusedText("a group of 512 bits", small, peer.pair->getPubKey())};
}

}  // namespace

Json agreementVectors() {
    const DiffieHellmanParams group{std::string(SAMPLE_GROUP)};
    const GroupNumbers numbers = numbersOf(group);
    const std::vector<SamplePair> pairs = samplePairs(numbers);
    const SamplePair small = pairIn(numbersOf(DiffieHellmanParams(std::string(SAMPLE_SMALL_GROUP))),
                                    "of 512 bits", sampleBytes("vorl agreement small", 63));
    Json json = newVectors();
    json["group"] = groupJson(group, numbers);
    json["pairs"] = Json::array();
    for (const SamplePair& pair : pairs) {
        json["pairs"].push_back(pairJson(pair));
    }
    json["smallPair"] = {
        {"name", small.name}, {"state", hexOf(small.state)}, {"text", small.pair->toString()}};
    json["secrets"] = secretsJson(pairs);
    json["refusedNumbers"] = refusedNumbers(numbers, pairs.front());
    json["refused"] = refusedTexts(pairs.front(), small, pairs.back());
    return json;
}

}  // namespace vorl::tool
