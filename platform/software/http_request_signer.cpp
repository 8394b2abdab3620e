#include "request_signer.h"

#include "tarvik/crypto/HttpRequestSigner.h"

#include <openssl/crypto.h>

namespace tarvik::crypto {

std::shared_ptr<IRequestSigner> requestSignerFor(const std::vector<unsigned char>& contextKey) {
    std::vector<unsigned char> key = HttpRequestSigner::keyOfContext(contextKey);
    const auto signer = std::make_shared<HttpRequestSigner>(key);
    OPENSSL_cleanse(key.data(), key.size());
    return signer;
}

}  // namespace tarvik::crypto
