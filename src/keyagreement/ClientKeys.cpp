#include "vorl/ClientKeys.h"

#include "core/WipeUnlessKept.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstddef>

namespace vorl {

namespace {

const std::size_t MIN_SECRET_BYTES = 48;
const std::size_t MIN_ID_CHARACTERS = 9;
const std::size_t ENCRYPTION_KEY_BYTES = 16;
const std::size_t HMAC_KEY_BYTES = 32;

bool isEqual(const bytes& a, const bytes& b) {
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

void checkIdLength(std::size_t length) {
    if (length < MIN_ID_CHARACTERS) {
        throw VORLException("ShopperID/esn length (" + std::to_string(length) + ") < " +
                            std::to_string(MIN_ID_CHARACTERS));
    }
}

}  // namespace

ClientKeys::ClientKeys(const bytes& sharedSecret) {
    if (sharedSecret.size() < MIN_SECRET_BYTES) {
        throw VORLException("shared secret too small");
    }
    derive(sharedSecret);
}

ClientKeys::ClientKeys(const std::string& id) {
    checkIdLength(id.size());
    bytes material(id.begin(), id.end());
    const WipeUnlessKept wipe(material);
    derive(material);
}

ClientKeys::ClientKeys(const unsigned char* data, unsigned int len) {
    checkIdLength(len);
    bytes material(data, data + len);
    const WipeUnlessKept wipe(material);
    derive(material);
}

ClientKeys::~ClientKeys() {
    OPENSSL_cleanse(encryptionKey_.data(), encryptionKey_.size());
    OPENSSL_cleanse(hmacKey_.data(), hmacKey_.size());
}

void ClientKeys::derive(const bytes& material) {
    Digester digester(DigestAlgo::SHA384());
    digester.init();
    digester.update(material);
    bytes digest = digester.final();
    const WipeUnlessKept wipe(digest);
    if (digest.size() != ENCRYPTION_KEY_BYTES + HMAC_KEY_BYTES) {
        throw VORLException("invalid digest output size");
    }

    // Room for both first: once it is there, nothing can fail.
    encryptionKey_.resize(ENCRYPTION_KEY_BYTES);
    hmacKey_.resize(HMAC_KEY_BYTES);
    std::copy_n(digest.begin(), ENCRYPTION_KEY_BYTES, encryptionKey_.begin());
    std::copy_n(digest.begin() + ENCRYPTION_KEY_BYTES, HMAC_KEY_BYTES, hmacKey_.begin());
}

bool ClientKeys::operator==(const ClientKeys& other) const {
    // Both are always compared, so that the time does not tell which one differs.
    const bool sameEncryptionKey = isEqual(encryptionKey_, other.encryptionKey_);
    const bool sameHmacKey = isEqual(hmacKey_, other.hmacKey_);
    return sameEncryptionKey && sameHmacKey;
}

std::string ClientKeys::toString() const {
    return "Client-Keys:\n" + Util::toFormatHexString(encryptionKey_, "Client-Encryption-Key") +
           Util::toFormatHexString(hmacKey_, "Client-HMAC-Key");
}

}  // namespace vorl
