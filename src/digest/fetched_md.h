#ifndef VORL_DIGEST_FETCHED_MD_H
#define VORL_DIGEST_FETCHED_MD_H

#include <openssl/ossl_typ.h>

namespace vorl {

/// What to hand to OpenSSL for `md`: the same digest, fetched from its provider once in the process.
///
/// OpenSSL 3.0 fetches EVP_sha256() and the like anew at every init, which takes longer than digesting 64
/// bytes and locks that all threads share. `md` itself where that does not apply: for digests other than the
/// five of DigestAlgo, before OpenSSL 3.0, and where the fetch fails, so that the init reports why.
const EVP_MD* fetchedMd(const EVP_MD* md);

}  // namespace vorl

#endif
