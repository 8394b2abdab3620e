#ifndef VORL_CIPHERWRAPPER01_H
#define VORL_CIPHERWRAPPER01_H

#include "vorl/CipherWrapper.h"

namespace vorl {

/// The test envelope: AES-128-ECB with PKCS #5 padding, without an IV.
class VORL_API CipherWrapper01 : public CipherWrapper {
public:
    explicit CipherWrapper01(const std::string& name);

    unsigned char id() const override;
    /// Final, since the version byte stands for this spec alone.
    std::shared_ptr<const CipherSpec> getCipherSpec() const final;
};

}  // namespace vorl

#endif
