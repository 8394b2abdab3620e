#include "Subject.h"
#include "checks.h"
#include "expectations.h"

#include <tarvik/http/IHttpStream.h>

#include <algorithm>

// What any request signer must keep to, however it signs: one that signs leaves a signature of the whole
// request, one that does not sign says so, and nothing is taken for signed that is not. How a signature is
// computed nobody knows here: whether it holds, only the other end can say.

namespace vorl::testkit {

using tarvik::crypto::IRequestSigner;
using tarvik::http::IHttpStream;

namespace {

const char NAME[] = "kit";

class Received : public IHttpStream {
public:
    Received(Response response, const Request* request) : response_(std::move(response)), request_(request) {}

    unsigned int status() const override { return response_.status; }
    const Fields& fields() const override { return response_.fields; }
    const bytes& body() const override { return response_.body; }
    const Request* request() const override { return request_; }

private:
    const Response response_;
    const Request* const request_;
};

IHttpStream::Request sampleRequest() {
    return {"POST",
            "https://service.example/messages?kind=report",
            {{"Host", "service.example"},
             {"Date", "Tue, 20 Apr 2021 02:07:55 GMT"},
             {"Content-Type", "text/plain"},
             {"Content-Length", "5"}},
            {'h', 'e', 'l', 'l', 'o'}};
}

bool isSame(const IHttpStream::Request& one, const IHttpStream::Request& other) {
    return one.method == other.method && one.targetUri == other.targetUri && one.fields == other.fields &&
           one.body == other.body;
}

std::shared_ptr<IRequestSigner> signerOf(const Subject& subject, const Platform& platform, KeyName key) {
    const auto contexts = doing("cryptContext() for AES-128-CBC",
                                [&] { return platform.cryptContext(AES_MODES[1].spec, subject.key(key)); });
    require(contexts.second != nullptr, "cryptContext() for AES-128-CBC returns a null request signer");
    return contexts.second;
}

// What sign() throws, if it does.
std::optional<std::string> refusalToSign(IRequestSigner& signer, IHttpStream::Request& request) {
    return refusalOf("sign()", [&] { signer.sign(NAME, request); });
}

void signsOrRefuses(const Platform& platform) {
    const Subject subject(platform);
    const auto signer = signerOf(subject, platform, FIRST_KEY);
    IHttpStream::Request request = sampleRequest();
    const std::optional<std::string> refusal = refusalToSign(*signer, request);
    if (!refusal) {
        require(platform.signs != false, "sign() does not throw, although the platform is said not to sign");
        require(!isSame(request, sampleRequest()),
                "sign() returns and leaves the request as it was, unsigned");
        return;
    }
    require(platform.signs != true, "sign() throws " + *refusal + ", although the platform is said to sign");
    require(isSame(request, sampleRequest()), "sign() throws and leaves the request changed");
    Received received({200, {}, {}}, &request);
    require(!accepts("verify()", [&] { static_cast<void>(signer->verify(NAME, received)); }),
            "sign() throws " + *refusal + ", but verify() does not throw");
}

// Leaves the check out where the platform does not sign.
void sign(IRequestSigner& signer, IHttpStream::Request& request) {
    if (refusalToSign(signer, request)) {
        throw LeftOut("The platform does not sign");
    }
}

void anotherKeySignsDifferently(const Platform& platform) {
    const Subject subject(platform);
    IHttpStream::Request one = sampleRequest();
    sign(*signerOf(subject, platform, FIRST_KEY), one);
    IHttpStream::Request other = sampleRequest();
    require(!refusalToSign(*signerOf(subject, platform, SECOND_KEY), other),
            "sign() works under one key only");
    require(!isSame(one, other), "sign() leaves the same under two keys");
}

void changeFirst(bytes& body) {
    body[0] = static_cast<unsigned char>(body[0] ^ 1U);
}

struct Change {
    const char* what;
    void (*make)(IHttpStream::Request& request);
};

const Change CHANGES[] = {
    {"method", [](IHttpStream::Request& request) { request.method = "PUT"; }},
    {"target",
     [](IHttpStream::Request& request) {
         request.targetUri.replace(request.targetUri.find("report"), 6, "advice");
     }},
    {"body", [](IHttpStream::Request& request) { changeFirst(request.body); }},
};

// What sign() has made of `given`, without what was there before.
IHttpStream::Request leftBySigning(IHttpStream::Request request, const IHttpStream::Request& given) {
    for (const auto& field : given.fields) {
        const auto found = std::find(request.fields.begin(), request.fields.end(), field);
        if (found != request.fields.end()) {
            request.fields.erase(found);
        }
    }
    if (request.method == given.method) {
        request.method.clear();
    }
    if (request.targetUri == given.targetUri) {
        request.targetUri.clear();
    }
    if (request.body == given.body) {
        request.body.clear();
    }
    return request;
}

void eachRequestIsSignedDifferently(const Platform& platform) {
    const Subject subject(platform);
    const auto leftIn = [&](const IHttpStream::Request& given) {
        IHttpStream::Request request = given;
        sign(*signerOf(subject, platform, FIRST_KEY), request);
        return leftBySigning(request, given);
    };
    const IHttpStream::Request left = leftIn(sampleRequest());
    for (const Change& change : CHANGES) {
        IHttpStream::Request other = sampleRequest();
        change.make(other);
        require(!isSame(left, leftIn(other)),
                std::string("sign() leaves the same in a request with another ") + change.what);
    }
}

// What the service makes of a request, where there is one that can be asked.
std::optional<Response> answer(const Subject& subject, const Platform& platform, KeyName key,
                               const IHttpStream::Request& request) {
    return doing("respond()", [&] { return platform.respond(subject.key(key), NAME, request); });
}

void needsAService(const Platform& platform) {
    if (!platform.respond) {
        throw LeftOut("The platform is described without what the service at the other end does");
    }
}

void aServiceTakesItsRequests(const Platform& platform) {
    const Subject subject(platform);
    const auto signedRequest = [&] {
        IHttpStream::Request request = sampleRequest();
        sign(*signerOf(subject, platform, FIRST_KEY), request);
        return request;
    };
    const IHttpStream::Request request = signedRequest();
    needsAService(platform);
    require(answer(subject, platform, FIRST_KEY, request).has_value(),
            "The service refuses a request as sign() leaves it");
    require(!answer(subject, platform, FIRST_KEY, sampleRequest()),
            "The service takes a request that was not signed");
    require(!answer(subject, platform, SECOND_KEY, signedRequest()),
            "The service takes a request that was signed under another key");
    for (const Change& change : CHANGES) {
        IHttpStream::Request changed = signedRequest();
        change.make(changed);
        require(!answer(subject, platform, FIRST_KEY, changed),
                std::string("The service takes a request whose ") + change.what + " is not what was signed");
    }
}

// A request under one key, and the response to it, which is verified once: a second time it may be refused.
class Exchange {
public:
    /// Leaves the check out where the platform does not sign, or is described without a service.
    Exchange(const Subject& subject, const Platform& platform, KeyName key)
        : signer_(signerOf(subject, platform, key)), request_(sampleRequest()) {
        sign(*signer_, request_);
        needsAService(platform);
        std::optional<Response> answered = answer(subject, platform, key, request_);
        require(answered.has_value(), "The service refuses a request as sign() leaves it");
        response = std::move(*answered);
        require(!response.body.empty(), "respond() returns a response without a body");
    }

    bool isVerified() { return isVerifiedBy(*signer_); }
    bool isVerifiedBy(IRequestSigner& signer) {
        Received received(response, &request_);
        return signer.verify(NAME, received);
    }

    Response response{};

private:
    const std::shared_ptr<IRequestSigner> signer_;
    IHttpStream::Request request_;
};

// Where a signature is, the middle of its field is a part of it; changed, it may not be readable any more.
bool isRead(Exchange exchange, std::size_t field) {
    if (field >= exchange.response.fields.size() || exchange.response.fields[field].second.empty()) {
        return false;
    }
    std::string& value = exchange.response.fields[field].second;
    char& middle = value[value.size() / 2];
    middle = middle == 'A' ? 'B' : 'A';
    bool isVerified = false;
    accepts("verify() of a changed field", [&] { isVerified = exchange.isVerified(); });
    return !isVerified;
}

void verifiesWhatAServiceSigns(const Platform& platform) {
    const Subject subject(platform);
    Exchange good(subject, platform, FIRST_KEY);
    require(doing("verify() of a response as the service has signed it", [&] { return good.isVerified(); }),
            "verify() answers false for a response as the service has signed it");

    Exchange changed(subject, platform, FIRST_KEY);
    changeFirst(changed.response.body);
    require(!doing("verify() of a response with another body", [&] { return changed.isVerified(); }),
            "verify() answers true for a response whose body is not what was signed");

    Exchange foreign(subject, platform, SECOND_KEY);
    const auto signer = signerOf(subject, platform, FIRST_KEY);
    require(!doing("verify() of a response under another key", [&] { return foreign.isVerifiedBy(*signer); }),
            "verify() answers true for a response that was signed under another key");

    bool isAnyRead = false;
    for (std::size_t field = 0; field < good.response.fields.size() && !isAnyRead; ++field) {
        isAnyRead = isRead(Exchange(subject, platform, FIRST_KEY), field);
    }
    require(isAnyRead, "verify() answers true for a response whichever of its fields is changed");
}

// Of one that signs, what has no signature. It may throw for what it cannot read, and without signing it
// throws for everything.
void answersFalse(IRequestSigner& signer, const std::string& what, Received received) {
    const std::string subject = "verify() of " + what;
    require(!doing(subject, [&] { return signer.verify(NAME, received); }),
            "verify() answers true for " + what);
}

void refusesResponse(IRequestSigner& signer, const std::string& what, Received received) {
    bool isGood = false;
    accepts("verify() of " + what, [&] { isGood = signer.verify(NAME, received); });
    require(!isGood, "verify() answers true for " + what);
}

void neverVerifiesTheUnsigned(const Platform& platform) {
    const Subject subject(platform);
    const auto signer = signerOf(subject, platform, FIRST_KEY);
    IHttpStream::Request request = sampleRequest();
    const bool signs = !refusalToSign(*signer, request);
    const IHttpStream::Fields plain = {{"Date", "Tue, 20 Apr 2021 02:07:56 GMT"},
                                       {"Content-Type", "text/plain"}};
    const bytes body = {'d', 'o', 'n', 'e'};
    const std::string zeros = "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=";
    IHttpStream::Fields madeUp = plain;
    madeUp.emplace_back("Signature-Input", R"(sig=("@status");keyid="kit";alg="hmac-sha256")");
    madeUp.emplace_back("Signature", "sig=:" + zeros + ":");
    madeUp.emplace_back("Authorization", "Signature " + zeros);
    IHttpStream::Fields empty = plain;
    empty.emplace_back("Signature-Input", "");
    empty.emplace_back("Signature", "");

    const auto refusesUnsigned = signs ? answersFalse : refusesResponse;
    for (const IHttpStream::Request* const asked : {static_cast<const IHttpStream::Request*>(nullptr),
                                                    static_cast<const IHttpStream::Request*>(&request)}) {
        refusesUnsigned(*signer, "a response of nothing", Received({200, {}, {}}, asked));
        refusesUnsigned(*signer, "a response without a signature", Received({200, plain, body}, asked));
        refusesResponse(*signer, "a response with a made-up signature", Received({200, madeUp, body}, asked));
        refusesResponse(*signer, "a response with empty signature fields",
                        Received({200, empty, body}, asked));
        refusesResponse(*signer, "a response that sends the request's own signature back",
                        Received({200, request.fields, request.body}, asked));
    }
}

}  // namespace

std::vector<Check> signerChecks() {
    return {
        {"signs-or-refuses", "sign() leaves a signature; where it cannot, it throws, as verify() then does",
         signsOrRefuses},
        {"another-key-signs-differently", "What is signed under one key is not what another signs",
         anotherKeySignsDifferently},
        {"each-request-is-signed-differently",
         "What is signed of one request is not what is signed of one with another method, target or body",
         eachRequestIsSignedDifferently},
        {"a-service-takes-its-requests",
         "A service takes a request as sign() leaves it, and none with another method, target or body",
         aServiceTakesItsRequests},
        {"verifies-what-a-service-signs",
         "verify() answers true for a response as a service has signed it, and false for a changed one",
         verifiesWhatAServiceSigns},
        {"never-verifies-the-unsigned",
         "verify() answers false for a response without a signature, and true for none that nobody signed",
         neverVerifiesTheUnsigned},
    };
}

}  // namespace vorl::testkit
