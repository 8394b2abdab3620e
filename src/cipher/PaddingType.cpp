#include "vorl/PaddingType.h"

namespace vorl {

PaddingType::PaddingType(const std::string& theName) : name(theName) {}

std::shared_ptr<const PaddingType> PaddingType::PKCS5Padding() {
    static const auto& instance = *new auto(std::make_shared<const PaddingType>("PKCS5Padding"));
    return instance;
}

std::shared_ptr<const PaddingType> PaddingType::NONE() {
    static const auto& instance = *new auto(std::make_shared<const PaddingType>("NONE"));
    return instance;
}

}  // namespace vorl
