#include "LibraryState.h"
#include "PlatformContext.h"
#include "cipher_contexts.h"
#include "levels.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "sample_key.h"
#include "vorl/ASN1Exception.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;

struct Way {
    const char* name;
    Level level;
    // The library's own cipher, which is the software platform's, takes a short cut; a foreign one does not.
    bool foreign;
};

const Way WAYS[] = {
    {"NoneOwn", NONE, false},    {"NoneForeign", NONE, true}, {"TestOwn", TEST, false},
    {"TestForeign", TEST, true}, {"FullOwn", FULL, false},    {"FullForeign", FULL, true},
};

class EnvelopeSizes : public StartedLibrary, public ::testing::WithParamInterface<Way> {
protected:
    std::shared_ptr<ICipherContext> context() const {
        const std::shared_ptr<ICipherContext> own =
            PlatformContext(typeOf(level_)->wrapper->getCipherSpec()->spec, KEY).shared();
        return GetParam().foreign ? std::make_shared<ForwardingContext>(own, 100) : own;
    }

    const Level level_ = GetParam().level;
};

}  // namespace

TEST_P(EnvelopeSizes, AreWrittenToTheByte) {
    const auto wrapper = CipherWrapper::forID(level_);
    const auto ctx = context();
    for (const std::size_t size : messageSizes()) {
        const bytes message = octets(size);
        const bytes envelope = wrapper->encrypt(message, *ctx);
        ASSERT_TRUE(envelope ==
                    expectedEnvelope(level_, KEY, level_ == FULL ? ivOf(envelope) : bytes(), message))
            << size;
    }
}

TEST_P(EnvelopeSizes, AreReadBackUnlessTheBodyIsAMultipleOf16384) {
    const auto ctx = context();
    for (const std::size_t size : messageSizes()) {
        const bytes message = octets(size);
        bytes envelope = expectedEnvelope(level_, KEY, IV, message);
        const std::size_t envelopeSize = envelope.size();
        if (canBeReadBack(level_, size)) {
            ASSERT_TRUE(CipherWrapper::decrypt(envelope, *ctx) == message) << size;
            ASSERT_TRUE(CipherWrapper::decrypt(std::move(envelope), *ctx) == message) << size;
        } else {
            ASSERT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(envelope, *ctx); }),
                      endsTooEarly(envelopeSize))
                << size;
            ASSERT_EQ(messageOf<ASN1Exception>([&] { CipherWrapper::decrypt(std::move(envelope), *ctx); }),
                      endsTooEarly(envelopeSize))
                << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, EnvelopeSizes, ::testing::ValuesIn(WAYS),
                         [](const auto& test) { return test.param.name; });

}  // namespace vorl::test
