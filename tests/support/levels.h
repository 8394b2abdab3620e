#ifndef VORL_TESTS_LEVELS_H
#define VORL_TESTS_LEVELS_H

#include "message_sizes.h"
#include "vorl/CipherSpec.h"
#include "vorl/EncryptionType.h"
#include "vorl/NullCipher.h"
#include "vorl/SoftwareKeyCipher.h"

#include <memory>

namespace vorl::test {

inline std::shared_ptr<const EncryptionType> typeOf(Level level) {
    switch (level) {
        case NONE:
            return EncryptionType::NULL_CIPHER();
        case TEST:
            return EncryptionType::TEST_CIPHER();
        default:
            return EncryptionType::FULL_CIPHER();
    }
}

/// The library's own context for a level.
inline std::shared_ptr<tarvik::crypto::ICipherContext> cipherOf(Level level, const bytes& key) {
    if (level == NONE) {
        return std::make_shared<NullCipher>();
    }
    return std::make_shared<SoftwareKeyCipher>(
        level == TEST ? CipherSpec::AES_128_ECB_PKCS5() : CipherSpec::AES_128_CBC_PKCS5(), key);
}

}  // namespace vorl::test

#endif
