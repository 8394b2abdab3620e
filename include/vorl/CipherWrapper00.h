#ifndef VORL_CIPHERWRAPPER00_H
#define VORL_CIPHERWRAPPER00_H

#include "vorl/CipherWrapper.h"

namespace vorl {

/// The null envelope: the message itself behind its length, for a peer that protects it otherwise.
class VORL_API CipherWrapper00 : public CipherWrapper {
public:
    explicit CipherWrapper00(const std::string& name);

    /// Uses neither `ctx` nor the registry. Throws std::length_error where the envelope would pass 2^32 - 1
    /// bytes.
    bytes encrypt(const bytes& data, tarvik::crypto::ICipherContext& ctx) const override;
    unsigned char id() const override;
    /// Final, since the version byte stands for this spec alone.
    std::shared_ptr<const CipherSpec> getCipherSpec() const final;

protected:
    bytes doDecrypt(Buffer& in, tarvik::crypto::ICipherContext& ctx) const override;
};

}  // namespace vorl

#endif
