#include "OpenSSLMemory.h"
#include "TempFolder.h"
#include "block_encoder.h"
#include "der_encoder.h"
#include "dh_group.h"
#include "dh_record.h"
#include "error_queue.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// A key agreement while OpenSSL's memory comes to its end, block by block: each call that fails is reported
// in the words that belong to it, and nothing is lost.

namespace vorl::test {
namespace {

using ::testing::ElementsAre;

using Messages = std::vector<std::string>;

class AgreementWithoutMemory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(openssl_memory::isOurs());
        // What OpenSSL makes once, and does not try again where that fails, it makes now.
        DiffieHellman::generate(DiffieHellmanParams(std::string(GROUP_512_2_PEM)));
    }
    void TearDown() override { ERR_clear_error(); }

    // What `action` says with memory for no block, for one, for two ... until there is enough. A message that
    // comes several times in a row is one.
    static Messages messagesOf(const std::function<void()>& action) {
        // And what it makes for this action alone.
        action();
        const long before = settledBlocks();
        Messages messages;
        for (long blocks = 0; blocks < 10000; ++blocks) {
            const std::string message = messageWith(blocks, action);
            EXPECT_EQ(settledBlocks(), before) << "with " << blocks << " blocks: " << message;
            if (message.empty()) {
                return messages;
            }
            if (messages.empty() || messages.back() != message) {
                messages.push_back(message);
            }
        }
        ADD_FAILURE() << "there is never enough";
        return messages;
    }

private:
    // Without what OpenSSL keeps for the thread: its errors and its random generators.
    static long settledBlocks() {
        OPENSSL_thread_stop();
        return openssl_memory::liveBlocks();
    }

    static std::string messageWith(long blocks, const std::function<void()>& action) {
        const OpenSSLOutOfMemory after(blocks);
        try {
            action();
        } catch (const OpenSSLException& e) {
            return e.what();
        } catch (const VORLException& e) {
            return std::string("VORLException: ") + e.what();
        }
        return std::string();
    }
};

bytes groupBlocks() {
    return block(bytesOf(GROUP_512_2.p())) + block(bytesOf(GROUP_512_2.g()));
}

bytes groupDer() {
    return derSequence(derInteger(bytesOf(GROUP_512_2.p())) + derInteger(bytesOf(GROUP_512_2.g())));
}

// The parameters.

class DiffieHellmanParamsWithoutMemory : public AgreementWithoutMemory {};

TEST_F(DiffieHellmanParamsWithoutMemory, AreNotDecodedAndSayAtWhichStep) {
    const bytes blocks = groupBlocks();
    EXPECT_THAT(messagesOf([&] {
                    Buffer in(blocks);
                    DiffieHellmanParams::decode(in);
                }),
                ElementsAre("BN_bin2bn", "Unable to create DH using DH_new()",
                            "Unable to duplicate DH prime using BN_dup()",
                            "Unable to duplicate DH generator using BN_dup()"));
}

TEST_F(DiffieHellmanParamsWithoutMemory, AreNotReadFromDer) {
    const bytes der = groupDer();
    EXPECT_THAT(messagesOf([&] { DiffieHellmanParams{der}; }), ElementsAre("d2i_DHparams(&dh_, &ptr, len)"));
}

TEST_F(DiffieHellmanParamsWithoutMemory, AreNotReadFromPem) {
    const std::string pem = GROUP_512_2_PEM;
    EXPECT_THAT(messagesOf([&] { DiffieHellmanParams{pem}; }),
                ElementsAre("BIO_new_mem_buf()", "VORLException: Unable to read DHParams from BIO"));

    const TempFolder folder;
    std::ofstream(folder / "group.pem") << pem;
    EXPECT_THAT(messagesOf([&] { DiffieHellmanParams::load(folder / "group.pem"); }),
                ElementsAre("BIO_new_file()", "VORLException: Unable to read DHParams from BIO"));
}

TEST_F(DiffieHellmanParamsWithoutMemory, AreNotCopied) {
    const std::shared_ptr<DH> dh = rawPair(GROUP_512_2, numberOf(7).get());
    const DiffieHellmanParams params(dh);
    const DiffieHellman pair(dh);
    const char message[] = "ASN1_dup(i2d_DHparams, d2i_DHparams, dh)";
    EXPECT_THAT(messagesOf([&] { DiffieHellmanParams{dh}; }), ElementsAre(message));
    EXPECT_THAT(messagesOf([&] { DiffieHellmanParams{pair}; }), ElementsAre(message));
    EXPECT_THAT(messagesOf([&] { DiffieHellmanParams copy(params); }), ElementsAre(message));
}

TEST_F(DiffieHellmanParamsWithoutMemory, KeepTheirNumbersWhereTheyCannotBeAssigned) {
    const DiffieHellmanParams source(rawDh(GROUP_512_5));
    DiffieHellmanParams params(rawDh(GROUP_512_2));
    {
        const OpenSSLOutOfMemory none;
        EXPECT_THROW(params = source, OpenSSLException);
    }
    EXPECT_EQ(params, DiffieHellmanParams(rawDh(GROUP_512_2)));
}

TEST_F(DiffieHellmanParamsWithoutMemory, AreNotGenerated) {
    const OpenSSLOutOfMemory none;
    EXPECT_THROW(DiffieHellmanParams::generate(2, 512), VORLException);
}

// The pair.

class DiffieHellmanWithoutMemory : public AgreementWithoutMemory {
protected:
    static std::shared_ptr<DH> rawOwn() { return rawPair(RFC_2409_GROUP, numberFrom(octets(32)).get()); }
};

TEST_F(DiffieHellmanWithoutMemory, IsNotConstructedAndSaysAtWhichNumber) {
    const std::shared_ptr<DH> dh = rawOwn();
    EXPECT_THAT(messagesOf([&] { DiffieHellman{dh}; }),
                ElementsAre("DH_new()", "BN_dup(DH->p)", "BN_dup(DH->g)", "BN_dup(DH->pub_key)",
                            "BN_dup(DH->priv_key)"));
}

TEST_F(DiffieHellmanWithoutMemory, IsNotGeneratedAndSaysAtWhichStep) {
    const DiffieHellmanParams params(rawDh(GROUP_512_2));
    EXPECT_THAT(messagesOf([&] { DiffieHellman::generate(params); }),
                ElementsAre("DH_new()", "BN_dup(DHParams->p)", "BN_dup(DHParams->g)", "DH_generate_key()",
                            // Of the object that is made of the pair.
                            "DH_new()", "BN_dup(DH->p)", "BN_dup(DH->g)", "BN_dup(DH->pub_key)",
                            "BN_dup(DH->priv_key)"));
}

TEST_F(DiffieHellmanWithoutMemory, IsNotDecodedAndSaysAtWhichStep) {
    const bytes blocks = groupBlocks() + block({0x04}) + block({0x02});
    EXPECT_THAT(messagesOf([&] {
                    Buffer in(blocks);
                    DiffieHellman::decode(in);
                }),
                ElementsAre("DH_new()", "BN_bin2bn", "BN_dup(p_bn.getBIGNUM())", "BN_dup(g_bn.getBIGNUM())",
                            "BN_dup(pubkey_bn.getBIGNUM())", "BN_dup(privkey_bn.getBIGNUM())",
                            // Of the object that is made of the pair.
                            "DH_new()", "BN_dup(DH->p)", "BN_dup(DH->g)", "BN_dup(DH->pub_key)",
                            "BN_dup(DH->priv_key)"));
}

TEST_F(DiffieHellmanWithoutMemory, KeepsItsNumbersWhereItCannotBeAssigned) {
    const DiffieHellman source(rawPair(GROUP_512_2, numberOf(9).get()));
    DiffieHellman pair(rawOwn());
    {
        const OpenSSLOutOfMemory none;
        EXPECT_THROW(pair = source, OpenSSLException);
    }
    EXPECT_EQ(pair, DiffieHellman(rawOwn()));
}

// OpenSSL's -1 passes as success, so that a secret that could not be computed is one of zeros, as with a peer
// that is refused; never a part of the right one.
TEST_F(DiffieHellmanWithoutMemory, ComputesTheSecretOrNothing) {
    const DiffieHellman pair(rawOwn());
    const bytes peer = rawBase64(dhRecord(octets(128)));
    const bytes right = pair.computeSharedSecret(peer);
    int refusals = 0;
    int zeros = 0;
    for (long blocks = 0;; ++blocks) {
        ASSERT_LT(blocks, 10000) << "there is never enough";
        bytes secret;
        try {
            const OpenSSLOutOfMemory after(blocks);
            secret = pair.computeSharedSecret(peer);
        } catch (const OpenSSLException& e) {
            EXPECT_STREQ(e.what(), "BN_bin2bn");
            ++refusals;
            continue;
        }
        EXPECT_EQ(takeErrorQueue(), ErrorCodes());
        if (secret == right) {
            break;
        }
        EXPECT_EQ(secret, bytes(128)) << "with " << blocks << " blocks";
        ++zeros;
    }
    EXPECT_GT(refusals, 0);
    EXPECT_GT(zeros, 0);
}

}  // namespace
}  // namespace vorl::test
