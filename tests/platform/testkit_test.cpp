#include "vorl/testkit/gtest.h"

#include "octets.h"
#include "platform_under_test.h"

#include <tarvik/http/IHttpStream.h>

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// The kit finds what is wrong: platforms with one fault each, made from the one in the library.

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;
using tarvik::crypto::IRequestSigner;
using tarvik::http::IHttpStream;
using testkit::Check;
using testkit::Finding;
using testkit::Platform;

using CipherContext = std::shared_ptr<ICipherContext>;
using Wrap = CipherContext (*)(CipherContext inner);

Platform soundPlatform() {
    Platform platform = testkit::linkedPlatform();
    platform.provision = keyFor;
    return platform;
}

// Lets another context do the work, but for what a fault overrides.
class FaultyContext : public ICipherContext {
public:
    explicit FaultyContext(CipherContext inner) : inner_(std::move(inner)) {}

    Spec id() override { return inner_->id(); }
    void encryptInit(const bytes& iv) override { start(true, iv); }
    void decryptInit(const bytes& iv) override { start(false, iv); }
    bytes update(const bytes& data) override { return inner_->update(data); }
    bytes final() override { return inner_->final(); }

protected:
    virtual void start(bool encrypting, const bytes& iv) {
        encrypting_ = encrypting;
        if (encrypting) {
            inner_->encryptInit(iv);
        } else {
            inner_->decryptInit(iv);
        }
    }

    CipherContext inner_;
    bool encrypting_ = true;
};

class WrongId : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    Spec id() override { return static_cast<Spec>(inner_->id() + 1); }
};

class LosesTheLastByte : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return data.empty() ? data : slice(data, 0, data.size() - 1); }
};

class LosesTheLastBlock : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        const bytes rest = inner_->final();
        return encrypting_ ? bytes() : rest;
    }
};

class LosesTheEndOfAMessage : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        bytes rest = inner_->final();
        if (!encrypting_ && !rest.empty()) {
            rest.pop_back();
        }
        return rest;
    }
};

// An engine with a buffer of a fixed size: for what goes in, or for what comes out.
const std::size_t SMALL_BUFFER_BYTES = 65536;

bytes cutToBuffer(const bytes& data) {
    return slice(data, 0, std::min(data.size(), SMALL_BUFFER_BYTES));
}

class HasASmallBufferIn : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return inner_->update(cutToBuffer(data)); }
};

class HasASmallBufferOut : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return cutToBuffer(inner_->update(data)); }
};

class KeepsTheLastPieceOnly : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        piece_ = data;
        return {};
    }
    bytes final() override {
        bytes out = inner_->update(piece_);
        return std::move(out) + inner_->final();
    }

private:
    bytes piece_;
};

class KeepsItsFirstIv : public FaultyContext {
public:
    using FaultyContext::FaultyContext;

protected:
    void start(bool encrypting, const bytes& iv) override {
        if (first_.empty()) {
            first_ = iv;
        }
        FaultyContext::start(encrypting, first_);
    }

private:
    bytes first_;
};

class AcceptsAnyPadding : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        try {
            return inner_->final();
        } catch (const std::exception&) {
            return {};
        }
    }
};

class TakesNothingForACiphertext : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        isEmpty_ = data.empty();
        return inner_->update(data);
    }
    bytes final() override { return !encrypting_ && isEmpty_ ? bytes() : inner_->final(); }

private:
    bool isEmpty_ = true;
};

class KeepsItsDirection : public FaultyContext {
public:
    using FaultyContext::FaultyContext;

protected:
    void start(bool encrypting, const bytes& iv) override {
        if (!isStarted_) {
            first_ = encrypting;
            isStarted_ = true;
        }
        FaultyContext::start(first_, iv);
    }

private:
    bool isStarted_ = false;
    bool first_ = true;
};

class KeepsWhatWasUnfinished : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        fed_ = fed_ + data;
        return {};
    }
    bytes final() override {
        bytes out = inner_->update(std::exchange(fed_, bytes()));
        return std::move(out) + inner_->final();
    }

private:
    bytes fed_;
};

class DoesNotRecover : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        if (isBroken_) {
            throw std::runtime_error("the engine has stopped");
        }
        isBroken_ = true;
        bytes rest = inner_->final();
        isBroken_ = false;
        return rest;
    }

private:
    bool isBroken_ = false;
};

class ThrowsANumber : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        try {
            return inner_->final();
        } catch (const std::exception&) {
            throw 17;
        }
    }
};

class ThrowsAlways : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override { throw std::domain_error("no engine"); }
};

// One engine for all contexts, which works on for whoever started it last.
class SharesAnEngine : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return engine->update(data); }
    bytes final() override { return engine->final(); }
    static CipherContext engine;

protected:
    void start(bool encrypting, const bytes& iv) override {
        FaultyContext::start(encrypting, iv);
        engine = inner_;
    }
};
CipherContext SharesAnEngine::engine;

// Not a fault: all output comes with final().
class DelaysItsOutput : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        held_ = held_ + inner_->update(data);
        return {};
    }
    bytes final() override { return std::exchange(held_, bytes()) + inner_->final(); }

protected:
    void start(bool encrypting, const bytes& iv) override {
        held_.clear();
        FaultyContext::start(encrypting, iv);
    }

private:
    bytes held_;
};

template <typename Faulty>
CipherContext make(CipherContext inner) {
    return std::make_shared<Faulty>(std::move(inner));
}

// A platform whose contexts are wrapped: those without a cipher, or those with one.
Platform withContexts(Wrap wrap, bool isForNull = false, const Platform& sound = soundPlatform()) {
    Platform platform = sound;
    platform.cryptContext = [sound, wrap, isForNull](ICipherContext::Spec spec, const bytes& key) {
        Platform::Contexts contexts = sound.cryptContext(spec, key);
        if ((spec == ICipherContext::SPEC_NULL) == isForNull) {
            contexts.first = wrap(contexts.first);
        }
        return contexts;
    };
    return platform;
}

using Make =
    std::function<Platform::Contexts(const Platform& sound, ICipherContext::Spec spec, const bytes& key)>;

Platform withFactory(Make makeContexts) {
    const Platform sound = soundPlatform();
    Platform platform = sound;
    platform.cryptContext = [sound, make = std::move(makeContexts)](ICipherContext::Spec spec,
                                                                    const bytes& key) {
        return make(sound, spec, key);
    };
    return platform;
}

Platform startsByItself() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        sound.init();
        return sound.cryptContext(spec, key);
    });
}

Platform neverStops() {
    Platform platform = soundPlatform();
    platform.cleanup = [] {};
    return platform;
}

// init() and cleanup() that count, as if they were pairs.
struct Starts {
    int count = 0;
};

Platform refusesASecondInit() {
    Platform platform = soundPlatform();
    const auto starts = std::make_shared<Starts>();
    platform.init = [init = platform.init, starts] {
        if (++starts->count == 2) {
            throw std::logic_error("it is started already");
        }
        init();
    };
    return platform;
}

Platform countsItsInits() {
    Platform platform = soundPlatform();
    const auto starts = std::make_shared<Starts>();
    platform.init = [init = platform.init, starts] {
        ++starts->count;
        init();
    };
    platform.cleanup = [cleanup = platform.cleanup, starts] {
        if (starts->count == 0 || --starts->count == 0) {
            cleanup();
        }
    };
    return platform;
}

Platform refusesASecondCleanup() {
    Platform platform = soundPlatform();
    const auto starts = std::make_shared<Starts>();
    platform.init = [init = platform.init, starts] {
        starts->count = 1;
        init();
    };
    platform.cleanup = [cleanup = platform.cleanup, starts] {
        cleanup();
        if (--starts->count < 0) {
            throw std::logic_error("it was not started");
        }
    };
    return platform;
}

Platform withoutSigner() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(sound.cryptContext(spec, key).first, nullptr);
    });
}

Platform withoutCipher() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(nullptr, sound.cryptContext(spec, key).second);
    });
}

Platform takesAnyOtherSpecForCbc() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return sound.cryptContext(spec > 2 ? ICipherContext::SPEC_AES_128_CBC : spec, key);
    });
}

Platform looksAtTheLowestByteOfASpec() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return sound.cryptContext(static_cast<ICipherContext::Spec>(spec & 0xffU), key);
    });
}

Platform needsAKeyForNothing() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        if (key.empty()) {
            throw std::invalid_argument("no key");
        }
        return sound.cryptContext(spec, key);
    });
}

Platform hasADefaultKey() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return sound.cryptContext(spec, key.empty() ? sound.provision(bytes(16)) : key);
    });
}

Platform ignoresTheKey() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& /*key*/) {
        return sound.cryptContext(spec, sound.provision(bytes(16)));
    });
}

Platform turnsKeysRound() {
    Platform platform = soundPlatform();
    platform.provision = [](const bytes& value) { return keyFor(bytes(value.rbegin(), value.rend())); };
    return platform;
}

// Contexts of before a cleanup() have lost what they worked with.
Platform forgetsItsContexts() {
    class Forgotten : public FaultyContext {
    public:
        Forgotten(CipherContext inner, std::shared_ptr<const Starts> ends)
            : FaultyContext(std::move(inner)), ends_(std::move(ends)), made_(ends_->count) {}
        bytes update(const bytes& data) override {
            if (ends_->count != made_) {
                throw std::runtime_error("the session is closed");
            }
            return inner_->update(data);
        }

    private:
        const std::shared_ptr<const Starts> ends_;
        const int made_;
    };

    const auto ends = std::make_shared<Starts>();
    Platform platform =
        withFactory([ends](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
            Platform::Contexts contexts = sound.cryptContext(spec, key);
            contexts.first = std::make_shared<Forgotten>(contexts.first, ends);
            return contexts;
        });
    platform.cleanup = [cleanup = platform.cleanup, ends] {
        ++ends->count;
        cleanup();
    };
    return platform;
}

// One context for each key.
Platform handsOutContextsTwice() {
    const auto made = std::make_shared<std::map<std::pair<unsigned int, bytes>, Platform::Contexts>>();
    return withFactory([made](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        const auto [contexts, isNew] = made->try_emplace({spec, key});
        if (isNew) {
            contexts->second = sound.cryptContext(spec, key);
        }
        return contexts->second;
    });
}

Platform belongsToOneThread() {
    return withFactory([owner = std::this_thread::get_id()](const Platform& sound, ICipherContext::Spec spec,
                                                            const bytes& key) {
        if (std::this_thread::get_id() != owner) {
            throw std::runtime_error("it is another thread's");
        }
        return sound.cryptContext(spec, key);
    });
}

Platform withEncode(std::function<std::string(const std::string& text)> change) {
    Platform platform = soundPlatform();
    platform.encode = [encode = platform.encode, change = std::move(change)](const bytes& data) {
        return fromText(change(toText(encode(data))));
    };
    return platform;
}

// A decoder that mends a text before it looks at it.
Platform withDecode(std::function<std::string(const std::string& text)> mend) {
    Platform platform = soundPlatform();
    platform.decode = [decode = platform.decode, mend = std::move(mend)](const bytes& text) {
        return decode(fromText(mend(toText(text))));
    };
    return platform;
}

std::string without(const std::string& characters, std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(),
                              [&](char c) { return characters.find(c) != std::string::npos; }),
               text.end());
    return text;
}

Platform writesNoPadding() {
    return withEncode([](const std::string& text) { return without("=", text); });
}

Platform breaksLines() {
    return withEncode([](std::string text) {
        const std::size_t LINE = 76;
        for (std::size_t at = LINE; at < text.size(); at += LINE + 1) {
            text.insert(at, "\n");
        }
        return text;
    });
}

Platform decodesShortTextsOnly() {
    return withDecode([](const std::string& text) { return text.size() > 4096 ? std::string() : text; });
}

Platform completesThePadding() {
    return withDecode([](std::string text) {
        text.resize((text.size() + 3) / 4 * 4, '=');
        return text;
    });
}

Platform readsTheOtherAlphabet() {
    return withDecode([](std::string text) {
        std::replace(text.begin(), text.end(), '-', '+');
        std::replace(text.begin(), text.end(), '_', '/');
        return text;
    });
}

Platform passesOverWhiteSpace() {
    return withDecode([](const std::string& text) { return without(" \t\r\n", text); });
}

Platform throwsForBadText() {
    Platform platform = soundPlatform();
    platform.decode = [decode = platform.decode](const bytes& text) {
        bytes data = decode(text);
        if (data.empty() && !text.empty()) {
            throw std::invalid_argument("not Base64");
        }
        return data;
    };
    return platform;
}

// With OpenSSL's block decoder alone, which takes '=' for a zero.
Platform leavesBase64ToOpenSSL() {
    Platform platform = soundPlatform();
    platform.decode = [](const bytes& text) {
        bytes data(text.size() / 4 * 3 + 3);
        const int size = EVP_DecodeBlock(data.data(), text.data(), static_cast<int>(text.size()));
        data.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        for (std::size_t at = text.size(); at > 0 && text[at - 1] == '=' && !data.empty(); --at) {
            data.pop_back();
        }
        return data;
    };
    return platform;
}

using MakeMutex = std::function<testkit::Mutex(bool recursive)>;

Platform withMutex(MakeMutex makeMutex) {
    Platform platform = soundPlatform();
    platform.makeMutex = std::move(makeMutex);
    // It is there to be exhausted.
    platform.patience = std::chrono::milliseconds(100);
    return platform;
}

Platform hasMutexesThatDoNothing() {
    return withMutex([](bool /*recursive*/) { return testkit::Mutex{[] {}, [] {}}; });
}

Platform hasPlainMutexesOnly() {
    return withMutex([sound = soundPlatform()](bool /*recursive*/) { return sound.makeMutex(false); });
}

Platform hasMutexesThatSayTheyAreHeld() {
    return withMutex([](bool /*recursive*/) {
        struct Held {
            std::mutex mutex;
            std::thread::id owner;
        };
        const auto held = std::make_shared<Held>();
        return testkit::Mutex{[held] {
                                  if (held->owner == std::this_thread::get_id()) {
                                      throw std::logic_error("this thread holds it");
                                  }
                                  held->mutex.lock();
                                  held->owner = std::this_thread::get_id();
                              },
                              [held] {
                                  held->owner = {};
                                  held->mutex.unlock();
                              }};
    });
}

// They know their holder, but not how often it has locked them.
Platform hasMutexesThatDoNotCount() {
    return withMutex([](bool /*recursive*/) {
        struct Held {
            std::mutex mutex;
            std::condition_variable changed;
            std::thread::id owner;
        };
        const auto held = std::make_shared<Held>();
        return testkit::Mutex{[held] {
                                  std::unique_lock<std::mutex> lock(held->mutex);
                                  const auto self = std::this_thread::get_id();
                                  held->changed.wait(lock, [&] {
                                      return held->owner == self || held->owner == std::thread::id();
                                  });
                                  held->owner = self;
                              },
                              [held] {
                                  const std::lock_guard<std::mutex> lock(held->mutex);
                                  held->owner = {};
                                  held->changed.notify_one();
                              }};
    });
}

Platform hasMutexesThatStayLocked() {
    return withMutex([sound = soundPlatform()](bool recursive) {
        return testkit::Mutex{sound.makeMutex(recursive).lock, [] {}};
    });
}

Platform hasOneMutexForAll() {
    return withMutex([only = soundPlatform().makeMutex(false)](bool /*recursive*/) { return only; });
}

using Sign = std::function<void(IHttpStream::Request& request)>;
using Verify = std::function<bool(IHttpStream& stream)>;

class FunctionSigner : public IRequestSigner {
public:
    FunctionSigner(Sign sign, Verify verify) : sign_(std::move(sign)), verify_(std::move(verify)) {}
    void sign(const std::string& /*s*/, IHttpStream::Request& request) override { sign_(request); }
    bool verify(const std::string& /*s*/, IHttpStream& stream) override { return verify_(stream); }

private:
    const Sign sign_;
    const Verify verify_;
};

Platform withSigner(Sign sign, Verify verify) {
    return withFactory([sign = std::move(sign), verify = std::move(verify)](
                           const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(sound.cryptContext(spec, key).first,
                                  std::make_shared<FunctionSigner>(sign, verify));
    });
}

void signNothing(IHttpStream::Request& /*request*/) {}

void refuseToSign(IHttpStream::Request& /*request*/) {
    throw std::runtime_error("no signing here");
}

bool refuseToVerify(IHttpStream& /*stream*/) {
    throw std::runtime_error("no signing here");
}

bool verifyNothing(IHttpStream& /*stream*/) {
    return false;
}

bool verifyEverything(IHttpStream& /*stream*/) {
    return true;
}

void signWithoutAKey(IHttpStream::Request& request) {
    request.fields.emplace_back("Signature", "mine");
}

Platform signsNothing() {
    return withSigner(signNothing, verifyNothing);
}

Platform signsAndThrows() {
    return withSigner(
        [](IHttpStream::Request& request) {
            signWithoutAKey(request);
            refuseToSign(request);
        },
        refuseToVerify);
}

Platform verifiesWithoutSigning() {
    return withSigner(refuseToSign, verifyNothing);
}

Platform saysThatItSigns() {
    Platform platform = withSigner(refuseToSign, refuseToVerify);
    platform.signs = true;
    return platform;
}

Platform saysThatItDoesNotSign() {
    Platform platform = withSigner(signWithoutAKey, verifyNothing);
    platform.signs = false;
    return platform;
}

Platform signsAlikeUnderAnyKey() {
    return withSigner(signWithoutAKey, verifyNothing);
}

Platform verifiesEverything() {
    return withSigner(refuseToSign, verifyEverything);
}

bool hasSignature(const IHttpStream::Fields& fields, const std::string& value) {
    return std::find(fields.begin(), fields.end(), std::pair<std::string, std::string>("Signature", value)) !=
           fields.end();
}

// What it has signed itself is good enough for it.
Platform verifiesWhatItHasSignedItself() {
    return withSigner(signWithoutAKey,
                      [](IHttpStream& stream) { return hasSignature(stream.fields(), "mine"); });
}

// Not a fault: HMAC of what goes one way, under another label than what comes back.
std::string code(const bytes& key, const std::string& text) {
    bytes mac(EVP_MAX_MD_SIZE);
    unsigned int size = 0;
    const bytes message = fromText(text);
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), message.data(), message.size(), mac.data(),
         &size);
    return toText(soundPlatform().encode(slice(mac, 0, size)));
}

Platform signsByHmac() {
    Platform platform = withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(
            sound.cryptContext(spec, key).first,
            std::make_shared<FunctionSigner>(
                [key](IHttpStream::Request& request) {
                    request.fields.emplace_back("Signature", code(key, "request " + toText(request.body)));
                },
                [key](IHttpStream& stream) {
                    return hasSignature(stream.fields(), code(key, "response " + toText(stream.body())));
                }));
    });
    platform.signs = true;
    return platform;
}

struct Fault {
    const char* name;
    Platform (*make)();
    // What must find it, and what it must say.
    const char* check;
    const char* sentence;
};

Platform failsToStart() {
    Platform platform = soundPlatform();
    platform.init = [] { throw std::runtime_error("no token in the slot"); };
    return platform;
}

Platform failsToStop() {
    Platform platform = soundPlatform();
    platform.cleanup = [cleanup = platform.cleanup] {
        cleanup();
        throw std::runtime_error("busy");
    };
    return platform;
}

Platform isDescribedWithoutKeys() {
    Platform platform = soundPlatform();
    platform.provision = nullptr;
    platform.ownKeys = {keyFor(octets(16)), keyFor(octets(16))};
    return platform;
}

Platform losesTheLastBlockUnderKeysOfItsOwn() {
    Platform platform = withContexts(make<LosesTheLastBlock>);
    platform.ownKeys = {keyFor(octets(16)), keyFor(bytes(16, 0x55))};
    platform.provision = nullptr;
    return platform;
}

// It encrypts each block into itself.
class EncryptsNothing : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        inner_->update(data);
        return data;
    }
};

template <typename Faulty>
Platform contextsOf() {
    return withContexts(make<Faulty>);
}

Platform losesAByteOfNothing() {
    return withContexts(make<LosesTheLastByte>, true);
}

const Fault FAULTS[] = {
    {"StartsByItself", startsByItself, "refuses-before-init",
     "cryptContext() with the spec 0 before init() is not refused"},
    {"NeverStops", neverStops, "refuses-after-cleanup",
     "cryptContext() with the spec 0 after cleanup() is not refused"},
    {"RefusesASecondInit", refusesASecondInit, "init-may-be-repeated",
     "init() throws std::logic_error: it is started already"},
    {"CountsItsInits", countsItsInits, "init-may-be-repeated",
     "cryptContext() with the spec 0 after two init() and one cleanup() is not refused"},
    {"FailsToStart", failsToStart, "init-may-be-repeated",
     "init() throws std::runtime_error: no token in the slot"},
    {"RefusesASecondCleanup", refusesASecondCleanup, "cleanup-may-be-repeated",
     "A second cleanup() throws std::logic_error: it was not started"},
    {"FailsToStop", failsToStop, "base64-encodes-every-size", "cleanup() throws std::runtime_error: busy"},
    {"WithoutSigner", withoutSigner, "makes-both-objects",
     "cryptContext() with the spec 0 returns a null request signer"},
    {"WithoutCipher", withoutCipher, "makes-both-objects",
     "cryptContext() with the spec 0 returns a null cipher context"},
    {"WrongId", contextsOf<WrongId>, "id-is-the-spec",
     "cryptContext() with the spec 1 returns a context whose id() is 2"},
    {"TakesAnyOtherSpecForCbc", takesAnyOtherSpecForCbc, "refuses-unknown-specs",
     "cryptContext() with the spec 3 is not refused"},
    {"LooksAtTheLowestByteOfASpec", looksAtTheLowestByteOfASpec, "refuses-unknown-specs",
     "cryptContext() with the spec 256 is not refused"},
    {"NeedsAKeyForNothing", needsAKeyForNothing, "spec-0-needs-no-key",
     "cryptContext() with the spec 0 throws std::invalid_argument: no key"},
    {"HasADefaultKey", hasADefaultKey, "encrypts-nothing-without-a-key",
     "AES-128-ECB: encrypting 20 bytes under an empty key is not refused"},
    {"ForgetsItsContexts", forgetsItsContexts, "contexts-outlive-a-restart",
     "AES-128-CBC: encrypting 20 bytes by a context from before a cleanup() and an init() throws "
     "std::runtime_error: the session is closed"},
    {"LosesAByteOfNothing", losesAByteOfNothing, "spec-0-is-the-identity",
     "No cipher: passing 1 bytes on changes them"},
    {"TurnsKeysRound", turnsKeysRound, "agrees-with-published-vectors",
     "NIST SP 800-38A, F.1.1: the ciphertext is another"},
    {"LosesTheLastBlock", contextsOf<LosesTheLastBlock>, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes yields 0 bytes"},
    {"LosesTheLastBlockUnderKeysOfItsOwn", losesTheLastBlockUnderKeysOfItsOwn, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes yields 0 bytes"},
    {"EncryptsNothing", contextsOf<EncryptsNothing>, "encrypts-short-messages",
     "AES-128-ECB: encrypting 1 bytes yields 17 bytes"},
    {"IgnoresTheKey", ignoresTheKey, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes yields a wrong ciphertext"},
    {"ThrowsAlways", contextsOf<ThrowsAlways>, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes throws std::domain_error: no engine"},
    {"LosesTheEndOfAMessage", contextsOf<LosesTheEndOfAMessage>, "decrypts-short-messages",
     "AES-128-ECB: decrypting 16 bytes does not yield the message of 1 bytes"},
    {"HasASmallBufferToEncrypt", contextsOf<HasASmallBufferIn>, "encrypts-long-messages",
     "AES-128-ECB: encrypting 1048576 bytes yields 65552 bytes"},
    {"HasASmallBufferToDecrypt", contextsOf<HasASmallBufferOut>, "decrypts-long-messages",
     "AES-128-ECB: decrypting 1048592 bytes does not yield the message of 1048576 bytes"},
    {"KeepsTheLastPieceOnly", contextsOf<KeepsTheLastPieceOnly>, "takes-a-message-in-pieces",
     "AES-128-ECB: encrypting 100 bytes in pieces of 1 yields 16 bytes"},
    {"KeepsItsFirstIv", contextsOf<KeepsItsFirstIv>, "each-init-takes-its-iv",
     "AES-128-CBC: encrypting under another IV than before yields a wrong ciphertext"},
    {"AcceptsAnyPadding", contextsOf<AcceptsAnyPadding>, "refuses-wrong-padding",
     "AES-128-ECB: a wrong padding is not refused"},
    {"ThrowsANumber", contextsOf<ThrowsANumber>, "refuses-wrong-padding",
     "AES-128-ECB: a wrong padding throws something that is no std::exception"},
    {"TakesNothingForACiphertext", contextsOf<TakesNothingForACiphertext>, "refuses-parts-of-blocks",
     "AES-128-ECB: decrypting 0 bytes is not refused"},
    {"IgnoresTheKey", ignoresTheKey, "another-key-does-not-open",
     "AES-128-ECB: decrypting under another key yields the message"},
    {"KeepsItsDirection", contextsOf<KeepsItsDirection>, "works-in-both-directions",
     "AES-128-ECB: decrypting 48 bytes in turn yields another message"},
    {"KeepsWhatWasUnfinished", contextsOf<KeepsWhatWasUnfinished>,
     "starts-afresh-after-an-unfinished-operation",
     "AES-128-ECB: encrypting 37 bytes after an operation that was left unfinished yields a wrong "
     "ciphertext"},
    {"DoesNotRecover", contextsOf<DoesNotRecover>, "starts-afresh-after-a-failure",
     "AES-128-ECB: encrypting 37 bytes after a decryption that failed throws std::runtime_error: the engine "
     "has "
     "stopped"},
    {"SharesAnEngine", contextsOf<SharesAnEngine>, "contexts-of-two-keys-are-apart",
     "AES-128-ECB: an operation beside one under another key yields a wrong result"},
    {"HandsOutContextsTwice", handsOutContextsTwice, "contexts-of-one-key-are-apart",
     "AES-128-ECB: an operation beside others under the same key yields a wrong result"},
    {"BelongsToOneThread", belongsToOneThread, "threads-have-contexts-of-their-own",
     "cryptContext() for AES-128-ECB throws std::runtime_error: it is another thread's"},
    {"WritesNoPadding", writesNoPadding, "base64-agrees-with-published-vectors",
     "encode() does not write \"f\" as \"Zg==\""},
    {"BreaksLines", breaksLines, "base64-encodes-every-size", "encode() of 3071 bytes yields a wrong text"},
    {"DecodesShortTextsOnly", decodesShortTextsOnly, "base64-decodes-every-size",
     "decode() of the text of 3073 bytes yields other bytes"},
    {"CompletesThePadding", completesThePadding, "base64-refuses-wrong-lengths",
     "decode() takes \"Zg=\" for Base64"},
    {"ReadsTheOtherAlphabet", readsTheOtherAlphabet, "base64-refuses-foreign-characters",
     "decode() takes \"-m9vYmFy\" for Base64"},
    {"ThrowsForBadText", throwsForBadText, "base64-refuses-foreign-characters",
     "decode() of \"<0>m9vYmFy\" throws std::invalid_argument: not Base64"},
    {"PassesOverWhiteSpace", passesOverWhiteSpace, "base64-refuses-white-space",
     "decode() takes \" Zm9v\" for Base64"},
    {"LeavesPaddingToOpenSSL", leavesBase64ToOpenSSL, "base64-refuses-misplaced-padding",
     "decode() takes \"=AAA\" for Base64"},
    {"LeavesBitsToOpenSSL", leavesBase64ToOpenSSL, "base64-refuses-bits-under-padding",
     "decode() takes \"AB==\" for Base64"},
    {"HasPlainMutexesThatDoNothing", hasMutexesThatDoNothing, "plain-mutex-excludes",
     "A plain mutex leaves two threads in the section that it guards"},
    {"HasRecursiveMutexesThatDoNothing", hasMutexesThatDoNothing, "recursive-mutex-excludes",
     "A recursive mutex leaves two threads in the section that it guards"},
    {"HasPlainMutexesOnly", hasPlainMutexesOnly, "recursive-mutex-may-be-locked-again",
     "Locking a recursive mutex again in the thread that holds it waits for ever"},
    {"HasMutexesThatSayTheyAreHeld", hasMutexesThatSayTheyAreHeld, "recursive-mutex-may-be-locked-again",
     "Locking a recursive mutex again in the thread that holds it throws std::logic_error: this thread holds "
     "it"},
    {"HasMutexesThatDoNotCount", hasMutexesThatDoNotCount, "recursive-mutex-counts-its-locks",
     "A recursive mutex that was locked three times and unlocked twice leaves two threads in the section "
     "that it "
     "guards"},
    {"HasMutexesThatStayLocked", hasMutexesThatStayLocked, "mutex-is-free-after-unlock",
     "Locking a free mutex by another thread waits for ever"},
    {"HasOneMutexForAll", hasOneMutexForAll, "mutexes-are-independent",
     "Locking a mutex while another is held waits for ever"},
    {"SignsNothing", signsNothing, "signs-or-refuses",
     "sign() returns and leaves the request as it was, unsigned"},
    {"SignsAndThrows", signsAndThrows, "signs-or-refuses", "sign() throws and leaves the request changed"},
    {"VerifiesWithoutSigning", verifiesWithoutSigning, "signs-or-refuses",
     "sign() throws std::runtime_error: no signing here, but verify() does not throw"},
    {"SaysThatItSigns", saysThatItSigns, "signs-or-refuses",
     "sign() throws std::runtime_error: no signing here, although the platform is said to sign"},
    {"SaysThatItDoesNotSign", saysThatItDoesNotSign, "signs-or-refuses",
     "sign() does not throw, although the platform is said not to sign"},
    {"SignsAlikeUnderAnyKey", signsAlikeUnderAnyKey, "another-key-signs-differently",
     "sign() leaves the same under two keys"},
    {"VerifiesEverything", verifiesEverything, "never-verifies-the-unsigned",
     "verify() answers true for a response of nothing"},
    {"VerifiesWhatItHasSignedItself", verifiesWhatItHasSignedItself, "never-verifies-the-unsigned",
     "verify() answers true for a response that sends the request's own signature back"},
    {"IsDescribedWithoutKeys", isDescribedWithoutKeys, "makes-both-objects",
     "The platform is described without a way to provision keys and without two keys of its own"},
};

const Check& checkNamed(const std::string& name) {
    const auto& all = testkit::checks();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Check& check) { return check.name == name; });
    if (found == all.end()) {
        throw std::logic_error("there is no check " + name);
    }
    return *found;
}

// The faults leave the factory as it happens to be.
class Testkit : public ::testing::Test {
protected:
    void SetUp() override { soundPlatform().cleanup(); }
    void TearDown() override {
        soundPlatform().cleanup();
        SharesAnEngine::engine.reset();
    }

    static void expectAllHold(const Platform& platform) {
        for (const Check& check : testkit::checks()) {
            const Finding finding = run(check, platform);
            EXPECT_EQ(finding.outcome, Finding::HOLDS) << check.name << ": " << finding.sentence;
            EXPECT_EQ(finding.sentence, "");
        }
    }
};

class FaultyPlatform : public Testkit, public ::testing::WithParamInterface<Fault> {};

}  // namespace

TEST_P(FaultyPlatform, IsFoundOut) {
    const Finding finding = run(checkNamed(GetParam().check), GetParam().make());
    EXPECT_EQ(finding.outcome, Finding::FAILS);
    EXPECT_EQ(finding.sentence, GetParam().sentence);
}

INSTANTIATE_TEST_SUITE_P(Of, FaultyPlatform, ::testing::ValuesIn(FAULTS), [](const auto& test) {
    return test.param.name + ("_" + std::to_string(test.index));
});

TEST_F(Testkit, HasAFaultForEachCheck) {
    std::set<std::string> found;
    for (const Fault& fault : FAULTS) {
        found.insert(fault.check);
    }
    for (const Check& check : testkit::checks()) {
        EXPECT_EQ(found.count(check.name), 1U) << check.name;
    }
}

TEST_F(Testkit, NamesEachCheckOnce) {
    std::set<std::string> names;
    for (const Check& check : testkit::checks()) {
        EXPECT_TRUE(names.insert(testName(check)).second) << check.name;
        EXPECT_NE(std::string(check.requirement), "") << check.name;
    }
    EXPECT_EQ(testName(checkNamed("refuses-wrong-padding")), "RefusesWrongPadding");
}

TEST_F(Testkit, AllowsOutputToBeDelayed) {
    expectAllHold(withContexts(make<DelaysItsOutput>, false, signsByHmac()));
}

TEST_F(Testkit, AllowsToSign) {
    expectAllHold(signsByHmac());
}

TEST_F(Testkit, AllowsNotToSign) {
    Platform platform = withSigner(refuseToSign, refuseToVerify);
    platform.signs = false;
    for (const Check& check : testkit::checks()) {
        const Finding finding = run(check, platform);
        if (check.name == std::string("another-key-signs-differently")) {
            EXPECT_EQ(finding.outcome, Finding::LEFT_OUT);
            EXPECT_EQ(finding.sentence, "The platform does not sign");
        } else {
            EXPECT_EQ(finding.outcome, Finding::HOLDS) << check.name << ": " << finding.sentence;
        }
    }
}

TEST_F(Testkit, LeavesOutWhatNeedsAKnownKeyAndNothingElse) {
    Platform platform = signsByHmac();
    platform.ownKeys = {keyFor(octets(16)), keyFor(bytes(16, 0x55))};
    platform.provision = nullptr;
    for (const Check& check : testkit::checks()) {
        const Finding finding = run(check, platform);
        if (check.name == std::string("agrees-with-published-vectors")) {
            EXPECT_EQ(finding.outcome, Finding::LEFT_OUT);
            EXPECT_EQ(finding.sentence,
                      "The platform has only keys of its own, and this takes one of known value");
        } else {
            EXPECT_EQ(finding.outcome, Finding::HOLDS) << check.name << ": " << finding.sentence;
        }
    }
}

TEST_F(Testkit, TellsTheFaultOfACheckBeforeThatOfTidyingUp) {
    Platform platform = failsToStop();
    platform.provision = nullptr;
    EXPECT_EQ(run(checkNamed("makes-both-objects"), platform).sentence,
              "The platform is described without a way to provision keys and without two keys of its own");
}

TEST_F(Testkit, StopsThePlatformAfterEachCheck) {
    for (const Check& check : testkit::checks()) {
        run(check, soundPlatform());
        EXPECT_EQ(run(checkNamed("refuses-before-init"), soundPlatform()).sentence, "") << check.name;
    }
}

}  // namespace vorl::test
