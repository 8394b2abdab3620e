#ifndef VORL_TESTS_DH_GROUP_H
#define VORL_TESTS_DH_GROUP_H

#include "octets.h"

#include <openssl/bn.h>
#include <openssl/dh.h>

#include <memory>
#include <stdexcept>
#include <string>

// Diffie-Hellman by plain calls of OpenSSL, for expected numbers that do not come from the library: groups
// that never change, since making a large one takes seconds, and pairs whose private number the test chooses.

namespace vorl::test {

struct FreeNumber {
    void operator()(BIGNUM* number) const { BN_free(number); }
};
using Number = std::unique_ptr<BIGNUM, FreeNumber>;

inline Number numberFromHex(const std::string& hex) {
    BIGNUM* number = nullptr;
    if (BN_hex2bn(&number, hex.c_str()) != static_cast<int>(hex.size())) {
        BN_free(number);
        throw std::runtime_error("numberFromHex");
    }
    return Number(number);
}

inline Number numberFrom(const bytes& bigEndian) {
    Number number(BN_bin2bn(bigEndian.data(), static_cast<int>(bigEndian.size()), nullptr));
    if (!number) {
        throw std::runtime_error("numberFrom");
    }
    return number;
}

inline Number numberOf(BN_ULONG value) {
    Number number(BN_new());
    if (!number || BN_set_word(number.get(), value) != 1) {
        throw std::runtime_error("numberOf");
    }
    return number;
}

/// `number` and a small one.
inline Number plus(const BIGNUM* number, BN_ULONG summand) {
    Number sum(BN_dup(number));
    if (!sum || BN_add_word(sum.get(), summand) != 1) {
        throw std::runtime_error("plus");
    }
    return sum;
}

/// Never below zero.
inline Number minus(const BIGNUM* number, BN_ULONG subtrahend) {
    Number difference(BN_dup(number));
    if (!difference || BN_sub_word(difference.get(), subtrahend) != 1 || BN_is_negative(difference.get())) {
        throw std::runtime_error("minus");
    }
    return difference;
}

/// Unsigned, big-endian, without leading zeros; nothing for 0.
inline bytes bytesOf(const BIGNUM* number) {
    bytes bigEndian(static_cast<std::size_t>(BN_num_bytes(number)));
    BN_bn2bin(number, bigEndian.data());
    return bigEndian;
}

inline bytes bytesOf(const Number& number) {
    return bytesOf(number.get());
}

/// base ^ exponent mod modulus.
inline Number power(const BIGNUM* base, const BIGNUM* exponent, const BIGNUM* modulus) {
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
    Number result(BN_new());
    if (!ctx || !result || BN_mod_exp(result.get(), base, exponent, modulus, ctx.get()) != 1) {
        throw std::runtime_error("power");
    }
    return result;
}

struct Group {
    const char* primeHex;
    BN_ULONG generator;

    Number p() const { return numberFromHex(primeHex); }
    Number g() const { return numberOf(generator); }
    /// g ^ exponent mod p.
    Number raise(const BIGNUM* exponent) const { return power(g().get(), exponent, p().get()); }
};

/// RFC 2409, section 6.2: the second Oakley group, whose prime of 1024 bits is a safe one.
inline const Group RFC_2409_GROUP = {
    "FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74"
    "020BBEA63B139B22514A08798E3404DDEF9519B3CD3A431B302B0A6DF25F1437"
    "4FE1356D6D51C245E485B576625E7EC6F44C42E9A637ED6B0BFF5CB6F406B7ED"
    "EE386BFB5A899FA5AE9F24117C4B1FE649286651ECE65381FFFFFFFFFFFFFFFF",
    2};

/// RFC 3526, section 3: group 14, of 2048 bits.
inline const Group RFC_3526_GROUP_14 = {
    "FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74"
    "020BBEA63B139B22514A08798E3404DDEF9519B3CD3A431B302B0A6DF25F1437"
    "4FE1356D6D51C245E485B576625E7EC6F44C42E9A637ED6B0BFF5CB6F406B7ED"
    "EE386BFB5A899FA5AE9F24117C4B1FE649286651ECE45B3DC2007CB8A163BF05"
    "98DA48361C55D39A69163FA8FD24CF5F83655D23DCA3AD961C62F356208552BB"
    "9ED529077096966D670C354E4ABC9804F1746C08CA18217C32905E462E36CE3B"
    "E39E772C180E86039B2783A2EC07A28FB5C55DF06F4C52C9DE2BCBF695581718"
    "3995497CEA956AE515D2261898FA051015728E5A8AACAA68FFFFFFFFFFFFFFFF",
    2};

/// From `openssl dhparam -2 512` and `openssl dhparam -5 512`.
inline const Group GROUP_512_2 = {
    "CFA72FEA1B38C249FBE83E08E8C25BDD8ECAB572B3AD47ABF73F72258F5FCD65"
    "E84D9364C847F46B9D37AA8ADA263881474FBF7A31C035FE47AE2D421437DA87",
    2};
inline const Group GROUP_512_5 = {
    "E4DC3E38E3E266AB3C797908905A29DFD0C8C3E402274C49CD7401CA370240E8"
    "FE8987AF9E05AAA435940AEA581A55D330B8FD88163993D43FCB7CCFF70A97EF",
    5};

/// The PEM text from which GROUP_512_2 was taken.
inline const char GROUP_512_2_PEM[] =
    "-----BEGIN DH PARAMETERS-----\n"
    "MEYCQQDPpy/qGzjCSfvoPgjowlvdjsq1crOtR6v3P3Ilj1/NZehNk2TIR/RrnTeq\n"
    "itomOIFHT796McA1/keuLUIUN9qHAgEC\n"
    "-----END DH PARAMETERS-----\n";

/// A DH of these numbers, copied. Null leaves a key out.
inline std::shared_ptr<DH> rawDh(const BIGNUM* p, const BIGNUM* g, const BIGNUM* pubKey = nullptr,
                                 const BIGNUM* privKey = nullptr) {
    const std::shared_ptr<DH> dh(DH_new(), DH_free);
    Number prime(BN_dup(p));
    Number generator(BN_dup(g));
    Number publicNumber(pubKey != nullptr ? BN_dup(pubKey) : nullptr);
    Number privateNumber(privKey != nullptr ? BN_dup(privKey) : nullptr);
    if (!dh || DH_set0_pqg(dh.get(), prime.get(), nullptr, generator.get()) != 1) {
        throw std::runtime_error("rawDh: DH_set0_pqg");
    }
    static_cast<void>(prime.release());
    static_cast<void>(generator.release());
    if (DH_set0_key(dh.get(), publicNumber.get(), privateNumber.get()) != 1) {
        throw std::runtime_error("rawDh: DH_set0_key");
    }
    static_cast<void>(publicNumber.release());
    static_cast<void>(privateNumber.release());
    return dh;
}

inline std::shared_ptr<DH> rawDh(const Group& group) {
    return rawDh(group.p().get(), group.g().get());
}

/// The pair of a chosen private number.
inline std::shared_ptr<DH> rawPair(const Group& group, const BIGNUM* privKey) {
    return rawDh(group.p().get(), group.g().get(), group.raise(privKey).get(), privKey);
}

}  // namespace vorl::test

#endif
