#include "messageOf.h"
#include "octets.h"
#include "platform_under_test.h"
#include "raw_base64.h"
#include "raw_openssl.h"
#include "sample_key.h"
#include "vorl/Buffer.h"
#include "vorl/CipherSpec.h"
#include "vorl/EncryptionType.h"
#include "vorl/Env.h"
#include "vorl/Random.h"
#include "vorl/UInt16.h"
#include "vorl/UInt32.h"
#include "vorl/UInt8.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

// An application's own static objects may use the library: before main, when its own are perhaps not yet
// constructed, and after it, when they are perhaps destroyed.

namespace vorl::test {

namespace {

// Defined behind the object that reads them, so that they hold their values then only if nothing runs to make
// them.
struct Fields {
    static const UInt8 OCTET;
    static const UInt16 SHORT;
    static const UInt32 LONG;
};

// Each is empty where all is well, and what is wrong otherwise.
std::string faultOfFields() {
    Buffer buffer;
    buffer.put(Fields::OCTET);
    buffer.put(Fields::SHORT);
    buffer.put(Fields::LONG);
    return buffer.toByteArray() == fromHex("12 1234 12345678") ? "" : "fields ";
}

std::string faultOfTexts() {
    return Env::instance()->fmtSeparator() == ":" && !Env::getInstrumentation(DIFFIE_HELLMAN) &&
                   Util::toFormatHexString(fromHex("0102"), "X") == "    X:  01:02\n"
               ? ""
               : "texts ";
}

std::string faultOfTime() {
    return Util::uniqueTime() != Util::uniqueTime() ? "" : "uniqueTime ";
}

std::string faultOfMessages(VorlContext& context) {
    const bytes text = context.encrypt(octets(50));
    const bytes envelope = rawUnbase64(text);
    return slice(envelope, 19, 64) == rawEncrypt(KEY, slice(envelope, 2, 16), octets(50)) &&
                   context.decrypt(text) == octets(50)
               ? ""
               : "messages";
}

std::string faultOfAll(VorlContext& context) {
    return faultOfTexts() + faultOfTime() + faultOfMessages(context);
}

class StaticUser {
public:
    StaticUser() {
        beforeInit_ = messageOf<VORLException>([] { VorlContext context(KEY); });
        Random::init_ = true;
        VORLLib::init();
        context_ = std::make_unique<VorlContext>(keyFor(KEY));
        fault_ = faultOfFields() + faultOfAll(*context_);
    }
    ~StaticUser() {
        const std::string fault = faultOfAll(*context_);
        context_.reset();
        VORLLib::cleanup();
        // GoogleTest has counted by now, so the exit status says it.
        if (!fault.empty()) {
            std::fprintf(stderr, "in a static object's destructor: %s\n", fault.c_str());
            std::_Exit(1);
        }
    }
    StaticUser(const StaticUser&) = delete;
    StaticUser& operator=(const StaticUser&) = delete;

    const std::string& beforeInit() const { return beforeInit_; }
    const std::string& fault() const { return fault_; }
    VorlContext& context() { return *context_; }

private:
    std::string beforeInit_;
    std::string fault_;
    std::unique_ptr<VorlContext> context_;
};

bool switchedOn = false;

// Made before the library is used for the first time, and destroyed after all that the library makes then.
class LateUser {
public:
    LateUser() = default;
    ~LateUser() {
        if (Env::getInstrumentation(static_cast<Component>(1)) != switchedOn ||
            Env::instance()->fmtSeparator() != ":" || Util::uniqueTime().empty() ||
            CipherSpec::AES_128_CBC_PKCS5()->toString() !=
                "[CipherSpec:AES_128_[CipherMode:CBC]_PKCS5Padding]" ||
            EncryptionType::NULL_CIPHER()->toString() != "EncryptionType[None:CipherWrapper[Null:0x00]]") {
            std::_Exit(1);
        }
    }
    LateUser(const LateUser&) = delete;
    LateUser& operator=(const LateUser&) = delete;
};

LateUser lateUser;
StaticUser user;

const UInt8 Fields::OCTET(0x12);
const UInt16 Fields::SHORT(0x1234);
const UInt32 Fields::LONG(0x12345678);

}  // namespace

TEST(StaticObjects, ConstructorMayStartAndUseTheLibrary) {
    EXPECT_EQ(user.beforeInit(), "VORLLib must be initialized before use");
    EXPECT_EQ(user.fault(), "");
}

TEST(StaticObjects, ContextOfAStaticObjectWorksInMain) {
    EXPECT_EQ(faultOfAll(user.context()), "");
}

TEST(StaticObjectsDeathTest, DestructorMayUseTheLibrary) {
    // What the object looks for that is made first and destroyed last.
    Env::setInstrumentation(static_cast<Component>(1), true);
    switchedOn = true;
    EXPECT_EXIT(std::exit(0), ::testing::ExitedWithCode(0), "^$");
}

}  // namespace vorl::test
