#ifndef VORL_TESTS_PLATFORMCONTEXT_H
#define VORL_TESTS_PLATFORMCONTEXT_H

#include "platform_under_test.h"

#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/VorlCryptoFactory.h>

#include <memory>
#include <utility>

namespace vorl::test {

/// The cipher context that the platform in the library makes for a key of a given value; it can be passed
/// where a context is wanted. It is made at its first use, since a fixture's members are there before the
/// library is started.
class PlatformContext {
public:
    PlatformContext(tarvik::crypto::ICipherContext::Spec spec, bytes key)
        : spec_(spec), key_(std::move(key)) {}

    const std::shared_ptr<tarvik::crypto::ICipherContext>& shared() {
        if (!context_) {
            context_ = tarvik::crypto::VorlCryptoFactory::cryptContext(spec_, keyFor(key_)).first;
        }
        return context_;
    }
    operator tarvik::crypto::ICipherContext&() { return *shared(); }

private:
    const tarvik::crypto::ICipherContext::Spec spec_;
    const bytes key_;
    std::shared_ptr<tarvik::crypto::ICipherContext> context_;
};

}  // namespace vorl::test

#endif
