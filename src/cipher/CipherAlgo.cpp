#include "vorl/CipherAlgo.h"

namespace vorl {

CipherAlgo::CipherAlgo(const std::string& theName) : name(theName) {}

std::shared_ptr<const CipherAlgo> CipherAlgo::AES() {
    static const auto& instance = *new auto(std::make_shared<const CipherAlgo>("AES"));
    return instance;
}

std::shared_ptr<const CipherAlgo> CipherAlgo::NULL_CIPHER() {
    static const auto& instance = *new auto(std::make_shared<const CipherAlgo>("NULL_CIPHER"));
    return instance;
}

}  // namespace vorl
