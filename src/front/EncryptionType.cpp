#include "vorl/EncryptionType.h"

#include "vorl/CipherWrapper.h"

#include <utility>

namespace vorl {

EncryptionType::EncryptionType(const std::string& theName, std::shared_ptr<const CipherWrapper> theWrapper)
    : name(theName), wrapper(std::move(theWrapper)) {}

std::shared_ptr<const EncryptionType> EncryptionType::FULL_CIPHER() {
    static const auto& instance =
        *new auto(std::make_shared<const EncryptionType>("Full", CipherWrapper::FULL_CIPHER()));
    return instance;
}

std::shared_ptr<const EncryptionType> EncryptionType::TEST_CIPHER() {
    static const auto& instance =
        *new auto(std::make_shared<const EncryptionType>("Test", CipherWrapper::TEST_CIPHER()));
    return instance;
}

std::shared_ptr<const EncryptionType> EncryptionType::NULL_CIPHER() {
    static const auto& instance =
        *new auto(std::make_shared<const EncryptionType>("None", CipherWrapper::NULL_CIPHER()));
    return instance;
}

std::string EncryptionType::toString() const {
    return "EncryptionType[" + name + ":" + wrapper->toString() + "]";
}

}  // namespace vorl
