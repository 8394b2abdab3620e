// The fields of HTTP signatures: what the parser takes is the same when it is written and read again, nothing
// that nobody has signed is verified, and whatever sign() has signed is.

#include "http/structured_fields.h"
#include "require.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Random.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vorl::fuzz {

namespace {

namespace structured = tarvik::http::structured;
using tarvik::crypto::HttpRequestSigner;
using tarvik::crypto::HttpSignatureProfile;
using tarvik::http::HttpResponse;
using tarvik::http::IHttpStream;
using Request = IHttpStream::Request;

// Not the key of the seeds, of which everything but the code is right.
const std::vector<unsigned char> KEY(32, 0x4b);
const char KEYID[] = "device-7";
const std::int64_t TIME_OF_THE_SEEDS = 1700000000;

std::string written(const structured::Dictionary& dictionary) {
    std::string text;
    for (const auto& [key, member] : dictionary) {
        const std::string value =
            std::visit([](const auto& kind) { return structured::serialize(kind); }, member);
        text += (text.empty() ? "" : ", ") + key + "=" + value;
    }
    return text;
}

void readTwice(const std::string& text) {
    const std::optional<structured::Dictionary> first = structured::parseDictionary(text);
    if (!first) {
        return;
    }
    const std::string once = written(*first);
    const std::optional<structured::Dictionary> second = structured::parseDictionary(once);
    require(second.has_value(), "what was written can be read");
    require(second->size() == first->size(), "each member is read again");
    require(written(*second) == once, "what was written is read as the same");
}

// Takes a line off the text.
std::string nextLine(std::string& text) {
    const std::size_t end = text.find('\n');
    std::string line = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

// A method, an URI, fields to the first empty line, and a body.
Request requestOf(std::string text) {
    Request request;
    request.method = nextLine(text);
    request.targetUri = nextLine(text);
    while (!text.empty()) {
        const std::string line = nextLine(text);
        if (line.empty()) {
            break;
        }
        const std::size_t colon = line.find(": ");
        const bool isField = colon != std::string::npos;
        request.fields.emplace_back(line.substr(0, colon), isField ? line.substr(colon + 2) : "");
    }
    request.body.assign(text.begin(), text.end());
    return request;
}

HttpResponse responseOf(const Request& request, bool isToRequest) {
    HttpResponse response;
    response.headerFields = request.fields;
    response.content = request.body;
    if (isToRequest) {
        response.answered = request;
    }
    return response;
}

HttpSignatureProfile profile() {
    HttpSignatureProfile result;
    result.clock = [] { return TIME_OF_THE_SEEDS; };
    return result;
}

// Whether it came to its end. Any other exception ends the run.
template <typename Use>
bool succeeds(Use use) {
    try {
        use();
        return true;
    } catch (const VORLException&) {
        return false;
    }
}

void verifyUnsigned(const Request& request) {
    HttpRequestSigner signer(KEY, profile());
    require(!signer.verifyRequest(KEYID, request), "no request is verified that nobody signed");
    for (const bool isToRequest : {false, true}) {
        HttpResponse response = responseOf(request, isToRequest);
        require(!signer.verify(KEYID, response), "no response is verified that nobody signed");
    }
    HttpRequestSigner::keyidOf(request.fields);
    succeeds([&] { return signer.signatureBase(KEYID, request); });
    succeeds([&] { return signer.signatureBase(KEYID, responseOf(request, true)); });
}

void verifySigned(Request request) {
    HttpRequestSigner signer(KEY, profile());
    const IHttpStream::Fields before = request.fields;
    if (!succeeds([&] { signer.sign(KEYID, request); })) {
        require(request.fields == before, "a request that is not signed is as it was");
        return;
    }
    require(signer.verifyRequest(KEYID, request), "what is signed is verified");
    require(!signer.verifyRequest(KEYID, request), "and that once");

    HttpResponse response = responseOf(request, true);
    if (succeeds([&] { signer.signResponse(KEYID, response); })) {
        require(signer.verify(KEYID, response), "a response that is signed is verified");
    }
}

}  // namespace

void readFields(const std::string& text) {
    Random::init_ = true;
    readTwice(text);
    const Request request = requestOf(text);
    for (const auto& field : request.fields) {
        readTwice(field.second);
    }
    verifyUnsigned(request);
    verifySigned(request);
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::readFields(std::string(data, data + size));
    return 0;
}
