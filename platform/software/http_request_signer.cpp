#include "request_signer.h"

#include "tarvik/crypto/HttpRequestSigner.h"
#include "vorl/VORLException.h"

#include <openssl/crypto.h>

namespace tarvik::crypto {

namespace {

// The signer of a context without a key, which a null cipher needs none for: nobody is known by a signature
// that everybody can make.
class KeylessRequestSigner : public IRequestSigner {
public:
    void sign(const std::string& /*s*/, tarvik::http::IHttpStream::Request& /*request*/) override {
        throw vorl::VORLException("the key of the context is empty");
    }
    bool verify(const std::string& /*s*/, tarvik::http::IHttpStream& /*stream*/) override { return false; }
};

}  // namespace

std::shared_ptr<IRequestSigner> requestSignerFor(const std::vector<unsigned char>& contextKey) {
    if (contextKey.empty()) {
        return std::make_shared<KeylessRequestSigner>();
    }
    std::vector<unsigned char> key = HttpRequestSigner::keyOfContext(contextKey);
    // Also where there is no memory for the signer.
    const auto wipe = [](std::vector<unsigned char>* octets) {
        OPENSSL_cleanse(octets->data(), octets->size());
    };
    const std::unique_ptr<std::vector<unsigned char>, decltype(wipe)> wiped(&key, wipe);
    return std::make_shared<HttpRequestSigner>(key);
}

}  // namespace tarvik::crypto
