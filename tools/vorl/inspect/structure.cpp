#include "inspect/structure.h"

#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/ICipherContext.h>

namespace vorl::tool {

using tarvik::crypto::ICipherContext;

namespace {

// A cipher that takes any ciphertext, so that only the structure of an envelope decides.
class AnythingGoes : public ICipherContext {
public:
    explicit AnythingGoes(Spec spec) : spec_(spec) {}

    Spec id() override { return spec_; }
    void encryptInit(const bytes& /*iv*/) override {}
    void decryptInit(const bytes& /*iv*/) override {}
    bytes update(const bytes& /*data*/) override { return bytes(); }
    bytes final() override { return bytes(); }

private:
    const Spec spec_;
};

ICipherContext::Spec specOf(const bytes& envelope) {
    // An empty envelope is refused before its context is looked at.
    return envelope.empty() ? ICipherContext::SPEC_NULL
                            : CipherWrapper::forID(envelope.front())->getCipherSpec()->spec;
}

}  // namespace

std::optional<std::string> structureFault(const bytes& envelope) {
    try {
        AnythingGoes cipher(specOf(envelope));
        CipherWrapper::decrypt(envelope, cipher);
    } catch (const VORLException& fault) {
        return fault.what();
    }
    return std::nullopt;
}

}  // namespace vorl::tool
