#include "Subject.h"
#include "checks.h"
#include "expectations.h"

// What is asked of VorlCryptoFactory.

namespace vorl::testkit {

using tarvik::crypto::ICipherContext;

namespace {

std::string call(unsigned int spec) {
    return "cryptContext() with the spec " + std::to_string(spec);
}

Platform::Contexts contextsOf(const Platform& platform, unsigned int spec, const bytes& key) {
    return doing(call(spec),
                 [&] { return platform.cryptContext(static_cast<ICipherContext::Spec>(spec), key); });
}

void refusesEverySpec(const Platform& platform, const std::string& when) {
    for (const unsigned int spec : {0U, 1U, 2U}) {
        refusing(call(spec) + " " + when,
                 [&] { platform.cryptContext(static_cast<ICipherContext::Spec>(spec), bytes(BLOCK_BYTES)); });
    }
}

void worksAsUsual(const Subject& subject, const std::string& when) {
    const bytes iv = ivOf(AES_MODES[1], 0);
    const std::string doingWhat = operation(AES_MODES[1], Direction::ENCRYPT, 20) + " " + when;
    const bytes ciphertext = doing(doingWhat, [&] {
        return operate(*subject.context(AES_MODES[1]), Direction::ENCRYPT, iv, octets(20));
    });
    subject.expectSealed(doingWhat, AES_MODES[1], FIRST_KEY, iv, octets(20), ciphertext);
}

void refusesBeforeInit(const Platform& platform) {
    refusesEverySpec(platform, "before init()");
}

void refusesAfterCleanup(const Platform& platform) {
    const Subject subject(platform);
    doing("cleanup()", platform.cleanup);
    refusesEverySpec(platform, "after cleanup()");
}

void initMayBeRepeated(const Platform& platform) {
    const Subject first(platform);
    const Subject second(platform);
    worksAsUsual(second, "after a second init()");
    doing("cleanup()", platform.cleanup);
    refusesEverySpec(platform, "after two init() and one cleanup()");
}

void cleanupMayBeRepeated(const Platform& platform) {
    { const Subject subject(platform); }
    doing("cleanup()", platform.cleanup);
    doing("A second cleanup()", platform.cleanup);
    const Subject subject(platform);
    worksAsUsual(subject, "after a second cleanup() and an init()");
}

void makesBothObjects(const Platform& platform) {
    const Subject subject(platform);
    for (const unsigned int spec : {0U, 1U, 2U}) {
        const auto contexts = contextsOf(platform, spec, subject.key(FIRST_KEY));
        require(contexts.first != nullptr, call(spec) + " returns a null cipher context");
        require(contexts.second != nullptr, call(spec) + " returns a null request signer");
    }
}

void idIsTheSpec(const Platform& platform) {
    const Subject subject(platform);
    for (const unsigned int spec : {0U, 1U, 2U}) {
        const auto contexts = contextsOf(platform, spec, subject.key(FIRST_KEY));
        require(contexts.first != nullptr, call(spec) + " returns a null cipher context");
        const unsigned int id = doing("id()", [&] { return contexts.first->id(); });
        require(id == spec, call(spec) + " returns a context whose id() is " + std::to_string(id));
    }
}

void refusesUnknownSpecs(const Platform& platform) {
    const Subject subject(platform);
    for (const unsigned int spec : {3U, 4U, 255U, 256U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        refusing(call(spec), [&] {
            platform.cryptContext(static_cast<ICipherContext::Spec>(spec), subject.key(FIRST_KEY));
        });
    }
}

void specZeroNeedsNoKey(const Platform& platform) {
    const Subject subject(platform);
    const auto contexts = contextsOf(platform, 0, bytes());
    require(contexts.first != nullptr && contexts.second != nullptr,
            call(0) + " and no key returns a null object");
}

// Wherever it is refused: at the factory, at the init, at the end.
void encryptsNothingWithoutAKey(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        refusing(operation(mode, Direction::ENCRYPT, 20) + " under an empty key", [&] {
            const auto context = platform.cryptContext(mode.spec, bytes()).first;
            require(context != nullptr, call(mode.spec) + " and no key returns a null cipher context");
            operate(*context, Direction::ENCRYPT, ivOf(mode, 0), octets(20));
        });
    }
}

void contextsOutliveARestart(const Platform& platform) {
    const Subject before(platform);
    const auto survivor = before.context(AES_MODES[1]);
    auto ended = before.context(AES_MODES[1], SECOND_KEY);
    doing(operation(AES_MODES[1], Direction::ENCRYPT, 5),
          [&] { init(*ended, Direction::ENCRYPT, ivOf(AES_MODES[1], 0)); });
    doing("cleanup()", platform.cleanup);
    ended.reset();
    doing("init() after a cleanup()", platform.init);
    const bytes iv = ivOf(AES_MODES[1], 0);
    const std::string when = operation(AES_MODES[1], Direction::ENCRYPT, 20) +
                             " by a context from before a cleanup() and an init()";
    const bytes ciphertext =
        doing(when, [&] { return operate(*survivor, Direction::ENCRYPT, iv, octets(20)); });
    before.expectSealed(when, AES_MODES[1], FIRST_KEY, iv, octets(20), ciphertext);
}

}  // namespace

std::vector<Check> factoryChecks() {
    return {
        {"refuses-before-init", "Before the first init(), the factory makes no contexts", refusesBeforeInit},
        {"refuses-after-cleanup", "After cleanup(), the factory makes no contexts", refusesAfterCleanup},
        {"init-may-be-repeated",
         "init() may be called again without cleanup() in between, and one cleanup() ends it",
         initMayBeRepeated},
        {"cleanup-may-be-repeated", "cleanup() may be called again without init() in between",
         cleanupMayBeRepeated},
        {"makes-both-objects",
         "The factory makes a cipher context and a request signer for each spec, neither null",
         makesBothObjects},
        {"id-is-the-spec", "The id() of a context is the spec that the factory was asked for", idIsTheSpec},
        {"refuses-unknown-specs", "The factory throws for a spec that it does not know", refusesUnknownSpecs},
        {"spec-0-needs-no-key", "For the spec 0, no cipher, the factory takes an empty key",
         specZeroNeedsNoKey},
        {"encrypts-nothing-without-a-key", "An empty key is refused, by an encryption's end at the latest",
         encryptsNothingWithoutAKey},
        {"contexts-outlive-a-restart", "A context works on after a cleanup() and an init()",
         contextsOutliveARestart},
    };
}

}  // namespace vorl::testkit
