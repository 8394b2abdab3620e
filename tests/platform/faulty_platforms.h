#ifndef VORL_TESTS_FAULTY_PLATFORMS_H
#define VORL_TESTS_FAULTY_PLATFORMS_H

#include "faulty_contexts.h"
#include "octets.h"
#include "platform_under_test.h"

#include <vorl/testkit/Conformance.h>

#include <tarvik/crypto/IRequestSigner.h>
#include <tarvik/http/IHttpStream.h>

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

// Platforms with one fault each, as their names say, made from the one in the library; and a few that are
// odd, but right.

namespace vorl::test {

using tarvik::crypto::IRequestSigner;
using tarvik::http::IHttpStream;
using testkit::Platform;

using Wrap = CipherContext (*)(CipherContext inner);

inline Platform soundPlatform() {
    Platform platform = testkit::linkedPlatform();
    platform.provision = keyFor;
    return platform;
}

template <typename Faulty>
CipherContext make(CipherContext inner) {
    return std::make_shared<Faulty>(std::move(inner));
}

// A platform whose contexts are wrapped: those without a cipher, or those with one.
inline Platform withContexts(Wrap wrap, bool isForNull = false, const Platform& sound = soundPlatform()) {
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

inline Platform withFactory(Make makeContexts) {
    const Platform sound = soundPlatform();
    Platform platform = sound;
    platform.cryptContext = [sound, make = std::move(makeContexts)](ICipherContext::Spec spec,
                                                                    const bytes& key) {
        return make(sound, spec, key);
    };
    return platform;
}

inline Platform startsByItself() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        sound.init();
        return sound.cryptContext(spec, key);
    });
}

inline Platform neverStops() {
    Platform platform = soundPlatform();
    platform.cleanup = [] {};
    return platform;
}

// init() and cleanup() that count, as if they were pairs.
struct Starts {
    int count = 0;
};

inline Platform refusesASecondInit() {
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

inline Platform countsItsInits() {
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

inline Platform refusesASecondCleanup() {
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

inline Platform withoutSigner() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(sound.cryptContext(spec, key).first, nullptr);
    });
}

inline Platform withoutCipher() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(nullptr, sound.cryptContext(spec, key).second);
    });
}

inline Platform takesAnyOtherSpecForCbc() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return sound.cryptContext(spec > 2 ? ICipherContext::SPEC_AES_128_CBC : spec, key);
    });
}

inline Platform looksAtTheLowestByteOfASpec() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return sound.cryptContext(static_cast<ICipherContext::Spec>(spec & 0xffU), key);
    });
}

inline Platform needsAKeyForNothing() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        if (key.empty()) {
            throw std::invalid_argument("no key");
        }
        return sound.cryptContext(spec, key);
    });
}

inline Platform hasADefaultKey() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return sound.cryptContext(spec, key.empty() ? sound.provision(bytes(16)) : key);
    });
}

inline Platform ignoresTheKey() {
    return withFactory([](const Platform& sound, ICipherContext::Spec spec, const bytes& /*key*/) {
        return sound.cryptContext(spec, sound.provision(bytes(16)));
    });
}

inline Platform turnsKeysRound() {
    Platform platform = soundPlatform();
    platform.provision = [](const bytes& value) { return keyFor(bytes(value.rbegin(), value.rend())); };
    return platform;
}

// Contexts of before a cleanup() have lost what they worked with.
inline Platform forgetsItsContexts() {
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
inline Platform handsOutContextsTwice() {
    const auto made = std::make_shared<std::map<std::pair<unsigned int, bytes>, Platform::Contexts>>();
    return withFactory([made](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        const auto [contexts, isNew] = made->try_emplace({spec, key});
        if (isNew) {
            contexts->second = sound.cryptContext(spec, key);
        }
        return contexts->second;
    });
}

inline Platform belongsToOneThread() {
    return withFactory([owner = std::this_thread::get_id()](const Platform& sound, ICipherContext::Spec spec,
                                                            const bytes& key) {
        if (std::this_thread::get_id() != owner) {
            throw std::runtime_error("it is another thread's");
        }
        return sound.cryptContext(spec, key);
    });
}

inline Platform withEncode(std::function<std::string(const std::string& text)> change) {
    Platform platform = soundPlatform();
    platform.encode = [encode = platform.encode, change = std::move(change)](const bytes& data) {
        return fromText(change(toText(encode(data))));
    };
    return platform;
}

// A decoder that mends a text before it looks at it.
inline Platform withDecode(std::function<std::string(const std::string& text)> mend) {
    Platform platform = soundPlatform();
    platform.decode = [decode = platform.decode, mend = std::move(mend)](const bytes& text) {
        return decode(fromText(mend(toText(text))));
    };
    return platform;
}

inline std::string without(const std::string& characters, std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(),
                              [&](char c) { return characters.find(c) != std::string::npos; }),
               text.end());
    return text;
}

inline Platform writesNoPadding() {
    return withEncode([](const std::string& text) { return without("=", text); });
}

inline Platform breaksLines() {
    return withEncode([](std::string text) {
        const std::size_t LINE = 76;
        for (std::size_t at = LINE; at < text.size(); at += LINE + 1) {
            text.insert(at, "\n");
        }
        return text;
    });
}

inline Platform decodesShortTextsOnly() {
    return withDecode([](const std::string& text) { return text.size() > 4096 ? std::string() : text; });
}

inline Platform completesThePadding() {
    return withDecode([](std::string text) {
        text.resize((text.size() + 3) / 4 * 4, '=');
        return text;
    });
}

inline Platform readsTheOtherAlphabet() {
    return withDecode([](std::string text) {
        std::replace(text.begin(), text.end(), '-', '+');
        std::replace(text.begin(), text.end(), '_', '/');
        return text;
    });
}

inline Platform passesOverWhiteSpace() {
    return withDecode([](const std::string& text) { return without(" \t\r\n", text); });
}

inline Platform throwsForBadText() {
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

inline Platform looksAtTheLowestBitUnderPadding() {
    return withDecode([](std::string text) {
        const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const std::size_t size = text.size();
        if (size >= 4 && text.substr(size - 2) == "==") {
            const std::size_t value = alphabet.find(text[size - 3]);
            if (value != std::string::npos && value % 2 == 0) {
                text[size - 3] = alphabet[value & 0x30U];
            }
        }
        return text;
    });
}

// With OpenSSL's block decoder alone, which takes '=' for a zero.
inline Platform leavesBase64ToOpenSSL() {
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

inline Platform withMutex(MakeMutex makeMutex) {
    Platform platform = soundPlatform();
    platform.makeMutex = std::move(makeMutex);
    return platform;
}

// With mutexes that keep a thread for ever, for which nobody needs to wait long.
inline Platform withBlockingMutex(MakeMutex makeMutex) {
    Platform platform = withMutex(std::move(makeMutex));
    platform.patience = std::chrono::milliseconds(50);
    return platform;
}

inline Platform hasMutexesThatDoNothing() {
    return withMutex([](bool /*recursive*/) { return testkit::Mutex{[] {}, [] {}}; });
}

// A mutex that does not know who holds it, and that may lose its patience.
class Gate {
public:
    explicit Gate(std::chrono::milliseconds patience = std::chrono::hours(24)) : patience_(patience) {}
    void lock() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, patience_, [this] { return !isShut_; });
        isShut_ = true;
    }
    void unlock() {
        const std::lock_guard<std::mutex> lock(mutex_);
        isShut_ = false;
        changed_.notify_one();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    const std::chrono::milliseconds patience_;
    bool isShut_ = false;
};

inline testkit::Mutex mutexOf(const std::shared_ptr<Gate>& gate) {
    return {[gate] { gate->lock(); }, [gate] { gate->unlock(); }};
}

inline Platform hasPlainMutexesOnly() {
    return withBlockingMutex([](bool /*recursive*/) { return mutexOf(std::make_shared<Gate>()); });
}

inline Platform hasMutexesThatSayTheyAreHeld() {
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
inline Platform hasMutexesThatDoNotCount() {
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

inline Platform hasMutexesThatStayLocked() {
    return withBlockingMutex([](bool /*recursive*/) {
        return testkit::Mutex{mutexOf(std::make_shared<Gate>()).lock, [] {}};
    });
}

// They are taken from whoever holds them for too long. The kit does for many times as long, so that this
// shows even where a thread has to wait for the processor.
inline Platform hasMutexesThatGiveUp() {
    return withMutex(
        [](bool /*recursive*/) { return mutexOf(std::make_shared<Gate>(std::chrono::milliseconds(1))); });
}

inline Platform hasOneMutexForAll() {
    return withBlockingMutex([only = mutexOf(std::make_shared<Gate>())](bool /*recursive*/) { return only; });
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

inline Platform withSigner(Sign sign, Verify verify) {
    return withFactory([sign = std::move(sign), verify = std::move(verify)](
                           const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
        return Platform::Contexts(sound.cryptContext(spec, key).first,
                                  std::make_shared<FunctionSigner>(sign, verify));
    });
}

inline void signNothing(IHttpStream::Request& /*request*/) {}

inline void refuseToSign(IHttpStream::Request& /*request*/) {
    throw std::runtime_error("no signing here");
}

inline bool refuseToVerify(IHttpStream& /*stream*/) {
    throw std::runtime_error("no signing here");
}

inline bool verifyNothing(IHttpStream& /*stream*/) {
    return false;
}

inline bool verifyEverything(IHttpStream& /*stream*/) {
    return true;
}

inline void signWithoutAKey(IHttpStream::Request& request) {
    request.fields.emplace_back("Signature", "mine");
}

inline Platform signsNothing() {
    return withSigner(signNothing, verifyNothing);
}

inline Platform signsAndThrows() {
    return withSigner(
        [](IHttpStream::Request& request) {
            signWithoutAKey(request);
            refuseToSign(request);
        },
        refuseToVerify);
}

inline Platform verifiesWithoutSigning() {
    return withSigner(refuseToSign, verifyNothing);
}

inline Platform saysThatItSigns() {
    Platform platform = withSigner(refuseToSign, refuseToVerify);
    platform.signs = true;
    return platform;
}

inline Platform saysThatItDoesNotSign() {
    Platform platform = withSigner(signWithoutAKey, verifyNothing);
    platform.signs = false;
    return platform;
}

inline Platform signsAlikeUnderAnyKey() {
    return withSigner(signWithoutAKey, verifyNothing);
}

inline Platform verifiesEverything() {
    return withSigner(refuseToSign, verifyEverything);
}

inline Platform failsToVerify() {
    return withSigner(signWithoutAKey, refuseToVerify);
}

inline bool hasSignature(const IHttpStream::Fields& fields, const std::string& value) {
    return std::find(fields.begin(), fields.end(), std::pair<std::string, std::string>("Signature", value)) !=
           fields.end();
}

// What it has signed itself is good enough for it.
inline Platform verifiesWhatItHasSignedItself() {
    return withSigner(signWithoutAKey,
                      [](IHttpStream& stream) { return hasSignature(stream.fields(), "mine"); });
}

// Not a fault: HMAC of what goes one way, under another label than what comes back.
inline std::string code(const bytes& key, const std::string& text) {
    bytes mac(EVP_MAX_MD_SIZE);
    unsigned int size = 0;
    const bytes message = fromText(text);
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), message.data(), message.size(), mac.data(),
         &size);
    return toText(soundPlatform().encode(slice(mac, 0, size)));
}

inline std::string requestCode(const bytes& key, const IHttpStream::Request& request) {
    return code(key, "request " + request.method + " " + request.targetUri + "\n" + toText(request.body));
}

inline std::string responseCode(const bytes& key, const bytes& body) {
    return code(key, "response " + toText(body));
}

inline void signByHmac(const bytes& key, IHttpStream::Request& request) {
    request.fields.emplace_back("Signature", requestCode(key, request));
}

inline bool verifyByHmac(const bytes& key, IHttpStream& stream) {
    return hasSignature(stream.fields(), responseCode(key, stream.body()));
}

inline bool isSignedByHmac(const bytes& key, const IHttpStream::Request& request) {
    return hasSignature(request.fields, requestCode(key, request));
}

inline testkit::Response respondByHmac(const bytes& key) {
    const bytes body = fromText("done");
    return {200, {{"Content-Type", "text/plain"}, {"Signature", responseCode(key, body)}}, body};
}

using KeyedSign = void (*)(const bytes& key, IHttpStream::Request& request);
using KeyedVerify = bool (*)(const bytes& key, IHttpStream& stream);
using KeyedCheck = bool (*)(const bytes& key, const IHttpStream::Request& request);

// A service that is right, and a device that may not be; or a signature that both are content with.
inline Platform withHmac(KeyedSign sign, KeyedVerify verify, KeyedCheck isSigned = isSignedByHmac) {
    Platform platform = withFactory([sign, verify](const Platform& sound, ICipherContext::Spec spec,
                                                   const bytes& key) {
        return Platform::Contexts(sound.cryptContext(spec, key).first,
                                  std::make_shared<FunctionSigner>(
                                      [key, sign](IHttpStream::Request& request) { sign(key, request); },
                                      [key, verify](IHttpStream& stream) { return verify(key, stream); }));
    });
    platform.signs = true;
    platform.respond = [isSigned](const bytes& key, const std::string& /*s*/,
                                  const IHttpStream::Request& request) {
        return isSigned(key, request) ? std::make_optional(respondByHmac(key)) : std::nullopt;
    };
    return platform;
}

inline Platform signsByHmac() {
    return withHmac(signByHmac, verifyByHmac);
}

inline Platform signsWithAConstantOfTheKey() {
    return withHmac(
        [](const bytes& key, IHttpStream::Request& request) {
            request.fields.emplace_back("Signature", code(key, "request"));
        },
        verifyByHmac);
}

// They leave one of the three out of what is signed.
inline Platform signsAllButTheMethod() {
    return withHmac(
        [](const bytes& key, IHttpStream::Request& request) {
            request.fields.emplace_back("Signature",
                                        code(key, request.targetUri + "\n" + toText(request.body)));
        },
        verifyByHmac);
}

inline Platform signsAllButTheTarget() {
    return withHmac(
        [](const bytes& key, IHttpStream::Request& request) {
            request.fields.emplace_back("Signature", code(key, request.method + "\n" + toText(request.body)));
        },
        verifyByHmac);
}

inline Platform signsAllButTheBody() {
    return withHmac(
        [](const bytes& key, IHttpStream::Request& request) {
            request.fields.emplace_back("Signature", code(key, request.method + " " + request.targetUri));
        },
        verifyByHmac);
}

inline std::string nextNumber() {
    static std::atomic<unsigned int> number{0};
    return std::to_string(++number);
}

inline Platform signsWithANumber() {
    return withHmac(
        [](const bytes& /*key*/, IHttpStream::Request& request) {
            request.fields.emplace_back("Signature", nextNumber());
        },
        verifyByHmac);
}

// Device and service agree, but on no more than a number that nobody else could have signed.
inline Platform signsItsNumberAlone() {
    return withHmac(
        [](const bytes& key, IHttpStream::Request& request) {
            const std::string number = nextNumber();
            request.fields.emplace_back("Number", number);
            request.fields.emplace_back("Signature", code(key, number));
        },
        verifyByHmac,
        [](const bytes& key, const IHttpStream::Request& request) {
            return std::any_of(request.fields.begin(), request.fields.end(), [&](const auto& field) {
                return field.first == "Number" && hasSignature(request.fields, code(key, field.second));
            });
        });
}

// Whatever names itself so is a signature, at both ends.
inline bool namesASignature(const IHttpStream::Fields& fields) {
    return std::any_of(fields.begin(), fields.end(),
                       [](const auto& field) { return field.first == "Signature"; });
}

inline Platform takesAnySignatureOfARequest() {
    return withHmac(signByHmac, verifyByHmac, [](const bytes& /*key*/, const IHttpStream::Request& request) {
        return namesASignature(request.fields);
    });
}

inline Platform takesAnyRequest() {
    return withHmac(signByHmac, verifyByHmac,
                    [](const bytes& /*key*/, const IHttpStream::Request& /*request*/) { return true; });
}

inline Platform verifiesNoResponse() {
    return withHmac(signByHmac, [](const bytes& /*key*/, IHttpStream& /*stream*/) { return false; });
}

inline Platform verifiesByTheNameOfAField() {
    return withHmac(signByHmac, [](const bytes& /*key*/, IHttpStream& stream) {
        return namesASignature(stream.fields());
    });
}

// The digest of a body, which anybody can compute.
inline Platform verifiesWithoutTheKey() {
    Platform platform = withHmac(signByHmac, [](const bytes& /*key*/, IHttpStream& stream) {
        return hasSignature(stream.fields(), responseCode(bytes(16), stream.body()));
    });
    platform.respond = [](const bytes& key, const std::string& /*s*/, const IHttpStream::Request& request) {
        return isSignedByHmac(key, request) ? std::make_optional(respondByHmac(bytes(16))) : std::nullopt;
    };
    return platform;
}

// Bodies that name a key, whatever the fields say.
inline Platform verifiesByTheBodyAlone() {
    Platform platform = withHmac(signByHmac, [](const bytes& key, IHttpStream& stream) {
        return toText(stream.body()) == code(key, "done");
    });
    platform.respond = [](const bytes& key, const std::string& /*s*/,
                          const IHttpStream::Request& /*request*/) {
        const bytes body = fromText(code(key, "done"));
        return std::make_optional(testkit::Response{200, respondByHmac(key).fields, body});
    };
    return platform;
}

inline Platform respondsWithNothing() {
    Platform platform = signsByHmac();
    platform.respond = [](const bytes& /*key*/, const std::string& /*s*/,
                          const IHttpStream::Request& /*request*/) {
        return std::make_optional(testkit::Response{200, {}, {}});
    };
    return platform;
}

inline Platform failsToStart() {
    Platform platform = soundPlatform();
    platform.init = [] { throw std::runtime_error("no token in the slot"); };
    return platform;
}

inline Platform failsToStop() {
    Platform platform = soundPlatform();
    platform.cleanup = [cleanup = platform.cleanup] {
        cleanup();
        throw std::runtime_error("busy");
    };
    return platform;
}

inline Platform isDescribedWithoutKeys() {
    Platform platform = soundPlatform();
    platform.provision = nullptr;
    platform.ownKeys = {keyFor(octets(16)), keyFor(octets(16))};
    return platform;
}

// The same platform, of whose keys nobody knows the value.
inline Platform withKeysOfItsOwn(Platform platform) {
    platform.ownKeys = {keyFor(octets(16)), keyFor(bytes(16, 0x55))};
    platform.provision = nullptr;
    return platform;
}

inline Platform losesTheLastBlockUnderKeysOfItsOwn() {
    return withKeysOfItsOwn(withContexts(make<LosesTheLastBlock>));
}

inline Platform ignoresTheIvUnderKeysOfItsOwn() {
    return withKeysOfItsOwn(withContexts(make<IgnoresTheIv>));
}

inline Platform takesOneSpecForAnother(ICipherContext::Spec asked, ICipherContext::Spec taken) {
    return withKeysOfItsOwn(
        withFactory([asked, taken](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
            Platform::Contexts contexts = sound.cryptContext(spec == asked ? taken : spec, key);
            if (spec == asked) {
                contexts.first = std::make_shared<PassesForAnother>(contexts.first, spec);
            }
            return contexts;
        }));
}

inline Platform takesEcbForCbcUnderKeysOfItsOwn() {
    return takesOneSpecForAnother(ICipherContext::SPEC_AES_128_CBC, ICipherContext::SPEC_AES_128_ECB);
}

inline Platform takesCbcForEcbUnderKeysOfItsOwn() {
    return takesOneSpecForAnother(ICipherContext::SPEC_AES_128_ECB, ICipherContext::SPEC_AES_128_CBC);
}

inline Platform withCipher(BlockCipher cipher) {
    return withKeysOfItsOwn(
        withFactory([cipher](const Platform& sound, ICipherContext::Spec spec, const bytes& key) {
            Platform::Contexts contexts = sound.cryptContext(spec, key);
            if (spec != ICipherContext::SPEC_NULL && !key.empty()) {
                contexts.first = std::make_shared<HasACipherOfItsOwn>(cipher, spec, key);
            }
            return contexts;
        }));
}

inline Platform addsItsKeys() {
    return withCipher(addTheKey);
}

inline Platform enciphersHalvesOfBlocks() {
    return withCipher(encipherHalves);
}

template <typename Faulty>
Platform contextsOf() {
    return withContexts(make<Faulty>);
}

inline Platform losesAByteOfNothing() {
    return withContexts(make<LosesTheLastByte>, true);
}

}  // namespace vorl::test

#endif
