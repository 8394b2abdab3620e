#include "tarvik/crypto/VorlCryptoFactory.h"

#include "request_signer.h"
#include "vorl/CipherSpec.h"
#include "vorl/NullCipher.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VORLException.h"

#include <string>

namespace tarvik::crypto {

namespace {

bool initialized = false;

std::shared_ptr<ICipherContext> cipherFor(ICipherContext::Spec spec, const std::vector<unsigned char>& key) {
    switch (spec) {
        case ICipherContext::SPEC_NULL:
            return std::make_shared<vorl::NullCipher>();
        case ICipherContext::SPEC_AES_128_ECB:
            return std::make_shared<vorl::SoftwareKeyCipher>(vorl::CipherSpec::AES_128_ECB_PKCS5(), key);
        case ICipherContext::SPEC_AES_128_CBC:
            return std::make_shared<vorl::SoftwareKeyCipher>(vorl::CipherSpec::AES_128_CBC_PKCS5(), key);
    }
    throw vorl::VORLException("unknown cipher spec: " + std::to_string(static_cast<unsigned int>(spec)));
}

}  // namespace

void VorlCryptoFactory::init() {
    initialized = true;
}

void VorlCryptoFactory::cleanup() {
    initialized = false;
}

std::pair<std::shared_ptr<ICipherContext>, std::shared_ptr<IRequestSigner>> VorlCryptoFactory::cryptContext(
    ICipherContext::Spec spec, const std::vector<unsigned char>& key) {
    if (!initialized) {
        throw vorl::VORLException("VorlCryptoFactory must be initialized before use");
    }
    return {cipherFor(spec, key), requestSignerFor(key)};
}

}  // namespace tarvik::crypto
