#include "vorl/ASN1Exception.h"

namespace vorl {

ASN1Exception::ASN1Exception(const std::string& msg) : VORLException(msg) {}

ASN1Exception::~ASN1Exception() = default;

}  // namespace vorl
