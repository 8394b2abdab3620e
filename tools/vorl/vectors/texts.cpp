#include "inspect/levels.h"
#include "vectors/sample_bytes.h"
#include "vectors/vector_json.h"
#include "vectors/vectors.h"
#include "vorl/BigNum.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/EncryptionType.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/Util.h"

#include <brisclient/Base64.h>

namespace vorl::tool {

namespace {

struct Layout {
    const char* name;
    unsigned int width;
    unsigned int level;
    const char* separator;
    unsigned int indentSize;
};

const Layout DEFAULT_LAYOUT = {"block", 80, 1, ":", 4};
const Layout LAYOUTS[] = {DEFAULT_LAYOUT, {"narrow", 40, 2, " ", 3}, {"", 60, 0, "", 8}};

Json blockJson(std::size_t size, const Layout& layout) {
    return {{"messageBytes", size},
            {"name", layout.name},
            {"width", layout.width},
            {"level", layout.level},
            {"separator", layout.separator},
            {"indentSize", layout.indentSize},
            {"text", Util::toFormatHexString(sampleMessage(size), layout.name, layout.width, layout.level,
                                             layout.separator, layout.indentSize)}};
}

Json dumpJson(std::size_t size, unsigned int perLine, const char* separator) {
    return {{"messageBytes", size},
            {"perLine", perLine},
            {"separator", separator},
            {"text", Util::hexAsciiDump(sampleMessage(size), perLine, separator)}};
}

Json numberJson(const bytes& number) {
    const BigNum value(number);
    return {{"bytes", hexOf(number)},
            {"encoded", hexOf(value.encode())},
            {"base64", textOf(value.toBase64())},
            {"text", value.toString()},
            {"formatted", value.toFormatString("number", 60, 1, ":", 4)}};
}

Json levelJson(const Level& level) {
    return {{"level", level.name},
            {"type", level.type->toString()},
            {"wrapper", level.type->wrapper->toString()},
            {"spec", level.spec().toString()},
            {"specFormatted", level.spec().toFormatString(80, 1, ":", 4)}};
}

}  // namespace

Json textVectors() {
    Json json = newVectors();
    json["levels"] = Json::array();
    for (const Level& level : levels()) {
        json["levels"].push_back(levelJson(level));
    }
    json["signatureAlgo"] = PKSignatureAlgo::SHA1withRSA()->toString();
    json["signatureModes"] = {PKSignatureProcessor::modeToString(PKSignatureProcessor::SIGN),
                              PKSignatureProcessor::modeToString(PKSignatureProcessor::VERIFY),
                              PKSignatureProcessor::modeToString(PKSignatureProcessor::UNINITIALIZED)};
    json["numbers"] = Json::array();
    for (const bytes& number : {bytes{}, bytes{0x00}, bytes{0x00, 0x01}, bytes{0x7f}, bytes{0x80},
                                sampleBytes("vorl number", 128)}) {
        json["numbers"].push_back(numberJson(number));
    }
    json["blocks"] = Json::array();
    json["dumps"] = Json::array();
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 24U, 25U, 26U, 48U, 100U}) {
        for (const Layout& layout : LAYOUTS) {
            json["blocks"].push_back(blockJson(size, layout));
        }
        json["dumps"].push_back(dumpJson(size, 16, ":"));
        json["dumps"].push_back(dumpJson(size, 8, " "));
    }
    return json;
}

}  // namespace vorl::tool
