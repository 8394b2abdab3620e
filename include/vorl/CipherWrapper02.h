#ifndef VORL_CIPHERWRAPPER02_H
#define VORL_CIPHERWRAPPER02_H

#include "vorl/CipherWrapper.h"

namespace vorl {

/// The full envelope: AES-128-CBC with PKCS #5 padding and a fresh random IV.
class VORL_API CipherWrapper02 : public CipherWrapper {
public:
    explicit CipherWrapper02(const std::string& name);

    unsigned char id() const override;
    /// Final, since the version byte stands for this spec alone.
    std::shared_ptr<const CipherSpec> getCipherSpec() const final;
};

}  // namespace vorl

#endif
