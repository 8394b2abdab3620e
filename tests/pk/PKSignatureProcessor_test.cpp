#include "vorl/PKSignatureProcessor.h"

#include "error_queue.h"
#include "isCaughtBy.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_certs.h"
#include "raw_signature.h"
#include "signature_algos.h"

#include "vorl/DigestAlgo.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorl::test {
namespace {

using Processor = PKSignatureProcessor;
using ProcessorPtr = std::shared_ptr<PKSignatureProcessor>;
using SignaturePtr = std::shared_ptr<const PKSignature>;
using PrivPtr = std::shared_ptr<const PrivKey>;
using PubPtr = std::shared_ptr<const PubKey>;

static_assert(!std::is_copy_constructible_v<Processor> && !std::is_copy_assignable_v<Processor>);
static_assert(Processor::SIGN == 0 && Processor::VERIFY == 1 && Processor::UNINITIALIZED == 2);

const char* const SIGN_UNINITIALIZED = "Attempted to do sign operation in mode: Uninitialized";
const char* const SIGN_IN_VERIFY = "Attempted to do sign operation in mode: Signature Verification";
const char* const VERIFY_UNINITIALIZED = "Attempted to do verify operation in mode: Uninitialized";
const char* const VERIFY_IN_SIGN = "Attempted to do verify operation in mode: Signature Creation";

PrivPtr privOf(const RawKey& key) {
    return std::make_shared<const PrivKey>(key.get());
}

PubPtr pubOf(const RawKey& key) {
    return std::make_shared<const PubKey>(publicHalf(key).get());
}

std::shared_ptr<const X509Cert> certFor(const RawKey& key) {
    CertForm form;
    form.key = key;
    return std::make_shared<const X509Cert>(rawCert(form));
}

SignaturePtr recordOf(const bytes& val) {
    return std::make_shared<const PKSignature01>(val);
}

std::string refusalToSign(const ProcessorPtr& processor) {
    return messageOf<VORLException>([&] { processor->sign(); });
}

std::string refusalToVerify(const ProcessorPtr& processor) {
    return messageOf<VORLException>([&] { processor->verify(recordOf(octets(128))); });
}

TEST(PKSignatureProcessor, IsANewOneEachTime) {
    EXPECT_NE(Processor::create(), Processor::create());

    const ProcessorPtr first = Processor::create();
    const ProcessorPtr second = Processor::create();
    first->update(octets(10));
    second->initSign(privOf(rsa1024()));
    EXPECT_EQ(refusalToSign(first), SIGN_UNINITIALIZED);
    EXPECT_EQ(second->sign()->val(), rawRsaSign(rsa1024(), EVP_sha1(), bytes()));
}

// Modes

TEST(PKSignatureProcessorMode, HasAText) {
    EXPECT_EQ(Processor::modeToString(Processor::SIGN), "Signature Creation");
    EXPECT_EQ(Processor::modeToString(Processor::VERIFY), "Signature Verification");
    EXPECT_EQ(Processor::modeToString(Processor::UNINITIALIZED), "Uninitialized");
}

TEST(PKSignatureProcessorMode, OfAnyOtherValueIsRefused) {
    for (const unsigned int value : {3U, 4U, 255U, 0x7fffffffU, 0xffffffffU}) {
        EXPECT_EQ(
            messageOf<VORLException>([&] { Processor::modeToString(static_cast<Processor::Mode>(value)); }),
            "Unknown signature mode");
    }
}

TEST(PKSignatureProcessorMode, IsUninitializedAtFirst) {
    for (const ProcessorPtr& processor :
         {Processor::create(), Processor::create(PKSignatureAlgo::SHA1withRSA()),
          std::make_shared<Processor>(PKSignatureAlgo::SHA1withRSA())}) {
        EXPECT_EQ(refusalToSign(processor), SIGN_UNINITIALIZED);
        EXPECT_EQ(refusalToVerify(processor), VERIFY_UNINITIALIZED);
    }
}

TEST(PKSignatureProcessorMode, IsNotChangedByData) {
    const ProcessorPtr processor = Processor::create();
    processor->update(octets(10));

    EXPECT_EQ(refusalToSign(processor), SIGN_UNINITIALIZED);
    EXPECT_EQ(refusalToVerify(processor), VERIFY_UNINITIALIZED);
}

TEST(PKSignatureProcessorMode, IsThatOfTheLastInit) {
    const ProcessorPtr processor = Processor::create();

    for (int round = 0; round < 2; ++round) {
        processor->initSign(privOf(rsa1024()));
        EXPECT_EQ(refusalToVerify(processor), VERIFY_IN_SIGN);
        processor->initVerify(pubOf(rsa1024()));
        EXPECT_EQ(refusalToSign(processor), SIGN_IN_VERIFY);
    }
    processor->initSign(privOf(rsa1024()));
    processor->initVerify(certFor(rsa1024()));
    EXPECT_EQ(refusalToSign(processor), SIGN_IN_VERIFY);
}

TEST(PKSignatureProcessorMode, StaysAfterSigningAndVerifying) {
    const ProcessorPtr signer = Processor::create();
    signer->initSign(privOf(rsa1024()));
    const SignaturePtr signature = signer->sign();
    EXPECT_EQ(refusalToVerify(signer), VERIFY_IN_SIGN);

    const ProcessorPtr verifier = Processor::create();
    verifier->initVerify(pubOf(rsa1024()));
    EXPECT_TRUE(verifier->verify(signature));
    EXPECT_EQ(refusalToSign(verifier), SIGN_IN_VERIFY);
}

// An operation in the wrong mode has not looked at the digest.
TEST(PKSignatureProcessorMode, ThatIsWrongLeavesTheDataAsItWas) {
    const ProcessorPtr processor = Processor::create();
    processor->update(octets(10));
    EXPECT_EQ(refusalToSign(processor), SIGN_UNINITIALIZED);
    EXPECT_EQ(refusalToVerify(processor), VERIFY_UNINITIALIZED);
    processor->initSign(privOf(rsa1024()));
    EXPECT_EQ(refusalToVerify(processor), VERIFY_IN_SIGN);

    EXPECT_EQ(processor->sign()->val(), rawRsaSign(rsa1024(), EVP_sha1(), octets(10)));
}

// Keys that are refused

TEST(PKSignatureProcessorKey, ThatIsNullIsRefusedForSigningWithTheModeAsItWas) {
    const char* const message = "PrivKey parameter is null in PKSignatureProcessor::initSign()";
    const ProcessorPtr processor = Processor::create();

    EXPECT_EQ(messageOf<VORLException>([&] { processor->initSign(nullptr); }), message);
    EXPECT_EQ(refusalToSign(processor), SIGN_UNINITIALIZED);

    processor->initVerify(pubOf(rsa1024()));
    EXPECT_EQ(messageOf<VORLException>([&] { processor->initSign(nullptr); }), message);
    EXPECT_EQ(refusalToSign(processor), SIGN_IN_VERIFY);
}

TEST(PKSignatureProcessorKey, OfAnotherAlgorithmIsRefusedForSigningWithTheModeChanged) {
    const ProcessorPtr processor = Processor::create(sha1WithX());

    EXPECT_EQ(messageOf<VORLException>([&] { processor->initSign(privOf(rsa1024())); }),
              "Cannot initialize PKSignatureProcessor(" + NAME_IN_THIS_PROCESS +
                  ")with private key:\nPrivate-Key (RSA)");
    EXPECT_EQ(refusalToSign(processor), "privkey is NULL in sign()");
    EXPECT_EQ(refusalToVerify(processor), VERIFY_IN_SIGN);
}

TEST(PKSignatureProcessorKey, OfAnotherAlgorithmIsRefusedForVerifyingWithTheModeChanged) {
    const std::string message = "Cannot initialize PKSignatureProcessor(" + NAME_IN_THIS_PROCESS +
                                ")with public key:\nPublic-Key (RSA)";
    const ProcessorPtr withKey = Processor::create(sha1WithX());
    const ProcessorPtr withCert = Processor::create(sha1WithX());

    EXPECT_EQ(messageOf<VORLException>([&] { withKey->initVerify(pubOf(rsa1024())); }), message);
    EXPECT_EQ(messageOf<VORLException>([&] { withCert->initVerify(certFor(rsa1024())); }), message);
    for (const ProcessorPtr& processor : {withKey, withCert}) {
        EXPECT_EQ(refusalToVerify(processor), "pubkey is NULL in verify()");
        EXPECT_EQ(refusalToSign(processor), SIGN_IN_VERIFY);
    }
}

// Algorithms are the same when they are one object, whatever their names.
TEST(PKSignatureProcessorKey, IsRefusedByAnAlgorithmOfTheSameName) {
    const ProcessorPtr processor = Processor::create(
        std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA1(), std::make_shared<const PKAlgo>("RSA")));

    EXPECT_EQ(messageOf<VORLException>([&] { processor->initSign(privOf(rsa1024())); }),
              "Cannot initialize PKSignatureProcessor(SHA1withRSA)with private key:\nPrivate-Key (RSA)");
}

TEST(PKSignatureProcessorKey, OfACertificateThatIsNotRsaLeavesTheModeAsItWas) {
    const ProcessorPtr processor = Processor::create();

    EXPECT_EQ(messageOf<VORLException>([&] { processor->initVerify(certFor(ec())); }),
              "Unknown EVP_PKEY type value: 408");
    EXPECT_EQ(refusalToVerify(processor), VERIFY_UNINITIALIZED);
}

TEST(PKSignatureProcessorKey, ThatIsRefusedLeavesTheDataAsItWas) {
    const ProcessorPtr processor = Processor::create();
    processor->update(octets(10));
    EXPECT_TRUE(isCaughtBy<VORLException>([&] { processor->initSign(nullptr); }));
    EXPECT_TRUE(isCaughtBy<VORLException>([&] { processor->initVerify(certFor(ec())); }));
    processor->initVerify(pubOf(rsa1024()));

    EXPECT_TRUE(processor->verify(recordOf(rawRsaSign(rsa1024(), EVP_sha1(), octets(10)))));
}

// Without its private half a key is no key to sign with, which only OpenSSL finds out.
TEST(PKSignatureProcessorKey, WithoutAPrivateHalfCannotSign) {
    takeErrorQueue();
    const PrivPtr half = privOf(publicHalf(rsa1024()));
    const ProcessorPtr processor = Processor::create();
    processor->initSign(half);

    try {
        processor->sign();
        FAIL() << "signed";
    } catch (const OpenSSLException& e) {
        EXPECT_STREQ(e.what(), "RSA_sign() in PKSignatureProcessor::sign()");
        EXPECT_NE(e.errorStack(), "");
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{});
    EXPECT_EQ(messageOf<OpenSSLException>([&] { Processor::sign(half, octets(10)); }),
              "RSA_sign() in PKSignatureProcessor::sign()");
}

TEST(PKSignatureProcessorKey, ThatIsTooShortForTheDigestCannotSign) {
    const ProcessorPtr processor =
        Processor::create(std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA512(), PKAlgo::RSA()));
    processor->initSign(privOf(rsa512()));

    EXPECT_EQ(messageOf<OpenSSLException>([&] { processor->sign(); }),
              "RSA_sign() in PKSignatureProcessor::sign()");
}

// A whole key serves for verifying as well.
TEST(PKSignatureProcessorKey, WithItsPrivateHalfCanVerify) {
    const auto whole = std::make_shared<const PubKey>(rsa1024().get());

    EXPECT_TRUE(
        Processor::verify(recordOf(rawRsaSign(rsa1024(), EVP_sha1(), octets(10))), whole, octets(10)));
}

TEST(PKSignatureProcessorKey, IsCopiedByTheInit) {
    const auto priv = std::make_shared<PrivKey>(rsa1024().get());
    const ProcessorPtr signer = Processor::create();
    signer->initSign(priv);
    *priv = PrivKey(otherRsa1024().get());

    const auto pub = std::make_shared<PubKey>(publicHalf(rsa1024()).get());
    const ProcessorPtr verifier = Processor::create();
    verifier->initVerify(pub);
    *pub = PubKey(publicHalf(otherRsa1024()).get());

    EXPECT_EQ(priv.use_count(), 1);
    EXPECT_EQ(pub.use_count(), 1);
    const SignaturePtr signature = signer->sign();
    EXPECT_EQ(signature->val(), rawRsaSign(rsa1024(), EVP_sha1(), bytes()));
    EXPECT_TRUE(verifier->verify(signature));
}

TEST(PKSignatureProcessorKey, IsThatOfTheLastInit) {
    const ProcessorPtr signer = Processor::create();
    signer->initSign(privOf(otherRsa1024()));
    signer->initSign(privOf(rsa1024()));
    const ProcessorPtr verifier = Processor::create();
    verifier->initVerify(pubOf(otherRsa1024()));
    verifier->initVerify(pubOf(rsa1024()));

    EXPECT_TRUE(verifier->verify(signer->sign()));
}

// Each direction keeps its own key, so that an init for the other one does not take it away.
TEST(PKSignatureProcessorKey, OfARefusedInitDoesNotReplaceTheOneBefore) {
    const ProcessorPtr processor = Processor::create();
    processor->initSign(privOf(rsa1024()));
    EXPECT_TRUE(isCaughtBy<VORLException>([&] { processor->initSign(nullptr); }));

    EXPECT_EQ(processor->sign()->val(), rawRsaSign(rsa1024(), EVP_sha1(), bytes()));
}

// Data

TEST(PKSignatureProcessorData, CountsBeforeAndBehindEveryInit) {
    const bytes data = octets(100);
    const ProcessorPtr signer = Processor::create();
    signer->update(slice(data, 0, 10));
    signer->initSign(privOf(rsa1024()));
    signer->update(slice(data, 10, 30));
    signer->initVerify(pubOf(rsa1024()));
    signer->update(slice(data, 40, 20));
    signer->initSign(privOf(rsa1024()));
    signer->update(slice(data, 60, 40));
    const SignaturePtr signature = signer->sign();
    EXPECT_EQ(signature->val(), rawRsaSign(rsa1024(), EVP_sha1(), data));

    const ProcessorPtr verifier = Processor::create();
    verifier->update(slice(data, 0, 50));
    verifier->initSign(privOf(rsa2048()));
    verifier->update(slice(data, 50, 25));
    verifier->initVerify(pubOf(rsa1024()));
    verifier->update(slice(data, 75, 25));
    EXPECT_TRUE(verifier->verify(signature));
}

TEST(PKSignatureProcessorData, MayComeInAnyPieces) {
    const bytes data = octets(1000);
    for (const std::size_t piece : {1U, 7U, 64U, 999U}) {
        const ProcessorPtr processor = Processor::create();
        processor->initSign(privOf(rsa1024()));
        for (std::size_t at = 0; at < data.size(); at += piece) {
            processor->update(slice(data, at, std::min<std::size_t>(piece, data.size() - at)));
            processor->update(bytes());
        }
        EXPECT_EQ(processor->sign()->val(), rawRsaSign(rsa1024(), EVP_sha1(), data)) << piece;
    }
}

TEST(PKSignatureProcessorData, MayBeMissing) {
    const ProcessorPtr signer = Processor::create();
    signer->initSign(privOf(rsa1024()));
    const SignaturePtr signature = signer->sign();

    EXPECT_EQ(signature->val(), rawRsaSign(rsa1024(), EVP_sha1(), bytes()));
    EXPECT_TRUE(Processor::verify(signature, pubOf(rsa1024()), bytes()));
}

// With OpenSSL on the other side

struct KeyCase {
    const char* name;
    const RawKey& (*key)();
};

const KeyCase KEYS[] = {{"Rsa512", rsa512}, {"Rsa1024", rsa1024}, {"Rsa2048", rsa2048}};

class SignatureWithOpenSSL : public ::testing::TestWithParam<KeyCase> {
protected:
    const RawKey& key_ = GetParam().key();
    const std::vector<bytes> messages_ = {bytes(), octets(1), octets(20), octets(64), octets(100000)};
};

TEST_P(SignatureWithOpenSSL, OfTheLibraryIsVerifiedByBothInterfaces) {
    for (const bytes& data : messages_) {
        const SignaturePtr signature = Processor::sign(privOf(key_), data);

        EXPECT_EQ(signature->version().val(), 1);
        EXPECT_EQ(signature->algo(), PKSignatureAlgo::SHA1withRSA());
        EXPECT_EQ(signature->val().size(), static_cast<std::size_t>(EVP_PKEY_size(key_.get())));
        EXPECT_TRUE(rawRsaVerify(publicHalf(key_), EVP_sha1(), data, signature->val()));
        EXPECT_TRUE(rawDigestVerify(publicHalf(key_), EVP_sha1(), data, signature->val()));
        // This kind of signature has no random part.
        EXPECT_EQ(signature->val(), rawDigestSign(key_, EVP_sha1(), data));
    }
}

TEST_P(SignatureWithOpenSSL, OfOpenSSLIsVerifiedWithKeyAndCertificate) {
    for (const bytes& data : messages_) {
        for (const bytes& val : {rawRsaSign(key_, EVP_sha1(), data), rawDigestSign(key_, EVP_sha1(), data)}) {
            const SignaturePtr signature = recordOf(val);
            EXPECT_TRUE(Processor::verify(signature, pubOf(key_), data));

            const ProcessorPtr processor = Processor::create();
            processor->initVerify(certFor(key_));
            processor->update(data);
            EXPECT_TRUE(processor->verify(signature));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Keys, SignatureWithOpenSSL, ::testing::ValuesIn(KEYS),
                         [](const auto& test) { return test.param.name; });

// Which digest is signed, and under which name, follows from the processor's algorithm.
TEST(PKSignatureProcessorDigest, IsThatOfTheAlgorithm) {
    struct {
        std::shared_ptr<const DigestAlgo> algo;
        const EVP_MD* md;
    } const digests[] = {
        {DigestAlgo::SHA1(), EVP_sha1()},     {DigestAlgo::SHA224(), EVP_sha224()},
        {DigestAlgo::SHA256(), EVP_sha256()}, {DigestAlgo::SHA384(), EVP_sha384()},
        {DigestAlgo::SHA512(), EVP_sha512()},
    };
    for (const auto& ours : digests) {
        for (const auto& theirs : digests) {
            const ProcessorPtr processor =
                Processor::create(std::make_shared<const PKSignatureAlgo>(ours.algo, PKAlgo::RSA()));
            processor->initVerify(pubOf(rsa1024()));
            processor->update(octets(10));
            EXPECT_EQ(processor->verify(recordOf(rawRsaSign(rsa1024(), theirs.md, octets(10)))),
                      ours.md == theirs.md)
                << ours.algo->name << " and " << theirs.algo->name;
        }
    }
}

TEST(PKSignatureProcessorDigest, OfAnotherAlgorithmMakesASignatureThatNoRecordCarries) {
    const ProcessorPtr processor = Processor::create(sha256WithRsa());
    processor->initSign(privOf(rsa1024()));

    EXPECT_EQ(refusalToSign(processor), "Unknown signature algorithm: " + NAME_IN_THIS_PROCESS);
}

// Signatures that do not match

TEST(PKSignatureProcessorMismatch, IsFalseForAnyChangedBitOfASignature) {
    const bytes val = rawRsaSign(rsa1024(), EVP_sha1(), octets(10));
    const PubPtr key = pubOf(rsa1024());

    for (std::size_t bit = 0; bit < 8 * val.size(); ++bit) {
        bytes changed = val;
        changed[bit / 8] ^= static_cast<unsigned char>(1U << (bit % 8));
        EXPECT_FALSE(Processor::verify(recordOf(changed), key, octets(10))) << bit;
    }
    EXPECT_TRUE(Processor::verify(recordOf(val), key, octets(10)));
}

struct MismatchCase {
    const char* name;
    bytes (*val)();
};

bytes goodValue() {
    return rawRsaSign(rsa1024(), EVP_sha1(), octets(10));
}

const MismatchCase MISMATCHES[] = {
    {"Empty", [] { return bytes(); }},
    {"OneByte", [] { return bytes{0x01}; }},
    {"OneByteShort", [] { return slice(goodValue(), 0, 127); }},
    {"WithoutItsFirstByte", [] { return slice(goodValue(), 1, 127); }},
    {"OneByteLong", [] { return goodValue() + bytes{0x00}; }},
    {"WithALeadingZero", [] { return bytes{0x00} + goodValue(); }},
    {"Twice", [] { return goodValue() + goodValue(); }},
    {"AllZero", [] { return bytes(128); }},
    {"AllOnes", [] { return bytes(128, 0xff); }},
    {"One", [] { return bytes(127) + bytes{0x01}; }},
    {"Huge", [] { return octets(1000000); }},
    {"OfOtherData", [] { return rawRsaSign(rsa1024(), EVP_sha1(), octets(11)); }},
    {"OfNoData", [] { return rawRsaSign(rsa1024(), EVP_sha1(), bytes()); }},
    {"OfAnotherKey", [] { return rawRsaSign(otherRsa1024(), EVP_sha1(), octets(10)); }},
    {"OfALongerKey", [] { return rawRsaSign(rsa2048(), EVP_sha1(), octets(10)); }},
    {"OfAnotherDigest", [] { return rawRsaSign(rsa1024(), EVP_sha256(), octets(10)); }},
};

class Mismatch : public ::testing::TestWithParam<MismatchCase> {};

TEST_P(Mismatch, IsFalseAndLeavesTheErrorQueueAsItWas) {
    const SignaturePtr signature = recordOf(GetParam().val());
    const PubPtr key = pubOf(rsa1024());
    const ProcessorPtr processor = Processor::create();
    processor->initVerify(key);
    processor->update(octets(10));
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_FALSE(processor->verify(signature));
    EXPECT_FALSE(Processor::verify(signature, key, octets(10)));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    EXPECT_FALSE(Processor::verify(signature, key, octets(10)));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{});
}

INSTANTIATE_TEST_SUITE_P(Values, Mismatch, ::testing::ValuesIn(MISMATCHES),
                         [](const auto& test) { return test.param.name; });

TEST(PKSignatureProcessorMismatch, IsFalseForChangedData) {
    const SignaturePtr signature = Processor::sign(privOf(rsa1024()), octets(50));
    const PubPtr key = pubOf(rsa1024());
    ASSERT_TRUE(Processor::verify(signature, key, octets(50)));

    for (std::size_t at = 0; at < 50; ++at) {
        bytes data = octets(50);
        data[at] ^= 0x01;
        EXPECT_FALSE(Processor::verify(signature, key, data)) << at;
    }
    EXPECT_FALSE(Processor::verify(signature, key, octets(49)));
    EXPECT_FALSE(Processor::verify(signature, key, octets(50) + bytes{0x00}));
}

TEST(PKSignatureProcessorMismatch, IsFalseForAnotherKey) {
    const SignaturePtr signature = Processor::sign(privOf(rsa1024()), octets(10));

    EXPECT_FALSE(Processor::verify(signature, pubOf(otherRsa1024()), octets(10)));
    EXPECT_FALSE(Processor::verify(signature, pubOf(rsa2048()), octets(10)));
    EXPECT_FALSE(Processor::verify(signature, pubOf(rsa512()), octets(10)));
}

TEST(PKSignatureProcessor, SigningAndVerifyingLeaveTheErrorQueueAsItWas) {
    const PrivPtr priv = privOf(rsa1024());
    const PubPtr pub = pubOf(rsa1024());
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_TRUE(Processor::verify(Processor::sign(priv, octets(10)), pub, octets(10)));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// All in one

TEST(PKSignatureProcessorOneShot, RefusesToSignWithoutAKey) {
    EXPECT_EQ(messageOf<VORLException>([] { Processor::sign(PrivPtr(), octets(10)); }),
              "PrivKey parameter is null in PKSignatureProcessor::initSign()");
}

// A signature of a kind that the library has no record for.
class ForeignSignature : public PKSignature01 {
public:
    ForeignSignature(const bytes& val, std::shared_ptr<const PKSignatureAlgo> algo)
        : PKSignature01(val), algo_(std::move(algo)) {}
    std::shared_ptr<const PKSignatureAlgo> algo() const override { return algo_; }

private:
    const std::shared_ptr<const PKSignatureAlgo> algo_;
};

TEST(PKSignatureProcessorOneShot, VerifiesWithTheAlgorithmOfTheSignature) {
    const bytes val = rawRsaSign(rsa1024(), EVP_sha256(), octets(10));
    const auto asSha256 = std::make_shared<const ForeignSignature>(val, sha256WithRsa());
    const auto asX = std::make_shared<const ForeignSignature>(val, sha1WithX());

    EXPECT_TRUE(Processor::verify(asSha256, pubOf(rsa1024()), octets(10)));
    EXPECT_FALSE(Processor::verify(recordOf(val), pubOf(rsa1024()), octets(10)));
    EXPECT_EQ(messageOf<VORLException>([&] { Processor::verify(asX, pubOf(rsa1024()), octets(10)); }),
              "Cannot initialize PKSignatureProcessor(" + NAME_IN_THIS_PROCESS +
                  ")with public key:\nPublic-Key (RSA)");
}

// The stepwise interface goes by the processor's own algorithm.
TEST(PKSignatureProcessor, DoesNotAskASignatureForItsAlgorithm) {
    const auto signature =
        std::make_shared<const ForeignSignature>(rawRsaSign(rsa1024(), EVP_sha1(), octets(10)), sha1WithX());
    const ProcessorPtr processor = Processor::create();
    processor->initVerify(pubOf(rsa1024()));
    processor->update(octets(10));

    EXPECT_TRUE(processor->verify(signature));
}

// Subclasses

class RecordingProcessor : public PKSignatureProcessor {
public:
    using PKSignatureProcessor::initVerify;
    using PKSignatureProcessor::PKSignatureProcessor;
    using PKSignatureProcessor::sign;
    using PKSignatureProcessor::verify;

    void initSign(const PrivPtr& key) override {
        ++calls;
        PKSignatureProcessor::initSign(key);
    }
    void initVerify(const PubPtr& key) override {
        ++calls;
        PKSignatureProcessor::initVerify(key);
    }
    void update(const bytes& /*data*/) override {
        ++calls;
        PKSignatureProcessor::update(octets(3));
    }
    SignaturePtr sign() override {
        ++calls;
        return PKSignatureProcessor::sign();
    }
    bool verify(const SignaturePtr& signature) override {
        ++calls;
        return PKSignatureProcessor::verify(signature);
    }

    static int calls;
};

int RecordingProcessor::calls = 0;

class PKSignatureProcessorSubclass : public ::testing::Test {
protected:
    void SetUp() override { RecordingProcessor::calls = 0; }
};

TEST_F(PKSignatureProcessorSubclass, IsCalledThroughTheBase) {
    const ProcessorPtr processor = std::make_shared<RecordingProcessor>(PKSignatureAlgo::SHA1withRSA());
    processor->initSign(privOf(rsa1024()));
    processor->update(octets(10));

    EXPECT_EQ(processor->sign()->val(), rawRsaSign(rsa1024(), EVP_sha1(), octets(3)));
    EXPECT_EQ(RecordingProcessor::calls, 3);
}

TEST_F(PKSignatureProcessorSubclass, GetsTheKeyOfACertificate) {
    const ProcessorPtr processor = std::make_shared<RecordingProcessor>(PKSignatureAlgo::SHA1withRSA());
    processor->initVerify(certFor(rsa1024()));

    EXPECT_EQ(RecordingProcessor::calls, 1);
    EXPECT_TRUE(processor->verify(recordOf(rawRsaSign(rsa1024(), EVP_sha1(), bytes()))));
}

TEST_F(PKSignatureProcessorSubclass, HasNoPartInTheOneShotForms) {
    const SignaturePtr signature = RecordingProcessor::sign(privOf(rsa1024()), octets(10));

    EXPECT_EQ(signature->val(), rawRsaSign(rsa1024(), EVP_sha1(), octets(10)));
    EXPECT_TRUE(RecordingProcessor::verify(signature, pubOf(rsa1024()), octets(10)));
    EXPECT_EQ(RecordingProcessor::calls, 0);
}

}  // namespace
}  // namespace vorl::test
