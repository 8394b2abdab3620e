#ifndef VORL_TESTKIT_CONFORMANCE_H
#define VORL_TESTKIT_CONFORMANCE_H

#include "vorl/bytes.h"

#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/IRequestSigner.h>
#include <tarvik/http/IHttpStream.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What a platform is held to, as checks that a device maker runs on it. Nothing here needs GoogleTest;
// vorl/testkit/gtest.h makes a test of each check.

namespace vorl::testkit {

/// A mutex of the platform. Each function keeps the mutex alive, so that a thread that never comes back does
/// no harm.
struct Mutex {
    std::function<void()> lock;
    std::function<void()> unlock;
};

/// A response as a service sends it.
struct Response {
    unsigned int status;
    tarvik::http::IHttpStream::Fields fields;
    bytes body;
};

/// A platform under test: what its headers declare, as functions.
struct Platform {
    using Contexts = std::pair<std::shared_ptr<tarvik::crypto::ICipherContext>,
                               std::shared_ptr<tarvik::crypto::IRequestSigner>>;

    /// Answers a request that was signed under that key, as cryptContext() takes it, and with that string:
    /// with a response of its own, signed in its fields, whose body is not empty; with nothing where the
    /// request's signature does not hold. It does not remember requests, which may be signed alike each time.
    using Respond = std::function<std::optional<Response>(const bytes& key, const std::string& s,
                                                          const tarvik::http::IHttpStream::Request& request)>;

    std::string name;

    /// Those of VorlCryptoFactory. cryptContext() is called from several threads at once.
    std::function<void()> init;
    std::function<void()> cleanup;
    std::function<Contexts(tarvik::crypto::ICipherContext::Spec spec, const bytes& key)> cryptContext;

    /// The bytes that cryptContext() takes for an AES-128 key of this value: the value itself where keys are
    /// handed over as they are, a handle where they live elsewhere. It is called between init() and
    /// cleanup(), more than once for a value, by the thread that runs the check; its answer is used until
    /// that cleanup() and after the next init().
    /// Empty for a platform that has only keys of its own.
    std::function<bytes(const bytes& value)> provision;
    /// Where `provision` is empty: two different keys of the platform's own, as cryptContext() takes them.
    /// What needs a key of known value is then left out.
    std::vector<bytes> ownKeys;

    /// Whether the signer signs, where that is known; otherwise either is right, as long as it is one of the
    /// two.
    std::optional<bool> signs;
    /// What the service at the other end does, where that can be asked; otherwise whether signatures hold is
    /// left out.
    Respond respond;

    /// Those of Base64.
    std::function<bytes(const bytes& data)> encode;
    std::function<bytes(const bytes& text)> decode;

    std::function<Mutex(bool recursive)> makeMutex;
    /// How long a thread may wait for a mutex before it is taken to wait for ever.
    std::chrono::milliseconds patience = std::chrono::seconds(60);
};

/// The platform that the program is linked with. It takes keys as they are, until `provision` is replaced.
Platform linkedPlatform();

/// What a check has found.
struct Finding {
    enum Outcome { HOLDS, FAILS, LEFT_OUT };

    Outcome outcome;
    /// What is wrong, or why the check was left out: one sentence, without its full stop and without any key
    /// material of the kit's. Empty where all is well.
    std::string sentence;
};

/// One thing that must hold.
struct Check {
    /// Stable: "refuses-wrong-padding".
    const char* name;
    /// What must hold, as a sentence without its full stop.
    const char* requirement;
    /// For run().
    void (*examine)(const Platform& platform);
};

/// All checks. The first one is about a platform that was never started, and proves most in a new process.
const std::vector<Check>& checks();

/// Makes one check. The platform, and the library on it, must not have been started; afterwards it is
/// stopped. What an application sets before it starts them, such as Random::init_, is the caller's to set.
/// What the platform throws is caught and told.
Finding run(const Check& check, const Platform& platform);

}  // namespace vorl::testkit

#endif
