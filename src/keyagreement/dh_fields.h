#ifndef VORL_KEYAGREEMENT_DH_FIELDS_H
#define VORL_KEYAGREEMENT_DH_FIELDS_H

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

// The only code that reaches into a DH. Failures are returned; each caller reports them in its own words.

/// The numbers of a DH, lent; null for each that it does not have.
struct DhNumbers {
    const BIGNUM* p = nullptr;
    const BIGNUM* g = nullptr;
    const BIGNUM* pubKey = nullptr;
    const BIGNUM* privKey = nullptr;
};

/// `dh` may be null.
DhNumbers numbersOf(const DH* dh);

struct WipeAndFree {
    void operator()(BIGNUM* number) const;
};
/// A number that waits for a DH to take it over.
using OwnedNumber = std::unique_ptr<BIGNUM, WipeAndFree>;

/// Null where OpenSSL fails, and for null.
OwnedNumber copyOf(const BIGNUM* number);

/// Hand over two numbers, none of them null, which is all that a DH could refuse.
void setGroup(DH* dh, OwnedNumber p, OwnedNumber g);
void setKeys(DH* dh, OwnedNumber pubKey, OwnedNumber privKey);

/// A DH with the same p and g, without keys. Null where OpenSSL fails.
std::shared_ptr<DH> copyOfGroup(const DH* dh);

/// One line for each field that a DH has had in any version of OpenSSL; see DiffieHellman::toString().
std::string dumpOf(DH* dh);

}  // namespace vorl

#endif
