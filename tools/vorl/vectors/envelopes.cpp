#include "inspect/levels.h"
#include "vectors/sample_bytes.h"
#include "vectors/vector_json.h"
#include "vectors/vectors.h"
#include "vorl/CipherSpec.h"
#include "vorl/EncryptionType.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>

#include <set>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

const unsigned char FULL = 2;
const unsigned char TEST = 1;
const unsigned char NONE = 0;

// Where something changes: the blocks of the cipher, the forms of the length, and the sizes that can be
// written but not read back, which are those of a body of whole fragments of 16384 bytes.
const std::size_t SIZES[] = {0,     1,     15,    16,    17,    111,   112,   127,   128,   16367, 16368,
                             16383, 16384, 16385, 32751, 32752, 32767, 32768, 65535, 65536, 65537};

VorlContext contextOf(const Level& level, const bytes& key) {
    VORLLib::type_ = level.type;
    return VorlContext(key);
}

Json envelopeJson(const Level& level, std::size_t size) {
    const std::string label = "vorl " + level.name + " " + std::to_string(size);
    const bytes key = sampleBytes(label + " key", level.spec().keySize);
    const bytes message = sampleMessage(size);
    VorlContext context = contextOf(level, key);
    const bytes text = [&] {
        const SampleRandom random(label + " iv");
        return context.encrypt(message);
    }();
    const bytes envelope = Base64::decode(text);
    Json json = {
        {"level", level.name}, {"version", level.version()}, {"messageBytes", size}, {"key", hexOf(key)}};
    if (level.spec().ivSize != 0) {
        json["iv"] = hexOf(sampleBytes(label + " iv", level.spec().ivSize));
    }
    json["envelopeBytes"] = envelope.size();
    addBytes(json, "envelope", envelope);
    addText(json, "base64", text);
    const bool isReadBack = level.version() == NONE ? size % 16384 != 0 : size % 16384 < 16368;
    if (!isReadBack) {
        json["refusal"] = refusalOf([&] { context.decrypt(text); });
    }
    return json;
}

// An envelope that a receiver refuses who holds a key, for a context of one level, and accepts some levels.
struct Refused {
    const char* name;
    unsigned char context;
    std::set<unsigned char> accepted;
    bytes envelope;
};

void accept(const std::set<unsigned char>& versions) {
    for (const Level& level : levels()) {
        VORLLib::setAllowedEncryptionType(level.type, versions.count(level.version()) != 0);
    }
}

Json refusedJson(const Refused& refused, const bytes& key) {
    const Level& level = *levelOfVersion(refused.context);
    VorlContext context = contextOf(level, key);
    const bytes text = Base64::encode(refused.envelope);
    Json json = {{"name", refused.name}, {"contextLevel", level.name}, {"key", hexOf(key)}};
    json["acceptedLevels"] = Json::array();
    for (const unsigned char version : refused.accepted) {
        json["acceptedLevels"].push_back(levelOfVersion(version)->name);
    }
    json["base64"] = textOf(text);
    accept(refused.accepted);
    json["refusal"] = refusalOf([&] { context.decrypt(text); });
    accept({NONE, TEST, FULL});
    return json;
}

Json refusedEnvelopes() {
    const bytes key = sampleBytes("vorl refused key", 16);
    const auto sealed = [&key](unsigned char version) {
        const SampleRandom random("vorl refused iv");
        return Base64::decode(contextOf(*levelOfVersion(version), key).encrypt(sampleMessage(5)));
    };
    const bytes full = sealed(FULL);
    bytes extended = full;
    extended.push_back(0x00);
    const bytes cut(full.begin(), full.end() - 1);
    bytes otherVersion = full;
    otherVersion.front() = 0x7f;
    bytes shortIv = {FULL, 0x08};
    shortIv.insert(shortIv.end(), full.begin() + 2, full.begin() + 10);
    shortIv.insert(shortIv.end(), full.begin() + 18, full.end());
    // In CBC, what changes here is the last byte of the only block, which says how much padding there is.
    bytes damaged = full;
    damaged[17] ^= 0xff;
    const Refused REFUSED[] = {
        {"nothing at all", FULL, {FULL}, {}},
        {"an unknown version", FULL, {NONE, TEST, FULL}, otherVersion},
        {"a level that is not accepted", FULL, {FULL}, sealed(TEST)},
        {"a message without encryption that is not accepted", NONE, {TEST, FULL}, sealed(NONE)},
        {"a message without encryption, for a context with encryption",
         FULL,
         {NONE, TEST, FULL},
         sealed(NONE)},
        {"another level than that of the context", TEST, {NONE, TEST, FULL}, full},
        {"an IV of 8 bytes", FULL, {FULL}, shortIv},
        {"a body that is cut short", FULL, {FULL}, cut},
        {"a byte behind the body", FULL, {FULL}, extended},
        {"a byte behind a body that is not encrypted", NONE, {NONE}, {NONE, 0x01, 'a', 'b'}},
        {"damaged padding", FULL, {FULL}, damaged},
    };
    Json all = Json::array();
    for (const Refused& refused : REFUSED) {
        all.push_back(refusedJson(refused, key));
    }
    return all;
}

}  // namespace

Json envelopeVectors() {
    Json json = newVectors();
    json["envelopes"] = Json::array();
    for (const Level& level : levels()) {
        for (const std::size_t size : SIZES) {
            json["envelopes"].push_back(envelopeJson(level, size));
        }
    }
    json["refused"] = refusedEnvelopes();
    return json;
}

}  // namespace vorl::tool
