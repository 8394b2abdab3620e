#include "raw_base64.h"
#include "raw_pem.h"
#include "raw_signature.h"
#include "reference_vectors.h"
#include "signature_record.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"

#include <map>
#include <memory>
#include <string>

namespace vorl::test {
namespace {

struct KeyPair {
    RawKey raw;
    std::shared_ptr<PrivKey> privateKey;
    std::shared_ptr<PubKey> publicKey;
};

using Keys = std::map<std::string, KeyPair>;

KeyPair keyIn(JsonFields& fields) {
    KeyPair key;
    const std::string pem = fields.text("privatePem");
    key.raw = raw_keys::owned(PEM_read_bio_PrivateKey(bioWith(pem).get(), nullptr, nullptr, nullptr),
                              "PEM_read_bio_PrivateKey");
    EXPECT_EQ(pem, privatePem(key.raw)) << fields.place();
    EXPECT_EQ(fields.text("publicPem"), publicPem(key.raw)) << fields.place();
    key.privateKey = PrivKey::loadFromPEMStr(pem);
    key.publicKey = PubKey::loadFromPEMStr(fields.text("publicPem"));
    EXPECT_EQ(*key.publicKey, *key.privateKey) << fields.place();
    EXPECT_EQ(fields.text("privateText"), "Private-Key (RSA)");
    EXPECT_EQ(fields.text("publicText"), "Public-Key (RSA)");
    EXPECT_EQ(fields.text("publicFormatted"), "      key:  Public-Key (RSA)\n");
    EXPECT_EQ(key.privateKey->toString(), fields.text("privateText"));
    EXPECT_EQ(key.publicKey->toString(), fields.text("publicText"));
    EXPECT_EQ(key.publicKey->toFormatString("key", 80, 2, ":", 3), fields.text("publicFormatted"));
    return key;
}

void expectSignature(JsonFields& fields, const Keys& keys) {
    const KeyPair& key = keys.at(fields.text("key"));
    const bytes message = sampleMessage(fields.number("messageBytes"));
    const bytes value = rawRsaSign(key.raw, EVP_sha1(), message);
    const bytes record = signatureRecord(value);
    EXPECT_EQ(fields.octets("digest"), rawDigest(EVP_sha1(), message)) << fields.place();
    EXPECT_EQ(fields.octets("value"), value) << fields.place();
    EXPECT_EQ(fields.octets("record"), record) << fields.place();
    EXPECT_EQ(fields.text("base64"), toText(rawBase64(record))) << fields.place();

    const std::shared_ptr<const PKSignature> signature = PKSignature::decode(fields.octets("record"));
    EXPECT_EQ(signature->val(), value) << fields.place();
    EXPECT_TRUE(PKSignatureProcessor::verify(signature, key.publicKey, message)) << fields.place();
    EXPECT_EQ(PKSignatureProcessor::sign(key.privateKey, message)->encode(), record) << fields.place();
    EXPECT_EQ(fields.text("text"), "Public-Key-Signature (Version 0x01, SHA1withRSA)");
    EXPECT_EQ(signature->toString(), fields.text("text"));
    EXPECT_EQ(signature->toFormatString("signature", 60, 1, " ", 2), fields.text("formatted"))
        << fields.place();
}

void expectMismatch(JsonFields& fields, const Keys& keys) {
    const KeyPair& key = keys.at(fields.text("key"));
    const bytes message = sampleMessage(fields.number("messageBytes"));
    const std::shared_ptr<const PKSignature> signature = PKSignature::decode(fields.octets("record"));
    const std::string name = fields.text("name");
    EXPECT_FALSE(rawRsaVerify(key.raw, EVP_sha1(), message, signature->val())) << name;
    EXPECT_FALSE(PKSignatureProcessor::verify(signature, key.publicKey, message)) << name;
}

void expectSignatureRecord(JsonFields& fields) {
    const bytes value = sampleMessage(fields.number("valueBytes"));
    const bytes record = signatureRecord(value);
    EXPECT_EQ(fields.number("recordBytes"), record.size()) << fields.place();
    expectOctets(fields, "record", record);
    expectText(fields, "base64", rawBase64(record));
    EXPECT_EQ(PKSignature::decode(record)->val(), value) << fields.place();
    EXPECT_EQ(PKSignature01::create(value)->encode(), record) << fields.place();
}

const std::map<bytes, Refusal> REFUSED_SIGNATURES = {
    {{}, {"ASN1Exception", "index out of bounds: read index(0) >= write index(0)"}},
    {{0x00}, {"VORLException", "Unknown PKSignature version: [UInt8: 0x 00]"}},
    {{0x02, 0x01, 0xff}, {"VORLException", "Unknown PKSignature version: [UInt8: 0x 02]"}},
    {{0x01}, {"ASN1Exception", "index out of bounds: read index(1) >= write index(1)"}},
    {{0x01, 0x05, 0xaa, 0xbb}, {"ASN1Exception", "Unable to read 5 bytes from buffer, only 2 available"}},
};

void expectRefusedSignature(JsonFields& fields) {
    const bytes record = fields.octets("record");
    expectRefusal(fields, REFUSED_SIGNATURES.at(record), [&] { PKSignature::decode(record); });
}

TEST(ReferenceSignatures, AreThoseOfOpenSSLAndVerify) {
    inReferenceFile("signatures.json", [](JsonFields& file) {
        Keys keys;
        file.each("keys", [&](JsonFields& fields) { keys[fields.text("name")] = keyIn(fields); });
        EXPECT_EQ(keys.size(), 2U);
        EXPECT_EQ(file.each("signatures", [&](JsonFields& fields) { expectSignature(fields, keys); }), 14U);
        EXPECT_EQ(file.each("mismatches", [&](JsonFields& fields) { expectMismatch(fields, keys); }), 4U);
        EXPECT_EQ(file.each("records", expectSignatureRecord), 9U);
        EXPECT_EQ(file.each("refused", expectRefusedSignature), REFUSED_SIGNATURES.size());
    });
}

}  // namespace
}  // namespace vorl::test
