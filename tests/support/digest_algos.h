#ifndef VORL_TESTS_DIGEST_ALGOS_H
#define VORL_TESTS_DIGEST_ALGOS_H

#include "vorl/DigestAlgo.h"

#include <openssl/evp.h>

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

namespace vorl::test {

/// What a digest of the library must be, written out from the standard and from OpenSSL's objects.h.
struct DigestAlgoCase {
    const char* name;
    std::shared_ptr<const DigestAlgo> (*factory)();
    int nid;
    const EVP_MD* (*md)();
    std::size_t digestBytes;
};

inline const DigestAlgoCase DIGEST_ALGOS[] = {
    {"SHA1", DigestAlgo::SHA1, 64, EVP_sha1, 20},        {"SHA224", DigestAlgo::SHA224, 675, EVP_sha224, 28},
    {"SHA256", DigestAlgo::SHA256, 672, EVP_sha256, 32}, {"SHA384", DigestAlgo::SHA384, 673, EVP_sha384, 48},
    {"SHA512", DigestAlgo::SHA512, 674, EVP_sha512, 64},
};

inline void PrintTo(const DigestAlgoCase& algo, std::ostream* out) {
    *out << algo.name;
}

/// Throws std::runtime_error for a name that is none of the library's.
inline const DigestAlgoCase& digestAlgoNamed(const std::string& name) {
    for (const DigestAlgoCase& algo : DIGEST_ALGOS) {
        if (name == algo.name) {
            return algo;
        }
    }
    throw std::runtime_error("no digest " + name);
}

}  // namespace vorl::test

#endif
