#include "vorl/VORLLib.h"

#include "vorl/CipherWrapper.h"
#include "vorl/EncryptionType.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/VorlCryptoFactory.h>

#include <openssl/crypto.h>

#include <map>

namespace vorl {

using tarvik::crypto::VorlCryptoFactory;

namespace {

using Policy = std::map<std::shared_ptr<const EncryptionType>, bool>;

// Never destroyed: an application's own static object may clean up the library when the process ends.
Policy& allowedEncryption() {
    static auto& policy = *new Policy;
    return policy;
}

}  // namespace

std::shared_ptr<const EncryptionType> VORLLib::type_;

bool VORLLib::init_ = false;

void VORLLib::init() {
    // OpenSSL would start by itself on its first use, where a lack of memory goes unnoticed or crashes.
    if (OPENSSL_init_crypto(
            OPENSSL_INIT_LOAD_CRYPTO_STRINGS | OPENSSL_INIT_ADD_ALL_CIPHERS | OPENSSL_INIT_ADD_ALL_DIGESTS,
            nullptr) == 0) {
        OpenSSLException::throw_message("OPENSSL_init_crypto()", "VORLLib", __LINE__, __func__);
    }
    allowedEncryption()[EncryptionType::NULL_CIPHER()] = true;
    allowedEncryption()[EncryptionType::TEST_CIPHER()] = true;
    allowedEncryption()[EncryptionType::FULL_CIPHER()] = true;
    VorlCryptoFactory::init();
    CipherWrapper::init();
    type_ = EncryptionType::FULL_CIPHER();
    init_ = true;
}

void VORLLib::cleanup() {
    init_ = false;
    CipherWrapper::cleanup();
    VorlCryptoFactory::cleanup();
}

void VORLLib::checkInit() {
    if (!init_) {
        throw VORLException("VORLLib must be initialized before use");
    }
}

bool VORLLib::isAllowedEncryptionType(const std::shared_ptr<const EncryptionType>& type) {
    checkInit();
    const Policy& policy = allowedEncryption();
    const auto entry = policy.find(type);
    return entry != policy.end() && entry->second;
}

void VORLLib::setAllowedEncryptionType(const std::shared_ptr<const EncryptionType>& type, bool allowed) {
    checkInit();
    const auto entry = allowedEncryption().find(type);
    if (entry == allowedEncryption().end()) {
        throw VORLException("unknown EncryptionType: " + type->toString());
    }
    entry->second = allowed;
}

bool VORLLib::isAllowedCipherWrapper(const std::shared_ptr<const CipherWrapper>& wrapper) {
    checkInit();
    for (const auto& [type, allowed] : allowedEncryption()) {
        if (type->wrapper == wrapper) {
            return allowed;
        }
    }
    return false;
}

}  // namespace vorl
