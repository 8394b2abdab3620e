#include "dh_record.h"
#include "raw_base64.h"
#include "raw_keys.h"
#include "reference_vectors.h"
#include "vorl/Buffer.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"

#include <openssl/dh.h>
#include <openssl/pem.h>

#include <map>
#include <memory>
#include <string>

namespace vorl::test {
namespace {

const Group& AGREED_GROUP = RFC_2409_GROUP;

bytes rawDer(const Group& group) {
    unsigned char* der = nullptr;
    const int size = i2d_DHparams(rawDh(group).get(), &der);
    raw_keys::require(size > 0, "i2d_DHparams");
    const bytes copy(der, der + size);
    OPENSSL_free(der);
    return copy;
}

std::string rawPem(const Group& group) {
    return rawText([&](BIO* bio) { return PEM_write_bio_DHparams(bio, rawDh(group).get()); });
}

std::unique_ptr<DiffieHellman> stateIn(const bytes& state) {
    Buffer in(state);
    return DiffieHellman::decode(in);
}

bytes stateOf(const Group& group, const Number& privateNumber) {
    return block(bytesOf(group.p())) + block(bytesOf(group.g())) +
           block(bytesOf(group.raise(privateNumber.get()))) + block(bytesOf(privateNumber));
}

bytes encodingOf(const DiffieHellman& pair) {
    Buffer out;
    pair.encode(out);
    return out.toByteArray();
}

// Padded to the size of the group, and by one byte more where the number would look negative.
bytes exported(const bytes& publicNumber) {
    const bytes key = paddedTo(128, publicNumber);
    return (key.front() >= 0x80 ? bytes{0x00} : bytes()) + key;
}

void expectGroup(JsonFields& fields) {
    const bytes encoded = block(bytesOf(AGREED_GROUP.p())) + block(bytesOf(AGREED_GROUP.g()));
    EXPECT_EQ(fields.text("name"), "RFC 2409, section 6.2");
    EXPECT_EQ(fields.octets("prime"), bytesOf(AGREED_GROUP.p()));
    EXPECT_EQ(fields.octets("generator"), bytesOf(AGREED_GROUP.g()));
    EXPECT_EQ(fields.text("pem"), rawPem(AGREED_GROUP));
    EXPECT_EQ(fields.octets("der"), rawDer(AGREED_GROUP));
    EXPECT_EQ(fields.octets("encoded"), encoded);

    const DiffieHellmanParams fromPem(fields.text("pem"));
    const DiffieHellmanParams fromDer(fields.octets("der"));
    Buffer in(encoded);
    const std::unique_ptr<DiffieHellmanParams> fromBlocks = DiffieHellmanParams::decode(in);
    EXPECT_EQ(fromPem, fromDer);
    EXPECT_EQ(fromPem, *fromBlocks);
    EXPECT_EQ(fromDer.toString(), fields.text("text"));
    Buffer out;
    fromPem.encode(out);
    EXPECT_EQ(out.toByteArray(), encoded);
}

// A pair as the file gives it, for what is done with two of them.
struct Pair {
    Number privateNumber;
    Number publicNumber;
    std::unique_ptr<DiffieHellman> pair;
    bytes versionOne;
    bytes versionTwo;
};

void expectPeerRecord(JsonFields& fields, const char* name, const bytes& record, unsigned int version,
                      const bytes& key) {
    EXPECT_EQ(fields.text(name), toText(rawBase64(record))) << fields.place();
    const std::unique_ptr<DHPubKey> decoded = DHPubKey::decodeB64(fromText(fields.text(name)));
    EXPECT_EQ(decoded->version().val(), version) << fields.place();
    EXPECT_EQ(decoded->key(), key) << fields.place();
    EXPECT_EQ(decoded->toString(), fields.text(std::string(name) + "Text")) << fields.place();
}

Pair pairIn(JsonFields& fields) {
    Pair given;
    given.privateNumber = numberFrom(fields.octets("private"));
    given.publicNumber = AGREED_GROUP.raise(given.privateNumber.get());
    const bytes state = stateOf(AGREED_GROUP, given.privateNumber);
    EXPECT_EQ(fields.octets("public"), bytesOf(given.publicNumber)) << fields.place();
    EXPECT_EQ(fields.octets("state"), state) << fields.place();
    given.pair = stateIn(fields.octets("state"));
    EXPECT_EQ(encodingOf(*given.pair), state) << fields.place();
    EXPECT_EQ(given.pair->toString(), fields.text("text")) << fields.place();

    const bytes key = exported(bytesOf(given.publicNumber));
    expectPeerRecord(fields, "versionTwo", dhRecord(key), 2, key);
    expectPeerRecord(fields, "versionOne", key, 1, key);
    given.versionTwo = fromText(fields.text("versionTwo"));
    given.versionOne = fromText(fields.text("versionOne"));
    EXPECT_EQ(given.pair->getPubKey(), given.versionTwo) << fields.place();
    EXPECT_EQ(DHPubKey::decodeB64(given.versionTwo)->toFormatString("peer", 60, 2, " ", 3),
              fields.text("formatted"))
        << fields.place();
    return given;
}

void expectSecret(JsonFields& fields, const std::map<std::string, Pair>& pairs) {
    const Pair& own = pairs.at(fields.text("own"));
    const Pair& peer = pairs.at(fields.text("peer"));
    const bytes secret =
        secretOf(power(peer.publicNumber.get(), own.privateNumber.get(), AGREED_GROUP.p().get()).get());
    EXPECT_EQ(fields.octets("secret"), secret) << fields.place();
    EXPECT_EQ(own.pair->computeSharedSecret(peer.versionTwo), secret) << fields.place();
    EXPECT_EQ(own.pair->computeSharedSecret(peer.versionOne), secret) << fields.place();
}

// What OpenSSL refuses leaves the secret empty; the peer's number comes from the group.
void expectRefusedNumber(JsonFields& fields, const std::map<std::string, Pair>& pairs, const bytes& number) {
    EXPECT_EQ(fields.octets("number"), number) << fields.place();
    const bytes peerText = fromText(fields.text("peerText"));
    EXPECT_EQ(peerText, rawBase64(dhRecord(paddedTo(128, number)))) << fields.place();
    EXPECT_EQ(fields.octets("secret"), bytes(128, 0x00)) << fields.place();
    EXPECT_EQ(pairs.at(fields.text("own")).pair->computeSharedSecret(peerText), bytes(128, 0x00))
        << fields.place();
}

const std::map<std::string, Refusal> REFUSED_PEERS = {
    {"a bare key of 124 bytes", {"VORLException", "DH PubKey length (124) out of range"}},
    {"a whole record of 124 bytes", {"VORLException", "DH PubKey length (124) out of range"}},
    {"a key of 119 bytes in a record of 130",
     {"VORLException", "DH public key from server is 119bytes, expected 120-129"}},
    {"a key of 130 bytes", {"VORLException", "DH public key from server is 130bytes, expected 120-129"}},
    {"version 3", {"VORLException", "Unknown DHPubKey version: 3"}},
    {"a key that is cut short",
     {"ASN1Exception", "Unable to read 128 bytes from buffer, only 127 available"}},
    {"no Base64",
     {"VORLException",
      "Unable to Base64 decode input:\n"
      "     0: 6e:6f:20:42:61:73:65:36:34:20:61:74:20:61:6c:6c    no Base64 at all\n\n"}},
    {"nothing", {"VORLException", "Unable to Base64 decode input:\n\n"}},
    {"a group of 512 bits", {"VORLException", "DH shared secret size (64) != 128"}},
};

void expectRefusedPeer(JsonFields& fields, const std::map<std::string, Pair>& pairs) {
    const Pair& own = pairs.at(fields.text("own"));
    const bytes peerText = fromText(fields.text("peerText"));
    expectRefusal(fields, REFUSED_PEERS.at(fields.text("name")),
                  [&] { own.pair->computeSharedSecret(peerText); });
}

TEST(ReferenceAgreement, IsReadAndReachedHere) {
    inReferenceFile("agreement.json", [](JsonFields& file) {
        file.in("group", expectGroup);
        std::map<std::string, Pair> pairs;
        file.each("pairs", [&](JsonFields& fields) { pairs[fields.text("name")] = pairIn(fields); });
        EXPECT_EQ(pairs.size(), 6U);
        EXPECT_EQ(file.each("secrets", [&](JsonFields& fields) { expectSecret(fields, pairs); }), 6U * 5U);

        const bytes NUMBERS[] = {
            {}, {0x01}, bytesOf(minus(AGREED_GROUP.p().get(), 1)), bytesOf(AGREED_GROUP.p())};
        std::size_t n = 0;
        EXPECT_EQ(file.each("refusedNumbers",
                            [&](JsonFields& fields) { expectRefusedNumber(fields, pairs, NUMBERS[n++]); }),
                  4U);

        file.in("smallPair", [&](JsonFields& fields) {
            const bytes privateNumber = sampleBytes("vorl agreement small", 63);
            EXPECT_EQ(fields.octets("state"), stateOf(GROUP_512_2, numberFrom(privateNumber)));
            Pair& small = pairs[fields.text("name")];
            small.pair = stateIn(fields.octets("state"));
            EXPECT_EQ(small.pair->toString(), fields.text("text"));
        });
        EXPECT_EQ(file.each("refused", [&](JsonFields& fields) { expectRefusedPeer(fields, pairs); }),
                  REFUSED_PEERS.size());
    });
}

}  // namespace
}  // namespace vorl::test
