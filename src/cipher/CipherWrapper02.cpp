#include "vorl/CipherWrapper02.h"

#include "vorl/CipherSpec.h"

namespace vorl {

CipherWrapper02::CipherWrapper02(const std::string& name)
    : CipherWrapper(name, CipherSpec::AES_128_CBC_PKCS5()) {}

unsigned char CipherWrapper02::id() const {
    return 0x02;
}

std::shared_ptr<const CipherSpec> CipherWrapper02::getCipherSpec() const {
    return spec_;
}

}  // namespace vorl
