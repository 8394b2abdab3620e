#include "vorl/CipherWrapper01.h"

#include "vorl/CipherSpec.h"

namespace vorl {

CipherWrapper01::CipherWrapper01(const std::string& name)
    : CipherWrapper(name, CipherSpec::AES_128_ECB_PKCS5()) {}

unsigned char CipherWrapper01::id() const {
    return 0x01;
}

std::shared_ptr<const CipherSpec> CipherWrapper01::getCipherSpec() const {
    return spec_;
}

}  // namespace vorl
