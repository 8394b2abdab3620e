#ifndef VORL_TESTS_PK_SIGNATURE_ALGOS_H
#define VORL_TESTS_PK_SIGNATURE_ALGOS_H

#include "vorl/DigestAlgo.h"
#include "vorl/PKAlgo.h"
#include "vorl/PKSignatureAlgo.h"

#include <memory>
#include <string>

namespace vorl::test {

/// The name that every signature algorithm of this program has, since it is asked for before any test runs,
/// so that which tests run, and in which order, makes no difference. Anything else would be a mistake in the
/// program.
inline const std::string NAME_IN_THIS_PROCESS = PKSignatureAlgo::SHA1withRSA()->toString();

inline std::shared_ptr<const PKSignatureAlgo> sha256WithRsa() {
    return std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA256(), PKAlgo::RSA());
}

/// An algorithm for keys of another kind, of which there are none.
inline std::shared_ptr<const PKSignatureAlgo> sha1WithX() {
    return std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA1(), std::make_shared<const PKAlgo>("X"));
}

}  // namespace vorl::test

#endif
