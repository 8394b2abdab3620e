#ifndef VORL_CIPHER_H
#define VORL_CIPHER_H

#include "vorl/export.h"

#include <tarvik/crypto/ICipherContext.h>

#include <memory>

namespace vorl {

class CipherSpec;

/// A cipher context bound to a CipherSpec.
class VORL_API Cipher : public tarvik::crypto::ICipherContext {
public:
    /// The spec's identifier.
    Spec id() override;

    /// Whether this is the very spec that the context was made with.
    bool isBoundTo(const CipherSpec& spec) const { return spec_.get() == &spec; }

protected:
    /// `spec` must not be null.
    explicit Cipher(std::shared_ptr<const CipherSpec> spec);

    const std::shared_ptr<const CipherSpec> spec_;
};

}  // namespace vorl

#endif
