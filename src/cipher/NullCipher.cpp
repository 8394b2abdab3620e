#include "vorl/NullCipher.h"

#include "vorl/CipherSpec.h"

namespace vorl {

NullCipher::NullCipher() : Cipher(CipherSpec::NULL_CIPHER()) {}

void NullCipher::encryptInit(const bytes& /*iv*/) {}

void NullCipher::decryptInit(const bytes& /*iv*/) {}

bytes NullCipher::update(const bytes& data) {
    return data;
}

bytes NullCipher::final() {
    return bytes();
}

}  // namespace vorl
