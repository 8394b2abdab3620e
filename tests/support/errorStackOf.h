#ifndef VORL_TESTS_ERRORSTACKOF_H
#define VORL_TESTS_ERRORSTACKOF_H

#include "vorl/OpenSSLException.h"

#include <string>

namespace vorl::test {

/// The error stack of the OpenSSLException that `action` throws. Otherwise a text that no stack has.
template <typename Action>
std::string errorStackOf(Action&& action) {
    try {
        action();
    } catch (const OpenSSLException& e) {
        return e.errorStack();
    }
    return "<no OpenSSLException>";
}

}  // namespace vorl::test

#endif
