#include "levels.h"
#include "raw_base64.h"
#include "reference_vectors.h"
#include "vorl/BigNum.h"
#include "vorl/CipherWrapper.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/Util.h"

#include <map>
#include <string>

namespace vorl::test {
namespace {

struct LevelTexts {
    Level level;
    const char* wrapper;
};
const std::map<std::string, LevelTexts> LEVEL_TEXTS = {{"none", {NONE, "CipherWrapper[Null:0x00]"}},
                                                       {"test", {TEST, "CipherWrapper[Test:0x01]"}},
                                                       {"full", {FULL, "CipherWrapper[Full:0x02]"}}};

void expectLevel(JsonFields& fields) {
    const LevelTexts& expected = LEVEL_TEXTS.at(fields.text("level"));
    const auto type = typeOf(expected.level);
    EXPECT_EQ(fields.text("wrapper"), expected.wrapper);
    EXPECT_EQ(type->wrapper->toString(), expected.wrapper);
    EXPECT_EQ(type->toString(), fields.text("type"));
    EXPECT_EQ(type->wrapper->getCipherSpec()->toString(), fields.text("spec"));
    EXPECT_EQ(type->wrapper->getCipherSpec()->toFormatString(80, 1, ":", 4), fields.text("specFormatted"));
}

void expectNumber(JsonFields& fields) {
    const bytes given = fields.octets("bytes");
    bytes encoded = given;
    while (!encoded.empty() && encoded.front() == 0x00) {
        encoded.erase(encoded.begin());
    }
    const BigNum number(given);
    EXPECT_EQ(fields.octets("encoded"), encoded) << fields.place();
    EXPECT_EQ(number.encode(), encoded) << fields.place();
    EXPECT_EQ(fields.text("base64"), toText(rawBase64(encoded))) << fields.place();
    EXPECT_EQ(toText(number.toBase64()), fields.text("base64")) << fields.place();
    EXPECT_EQ(number.toString(), fields.text("text")) << fields.place();
    EXPECT_EQ(number.toFormatString("number", 60, 1, ":", 4), fields.text("formatted")) << fields.place();
}

void expectBlock(JsonFields& fields) {
    const bytes content = sampleMessage(fields.number("messageBytes"));
    EXPECT_EQ(Util::toFormatHexString(
                  content, fields.text("name"), static_cast<unsigned int>(fields.number("width")),
                  static_cast<unsigned int>(fields.number("level")), fields.text("separator"),
                  static_cast<unsigned int>(fields.number("indentSize"))),
              fields.text("text"))
        << fields.place();
}

void expectDump(JsonFields& fields) {
    const bytes content = sampleMessage(fields.number("messageBytes"));
    EXPECT_EQ(Util::hexAsciiDump(content, static_cast<unsigned int>(fields.number("perLine")),
                                 fields.text("separator")),
              fields.text("text"))
        << fields.place();
}

TEST(ReferenceTexts, AreReproduced) {
    inReferenceFile("texts.json", [](JsonFields& file) {
        EXPECT_EQ(file.each("levels", expectLevel), LEVEL_TEXTS.size());
        EXPECT_EQ(file.text("signatureAlgo"), "SHA1withRSA");
        EXPECT_EQ(PKSignatureAlgo::SHA1withRSA()->toString(), "SHA1withRSA");
        const std::vector<std::string> modes = {"Signature Creation", "Signature Verification",
                                                "Uninitialized"};
        EXPECT_EQ(file.texts("signatureModes"), modes);
        EXPECT_EQ(PKSignatureProcessor::modeToString(PKSignatureProcessor::SIGN), modes[0]);
        EXPECT_EQ(PKSignatureProcessor::modeToString(PKSignatureProcessor::VERIFY), modes[1]);
        EXPECT_EQ(PKSignatureProcessor::modeToString(PKSignatureProcessor::UNINITIALIZED), modes[2]);
        EXPECT_EQ(file.each("numbers", expectNumber), 6U);
        EXPECT_EQ(file.each("blocks", expectBlock), 10U * 3U);
        EXPECT_EQ(file.each("dumps", expectDump), 10U * 2U);
    });
}

}  // namespace
}  // namespace vorl::test
