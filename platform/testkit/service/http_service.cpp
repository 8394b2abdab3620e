#include "linked_service.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>

namespace vorl::testkit {

using tarvik::crypto::HttpRequestSigner;
using tarvik::http::HttpResponse;
using tarvik::http::IHttpStream;

namespace {

// With a signer for each request, so that nothing is remembered.
std::optional<Response> respond(const bytes& key, const std::string& keyid,
                                const IHttpStream::Request& request) {
    HttpRequestSigner service(HttpRequestSigner::keyOfContext(key));
    if (!service.verifyRequest(keyid, request)) {
        return std::nullopt;
    }
    HttpResponse response;
    response.headerFields = {{"Date", "Tue, 20 Apr 2021 02:07:56 GMT"}, {"Content-Type", "text/plain"}};
    response.content = {'d', 'o', 'n', 'e'};
    response.answered = request;
    service.signResponse(keyid, response);
    return Response{response.statusCode, response.headerFields, response.content};
}

}  // namespace

Platform::Respond linkedService() {
    return respond;
}

}  // namespace vorl::testkit
