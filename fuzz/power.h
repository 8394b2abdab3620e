#ifndef VORL_FUZZ_POWER_H
#define VORL_FUZZ_POWER_H

#include "vorl/bytes.h"
#include "vorl/safe_ptr.h"

#include <openssl/bn.h>

#include <cstddef>
#include <memory>

namespace vorl::fuzz {

inline std::shared_ptr<BIGNUM> numberOf(const bytes& octets) {
    return safe_ptr(BN_bin2bn(octets.data(), static_cast<int>(octets.size()), nullptr));
}

inline bytes octetsOf(const BIGNUM* number) {
    bytes octets(static_cast<std::size_t>(BN_num_bytes(number)));
    BN_bn2bin(number, octets.data());
    return octets;
}

/// base ^ exponent mod modulus by OpenSSL's plain arithmetic, which is other code than the constant-time kind
/// that an exchange takes. Null where there is no such power.
inline std::shared_ptr<BIGNUM> power(const BIGNUM* base, const BIGNUM* exponent, const BIGNUM* modulus) {
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
    std::shared_ptr<BIGNUM> result = safe_ptr(BN_new());
    return BN_mod_exp(result.get(), base, exponent, modulus, ctx.get()) == 1 ? result : nullptr;
}

/// The secret of an exchange in a group of 128 bytes, for the private key `own` and a peer's number: the
/// power without leading zeros at the front, zeros behind it and always at the end. Only zeros for a peer
/// that OpenSSL 3.0 refuses, because the power is 0, 1 or p - 1 or because p is even.
inline bytes secretOf(const BIGNUM* peer, const BIGNUM* own, const BIGNUM* p) {
    const std::shared_ptr<BIGNUM> last = safe_ptr(BN_dup(p));
    BN_sub_word(last.get(), 1);
    const std::shared_ptr<BIGNUM> shared = BN_is_odd(p) != 0 ? power(peer, own, p) : nullptr;
    bytes secret;
    if (shared && BN_cmp(shared.get(), BN_value_one()) > 0 && BN_cmp(shared.get(), last.get()) != 0) {
        secret = octetsOf(shared.get());
    }
    secret.resize(128, 0x00);
    secret.back() = 0x00;
    return secret;
}

}  // namespace vorl::fuzz

#endif
