#ifndef VORL_ASN1EXCEPTION_H
#define VORL_ASN1EXCEPTION_H

#include "vorl/VORLException.h"

namespace vorl {

/// A record that cannot be read or written: a length, a bound or a unit size is wrong.
/// Its code is always GENERAL_ERROR.
class VORL_API ASN1Exception : public VORLException {
public:
    explicit ASN1Exception(const std::string& msg);

    ASN1Exception(const ASN1Exception&) = default;
    ASN1Exception& operator=(const ASN1Exception&) = default;
    ~ASN1Exception() override;
};

}  // namespace vorl

#endif
