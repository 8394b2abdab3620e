#include "OpenSSLMemory.h"
#include "digest_algos.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/HMAC.h"
#include "vorl/OpenSSLException.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

// OpenSSL without memory: a digest reports it, a code is empty, and what comes after works.

namespace vorl::test {
namespace {

const bytes KEY = octets(20);
const bytes DATA = octets(100);

class DigestsWithoutMemory : public ::testing::TestWithParam<DigestAlgoCase> {
protected:
    void SetUp() override {
        ASSERT_TRUE(openssl_memory::isOurs());
        // What OpenSSL makes once, it makes now; of the algorithms, what the library keeps is made by it.
        expectedDigest = rawDigest(GetParam().md(), DATA);
        expectedCode = rawHmac(GetParam().md(), KEY, DATA);
        ERR_clear_error();
    }
    void TearDown() override { ERR_clear_error(); }

    static bytes digestWith(Digester& digester) {
        digester.init();
        digester.update(DATA);
        return digester.final();
    }

    static bytes codeWith(HMAC& code) {
        code.init();
        code.update(DATA);
        return code.final();
    }

    bytes expectedDigest;
    bytes expectedCode;
};

TEST_P(DigestsWithoutMemory, ADigesterReportsItAtInit) {
    const OpenSSLOutOfMemory none;
    Digester digester(GetParam().factory());

    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.init(); }), "EVP_DigestInit_ex()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(DATA); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.final(); }), "EVP_DigestFinal_ex()");
}

TEST_P(DigestsWithoutMemory, ADigesterRemembersAFailedInitUntilTheNext) {
    Digester digester(GetParam().factory());
    {
        const OpenSSLOutOfMemory none;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.init(); }), "EVP_DigestInit_ex()");
    }
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(DATA); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.final(); }), "EVP_DigestFinal_ex()");
    EXPECT_EQ(digestWith(digester), expectedDigest);
}

TEST_P(DigestsWithoutMemory, ADigesterThatWasMadeWithoutMemoryBeginsWhenThereIsSome) {
    std::unique_ptr<Digester> digester;
    {
        const OpenSSLOutOfMemory none;
        digester = std::make_unique<Digester>(GetParam().factory());
    }
    EXPECT_EQ(digestWith(*digester), expectedDigest);
}

// Whether OpenSSL needs memory for a restart is its own affair.
TEST_P(DigestsWithoutMemory, AUsedDigesterIsRestartedOrReportsIt) {
    Digester digester(GetParam().factory());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(digestWith(digester), expectedDigest) << round;
        const OpenSSLOutOfMemory none;
        const std::string message = messageOf<OpenSSLException>([&] { digester.init(); });
        if (message == "EVP_DigestInit_ex()") {
            EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.final(); }), "EVP_DigestFinal_ex()");
        } else {
            EXPECT_EQ(message, "<no exception>");
            digester.update(DATA);
            EXPECT_EQ(digester.final(), expectedDigest);
        }
    }
}

TEST_P(DigestsWithoutMemory, ACodeIsEmptyAndTheErrorQueueAsItWas) {
    const unsigned long left = leaveApplicationError();
    {
        const OpenSSLOutOfMemory none;
        HMAC code(KEY, GetParam().factory());
        code.update(DATA);
        EXPECT_EQ(code.final(), bytes());
        EXPECT_EQ(codeWith(code), bytes());
        EXPECT_EQ(code.hmac(DATA), bytes());
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_P(DigestsWithoutMemory, AnHmacThatCouldNotBeginDoesWhenThereIsSome) {
    std::unique_ptr<HMAC> code;
    std::unique_ptr<HMAC> other;
    {
        const OpenSSLOutOfMemory none;
        code = std::make_unique<HMAC>(KEY, GetParam().factory());
        other = std::make_unique<HMAC>(KEY, GetParam().factory());
    }
    // Not before the next message begins.
    code->update(DATA);
    EXPECT_EQ(code->final(), bytes());
    EXPECT_EQ(codeWith(*code), expectedCode);
    EXPECT_EQ(other->hmac(DATA), rawBase64(expectedCode));
}

// Whether OpenSSL needs memory for a restart is its own affair here too.
TEST_P(DigestsWithoutMemory, AnHmacThatCouldNotRestartDoesWhenThereIsSome) {
    HMAC code(KEY, GetParam().factory());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(codeWith(code), expectedCode) << round;
        // So that init() has something to discard.
        code.update(DATA);
        const unsigned long left = leaveApplicationError();
        {
            const OpenSSLOutOfMemory none;
            code.init();
            EXPECT_EQ(ERR_peek_last_error(), left);
            const bytes got = codeWith(code);
            EXPECT_TRUE(got == bytes() || got == expectedCode) << round;
        }
        EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    }
    EXPECT_EQ(code.hmac(DATA), rawBase64(expectedCode));
}

// Even with no data in between.
TEST_P(DigestsWithoutMemory, AnHmacThatCouldNotRestartDoesAtTheNextInit) {
    HMAC code(KEY, GetParam().factory());
    code.update(DATA);
    {
        const OpenSSLOutOfMemory none;
        code.init();
    }
    EXPECT_EQ(codeWith(code), expectedCode) << "after init";

    code.init();
    code.update(DATA);
    {
        const OpenSSLOutOfMemory none;
        code.final();
    }
    EXPECT_EQ(codeWith(code), expectedCode) << "after final";
}

INSTANTIATE_TEST_SUITE_P(All, DigestsWithoutMemory, ::testing::ValuesIn(DIGEST_ALGOS),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace vorl::test
