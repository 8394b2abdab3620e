#ifndef VORL_SAFE_PTR_H
#define VORL_SAFE_PTR_H

#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <memory>

namespace vorl {

/// Shared ownership of an OpenSSL object, which is freed with OpenSSL's own function for its type.
///
/// A null `p` is passed on as it is: the caller tests the result and reports the call that failed.
/// Throws std::bad_alloc where there is no memory for the shared count; `p` is freed then as well.
VORL_API std::shared_ptr<X509> safe_ptr(X509* p);
VORL_API std::shared_ptr<DSA> safe_ptr(DSA* p);
VORL_API std::shared_ptr<RSA> safe_ptr(RSA* p);
VORL_API std::shared_ptr<DH> safe_ptr(DH* p);
VORL_API std::shared_ptr<EVP_PKEY> safe_ptr(EVP_PKEY* p);
VORL_API std::shared_ptr<BIO> safe_ptr(BIO* p);
VORL_API std::shared_ptr<BIGNUM> safe_ptr(BIGNUM* p);

}  // namespace vorl

#endif
