#include "http/signatures.h"

#include "http/HttpMessage.h"
#include "http/HttpOptions.h"
#include "inspect/levels.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "shared/terminal.h"
#include "vorl/CipherSpec.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace vorl::tool {

using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::HttpSignatureProfile;
using tarvik::http::HttpResponse;
using Request = tarvik::http::IHttpStream::Request;

namespace {

HttpMessage messageIn(const bytes& text, const std::string& path, const HttpOptions& options) {
    if (text.empty()) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " is empty");
    }
    try {
        return parseHttpMessage(text, options.scheme);
    } catch (const MalformedHttp& fault) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " is no HTTP message: " + fault.what());
    }
}

Request requestOf(const HttpMessage& message) {
    return {message.method, message.targetUri, message.fields, message.body};
}

HttpResponse responseOf(const HttpMessage& message) {
    HttpResponse response;
    response.statusCode = message.status;
    response.headerFields = message.fields;
    response.content = message.body;
    return response;
}

Request answeredRequest(const std::string& path, const HttpOptions& options) {
    const HttpMessage message = messageIn(readInput(path), path, options);
    if (message.isResponse()) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " is a response",
                        "--request names the request that was answered");
    }
    return requestOf(message);
}

// A message that was read, in the form in which a signer takes it: one of the two.
class SignedText {
public:
    explicit SignedText(const HttpOptions& options)
        : text_(readInput(options.input)), message_(messageIn(text_, options.input, options)) {
        if (!message_.isResponse()) {
            request_ = requestOf(message_);
        } else {
            response_ = responseOf(message_);
        }
        if (options.request && !message_.isResponse()) {
            throw ToolError(ExitStatus::USAGE, inputName(options.input) + " is a request itself",
                            "--request is for a response");
        }
        if (options.request) {
            response_.answered = answeredRequest(*options.request, options);
        }
    }

    bool verify(const std::string& keyid, HttpRequestSigner& signer) {
        return message_.isResponse() ? signer.verify(keyid, response_)
                                     : signer.verifyRequest(keyid, request_);
    }
    std::string base(const std::string& keyid, const HttpRequestSigner& signer) const {
        return message_.isResponse() ? signer.signatureBase(keyid, response_)
                                     : signer.signatureBase(keyid, request_);
    }
    // The text with the fields of the signature.
    bytes sign(const std::string& keyid, HttpRequestSigner& signer) {
        if (message_.isResponse()) {
            signer.signResponse(keyid, response_);
            return textWithFields(text_, message_, response_.headerFields);
        }
        signer.sign(keyid, request_);
        return textWithFields(text_, message_, request_.fields);
    }
    // What the message itself says of its signature.
    std::optional<std::string> keyid(const std::string& label) const {
        return HttpRequestSigner::keyidOf(message_.fields, label);
    }

private:
    const bytes text_;
    const HttpMessage message_;
    Request request_;
    HttpResponse response_;
};

HttpSignatureProfile profileFrom(const HttpOptions& options) {
    HttpSignatureProfile profile;
    profile.label = options.label.value_or(profile.label);
    profile.tag = options.tag.value_or(profile.tag);
    profile.components = options.components;
    profile.parameters = options.parameters.value_or(profile.parameters);
    if (options.at) {
        profile.clock = [at = *options.at] { return at; };
    }
    return profile;
}

bool hasParameter(const HttpSignatureProfile& profile, const std::string& name) {
    return std::find(profile.parameters.begin(), profile.parameters.end(), name) != profile.parameters.end();
}

std::unique_ptr<HttpRequestSigner> signerOf(const bytes& key, const HttpSignatureProfile& profile) {
    try {
        return std::make_unique<HttpRequestSigner>(key, profile);
    } catch (const VORLException& fault) {
        throw ToolError(
            ExitStatus::USAGE, fault.what(),
            "components are written in lower case, such as @method or content-type, and a label too");
    }
}

// Where the name of the key is signed, none is made up.
void requireKeyid(const HttpOptions& options, const HttpSignatureProfile& profile) {
    if (!options.keyid && hasParameter(profile, "keyid")) {
        throw ToolError(ExitStatus::USAGE, "a name for the key is needed",
                        "give it with --keyid, or leave keyid out of --parameters");
    }
}

void keepInputsApart(const HttpOptions& options) {
    if (options.request) {
        refuseSharedStreams({{"message", options.input}, {"request", *options.request}});
        if (options.key.isGiven() && options.key.source() == inputName(STANDARD_STREAM)) {
            refuseSharedStreams({{"key", STANDARD_STREAM}, {"request", *options.request}});
        }
    }
}

SecretBytes loadSigningKey(const HttpOptions& options) {
    if (!options.key.isGiven()) {
        throw ToolError(ExitStatus::USAGE, "a key is needed",
                        "name its file with -k, or pass it with --key-fd");
    }
    if (!options.isContextKey) {
        return options.key.loadAnySize(options.input);
    }
    const SecretBytes key = options.key.load(levels().front().spec().keySize, options.input);
    return SecretBytes(HttpRequestSigner::keyOfContext(key.get()));
}

// What cannot be done with a message, the library says by an exception that names the component.
template <class Operation>
auto orRefuse(const HttpOptions& options, const std::string& what, const Operation& operation) {
    try {
        return operation();
    } catch (const VORLException& fault) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(options.input) + " " + what + ": " + fault.what());
    }
}

bool isNamelessByOurselves(const std::string& base) {
    // Within the value of another parameter, the quotation mark would have a backslash before it.
    return base.find(";keyid=\"\"", base.rfind('\n') + 1) != std::string::npos;
}

}  // namespace

ExitStatus writeSignatureBase(const HttpOptions& options) {
    keepInputsApart(options);
    startLibrary();
    const HttpSignatureProfile profile = profileFrom(options);
    // The key is no part of what is signed.
    const std::unique_ptr<HttpRequestSigner> signer = signerOf({0}, profile);
    const SignedText message(options);
    if (hasParameter(profile, "nonce")) {
        requireRandom();
    }
    std::string base = orRefuse(options, "has no such signature base",
                                [&] { return message.base(options.keyid.value_or(""), *signer); });
    if (!message.keyid(profile.label) && isNamelessByOurselves(base)) {
        requireKeyid(options, profile);
    }
    if (!options.isRaw) {
        base += "\n";
    }
    writeStandardOutput(base);
    return ExitStatus::SUCCESS;
}

ExitStatus signHttpMessage(const HttpOptions& options) {
    keepInputsApart(options);
    options.key.refuseAsOutput(options.output);
    startLibrary();
    const HttpSignatureProfile profile = profileFrom(options);
    requireKeyid(options, profile);
    const SecretBytes key = loadSigningKey(options);
    const std::unique_ptr<HttpRequestSigner> signer = signerOf(key.get(), profile);
    SignedText message(options);
    if (hasParameter(profile, "nonce")) {
        requireRandom();
    }
    const bytes text = orRefuse(options, "cannot be signed so",
                                [&] { return message.sign(options.keyid.value_or(""), *signer); });
    if (!isPlainText(text)) {
        refuseBinaryOnTerminal(options.output);
    }
    writeOutput(options.output, text, Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

ExitStatus verifyHttpMessage(const HttpOptions& options) {
    keepInputsApart(options);
    startLibrary();
    const HttpSignatureProfile profile = profileFrom(options);
    const SecretBytes key = loadSigningKey(options);
    const std::unique_ptr<HttpRequestSigner> signer = signerOf(key.get(), profile);
    SignedText message(options);
    const std::string said = message.keyid(profile.label).value_or("");
    if (!message.verify(options.keyid.value_or(said), *signer)) {
        throw ToolError(ExitStatus::REFUSED, "the signature does not hold",
                        "'vorl http base' shows what it has to be computed of");
    }
    writeStandardOutput("the signature holds\n");
    return ExitStatus::SUCCESS;
}

}  // namespace vorl::tool
