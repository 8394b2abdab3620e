#ifndef TARVIK_CRYPTO_VORLCRYPTOFACTORY_H
#define TARVIK_CRYPTO_VORLCRYPTOFACTORY_H

#include "tarvik/crypto/ICipherContext.h"
#include "tarvik/export.h"

#include <memory>
#include <utility>
#include <vector>

namespace tarvik::crypto {

class IRequestSigner;

/// Where the library gets its cipher and signing contexts from: the device's own, or the software platform's.
class TARVIK_API VorlCryptoFactory {
public:
    VorlCryptoFactory() = delete;

    /// Makes cryptContext() usable. Called by the library's start-up, perhaps more than once.
    static void init();
    /// Releases what init() acquired.
    static void cleanup();

    /// A cipher context that implements `spec` with `key`, so that its id() is `spec`, and a signing context
    /// for the same key. Neither is null. Failures are thrown: an unknown spec, and a call before init().
    static std::pair<std::shared_ptr<ICipherContext>, std::shared_ptr<IRequestSigner>> cryptContext(
        ICipherContext::Spec spec, const std::vector<unsigned char>& key);
};

}  // namespace tarvik::crypto

#endif
