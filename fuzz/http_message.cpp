// The tool's reading of an HTTP message on any text: only its own refusal is thrown, a text is put together
// again from what was read, and fields that are added to it are read back.

#include "require.h"

#include "http/HttpMessage.h"

#include <cstddef>
#include <cstdint>

namespace vorl::fuzz {

void readAnything(const bytes& text) {
    using tool::HttpMessage;
    HttpMessage message;
    try {
        message = tool::parseHttpMessage(text, "http");
    } catch (const tool::MalformedHttp&) {
        return;
    }
    require(message.isResponse() || message.targetUri.find("://") != std::string::npos,
            "a target is absolute");
    require(message.fields.size() == message.fieldLines.size(), "each field has a line");
    require(tool::textWithFields(text, message, message.fields) == text, "the text is its parts");

    // There is room for so many.
    if (message.fields.size() == 256) {
        return;
    }
    HttpMessage::Fields more = message.fields;
    more.emplace_back("X-Added", "value");
    const HttpMessage again = tool::parseHttpMessage(tool::textWithFields(text, message, more), "http");
    require(again.fields == more, "what was added is read");
    require(again.body == message.body && again.targetUri == message.targetUri, "the rest is what it was");
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::readAnything(vorl::bytes(data, data + size));
    return 0;
}
