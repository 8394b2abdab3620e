#include "Subject.h"
#include "checks.h"
#include "expectations.h"

#include <tarvik/http/IHttpStream.h>

// What any request signer must keep to, whatever it signs and however: one that signs leaves a signature, one
// that does not sign says so, and nothing is taken for signed that is not.

namespace vorl::testkit {

using tarvik::crypto::IRequestSigner;
using tarvik::http::IHttpStream;

namespace {

const char NAME[] = "kit";

// Copies of fields, and of the request that the response answers.
class Response : public IHttpStream {
public:
    Response(Fields fields, bytes body, const Request* request)
        : fields_(std::move(fields)), body_(std::move(body)), request_(request) {}

    unsigned int status() const override { return 200; }
    const Fields& fields() const override { return fields_; }
    const bytes& body() const override { return body_; }
    const Request* request() const override { return request_; }

private:
    const Fields fields_;
    const bytes body_;
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
    Response response({}, {}, &request);
    require(!accepts("verify()", [&] { static_cast<void>(signer->verify(NAME, response)); }),
            "sign() throws " + *refusal + ", but verify() does not throw");
}

void anotherKeySignsDifferently(const Platform& platform) {
    const Subject subject(platform);
    IHttpStream::Request one = sampleRequest();
    if (refusalToSign(*signerOf(subject, platform, FIRST_KEY), one)) {
        throw LeftOut("The platform does not sign");
    }
    IHttpStream::Request other = sampleRequest();
    require(!refusalToSign(*signerOf(subject, platform, SECOND_KEY), other),
            "sign() works under one key only");
    require(!isSame(one, other), "sign() leaves the same under two keys");
}

void refusesResponse(IRequestSigner& signer, const std::string& what, Response response) {
    bool isGood = false;
    accepts("verify() of " + what, [&] { isGood = signer.verify(NAME, response); });
    require(!isGood, "verify() answers true for " + what);
}

void neverVerifiesTheUnsigned(const Platform& platform) {
    const Subject subject(platform);
    const auto signer = signerOf(subject, platform, FIRST_KEY);
    IHttpStream::Request request = sampleRequest();
    static_cast<void>(refusalToSign(*signer, request));
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

    for (const IHttpStream::Request* const asked : {static_cast<const IHttpStream::Request*>(nullptr),
                                                    static_cast<const IHttpStream::Request*>(&request)}) {
        refusesResponse(*signer, "a response of nothing", Response({}, {}, asked));
        refusesResponse(*signer, "a response without a signature", Response(plain, body, asked));
        refusesResponse(*signer, "a response with a made-up signature", Response(madeUp, body, asked));
        refusesResponse(*signer, "a response with empty signature fields", Response(empty, body, asked));
        refusesResponse(*signer, "a response that sends the request's own signature back",
                        Response(request.fields, request.body, asked));
    }
}

}  // namespace

std::vector<Check> signerChecks() {
    return {
        {"signs-or-refuses", "sign() leaves a signature; where it cannot, it throws, as verify() then does",
         signsOrRefuses},
        {"another-key-signs-differently", "What is signed under one key is not what another signs",
         anotherKeySignsDifferently},
        {"never-verifies-the-unsigned", "verify() does not answer true for a response that nobody signed",
         neverVerifiesTheUnsigned},
    };
}

}  // namespace vorl::testkit
