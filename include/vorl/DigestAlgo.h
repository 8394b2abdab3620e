#ifndef VORL_DIGESTALGO_H
#define VORL_DIGESTALGO_H

#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

/// A message digest of the SHA family (FIPS 180-4) and OpenSSL's method for it.
///
/// Each call of a factory makes a new object: algorithms are compared by their fields, not by identity.
class VORL_API DigestAlgo {
public:
    DigestAlgo(std::string theName, int theNid, const EVP_MD* theMd);

    static std::shared_ptr<const DigestAlgo> SHA1();
    static std::shared_ptr<const DigestAlgo> SHA224();
    static std::shared_ptr<const DigestAlgo> SHA256();
    static std::shared_ptr<const DigestAlgo> SHA384();
    static std::shared_ptr<const DigestAlgo> SHA512();

    const std::string name;
    /// OpenSSL's number for the algorithm's object identifier, which a signature names its digest by.
    const int nid;
    /// Lent by OpenSSL, for as long as the process lives.
    const EVP_MD* const md;
};

}  // namespace vorl

#endif
