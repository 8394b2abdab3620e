#include "vorl/VorlContext.h"

#include "GroupedDigits.h"
#include "LibraryState.h"
#include "levels.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "platform_under_test.h"
#include "raw_base64.h"
#include "sample_key.h"
#include "vorl/ASN1Exception.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorl::test {

namespace {

using Type = std::shared_ptr<const EncryptionType>;

const char SPEC_MISMATCH[] = "Cipher spec mismatch between cipher and wrapper";

class VorlContextTest : public StartedLibrary {
protected:
    void TearDown() override {
        // The policy outlives a cleanup, so it is put back while it can be.
        VORLLib::init();
        StartedLibrary::TearDown();
    }

    static VorlContext contextOf(Level level, const bytes& key = KEY) {
        VORLLib::type_ = typeOf(level);
        return VorlContext(keyFor(key));
    }
};

// Whether decryption fails, and with what the platform fails.
bool isRefusedByThePlatform(VorlContext& context, const bytes& text) {
    try {
        context.decrypt(text);
    } catch (const std::exception& e) {
        return isPlatformFault(e);
    }
    return false;
}

bytes textOf(Level level, const bytes& message) {
    return rawBase64(expectedEnvelope(level, KEY, IV, message));
}

class VorlContextBeforeInit : public ::testing::Test {};

}  // namespace

TEST_F(VorlContextBeforeInit, CannotBeMade) {
    ASSERT_EQ(VORLLib::type_, nullptr);
    EXPECT_EQ(messageOf<VORLException>([] { VorlContext context(KEY); }),
              "VORLLib must be initialized before use");
}

TEST_F(VorlContextTest, WritesTheCurrentTypeOfItsMaking) {
    EXPECT_EQ(rawUnbase64(VorlContext(keyFor(KEY)).encrypt(fromText("abc"))).at(0), 0x02);
    EXPECT_EQ(rawUnbase64(contextOf(TEST).encrypt(fromText("abc"))).at(0), 0x01);
    EXPECT_EQ(rawUnbase64(contextOf(NONE).encrypt(fromText("abc"))).at(0), 0x00);
}

TEST_F(VorlContextTest, KeepsItsTypeWhenTheCurrentOneChanges) {
    VorlContext context(keyFor(KEY));
    for (const Level level : {NONE, TEST}) {
        VORLLib::type_ = typeOf(level);
        EXPECT_EQ(rawUnbase64(context.encrypt(fromText("abc"))).at(0), 0x02);
        EXPECT_EQ(context.decrypt(textOf(FULL, fromText("abc"))), fromText("abc"));
    }
    VORLLib::type_.reset();
    EXPECT_EQ(rawUnbase64(context.encrypt(fromText("abc"))).at(0), 0x02);
}

TEST_F(VorlContextTest, WritesBase64OfTheEnvelope) {
    // "abc" in the null envelope is 00 03 61 62 63.
    EXPECT_EQ(toText(contextOf(NONE).encrypt(fromText("abc"))), "AANhYmM=");
    EXPECT_EQ(contextOf(NONE).decrypt(fromText("AANhYmM=")), fromText("abc"));
    EXPECT_EQ(contextOf(TEST).encrypt(octets(100)), textOf(TEST, octets(100)));
}

TEST_F(VorlContextTest, TextOfTheSameMessageDiffersAtTheFullLevelOnly) {
    VorlContext full = contextOf(FULL);
    VorlContext test = contextOf(TEST);
    EXPECT_NE(full.encrypt(octets(20)), full.encrypt(octets(20)));
    EXPECT_EQ(test.encrypt(octets(20)), test.encrypt(octets(20)));
}

TEST_F(VorlContextTest, OpensWhatAnotherContextOfTheSameKeyWrote) {
    VorlContext sender(keyFor(KEY));
    VorlContext receiver(keyFor(KEY));
    EXPECT_EQ(receiver.decrypt(sender.encrypt(octets(100))), octets(100));
    EXPECT_EQ(sender.decrypt(receiver.encrypt(octets(100))), octets(100));
}

TEST_F(VorlContextTest, AnotherKeyDoesNotOpen) {
    VorlContext other(keyFor(octets(16)));
    EXPECT_TRUE(isRefusedByThePlatform(other, textOf(FULL, octets(20))));
}

TEST_F(VorlContextTest, EnvelopeOfAnotherLevelIsRefused) {
    for (const Level own : {NONE, TEST, FULL}) {
        VorlContext context = contextOf(own);
        for (const Level other : {NONE, TEST, FULL}) {
            const bytes text = textOf(other, octets(20));
            if (own == other) {
                EXPECT_EQ(context.decrypt(text), octets(20));
            } else {
                EXPECT_EQ(messageOf<VORLException>([&] { context.decrypt(text); }), SPEC_MISMATCH);
            }
        }
    }
}

// The policy comes before the level of the context.
TEST_F(VorlContextTest, ForbiddenEnvelopeIsRefusedAsSuch) {
    VorlContext context(keyFor(KEY));
    VORLLib::setAllowedEncryptionType(EncryptionType::NULL_CIPHER(), false);
    VORLLib::setAllowedEncryptionType(EncryptionType::TEST_CIPHER(), false);
    EXPECT_EQ(messageOf<VORLException>([&] { context.decrypt(textOf(NONE, octets(20))); }),
              "CipherWrapper CipherWrapper[Null:0x00] not allowed");
    EXPECT_EQ(messageOf<VORLException>([&] { context.decrypt(textOf(TEST, octets(20))); }),
              "CipherWrapper CipherWrapper[Test:0x01] not allowed");
    EXPECT_EQ(context.decrypt(textOf(FULL, octets(20))), octets(20));
}

// It sends as before, though.
TEST_F(VorlContextTest, ContextOfAForbiddenLevelOpensNothing) {
    VorlContext none = contextOf(NONE);
    VorlContext test = contextOf(TEST);
    VORLLib::setAllowedEncryptionType(EncryptionType::NULL_CIPHER(), false);
    VORLLib::setAllowedEncryptionType(EncryptionType::TEST_CIPHER(), false);
    for (VorlContext* const context : {&none, &test}) {
        EXPECT_EQ(messageOf<VORLException>([&] { context->decrypt(textOf(NONE, octets(20))); }),
                  "CipherWrapper CipherWrapper[Null:0x00] not allowed");
        EXPECT_EQ(messageOf<VORLException>([&] { context->decrypt(textOf(TEST, octets(20))); }),
                  "CipherWrapper CipherWrapper[Test:0x01] not allowed");
        EXPECT_EQ(messageOf<VORLException>([&] { context->decrypt(textOf(FULL, octets(20))); }),
                  SPEC_MISMATCH);
    }
    EXPECT_EQ(none.encrypt(octets(20)), textOf(NONE, octets(20)));
    EXPECT_EQ(test.encrypt(octets(20)), textOf(TEST, octets(20)));
}

// Which is why the level is for tests alone.
TEST_F(VorlContextTest, TestLevelTakesItsBlocksInAnyOrder) {
    VorlContext context = contextOf(TEST);
    bytes message = octets(40);
    bytes envelope = expectedEnvelope(TEST, KEY, IV, message);
    // The version and the length are in front of the ciphertext.
    std::swap_ranges(envelope.begin() + 2, envelope.begin() + 18, envelope.begin() + 18);
    std::swap_ranges(message.begin(), message.begin() + 16, message.begin() + 16);
    EXPECT_NE(message, octets(40));
    EXPECT_EQ(context.decrypt(rawBase64(envelope)), message);
}

// The policy is about what is received, not about what is sent.
TEST_F(VorlContextTest, ForbiddenTypeCanStillBeSent) {
    VorlContext context(keyFor(KEY));
    VORLLib::setAllowedEncryptionType(EncryptionType::FULL_CIPHER(), false);
    const bytes text = context.encrypt(octets(20));
    EXPECT_EQ(messageOf<VORLException>([&] { context.decrypt(text); }),
              "CipherWrapper CipherWrapper[Full:0x02] not allowed");
    VORLLib::setAllowedEncryptionType(EncryptionType::FULL_CIPHER(), true);
    EXPECT_EQ(context.decrypt(text), octets(20));
}

TEST_F(VorlContextTest, ForbiddenTypeCanStillBeTheCurrentOne) {
    VORLLib::setAllowedEncryptionType(EncryptionType::FULL_CIPHER(), false);
    EXPECT_NO_THROW(VorlContext(keyFor(KEY)).encrypt(octets(20)));
}

TEST_F(VorlContextTest, NeedsTheRegistryAfterItsMaking) {
    VorlContext full = contextOf(FULL);
    VorlContext test = contextOf(TEST);
    VorlContext none = contextOf(NONE);
    VORLLib::cleanup();
    const char NOT_INITIALIZED[] = "CipherWrapper must be initialized before use";
    EXPECT_EQ(messageOf<VORLException>([&] { full.encrypt(octets(3)); }), NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([&] { full.decrypt(textOf(FULL, octets(3))); }), NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([&] { test.encrypt(octets(3)); }), NOT_INITIALIZED);
    EXPECT_EQ(messageOf<VORLException>([&] { none.decrypt(textOf(NONE, octets(3))); }), NOT_INITIALIZED);
    EXPECT_EQ(none.encrypt(octets(3)), textOf(NONE, octets(3)));

    VORLLib::init();
    EXPECT_EQ(full.decrypt(textOf(FULL, octets(3))), octets(3));
}

TEST_F(VorlContextTest, OnlyTheFullLevelNeedsTheGenerator) {
    VorlContext full = contextOf(FULL);
    VorlContext test = contextOf(TEST);
    VorlContext none = contextOf(NONE);
    Random::init_ = false;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { full.encrypt(octets(3)); }),
              "Random must be initialized before use");
    EXPECT_EQ(full.decrypt(textOf(FULL, octets(3))), octets(3));
    EXPECT_EQ(test.encrypt(octets(3)), textOf(TEST, octets(3)));
    EXPECT_EQ(none.encrypt(octets(3)), textOf(NONE, octets(3)));
}

TEST_F(VorlContextTest, TextThatIsNotBase64IsAnEnvelopeWithoutAByte) {
    VorlContext context(keyFor(KEY));
    for (const char* text : {"", "A", "AAA", "AAAAA", "!AAA", "AAN hYmM", "AANhYmM=\n", "=AAA", "AB=="}) {
        EXPECT_EQ(messageOf<ASN1Exception>([&] { context.decrypt(fromText(text)); }),
                  "index out of bounds: read index(0) >= write index(0)")
            << text;
    }
}

TEST_F(VorlContextTest, UnknownVersionIsRefused) {
    VorlContext context(keyFor(KEY));
    EXPECT_EQ(messageOf<VORLException>([&] { context.decrypt(rawBase64(fromHex("03"))); }),
              "Unknown CipherWrapper version: 0x03");
}

TEST_F(VorlContextTest, WorksOnAfterAFailure) {
    VorlContext context(keyFor(KEY));
    EXPECT_TRUE(isRefusedByThePlatform(context, rawBase64(bytes{0x02} + block(IV) + block(octets(31)))));
    EXPECT_EQ(context.decrypt(textOf(FULL, octets(50))), octets(50));
    EXPECT_EQ(context.decrypt(context.encrypt(octets(50))), octets(50));
}

TEST_F(VorlContextTest, ArgumentsAreLeftAsTheyAre) {
    VorlContext context(keyFor(KEY));
    const bytes message = octets(50);
    const bytes text = context.encrypt(message);
    const bytes textBefore = text;
    context.decrypt(text);
    EXPECT_EQ(message, octets(50));
    EXPECT_EQ(text, textBefore);
}

TEST_F(VorlContextTest, CopyDoesTheSameAsTheOriginal) {
    VorlContext original(keyFor(KEY));
    VorlContext copy = original;
    VORLLib::type_ = EncryptionType::NULL_CIPHER();
    EXPECT_EQ(copy.decrypt(original.encrypt(octets(20))), octets(20));
    EXPECT_EQ(original.decrypt(copy.encrypt(octets(20))), octets(20));
    EXPECT_EQ(rawUnbase64(copy.encrypt(octets(20))).at(0), 0x02);
}

TEST_F(VorlContextTest, CopyOutlivesTheOriginal) {
    auto original = std::make_unique<VorlContext>(keyFor(KEY));
    VorlContext copy = *original;
    VorlContext assigned(keyFor(octets(16)));
    assigned = *original;
    original.reset();
    EXPECT_EQ(copy.decrypt(textOf(FULL, octets(20))), octets(20));
    EXPECT_EQ(assigned.decrypt(textOf(FULL, octets(20))), octets(20));
}

TEST_F(VorlContextTest, HasNoVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<VorlContext>);
}

TEST_F(VorlContextTest, TextsAndMessagesDoNotFollowTheGlobalLocale) {
    const GroupedDigits grouped;
    VorlContext context(keyFor(KEY));
    EXPECT_EQ(
        messageOf<ASN1Exception>([&] { context.decrypt(rawBase64(bytes{0x02} + block(octets(16384)))); }),
        "index out of bounds: read index(16386) >= write index(16386)");
    EXPECT_EQ(context.decrypt(context.encrypt(octets(20000))), octets(20000));
}

namespace {

class VorlContextSizes : public VorlContextTest, public ::testing::WithParamInterface<Level> {};

}  // namespace

TEST_P(VorlContextSizes, AreWrittenToTheCharacter) {
    VorlContext context = contextOf(GetParam());
    for (const std::size_t size : messageSizes()) {
        const bytes message = octets(size);
        const bytes text = context.encrypt(message);
        const bytes iv = GetParam() == FULL ? ivOf(rawUnbase64(slice(text, 0, 24))) : bytes();
        ASSERT_TRUE(text == rawBase64(expectedEnvelope(GetParam(), KEY, iv, message))) << size;
    }
}

TEST_P(VorlContextSizes, AreReadBackUnlessTheBodyIsAMultipleOf16384) {
    VorlContext context = contextOf(GetParam());
    for (const std::size_t size : messageSizes()) {
        const bytes message = octets(size);
        const bytes envelope = expectedEnvelope(GetParam(), KEY, IV, message);
        const bytes text = rawBase64(envelope);
        if (canBeReadBack(GetParam(), size)) {
            ASSERT_TRUE(context.decrypt(text) == message) << size;
        } else {
            ASSERT_EQ(messageOf<ASN1Exception>([&] { context.decrypt(text); }), endsTooEarly(envelope.size()))
                << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, VorlContextSizes, ::testing::Values(NONE, TEST, FULL), [](const auto& test) {
    return std::string(test.param == NONE ? "None" : test.param == TEST ? "Test" : "Full");
});

namespace {

// The exceptions that a received text may end in. True for a text that opens.
bool opens(VorlContext& context, const bytes& text) {
    try {
        context.decrypt(text);
        return true;
    } catch (const VORLException&) {
        return false;
    } catch (const std::exception& e) {
        if (isPlatformFault(e)) {
            return false;
        }
        throw;
    }
}

}  // namespace

TEST_F(VorlContextTest, DamagedTextOpensOrIsRefused) {
    VorlContext context(keyFor(KEY));
    const bytes text = textOf(FULL, octets(20));
    for (std::size_t at = 0; at < text.size(); ++at) {
        EXPECT_FALSE(opens(context, slice(text, 0, at))) << at;
        for (unsigned int bit = 0; bit < 8; ++bit) {
            bytes damaged = text;
            damaged[at] = static_cast<unsigned char>(damaged[at] ^ (1U << bit));
            EXPECT_NO_THROW(opens(context, damaged)) << at;
        }
    }
    EXPECT_TRUE(opens(context, text));
}

// Each thread has a context of its own; what they share is read only.
TEST_F(VorlContextTest, ContextsOfDifferentThreadsDoNotDisturbEachOther) {
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned char i = 0; i < 8; ++i) {
        threads.emplace_back([&wrong, i] {
            VorlContext context(keyFor(bytes(16, i)));
            for (std::size_t size = 0; size < 100; ++size) {
                if (context.decrypt(context.encrypt(bytes(size, i))) != bytes(size, i)) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace vorl::test
