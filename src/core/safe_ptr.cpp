#include "vorl/safe_ptr.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dh.h>
#include <openssl/dsa.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

// std::shared_ptr calls the deleter itself when it cannot allocate its count, so nothing is caught here:
// a second free would be a double free.

namespace vorl {

std::shared_ptr<X509> safe_ptr(X509* p) {
    return {p, X509_free};
}

std::shared_ptr<DSA> safe_ptr(DSA* p) {
    return {p, DSA_free};
}

std::shared_ptr<RSA> safe_ptr(RSA* p) {
    return {p, RSA_free};
}

std::shared_ptr<DH> safe_ptr(DH* p) {
    return {p, DH_free};
}

std::shared_ptr<EVP_PKEY> safe_ptr(EVP_PKEY* p) {
    return {p, EVP_PKEY_free};
}

std::shared_ptr<BIO> safe_ptr(BIO* p) {
    return {p, BIO_free};
}

std::shared_ptr<BIGNUM> safe_ptr(BIGNUM* p) {
    return {p, BN_free};
}

}  // namespace vorl
