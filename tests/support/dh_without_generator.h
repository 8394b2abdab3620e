#ifndef VORL_TESTS_DH_WITHOUT_GENERATOR_H
#define VORL_TESTS_DH_WITHOUT_GENERATOR_H

#include "dh_group.h"

#include <openssl/opensslv.h>

#if OPENSSL_VERSION_NUMBER >= 0x30000000L

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>

#include <memory>
#include <stdexcept>

namespace vorl::test {

/// A DH that has a prime only. The functions on a DH make none such, but a key of OpenSSL 3.0 may be one.
inline std::shared_ptr<DH> rawDhWithoutGenerator(const BIGNUM* p) {
    const std::unique_ptr<OSSL_PARAM_BLD, decltype(&OSSL_PARAM_BLD_free)> numbers(OSSL_PARAM_BLD_new(),
                                                                                  OSSL_PARAM_BLD_free);
    OSSL_PARAM_BLD_push_BN(numbers.get(), OSSL_PKEY_PARAM_FFC_P, p);
    const std::unique_ptr<OSSL_PARAM, decltype(&OSSL_PARAM_free)> params(
        OSSL_PARAM_BLD_to_param(numbers.get()), OSSL_PARAM_free);
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(
        EVP_PKEY_CTX_new_from_name(nullptr, "DH", nullptr), EVP_PKEY_CTX_free);
    EVP_PKEY* made = nullptr;
    if (EVP_PKEY_fromdata_init(ctx.get()) != 1 ||
        EVP_PKEY_fromdata(ctx.get(), &made, EVP_PKEY_KEY_PARAMETERS, params.get()) != 1) {
        throw std::runtime_error("rawDhWithoutGenerator");
    }
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(made, EVP_PKEY_free);
    std::shared_ptr<DH> dh(EVP_PKEY_get1_DH(key.get()), DH_free);
    if (!dh || DH_get0_p(dh.get()) == nullptr || DH_get0_g(dh.get()) != nullptr) {
        throw std::runtime_error("rawDhWithoutGenerator");
    }
    return dh;
}

}  // namespace vorl::test

#endif

#endif
