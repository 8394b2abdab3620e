#include "vorl/Cipher.h"

#include "vorl/CipherSpec.h"

#include <utility>

namespace vorl {

Cipher::Spec Cipher::id() {
    return spec_->spec;
}

Cipher::Cipher(std::shared_ptr<const CipherSpec> spec) : spec_(std::move(spec)) {}

}  // namespace vorl
