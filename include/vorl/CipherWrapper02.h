#ifndef VORL_CIPHERWRAPPER02_H
#define VORL_CIPHERWRAPPER02_H

#include "vorl/CipherWrapper.h"

namespace vorl {

/// The full envelope: AES-128-CBC with PKCS #5 padding and a fresh random IV.
class VORL_API CipherWrapper02 final : public CipherWrapper {
public:
    explicit CipherWrapper02(const std::string& name);
    ~CipherWrapper02() override;

    unsigned char id() const override;
    std::shared_ptr<const CipherSpec> getCipherSpec() const override;
};

}  // namespace vorl

#endif
