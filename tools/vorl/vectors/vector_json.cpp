#include "vectors/vector_json.h"

#include "vorl/ASN1Exception.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"

#include <stdexcept>

namespace vorl::tool {

namespace {

// As much as a reader compares by eye.
const std::size_t MAX_WRITTEN_BYTES = 300;

std::string sha256(const bytes& data) {
    Digester digester(DigestAlgo::SHA256());
    digester.init();
    digester.update(data);
    return hexOf(digester.final());
}

Json refusal(const char* exception, const std::exception& error) {
    return {{"exception", exception}, {"text", error.what()}};
}

}  // namespace

Json newVectors() {
    return {{"about",
             "Samples for testing other implementations. Whatever is called a key, a secret or a private "
             "number here is known to everybody and protects nothing."},
            {"messages", "Byte i of a message of N bytes is i mod 251."}};
}

std::string hexOf(const bytes& data) {
    return Util::toHexString(data, "");
}

std::string textOf(const bytes& characters) {
    return std::string(characters.begin(), characters.end());
}

bytes bytesOf(const std::string& text) {
    return bytes(text.begin(), text.end());
}

void addBytes(Json& json, const std::string& name, const bytes& data) {
    if (data.size() <= MAX_WRITTEN_BYTES) {
        json[name] = hexOf(data);
    } else {
        json[name + "Sha256"] = sha256(data);
    }
}

void addText(Json& json, const std::string& name, const bytes& text) {
    if (text.size() <= MAX_WRITTEN_BYTES * 3 / 2) {
        json[name] = textOf(text);
    } else {
        json[name + "Sha256"] = sha256(text);
    }
}

Json refusalOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ASN1Exception& error) {
        return refusal("ASN1Exception", error);
    } catch (const VORLException& error) {
        return refusal("VORLException", error);
    } catch (const OpenSSLException& error) {
        return refusal("OpenSSLException", error);
    }
    throw std::logic_error("the library accepts what it has to refuse");
}

}  // namespace vorl::tool
