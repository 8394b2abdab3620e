#ifndef VORL_TESTS_PLATFORM_UNDER_TEST_H
#define VORL_TESTS_PLATFORM_UNDER_TEST_H

#include "vorl/bytes.h"

#include <exception>

// What a test has to know of the platform in the library: all that a platform may do in its own way. For the
// software platform it is told in software_platform.cpp; the tests for another one are linked with a source
// of its maker's (VORL_PLATFORM_TEST_SOURCE) in place of that.

namespace vorl::test {

/// What a context is made with, for it to work under an AES-128 key of this value. Called by any thread.
bytes keyFor(const bytes& value);

/// Whether `fault` is of exactly the class that the platform's contexts throw for what does not decrypt.
bool isPlatformFault(const std::exception& fault);

}  // namespace vorl::test

#endif
