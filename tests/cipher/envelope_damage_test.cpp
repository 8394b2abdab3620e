#include "LibraryState.h"
#include "PlatformContext.h"
#include "cipher_contexts.h"
#include "levels.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "platform_under_test.h"
#include "sample_key.h"
#include "vorl/ASN1Exception.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

// Envelopes that were cut off or hit on their way. Keys and IVs are fixed, so that it is always the same ones
// that happen to open.

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;

enum Outcome { OPENED, REFUSED, FOREIGN_EXCEPTION };

Outcome outcomeOf(const bytes& envelope, ICipherContext& ctx) {
    try {
        CipherWrapper::decrypt(envelope, ctx);
        return OPENED;
    } catch (const VORLException& e) {
        return typeid(e) == typeid(VORLException) || typeid(e) == typeid(ASN1Exception) ? REFUSED
                                                                                        : FOREIGN_EXCEPTION;
    } catch (const std::exception& e) {
        return isPlatformFault(e) ? REFUSED : FOREIGN_EXCEPTION;
    }
}

bytes cut(const bytes& envelope, std::size_t size) {
    // Without reserve behind it, so that the sanitizers see a read past the end.
    bytes rest = slice(envelope, 0, size);
    rest.shrink_to_fit();
    return rest;
}

bytes withBit(bytes envelope, std::size_t at, unsigned int bit) {
    envelope[at] = static_cast<unsigned char>(envelope[at] ^ (1U << bit));
    return envelope;
}

struct Victim {
    const char* name;
    Level level;
    std::size_t messageSize;
    bool foreign;
};

const Victim VICTIMS[] = {
    {"NoneShort", NONE, 20, false},        {"NoneTwoByteLength", NONE, 200, false},
    {"NoneFragments", NONE, 20000, false}, {"TestShort", TEST, 20, false},
    {"TestForeign", TEST, 200, true},      {"TestFragments", TEST, 20000, false},
    {"FullEmpty", FULL, 0, false},         {"FullShort", FULL, 20, false},
    {"FullForeign", FULL, 200, true},      {"FullTwoByteLength", FULL, 200, false},
    {"FullFragments", FULL, 20000, false}, {"FullFragmentsForeign", FULL, 20000, true},
};

class DamagedEnvelope : public StartedLibrary, public ::testing::WithParamInterface<Victim> {
protected:
    void SetUp() override {
        StartedLibrary::SetUp();
        const std::shared_ptr<ICipherContext> own =
            PlatformContext(typeOf(GetParam().level)->wrapper->getCipherSpec()->spec, KEY).shared();
        ctx_ = GetParam().foreign ? std::make_shared<ForwardingContext>(own) : own;
        ASSERT_TRUE(CipherWrapper::decrypt(envelope_, *ctx_) == message_);
    }

    // The whole of a short envelope; of a long one, what is near its version, lengths and padding.
    std::vector<std::size_t> interestingPlaces() const {
        const std::size_t body = GetParam().level == FULL ? 18 : 1;
        std::vector<std::size_t> places;
        for (std::size_t at = 0; at < envelope_.size(); ++at) {
            // 20000 octets and more: one fragment of 16384, and a last one of less.
            const std::size_t lastFragment = body + 1 + 16384;
            if (envelope_.size() < 1000 || at < body + 40 || at + 40 > envelope_.size() ||
                (at + 20 > lastFragment && at < lastFragment + 20)) {
                places.push_back(at);
            }
        }
        return places;
    }

    const bytes message_ = octets(GetParam().messageSize);
    const bytes envelope_ = expectedEnvelope(GetParam().level, KEY, IV, message_);
    std::shared_ptr<ICipherContext> ctx_;
};

}  // namespace

TEST_P(DamagedEnvelope, NeverOpensWhenCutOff) {
    for (std::size_t size = 0; size < envelope_.size(); ++size) {
        const bytes rest = cut(envelope_, size);
        const std::string text = messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(rest, *ctx_); });
        ASSERT_TRUE(text.rfind("index out of bounds: read index(", 0) == 0 ||
                    text.rfind("Unable to read ", 0) == 0)
            << size << ": " << text;
    }
}

TEST_P(DamagedEnvelope, OpensOrIsRefusedWhenABitIsHit) {
    std::size_t refused = 0;
    for (const std::size_t at : interestingPlaces()) {
        for (unsigned int bit = 0; bit < 8; ++bit) {
            const Outcome outcome = outcomeOf(withBit(envelope_, at, bit), *ctx_);
            ASSERT_NE(outcome, FOREIGN_EXCEPTION) << "bit " << bit << " of byte " << at;
            refused += outcome == REFUSED ? 1 : 0;
        }
    }
    // A hit on the version never opens, whatever the rest.
    EXPECT_GE(refused, 8U);
}

TEST_P(DamagedEnvelope, WorksOnAfterEachHit) {
    for (const std::size_t at : interestingPlaces()) {
        outcomeOf(withBit(envelope_, at, 0), *ctx_);
    }
    EXPECT_TRUE(CipherWrapper::decrypt(envelope_, *ctx_) == message_);
}

INSTANTIATE_TEST_SUITE_P(Of, DamagedEnvelope, ::testing::ValuesIn(VICTIMS),
                         [](const auto& test) { return test.param.name; });

namespace {

class FullEnvelope : public StartedLibrary {
protected:
    std::string refusal(const bytes& envelope) {
        return messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(envelope, cipher_); });
    }

    PlatformContext cipher_{ICipherContext::SPEC_AES_128_CBC, KEY};
    // 02, 10 and 16 octets, 20 and 32 octets.
    const bytes message_ = octets(20);
    const bytes envelope_ = expectedEnvelope(FULL, KEY, IV, message_);
};

}  // namespace

TEST_F(FullEnvelope, SaysWhereItWasCutOff) {
    ASSERT_EQ(envelope_.size(), 51U);
    for (std::size_t size = 0; size < envelope_.size(); ++size) {
        std::string expected;
        if (size < 2 || size == 18) {
            expected = endsTooEarly(size);
        } else if (size < 18) {
            expected = "Unable to read 16 bytes from buffer, only " + std::to_string(size - 2) + " available";
        } else {
            expected =
                "Unable to read 32 bytes from buffer, only " + std::to_string(size - 19) + " available";
        }
        EXPECT_EQ(refusal(cut(envelope_, size)), expected) << size;
    }
}

// In CBC mode the IV is added to the first block, bit by bit; nothing here protects it.
TEST_F(FullEnvelope, BitOfTheIvIsABitOfTheMessage) {
    for (std::size_t at = 0; at < 16; ++at) {
        for (unsigned int bit = 0; bit < 8; ++bit) {
            EXPECT_EQ(CipherWrapper::decrypt(withBit(envelope_, 2 + at, bit), cipher_),
                      withBit(message_, at, bit));
        }
    }
}

TEST_F(FullEnvelope, BitOfTheVersionIsAnotherVersion) {
    const char* const texts[] = {
        "Unknown CipherWrapper version: 0x03", "Cipher spec mismatch between cipher and wrapper",
        "Unknown CipherWrapper version: 0x06", "Unknown CipherWrapper version: 0x0a",
        "Unknown CipherWrapper version: 0x12", "Unknown CipherWrapper version: 0x22",
        "Unknown CipherWrapper version: 0x42", "Unknown CipherWrapper version: 0x82"};
    for (unsigned int bit = 0; bit < 8; ++bit) {
        EXPECT_EQ(
            messageOf<VORLException>([&] { CipherWrapper::decrypt(withBit(envelope_, 0, bit), cipher_); }),
            texts[bit]);
    }
}

TEST_F(FullEnvelope, BitOfALengthIsNoticed) {
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(withBit(envelope_, 1, 0), cipher_); }),
              "Parsed IV length(17) != CipherSpec iv size(16");
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(withBit(envelope_, 1, 4), cipher_); }),
              "Parsed IV length(0) != CipherSpec iv size(16");
    EXPECT_EQ(refusal(withBit(envelope_, 1, 6)), "Unable to read 80 bytes from buffer, only 49 available");
    EXPECT_EQ(refusal(withBit(envelope_, 18, 0)), "Unable to read 33 bytes from buffer, only 32 available");
    EXPECT_EQ(messageOf<VORLException>([&] { CipherWrapper::decrypt(withBit(envelope_, 18, 5), cipher_); }),
              "Buffer is not empty after parsing decrypted data; 32 bytes remain");
}

}  // namespace vorl::test
