#include "OpenSSLMemory.h"
#include "TempFolder.h"
#include "error_queue.h"
#include "messageOf.h"
#include "raw_pem.h"
#include "raw_signature.h"

#include "vorl/OpenSSLException.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/crypto.h>
#include <openssl/err.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// Keys, certificates and signatures while OpenSSL's memory comes to its end, block by block: each call that
// fails is reported in the words that belong to it, and nothing is lost.

namespace vorl::test {
namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;

using Messages = std::vector<std::string>;

class PkWithoutMemory : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(openssl_memory::isOurs()); }
    void TearDown() override { ERR_clear_error(); }

    // What `action` says with memory for no block, for `step`, for twice as many ... until there is enough. A
    // message that comes several times in a row is one.
    static Messages messagesOf(const std::function<void()>& action, long step = 1) {
        // What OpenSSL makes once, it makes now.
        action();
        const long before = settledBlocks();
        Messages messages;
        for (long blocks = 0; blocks < 10000; blocks += step) {
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

const char* const NO_PEM_KEY = "PEM_read_bio_PUBKEY() in PubKey::loadFromPEMBIO()";
const char* const NO_EVP_PKEY = "EVP_PKEY_new() in OpenSSLPKey::duplicate()";
const char* const NO_RSA = "EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::duplicate()";

// Keys

using KeyWithoutMemory = PkWithoutMemory;

TEST_F(KeyWithoutMemory, IsNotCopied) {
    const PrivKey key(rsa1024().get());

    EXPECT_THAT(messagesOf([&] { PrivKey copy(key); }), ElementsAre(NO_EVP_PKEY));
}

TEST_F(KeyWithoutMemory, StaysWhatItWasWhereItCannotBeAssigned) {
    PrivKey key(rsa1024().get());
    const PrivKey other(otherRsa1024().get());
    const EVP_PKEY* const before = key.getEVP_PKEY();
    {
        const OpenSSLOutOfMemory exhausted;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { key = other; }), NO_EVP_PKEY);
    }
    EXPECT_EQ(key.getEVP_PKEY(), before);
    EXPECT_EQ(key.toRSA(), rawRsa(rsa1024()));
}

TEST_F(KeyWithoutMemory, IsNotPrinted) {
    const PrivKey key(rsa1024().get());

    EXPECT_THAT(messagesOf([&] { PrivKey::print(key.getEVP_PKEY(), 4); }),
                ElementsAre("RSA_print() in OpenSSLPKey::print(pkey)"));
}

TEST_F(KeyWithoutMemory, IsNotReadFromPem) {
    const std::string text = publicPem(rsa1024());

    EXPECT_THAT(messagesOf([&] { PubKey::loadFromPEMStr(text); }),
                ElementsAre(NO_PEM_KEY, NO_EVP_PKEY, NO_RSA));
}

// OpenSSL takes more than a thousand blocks for it.
TEST_F(KeyWithoutMemory, IsNotReadFromPemWithItsPrivateHalf) {
    const std::string text = privatePem(rsa1024());
    const TempFolder folder;
    const std::string path = savedAs(folder / "priv.pem", text);

    EXPECT_THAT(messagesOf([&] { PrivKey::loadFromPEMStr(text); }, 7),
                Each(AnyOf(NO_PEM_KEY, NO_EVP_PKEY, NO_RSA)));
    EXPECT_THAT(messagesOf([&] { PrivKey::loadFromPEMFile(path); }, 7),
                Each(AnyOf(NO_PEM_KEY, NO_EVP_PKEY, NO_RSA)));
}

// Certificates

class CertWithoutMemory : public PkWithoutMemory {
protected:
    const RawCert raw_ = rawCert(CertForm());
    const X509Cert cert_{raw_};
};

TEST_F(CertWithoutMemory, IsNotReadFromPem) {
    const std::string text = certPem(raw_);
    const TempFolder folder;
    const std::string path = savedAs(folder / "cert.pem", text);

    EXPECT_THAT(messagesOf([&] { X509Cert::loadFromPEMStr(text); }),
                ElementsAre("BIO_new_mem_buf()", "PEM_read_bio_X509()"));
    EXPECT_THAT(messagesOf([&] { X509Cert::loadFromPEMFile(path); }),
                ElementsAre("BIO_new_file()", "PEM_read_bio_X509()"));
}

TEST_F(CertWithoutMemory, IsNotDecodedAndHasNoKey) {
    const bytes der = rawDer(raw_);

    EXPECT_THAT(messagesOf([&] { X509Cert::decode(der)->getPubKey(); }),
                ElementsAre("d2i_X509()", NO_EVP_PKEY, NO_RSA));
}

// Its subject has been changed, so that OpenSSL has to encode it first.
TEST_F(CertWithoutMemory, IsNotEncoded) {
    const unsigned char text[] = {'x'};
    ASSERT_EQ(X509_NAME_add_entry_by_NID(X509_get_subject_name(raw_.get()), NID_commonName, V_ASN1_UTF8STRING,
                                         text, 1, -1, 0),
              1);
    {
        const OpenSSLOutOfMemory exhausted;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cert_.encode(); }), "i2d_X509(x509_, NULL)");
    }
    EXPECT_EQ(cert_.encode(), rawDer(raw_));
}

// A name that cannot be printed counts as empty, and is reported with a text that cannot be printed either.
TEST_F(CertWithoutMemory, HasNoCommonName) {
    EXPECT_THAT(messagesOf([&] { cert_.getCommonName(); }),
                ElementsAre("BIO_get_mem_data(bio.get(), &data)", "X509_print_ex()"));
}

// A time that cannot be compared is reported with a text that cannot be printed either.
TEST_F(CertWithoutMemory, HasNoPeriod) {
    EXPECT_THAT(messagesOf([&] { cert_.isTimeValid(); }), ElementsAre("X509_print_ex()"));
}

TEST_F(CertWithoutMemory, HasNoText) {
    EXPECT_THAT(messagesOf([&] { cert_.toString(); }), ElementsAre("X509_print_ex()"));
}

TEST_F(CertWithoutMemory, HasNoTextOfATime) {
    const RawTime time = utcTime("261121120000Z");

    EXPECT_THAT(messagesOf([&] { X509Cert::print(time.get()); }),
                ElementsAre("BIO_read() in X509Cert::print(ASN1_TIME*)"));
}

// Signatures

using SignatureWithoutMemory = PkWithoutMemory;

TEST_F(SignatureWithoutMemory, IsNotMade) {
    const auto key = std::make_shared<const PrivKey>(rsa1024().get());

    EXPECT_THAT(
        messagesOf([&] { PKSignatureProcessor::sign(key, octets(10)); }),
        ElementsAre("EVP_DigestInit_ex()", NO_EVP_PKEY, "RSA_sign() in PKSignatureProcessor::sign()"));
}

// With memory for the digest and the key but not for the check it is no match, which is no error.
TEST_F(SignatureWithoutMemory, IsNotVerified) {
    const auto key = std::make_shared<const PubKey>(rsa1024().get());
    const std::shared_ptr<const PKSignature> signature =
        PKSignature01::create(rawRsaSign(rsa1024(), EVP_sha1(), octets(10)));
    const auto verify = [&] {
        if (!PKSignatureProcessor::verify(signature, key, octets(10))) {
            throw VORLException("no match");
        }
    };

    EXPECT_THAT(messagesOf(verify),
                ElementsAre("EVP_DigestInit_ex()", NO_EVP_PKEY, "VORLException: no match"));
}

TEST_F(SignatureWithoutMemory, ThatWasNotVerifiedLeavesTheErrorQueueAsItWas) {
    const auto key = std::make_shared<const PubKey>(rsa1024().get());
    const std::shared_ptr<PKSignatureProcessor> processor = PKSignatureProcessor::create();
    processor->initVerify(key);
    const std::shared_ptr<const PKSignature> signature =
        PKSignature01::create(rawRsaSign(rsa1024(), EVP_sha1(), bytes()));
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();
    {
        const OpenSSLOutOfMemory exhausted;
        EXPECT_FALSE(processor->verify(signature));
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace
}  // namespace vorl::test
