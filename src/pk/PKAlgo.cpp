#include "vorl/PKAlgo.h"

namespace vorl {

PKAlgo::PKAlgo(const std::string& theName) : name(theName) {}

std::shared_ptr<const PKAlgo> PKAlgo::RSA() {
    static const auto& instance = *new auto(std::make_shared<const PKAlgo>("RSA"));
    return instance;
}

}  // namespace vorl
