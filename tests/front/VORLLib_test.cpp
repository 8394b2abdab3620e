#include "vorl/VORLLib.h"

#include "LibraryState.h"
#include "messageOf.h"
#include "vorl/CipherWrapper02.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/VorlCryptoFactory.h>

#include <openssl/crypto.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;
using tarvik::crypto::VorlCryptoFactory;
using Type = std::shared_ptr<const EncryptionType>;

const char NOT_INITIALIZED[] = "VORLLib must be initialized before use";

// Read before main, so before any test has started the library.
const bool TYPE_SET_AT_LOAD = VORLLib::type_ != nullptr;

const Type TYPES[] = {EncryptionType::NULL_CIPHER(), EncryptionType::TEST_CIPHER(),
                      EncryptionType::FULL_CIPHER()};

class VORLLibTest : public StartedLibrary {
protected:
    void TearDown() override {
        // The policy outlives a cleanup, so it is put back while it can be.
        VORLLib::init();
        StartedLibrary::TearDown();
    }
};

class VORLLibBeforeInit : public ::testing::Test {};

void expectRefusesEverything() {
    EXPECT_EQ(messageOf<VORLException>([] { VORLLib::checkInit(); }), NOT_INITIALIZED);
    for (const Type& type : TYPES) {
        EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::isAllowedEncryptionType(type); }), NOT_INITIALIZED);
        EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::setAllowedEncryptionType(type, false); }),
                  NOT_INITIALIZED);
        EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::isAllowedCipherWrapper(type->wrapper); }),
                  NOT_INITIALIZED);
    }
}

}  // namespace

TEST_F(VORLLibBeforeInit, ThereIsNoCurrentType) {
    EXPECT_FALSE(TYPE_SET_AT_LOAD);
}

TEST_F(VORLLibBeforeInit, EveryQueryIsRefused) {
    expectRefusesEverything();
}

// Not even whether a type is known is answered.
TEST_F(VORLLibBeforeInit, StrangerIsRefusedForTheSameReason) {
    const auto stranger = std::make_shared<const EncryptionType>("Full", CipherWrapper::FULL_CIPHER());
    EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::setAllowedEncryptionType(stranger, true); }),
              NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::isAllowedEncryptionType(stranger); }), NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([] { VORLLib::isAllowedEncryptionType(nullptr); }), NOT_INITIALIZED);
}

TEST_F(VORLLibTest, InitAllowsAllTypesAndMakesFullTheCurrentOne) {
    EXPECT_NO_THROW(VORLLib::checkInit());
    EXPECT_EQ(VORLLib::type_, EncryptionType::FULL_CIPHER());
    for (const Type& type : TYPES) {
        EXPECT_TRUE(VORLLib::isAllowedEncryptionType(type)) << type->name;
        EXPECT_TRUE(VORLLib::isAllowedCipherWrapper(type->wrapper)) << type->name;
    }
}

// OpenSSL cannot be started a second time in a process, which another one can afford to find out.
TEST(VORLLibDeathTest, OpenSSLThatDoesNotStartIsReportedAndNothingElseStarted) {
    EXPECT_EXIT(
        {
            OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
            OPENSSL_cleanup();
            const std::string text = messageOf<OpenSSLException>([] { VORLLib::init(); });
            const bool started = VORLLib::type_ != nullptr ||
                                 messageOf<VORLException>([] { VORLLib::checkInit(); }) != NOT_INITIALIZED;
            std::fputs(text.c_str(), stderr);
            std::_Exit(started ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "^OPENSSL_init_crypto\\(\\)$");
}

TEST_F(VORLLibTest, InitStartsRegistryAndFactory) {
    EXPECT_NO_THROW(CipherWrapper::checkInit());
    EXPECT_NO_THROW(VorlCryptoFactory::cryptContext(ICipherContext::SPEC_NULL, {}));
}

TEST_F(VORLLibTest, CleanupStopsRegistryAndFactory) {
    VORLLib::cleanup();
    EXPECT_EQ(messageOf<VORLException>([] { CipherWrapper::checkInit(); }),
              "CipherWrapper must be initialized before use");
    EXPECT_ANY_THROW(VorlCryptoFactory::cryptContext(ICipherContext::SPEC_NULL, {}));
    expectRefusesEverything();
}

TEST_F(VORLLibTest, CleanupMayBeRepeated) {
    VORLLib::cleanup();
    EXPECT_NO_THROW(VORLLib::cleanup());
    expectRefusesEverything();
}

TEST_F(VORLLibTest, EachTypeIsAllowedForItself) {
    for (const Type& forbidden : TYPES) {
        VORLLib::setAllowedEncryptionType(forbidden, false);
        for (const Type& type : TYPES) {
            EXPECT_EQ(VORLLib::isAllowedEncryptionType(type), type != forbidden) << type->name;
            EXPECT_EQ(VORLLib::isAllowedCipherWrapper(type->wrapper), type != forbidden) << type->name;
        }
        VORLLib::setAllowedEncryptionType(forbidden, true);
        EXPECT_TRUE(VORLLib::isAllowedEncryptionType(forbidden));
        EXPECT_TRUE(VORLLib::isAllowedCipherWrapper(forbidden->wrapper));
    }
}

TEST_F(VORLLibTest, AllTypesMayBeForbidden) {
    for (const Type& type : TYPES) {
        VORLLib::setAllowedEncryptionType(type, false);
        VORLLib::setAllowedEncryptionType(type, false);
    }
    for (const Type& type : TYPES) {
        EXPECT_FALSE(VORLLib::isAllowedEncryptionType(type));
        EXPECT_FALSE(VORLLib::isAllowedCipherWrapper(type->wrapper));
    }
}

TEST_F(VORLLibTest, SecondInitAllowsWhatWasForbiddenAndResetsTheCurrentType) {
    VORLLib::setAllowedEncryptionType(EncryptionType::NULL_CIPHER(), false);
    VORLLib::setAllowedEncryptionType(EncryptionType::FULL_CIPHER(), false);
    VORLLib::type_ = EncryptionType::NULL_CIPHER();

    VORLLib::init();
    for (const Type& type : TYPES) {
        EXPECT_TRUE(VORLLib::isAllowedEncryptionType(type));
    }
    EXPECT_EQ(VORLLib::type_, EncryptionType::FULL_CIPHER());
}

TEST_F(VORLLibTest, InitAfterCleanupAllowsWhatWasForbidden) {
    VORLLib::setAllowedEncryptionType(EncryptionType::TEST_CIPHER(), false);
    VORLLib::cleanup();
    VORLLib::init();
    EXPECT_TRUE(VORLLib::isAllowedEncryptionType(EncryptionType::TEST_CIPHER()));
}

TEST_F(VORLLibTest, CleanupKeepsTheCurrentType) {
    VORLLib::type_ = EncryptionType::TEST_CIPHER();
    VORLLib::cleanup();
    EXPECT_EQ(VORLLib::type_, EncryptionType::TEST_CIPHER());
}

// A type of the caller's own, even one that looks the same: the policy knows its types by identity.
TEST_F(VORLLibTest, StrangerIsNotAllowedAndCannotBe) {
    const auto stranger = std::make_shared<const EncryptionType>("Full", CipherWrapper::FULL_CIPHER());
    for (int round = 0; round < 2; ++round) {
        // The query must not make it known.
        EXPECT_FALSE(VORLLib::isAllowedEncryptionType(stranger));
        for (const bool allowed : {true, false}) {
            EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::setAllowedEncryptionType(stranger, allowed); }),
                      "unknown EncryptionType: EncryptionType[Full:CipherWrapper[Full:0x02]]");
        }
    }
    EXPECT_TRUE(VORLLib::isAllowedEncryptionType(EncryptionType::FULL_CIPHER()));
    EXPECT_TRUE(VORLLib::isAllowedCipherWrapper(CipherWrapper::FULL_CIPHER()));
}

TEST_F(VORLLibTest, RefusalNamesTheStranger) {
    const auto stranger = std::make_shared<const EncryptionType>("Mine", CipherWrapper::NULL_CIPHER());
    EXPECT_EQ(messageOf<VORLException>([&] { VORLLib::setAllowedEncryptionType(stranger, true); }),
              "unknown EncryptionType: EncryptionType[Mine:CipherWrapper[Null:0x00]]");
}

TEST_F(VORLLibTest, NoTypeIsNotAllowed) {
    EXPECT_FALSE(VORLLib::isAllowedEncryptionType(nullptr));
    EXPECT_FALSE(VORLLib::isAllowedEncryptionType(nullptr));
}

TEST_F(VORLLibTest, StrangersWrapperIsNotAllowed) {
    EXPECT_FALSE(VORLLib::isAllowedCipherWrapper(std::make_shared<const CipherWrapper02>("Full")));
    EXPECT_FALSE(VORLLib::isAllowedCipherWrapper(nullptr));
}

TEST_F(VORLLibTest, CurrentTypeHasNoPartInThePolicy) {
    VORLLib::type_ = EncryptionType::TEST_CIPHER();
    VORLLib::setAllowedEncryptionType(EncryptionType::TEST_CIPHER(), false);
    EXPECT_EQ(VORLLib::type_, EncryptionType::TEST_CIPHER());
    EXPECT_FALSE(VORLLib::isAllowedEncryptionType(EncryptionType::TEST_CIPHER()));
}

TEST_F(VORLLibTest, NothingOfItSetsTheGeneratorsReadiness) {
    Random::init_ = false;
    VORLLib::init();
    EXPECT_FALSE(Random::init_);
    Random::init_ = true;
    VORLLib::cleanup();
    EXPECT_TRUE(Random::init_);
}

}  // namespace vorl::test
