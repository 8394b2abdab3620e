#ifndef VORL_TESTKIT_CHECKS_H
#define VORL_TESTKIT_CHECKS_H

#include "vorl/testkit/Conformance.h"

#include <vector>

namespace vorl::testkit {

// The checks by subject; checks() puts them together.

std::vector<Check> factoryChecks();
std::vector<Check> cipherChecks();
std::vector<Check> faultChecks();
std::vector<Check> sharingChecks();
std::vector<Check> base64Checks();
std::vector<Check> mutexChecks();
std::vector<Check> signerChecks();

}  // namespace vorl::testkit

#endif
