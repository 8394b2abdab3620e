#include "Response.h"
#include "cipher_contexts.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/CipherWrapper.h"
#include "vorl/EncryptionType.h"
#include "vorl/Random.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/IRequestSigner.h>
#include <tarvik/crypto/VorlCryptoFactory.h>
#include <tarvik/http/IHttpStream.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// What the library asks of a platform: this program has a factory of its own in the place of the software
// platform's.

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;
using tarvik::crypto::IRequestSigner;
using tarvik::http::IHttpStream;

class RecordingSigner : public IRequestSigner {
public:
    void sign(const std::string& s, IHttpStream::Request& request) override {
        calls.push_back("sign");
        text = &s;
        signedRequest = &request;
    }
    bool verify(const std::string& s, IHttpStream& stream) override {
        calls.push_back("verify");
        text = &s;
        verifiedStream = &stream;
        if (fault) {
            throw DeviceFault("fault in verify");
        }
        return verdict;
    }

    std::vector<std::string> calls;
    const std::string* text = nullptr;
    const IHttpStream::Request* signedRequest = nullptr;
    const IHttpStream* verifiedStream = nullptr;
    bool verdict = false;
    bool fault = false;
};

// What the factory was asked, and what it hands out.
struct Device {
    std::vector<std::string> calls;
    std::vector<unsigned int> specs;
    std::vector<bytes> keys;
    std::string faultIn;
    // Of the library's state during init() and cleanup().
    bool registryReady = false;
    bool frontReady = false;
    std::shared_ptr<RecordingContext> cipher;
    std::shared_ptr<RecordingSigner> signer;
};

Device device;

bool isReady(void (*check)()) {
    try {
        check();
        return true;
    } catch (const VORLException&) {
        return false;
    }
}

void called(const char* operation) {
    device.calls.push_back(operation);
    device.registryReady = isReady(CipherWrapper::checkInit);
    device.frontReady = isReady(VORLLib::checkInit);
    if (device.faultIn == operation) {
        throw DeviceFault("fault in " + device.faultIn);
    }
}

class DevicePlatform : public ::testing::Test {
protected:
    void SetUp() override {
        device = Device();
        device.cipher = std::make_shared<RecordingContext>(2);
        device.signer = std::make_shared<RecordingSigner>();
        Random::init_ = true;
    }
    void TearDown() override {
        device.faultIn.clear();
        VORLLib::cleanup();
        VORLLib::type_.reset();
        Random::init_ = false;
        device = Device();
    }
};

const bytes IV = octets(16);

}  // namespace

}  // namespace vorl::test

namespace tarvik::crypto {

void VorlCryptoFactory::init() {
    vorl::test::called("init");
}

void VorlCryptoFactory::cleanup() {
    vorl::test::called("cleanup");
}

std::pair<std::shared_ptr<ICipherContext>, std::shared_ptr<IRequestSigner>> VorlCryptoFactory::cryptContext(
    ICipherContext::Spec spec, const std::vector<unsigned char>& key) {
    vorl::test::called("cryptContext");
    vorl::test::device.specs.push_back(spec);
    vorl::test::device.keys.push_back(key);
    return {vorl::test::device.cipher, vorl::test::device.signer};
}

}  // namespace tarvik::crypto

namespace vorl::test {

TEST_F(DevicePlatform, IsStartedBeforeTheRegistryAndTheFront) {
    VORLLib::init();
    EXPECT_EQ(device.calls, std::vector<std::string>{"init"});
    EXPECT_FALSE(device.registryReady);
    EXPECT_FALSE(device.frontReady);
    EXPECT_TRUE(isReady(CipherWrapper::checkInit));
    EXPECT_TRUE(isReady(VORLLib::checkInit));
}

TEST_F(DevicePlatform, IsStartedAgainByEachInit) {
    VORLLib::init();
    VORLLib::init();
    EXPECT_EQ(device.calls, (std::vector<std::string>{"init", "init"}));
}

TEST_F(DevicePlatform, IsStoppedLast) {
    VORLLib::init();
    VORLLib::cleanup();
    EXPECT_EQ(device.calls, (std::vector<std::string>{"init", "cleanup"}));
    EXPECT_FALSE(device.registryReady);
    EXPECT_FALSE(device.frontReady);
}

TEST_F(DevicePlatform, FailedStartLeavesTheLibraryUnstarted) {
    device.faultIn = "init";
    EXPECT_EQ(messageOf<DeviceFault>([] { VORLLib::init(); }), "fault in init");
    EXPECT_FALSE(isReady(VORLLib::checkInit));
    EXPECT_FALSE(isReady(CipherWrapper::checkInit));
    EXPECT_EQ(VORLLib::type_, nullptr);
}

TEST_F(DevicePlatform, IsAskedForTheSpecOfTheCurrentTypeWithTheKeyUnchanged) {
    VORLLib::init();
    const std::shared_ptr<const EncryptionType> types[] = {
        EncryptionType::NULL_CIPHER(), EncryptionType::TEST_CIPHER(), EncryptionType::FULL_CIPHER()};
    for (const auto& type : types) {
        VORLLib::type_ = type;
        // Of any length: the platform judges it.
        const VorlContext context(octets(device.specs.size() * 20));
    }
    EXPECT_EQ(device.specs, (std::vector<unsigned int>{0, 1, 2}));
    EXPECT_EQ(device.keys, (std::vector<bytes>{octets(0), octets(20), octets(40)}));
}

TEST_F(DevicePlatform, RefusalOfAContextPassesThrough) {
    VORLLib::init();
    device.faultIn = "cryptContext";
    EXPECT_EQ(messageOf<DeviceFault>([] { VorlContext context(octets(16)); }), "fault in cryptContext");
}

TEST_F(DevicePlatform, IsNotAskedBeforeTheLibraryWasStarted) {
    EXPECT_EQ(messageOf<VORLException>([] { VorlContext context(octets(16)); }),
              "VORLLib must be initialized before use");
    EXPECT_TRUE(device.calls.empty());
}

// After a cleanup the current type is still there, so that the platform is asked, and may refuse.
TEST_F(DevicePlatform, IsAskedAfterCleanup) {
    VORLLib::init();
    VORLLib::cleanup();
    const VorlContext context(octets(16));
    EXPECT_EQ(device.calls.back(), "cryptContext");
}

TEST_F(DevicePlatform, CipherEncryptsMessages) {
    VORLLib::init();
    device.cipher->updateOutput = octets(3);
    device.cipher->finalOutput = octets(2);
    VorlContext context(octets(16));

    const bytes envelope = rawUnbase64(context.encrypt(octets(100)));

    EXPECT_EQ(slice(envelope, 0, 2), fromHex("02 10"));
    EXPECT_EQ(slice(envelope, 18, 6), bytes{0x05} + octets(3) + octets(2));
    ASSERT_EQ(device.cipher->calls.size(), 3U);
    EXPECT_TRUE((device.cipher->calls[0] == ContextCall{"encryptInit", slice(envelope, 2, 16)}));
    EXPECT_TRUE((device.cipher->calls[1] == ContextCall{"update", octets(100)}));
    EXPECT_TRUE((device.cipher->calls[2] == ContextCall{"final", bytes()}));
}

TEST_F(DevicePlatform, CipherDecryptsMessages) {
    VORLLib::init();
    device.cipher->updateOutput = octets(3);
    device.cipher->finalOutput = octets(2);
    VorlContext context(octets(16));

    EXPECT_EQ(context.decrypt(rawBase64(fromHex("02 10") + IV + fromHex("04 aa bb cc dd"))),
              octets(3) + octets(2));

    ASSERT_EQ(device.cipher->calls.size(), 3U);
    EXPECT_TRUE((device.cipher->calls[0] == ContextCall{"decryptInit", IV}));
    EXPECT_TRUE((device.cipher->calls[1] == ContextCall{"update", fromHex("aa bb cc dd")}));
    EXPECT_TRUE((device.cipher->calls[2] == ContextCall{"final", bytes()}));
}

TEST_F(DevicePlatform, CipherOfAnotherSpecIsRefused) {
    VORLLib::init();
    device.cipher = std::make_shared<RecordingContext>(1);
    VorlContext context(octets(16));
    EXPECT_EQ(messageOf<VORLException>([&] { context.encrypt(octets(3)); }),
              "Cipher spec mismatch between cipher and wrapper");
}

TEST_F(DevicePlatform, CopiesOfAContextShareItsCipherAndSigner) {
    VORLLib::init();
    device.cipher->finalOutput = octets(16);
    VorlContext original(octets(16));
    VorlContext copy = original;
    original.encrypt(octets(1));
    copy.encrypt(octets(2));
    EXPECT_EQ(device.cipher->calls.size(), 6U);

    Response response;
    original.verify("one", response);
    copy.verify("other", response);
    EXPECT_EQ(device.signer->calls, (std::vector<std::string>{"verify", "verify"}));
}

TEST_F(DevicePlatform, ContextKeepsCipherAndSignerAlive) {
    VORLLib::init();
    std::weak_ptr<RecordingContext> cipher = device.cipher;
    std::weak_ptr<RecordingSigner> signer = device.signer;
    {
        const VorlContext context(octets(16));
        device.cipher.reset();
        device.signer.reset();
        EXPECT_FALSE(cipher.expired());
        EXPECT_FALSE(signer.expired());
    }
    EXPECT_TRUE(cipher.expired());
    EXPECT_TRUE(signer.expired());
}

TEST_F(DevicePlatform, SignPassesItsArgumentsThrough) {
    VORLLib::init();
    VorlContext context(octets(16));
    const std::string text = "key id";
    IHttpStream::Request request;
    context.sign(text, request);
    EXPECT_EQ(device.signer->calls, std::vector<std::string>{"sign"});
    EXPECT_EQ(device.signer->text, &text);
    EXPECT_EQ(device.signer->signedRequest, &request);
}

TEST_F(DevicePlatform, VerifyPassesItsArgumentsAndTheAnswerThrough) {
    VORLLib::init();
    VorlContext context(octets(16));
    const std::string text = "key id";
    Response response;
    for (const bool verdict : {true, false}) {
        device.signer->verdict = verdict;
        EXPECT_EQ(context.verify(text, response), verdict);
        EXPECT_EQ(device.signer->text, &text);
        EXPECT_EQ(device.signer->verifiedStream, &response);
    }
    device.signer->fault = true;
    EXPECT_EQ(messageOf<DeviceFault>([&] { context.verify(text, response); }), "fault in verify");
}

// Signing needs neither the registry nor the generator.
TEST_F(DevicePlatform, SigningWorksAfterCleanup) {
    VORLLib::init();
    VorlContext context(octets(16));
    VORLLib::cleanup();
    Random::init_ = false;
    Response response;
    device.signer->verdict = true;
    EXPECT_TRUE(context.verify("key", response));
}

}  // namespace vorl::test
