#include "LibraryState.h"
#include "levels.h"
#include "message_sizes.h"
#include "raw_base64.h"
#include "reference_vectors.h"
#include "vorl/VorlContext.h"

#include <cstddef>
#include <map>
#include <string>

namespace vorl::test {
namespace {

Level levelNamed(const std::string& name) {
    const std::map<std::string, Level> LEVELS = {{"none", NONE}, {"test", TEST}, {"full", FULL}};
    return LEVELS.at(name);
}

class ReferenceEnvelopes : public StartedLibrary {
protected:
    void TearDown() override {
        for (const Level level : {NONE, TEST, FULL}) {
            VORLLib::setAllowedEncryptionType(typeOf(level), true);
        }
        StartedLibrary::TearDown();
    }
};

VorlContext contextOf(Level level, const bytes& key) {
    VORLLib::type_ = typeOf(level);
    return VorlContext(key);
}

void expectEnvelope(JsonFields& fields) {
    const std::string name = fields.text("level");
    const Level level = levelNamed(name);
    const std::size_t size = fields.number("messageBytes");
    const bytes message = sampleMessage(size);
    const bytes key = fields.octets("key");
    const bytes iv = level == FULL ? fields.octets("iv") : bytes();
    const bytes envelope = expectedEnvelope(level, key, iv, message);
    const bytes text = rawBase64(envelope);

    EXPECT_EQ(fields.number("version"), level);
    const std::string label = "vorl " + name + " " + std::to_string(size);
    EXPECT_EQ(key, sampleBytes(label + " key", key.size())) << fields.place();
    EXPECT_EQ(iv, sampleBytes(label + " iv", iv.size())) << fields.place();
    EXPECT_EQ(fields.number("envelopeBytes"), envelope.size()) << fields.place();
    expectOctets(fields, "envelope", envelope);
    expectText(fields, "base64", text);
    VorlContext context = contextOf(level, key);
    if (canBeReadBack(level, size)) {
        EXPECT_EQ(context.decrypt(text), message) << fields.place();
    } else {
        expectRefusal(fields, {"ASN1Exception", endsTooEarly(envelope.size())},
                      [&] { context.decrypt(text); });
    }
}

const std::map<std::string, Refusal> REFUSED_ENVELOPES = {
    {"nothing at all", {"ASN1Exception", "index out of bounds: read index(0) >= write index(0)"}},
    {"an unknown version", {"VORLException", "Unknown CipherWrapper version: 0x7f"}},
    {"a level that is not accepted", {"VORLException", "CipherWrapper CipherWrapper[Test:0x01] not allowed"}},
    {"a message without encryption that is not accepted",
     {"VORLException", "CipherWrapper CipherWrapper[Null:0x00] not allowed"}},
    {"a message without encryption, for a context with encryption",
     {"VORLException", "Cipher spec mismatch between cipher and wrapper"}},
    {"another level than that of the context",
     {"VORLException", "Cipher spec mismatch between cipher and wrapper"}},
    {"an IV of 8 bytes", {"VORLException", "Parsed IV length(8) != CipherSpec iv size(16"}},
    {"a body that is cut short", {"ASN1Exception", "Unable to read 16 bytes from buffer, only 15 available"}},
    {"a byte behind the body",
     {"VORLException", "Buffer is not empty after parsing decrypted data; 1 bytes remain"}},
    {"a byte behind a body that is not encrypted",
     {"VORLException", "Buffer is not empty after parsing NULL_CIPHER decrypted data; 1 bytes remain"}},
    {"damaged padding", {"OpenSSLException", "failed EVP final operation"}},
};

void expectRefusedEnvelope(JsonFields& fields) {
    const Level level = levelNamed(fields.text("contextLevel"));
    VorlContext context = contextOf(level, fields.octets("key"));
    for (const Level each : {NONE, TEST, FULL}) {
        VORLLib::setAllowedEncryptionType(typeOf(each), false);
    }
    for (const std::string& accepted : fields.texts("acceptedLevels")) {
        VORLLib::setAllowedEncryptionType(typeOf(levelNamed(accepted)), true);
    }
    const bytes text = fromText(fields.text("base64"));
    expectRefusal(fields, REFUSED_ENVELOPES.at(fields.text("name")), [&] { context.decrypt(text); });
}

TEST_F(ReferenceEnvelopes, AreThoseOfOpenSSLAndOpenOrAreRefused) {
    inReferenceFile("envelopes.json", [](JsonFields& file) {
        EXPECT_EQ(file.each("envelopes", expectEnvelope), 63U);
        EXPECT_EQ(file.each("refused", expectRefusedEnvelope), REFUSED_ENVELOPES.size());
    });
}

}  // namespace
}  // namespace vorl::test
