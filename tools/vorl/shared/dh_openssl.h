#ifndef VORL_TOOL_SHARED_DH_OPENSSL_H
#define VORL_TOOL_SHARED_DH_OPENSSL_H

#include "vorl/bytes.h"

#include <string>
#include <vector>

namespace vorl {
class DiffieHellmanParams;
}

namespace vorl::tool {

// What OpenSSL does with a group and the library has no operation for. Throw OpenSSLException.

/// The group as PEM text, "DH PARAMETERS".
bytes pemOf(const DiffieHellmanParams& group);

/// What DH_check() finds wrong with a group, in words; nothing where it finds nothing. The prime of a group
/// that OpenSSL knows by name, which it does not check, has to be a safe one all the same.
std::vector<std::string> faultsOf(const DiffieHellmanParams& group);

}  // namespace vorl::tool

#endif
