#ifndef VORL_TESTS_SIGNED_DRAFTS_H
#define VORL_TESTS_SIGNED_DRAFTS_H

#include "octets.h"
#include "raw_http_signature.h"
#include "signed_messages.h"

#include <tarvik/crypto/HttpRequestSigner.h>
#include <tarvik/http/HttpResponse.h>
#include <tarvik/http/IHttpStream.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

// Messages that are signed by hand, so that each part can be another one, before the signature or after it.

namespace vorl::test {

const bytes DRAFT_KEY = octets(32);
const char DRAFT_KEYID[] = "device-7";
const std::int64_t DRAFT_TIME = 1700000000;
const char DRAFT_NONCE[] = "AAECAwQFBgcICQoLDA0ODw==";
const char DRAFT_PARAMETERS[] =
    ";created=1700000000;expires=1700000300;nonce=\"AAECAwQFBgcICQoLDA0ODw==\""
    ";keyid=\"device-7\";alg=\"hmac-sha256\";tag=\"vorl-1\"";

/// A request that is not signed yet, and what its signature is to say.
struct RequestDraft {
    tarvik::http::IHttpStream::Request request;
    RawHttpSignature signature;
    bytes key = DRAFT_KEY;
};

struct ResponseDraft {
    tarvik::http::HttpResponse response;
    RawHttpSignature signature;
    bytes key = DRAFT_KEY;
};

/// The value that a component of the draft has in the signature base.
template <typename Draft>
std::string& lineOf(Draft& draft, const std::string& identifier) {
    for (auto& [own, value] : draft.signature.lines) {
        if (own == identifier) {
            return value;
        }
    }
    throw std::runtime_error("no line " + identifier);
}

template <typename Draft>
void dropLine(Draft& draft, const std::string& identifier) {
    lineOf(draft, identifier);
    auto& lines = draft.signature.lines;
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const auto& line) { return line.first == identifier; }),
                lines.end());
}

/// Replaces a text that must be there, once.
inline void replaceOnce(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos || text.find(from, at + 1) != std::string::npos) {
        throw std::runtime_error("not once in \"" + text + "\": " + from);
    }
    text.replace(at, from.size(), to);
}

/// The first field of that name, which must be there.
inline std::string& existingField(tarvik::http::IHttpStream::Fields& fields, const std::string& name) {
    for (auto& [own, value] : fields) {
        if (own == name) {
            return value;
        }
    }
    throw std::runtime_error("no field " + name);
}

inline void removeField(tarvik::http::IHttpStream::Fields& fields, const std::string& name) {
    existingField(fields, name);
    fields.erase(
        std::remove_if(fields.begin(), fields.end(), [&](const auto& field) { return field.first == name; }),
        fields.end());
}

/// A request with a body, as the software platform signs it.
inline RequestDraft postDraft() {
    const bytes body = octetsOf("hello");
    return {{"POST",
             "https://service.example/v1/messages?kind=report",
             {{"Host", "service.example"},
              {"Content-Type", "text/plain"},
              {"Content-Digest", rawContentDigest(body)}},
             body},
            {"vorl",
             {{"\"@method\"", "POST"},
              {"\"@authority\"", "service.example"},
              {"\"@path\"", "/v1/messages"},
              {"\"@query\"", "?kind=report"},
              {"\"content-digest\"", rawContentDigest(body)},
              {"\"content-type\"", "text/plain"}},
             DRAFT_PARAMETERS}};
}

inline RequestDraft getDraft() {
    return {{"GET", "https://service.example/v1/messages", {{"Host", "service.example"}}, {}},
            {"vorl",
             {{"\"@method\"", "GET"},
              {"\"@authority\"", "service.example"},
              {"\"@path\"", "/v1/messages"},
              {"\"@query\"", "?"}},
             DRAFT_PARAMETERS}};
}

inline tarvik::http::IHttpStream::Request sealed(const RequestDraft& draft) {
    tarvik::http::IHttpStream::Request request = draft.request;
    draft.signature.addTo(request.fields, draft.key);
    return request;
}

/// The answer to the sealed postDraft(), as the software platform signs it.
inline ResponseDraft answerDraft() {
    ResponseDraft draft;
    draft.response.statusCode = 200;
    draft.response.content = octetsOf("done");
    draft.response.headerFields = {{"Content-Type", "text/plain"},
                                   {"Content-Digest", rawContentDigest(draft.response.content)}};
    draft.response.answered = sealed(postDraft());
    draft.signature = {"vorl",
                       {{"\"@status\"", "200"},
                        {"\"content-digest\"", rawContentDigest(draft.response.content)},
                        {"\"@method\";req", "POST"},
                        {"\"@authority\";req", "service.example"},
                        {"\"@path\";req", "/v1/messages"},
                        {"\"@query\";req", "?kind=report"},
                        {"\"content-digest\";req", rawContentDigest(octetsOf("hello"))},
                        {"\"signature\";req", fieldOf(draft.response.answered->fields, "Signature").value()}},
                       DRAFT_PARAMETERS};
    return draft;
}

inline tarvik::http::HttpResponse sealed(const ResponseDraft& draft) {
    tarvik::http::HttpResponse response = draft.response;
    draft.signature.addTo(response.headerFields, draft.key);
    return response;
}

/// What a signer says that has seen no message before.
inline bool isAccepted(const tarvik::http::IHttpStream::Request& request, std::int64_t at = DRAFT_TIME) {
    return tarvik::crypto::HttpRequestSigner(DRAFT_KEY, profileAt(at)).verifyRequest(DRAFT_KEYID, request);
}

inline bool isAccepted(tarvik::http::HttpResponse response, std::int64_t at = DRAFT_TIME) {
    return tarvik::crypto::HttpRequestSigner(DRAFT_KEY, profileAt(at)).verify(DRAFT_KEYID, response);
}

}  // namespace vorl::test

#endif
