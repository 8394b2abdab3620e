#include "inspect/structure.h"

#include "inspect/numbers.h"
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
    bytes update(const bytes& data) override {
        takenBytes_ += data.size();
        return bytes();
    }
    bytes final() override { return bytes(); }

    std::uint64_t takenBytes() const { return takenBytes_; }

private:
    const Spec spec_;
    std::uint64_t takenBytes_ = 0;
};

ICipherContext::Spec specOf(const bytes& envelope) {
    // An empty envelope is refused before its context is looked at.
    return envelope.empty() ? ICipherContext::SPEC_NULL
                            : CipherWrapper::forID(envelope.front())->getCipherSpec()->spec;
}

// What the library finds in an envelope: what is wrong, or how much it would hand to a cipher.
struct Structure {
    std::optional<std::string> fault;
    std::uint64_t bodyBytes;
};

Structure readStructure(const bytes& envelope) {
    try {
        AnythingGoes cipher(specOf(envelope));
        CipherWrapper::decrypt(envelope, cipher);
        return {std::nullopt, cipher.takenBytes()};
    } catch (const VORLException& fault) {
        return {fault.what(), 0};
    }
}

}  // namespace

std::optional<std::string> structureFault(const bytes& envelope) {
    return readStructure(envelope).fault;
}

std::optional<std::string> blockFault(std::uint64_t bodyBytes, const CipherSpec& spec) {
    if (spec.blockSize == 0 || (bodyBytes > 0 && bodyBytes % spec.blockSize == 0)) {
        return std::nullopt;
    }
    return "the body has " + bytesText(bodyBytes) + "; what a key opens has a multiple of " +
           std::to_string(spec.blockSize) + ", and at least that";
}

std::optional<std::string> openingFault(const bytes& envelope, const CipherSpec& spec) {
    const Structure structure = readStructure(envelope);
    return structure.fault ? structure.fault : blockFault(structure.bodyBytes, spec);
}

}  // namespace vorl::tool
