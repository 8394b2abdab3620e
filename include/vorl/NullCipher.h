#ifndef VORL_NULLCIPHER_H
#define VORL_NULLCIPHER_H

#include "vorl/Cipher.h"
#include "vorl/bytes.h"

namespace vorl {

/// The identity: what goes in comes out. IVs are ignored.
class VORL_API NullCipher : public Cipher {
public:
    NullCipher();

    void encryptInit(const bytes& iv) override;
    void decryptInit(const bytes& iv) override;
    bytes update(const bytes& data) override;
    bytes final() override;
};

}  // namespace vorl

#endif
