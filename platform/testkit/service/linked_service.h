#ifndef VORL_TESTKIT_LINKED_SERVICE_H
#define VORL_TESTKIT_LINKED_SERVICE_H

#include "vorl/testkit/Conformance.h"

namespace vorl::testkit {

/// The other end of the signer in the library of this tree; empty where that has none, or another platform.
/// linkedPlatform() cannot know it: the program may be linked with a platform in front of the library's.
Platform::Respond linkedService();

}  // namespace vorl::testkit

#endif
