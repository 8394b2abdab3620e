#include "vorl/CipherMode.h"

namespace vorl {

CipherMode::CipherMode(const std::string& theName) : name(theName) {}

std::shared_ptr<const CipherMode> CipherMode::CBC() {
    static const auto& instance = *new auto(std::make_shared<const CipherMode>("CBC"));
    return instance;
}

std::shared_ptr<const CipherMode> CipherMode::ECB() {
    static const auto& instance = *new auto(std::make_shared<const CipherMode>("ECB"));
    return instance;
}

std::shared_ptr<const CipherMode> CipherMode::NONE() {
    static const auto& instance = *new auto(std::make_shared<const CipherMode>("NONE"));
    return instance;
}

}  // namespace vorl
