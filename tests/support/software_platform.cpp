#include "platform_under_test.h"

#include "vorl/OpenSSLException.h"

#include <typeinfo>

namespace vorl::test {

bytes keyFor(const bytes& value) {
    return value;
}

bool isPlatformFault(const std::exception& fault) {
    return typeid(fault) == typeid(OpenSSLException);
}

}  // namespace vorl::test
