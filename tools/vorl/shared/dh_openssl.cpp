#include "shared/dh_openssl.h"

#include "inspect/dh_numbers.h"
#include "vorl/BigNum.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"
#include "vorl/safe_ptr.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dh.h>
#include <openssl/err.h>
#include <openssl/pem.h>

namespace vorl::tool {

namespace {

[[noreturn]] void fail(const char* call, int line, const char* function) {
    OpenSSLException::throw_message(call, "dh_openssl", line, function);
}

std::shared_ptr<DH> dhOf(const DiffieHellmanParams& group) {
    const GroupNumbers numbers = numbersOf(group);
    std::shared_ptr<DH> dh = safe_ptr(DH_new());
    std::unique_ptr<BIGNUM, decltype(&BN_free)> p(BN_dup(BigNum(numbers.prime).getBIGNUM()), &BN_free);
    std::unique_ptr<BIGNUM, decltype(&BN_free)> g(BN_dup(BigNum(numbers.generator).getBIGNUM()), &BN_free);
    if (!dh || !p || !g || DH_set0_pqg(dh.get(), p.get(), nullptr, g.get()) == 0) {
        fail("DH_set0_pqg()", __LINE__, __func__);
    }
    static_cast<void>(p.release());
    static_cast<void>(g.release());
    return dh;
}

struct Finding {
    int code;
    const char* text;
};

const Finding FINDINGS[] = {
    {DH_CHECK_P_NOT_PRIME, "the prime is not prime"},
    {DH_CHECK_P_NOT_SAFE_PRIME, "the prime is not a safe one: half of it is not prime"},
    {DH_UNABLE_TO_CHECK_GENERATOR, "the generator cannot be checked"},
    {DH_NOT_SUITABLE_GENERATOR, "the generator is not suitable: it has to lie between 1 and the prime - 1"},
#ifdef DH_MODULUS_TOO_SMALL
    {DH_MODULUS_TOO_SMALL, "the prime is too small: OpenSSL takes 512 bits or more"},
    {DH_MODULUS_TOO_LARGE, "the prime is too large: OpenSSL takes 10000 bits or fewer"},
#endif
};

// DH_check() takes a group that it knows by name without looking, and RFC 5114 has such groups with a prime
// that is no safe one: what an agreement over them gives depends on the subgroup's order, which the library
// does not know.
bool hasSafePrime(const DiffieHellmanParams& group) {
    const BigNum prime(numbersOf(group).prime);
    std::unique_ptr<BIGNUM, decltype(&BN_free)> half(BN_new(), &BN_free);
    std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context(BN_CTX_new(), &BN_CTX_free);
    if (!half || !context || BN_rshift1(half.get(), prime.getBIGNUM()) == 0) {
        fail("BN_rshift1()", __LINE__, __func__);
    }
    const int answer = BN_is_prime_ex(half.get(), BN_prime_checks, context.get(), nullptr);
    if (answer < 0) {
        fail("BN_is_prime_ex()", __LINE__, __func__);
    }
    return answer == 1;
}

}  // namespace

bytes pemOf(const DiffieHellmanParams& group) {
    const std::shared_ptr<DH> dh = dhOf(group);
    const std::shared_ptr<BIO> text = safe_ptr(BIO_new(BIO_s_mem()));
    if (!text || PEM_write_bio_DHparams(text.get(), dh.get()) == 0) {
        fail("PEM_write_bio_DHparams()", __LINE__, __func__);
    }
    bytes pem(BIO_ctrl_pending(text.get()));
    if (BIO_read(text.get(), pem.data(), static_cast<int>(pem.size())) != static_cast<int>(pem.size())) {
        fail("BIO_read()", __LINE__, __func__);
    }
    return pem;
}

std::vector<std::string> faultsOf(const DiffieHellmanParams& group) {
    int codes = 0;
    if (DH_check(dhOf(group).get(), &codes) == 0) {
        ERR_clear_error();
        return {"OpenSSL cannot check numbers of that size"};
    }
    // A second time where DH_check() has done so: which groups it skips differs between versions of OpenSSL.
    if (codes == 0 && !hasSafePrime(group)) {
        codes = DH_CHECK_P_NOT_SAFE_PRIME;
    }
    std::vector<std::string> faults;
    for (const Finding& finding : FINDINGS) {
        if ((codes & finding.code) != 0) {
            faults.emplace_back(finding.text);
            codes &= ~finding.code;
        }
    }
    if (codes != 0) {
        faults.push_back("OpenSSL finds something else: 0x" +
                         Util::toHexString(static_cast<unsigned int>(codes)));
    }
    return faults;
}

}  // namespace vorl::tool
