#include "request_signer.h"

#include "tarvik/crypto/HttpRequestSigner.h"

#include <openssl/crypto.h>

namespace tarvik::crypto {

std::shared_ptr<IRequestSigner> requestSignerFor(const std::vector<unsigned char>& contextKey) {
    std::vector<unsigned char> key = HttpRequestSigner::keyOfContext(contextKey);
    // Also where there is no memory for the signer.
    const auto wipe = [](std::vector<unsigned char>* octets) {
        OPENSSL_cleanse(octets->data(), octets->size());
    };
    const std::unique_ptr<std::vector<unsigned char>, decltype(wipe)> wiped(&key, wipe);
    return std::make_shared<HttpRequestSigner>(key);
}

}  // namespace tarvik::crypto
