#include "vorl/OpenSSLPKey.h"

#include "error_queue.h"
#include "isCaughtBy.h"
#include "messageOf.h"
#include "raw_keys.h"

#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace vorl::test {
namespace {

static_assert(std::is_base_of_v<FormatPrintable, OpenSSLPKey>);
static_assert(std::is_copy_constructible_v<OpenSSLPKey> && std::is_copy_assignable_v<OpenSSLPKey>);

RawKey emptyKey() {
    return raw_keys::owned(EVP_PKEY_new(), "EVP_PKEY_new");
}

// Keys that are not RSA

struct TypeCase {
    const char* name;
    RawKey (*key)();
    const char* message;
};

const TypeCase OTHER_TYPES[] = {
    {"Null", [] { return RawKey(); }, "Unknown EVP_PKEY type value: 0"},
    {"Empty", [] { return emptyKey(); }, "Unknown EVP_PKEY type value: 0"},
    {"Dsa", [] { return dsa(); }, "Unknown EVP_PKEY type value: 116"},
    {"Ec", [] { return ec(); }, "Unknown EVP_PKEY type value: 408"},
    {"RsaPss", [] { return rsaPss(); }, "Unknown EVP_PKEY type value: 912"},
    {"Ed25519", [] { return ed25519(); }, "Unknown EVP_PKEY type value: 1087"},
};

class OtherKeyType : public ::testing::TestWithParam<TypeCase> {
protected:
    const RawKey key_ = GetParam().key();
    const std::string message_ = GetParam().message;
};

TEST_P(OtherKeyType, HasNoAlgorithm) {
    EXPECT_EQ(messageOf<VORLException>([&] { OpenSSLPKey::algo(key_.get()); }), message_);
}

TEST_P(OtherKeyType, IsNotDuplicated) {
    EXPECT_EQ(messageOf<VORLException>([&] { OpenSSLPKey::duplicate(key_.get()); }), message_);
}

TEST_P(OtherKeyType, IsNotPrinted) {
    EXPECT_EQ(messageOf<VORLException>([&] { OpenSSLPKey::print(key_.get(), 0); }), message_);
}

TEST_P(OtherKeyType, MakesNoKeyObject) {
    const std::shared_ptr<const EVP_PKEY> shared = key_;

    EXPECT_EQ(messageOf<VORLException>([&] { OpenSSLPKey key(key_.get()); }), message_);
    EXPECT_EQ(messageOf<VORLException>([&] { OpenSSLPKey key(shared); }), message_);
    EXPECT_EQ(messageOf<VORLException>([&] { PubKey key(key_.get()); }), message_);
    EXPECT_EQ(messageOf<VORLException>([&] { PubKey key(shared); }), message_);
    EXPECT_EQ(messageOf<VORLException>([&] { PrivKey key(key_.get()); }), message_);
    EXPECT_EQ(messageOf<VORLException>([&] { PrivKey key(shared); }), message_);
}

TEST_P(OtherKeyType, LeavesTheErrorQueueAlone) {
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_TRUE(isCaughtBy<VORLException>([&] { OpenSSLPKey key(key_.get()); }));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

INSTANTIATE_TEST_SUITE_P(Types, OtherKeyType, ::testing::ValuesIn(OTHER_TYPES),
                         [](const auto& test) { return test.param.name; });

// One EVP_PKEY each, one RSA for all

// A key as OpenSSL's key generation returns it, and one as an application holds it that works with RSA
// objects: inside OpenSSL they are kept in different ways.
struct OriginCase {
    const char* name;
    RawKey (*key)();
};

const OriginCase ORIGINS[] = {
    {"Generated", [] { return rsa1024(); }},
    {"AroundAnRsa", [] { return separateCopy(rsa1024()); }},
    {"OnlyThePublicHalf", [] { return publicHalf(rsa1024()); }},
    {"OnlyThePublicHalfAroundAnRsa", [] { return around(rawRsa(publicHalf(rsa1024()))); }},
};

class RsaKey : public ::testing::TestWithParam<OriginCase> {
protected:
    RawKey source_ = GetParam().key();
};

TEST_P(RsaKey, HasTheRsaAlgorithmItself) {
    EXPECT_EQ(OpenSSLPKey::algo(source_.get()), PKAlgo::RSA());
    EXPECT_EQ(OpenSSLPKey(source_.get()).algo(), PKAlgo::RSA());
}

TEST_P(RsaKey, DuplicateIsAnotherKeyAroundTheSameRsa) {
    const RawKey copy = OpenSSLPKey::duplicate(source_.get());

    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, source_);
    EXPECT_EQ(EVP_PKEY_base_id(copy.get()), EVP_PKEY_RSA);
    EXPECT_EQ(rawRsa(copy), rawRsa(source_));
}

TEST_P(RsaKey, EachObjectHasAKeyOfItsOwnAroundTheSameRsa) {
    const OpenSSLPKey first(source_.get());
    const OpenSSLPKey second{std::shared_ptr<const EVP_PKEY>(source_)};
    const OpenSSLPKey copy(first);
    OpenSSLPKey assigned(otherRsa1024().get());
    assigned = first;

    const EVP_PKEY* const own[] = {source_.get(), first.getEVP_PKEY(), second.getEVP_PKEY(),
                                   copy.getEVP_PKEY(), assigned.getEVP_PKEY()};
    for (const EVP_PKEY* const& one : own) {
        EXPECT_NE(one, nullptr);
        for (const EVP_PKEY* const& other : own) {
            EXPECT_TRUE(&one == &other || one != other);
        }
    }
    const std::shared_ptr<RSA> rsa = rawRsa(source_);
    EXPECT_EQ(first.toRSA(), rsa);
    EXPECT_EQ(second.toRSA(), rsa);
    EXPECT_EQ(copy.toRSA(), rsa);
    EXPECT_EQ(assigned.toRSA(), rsa);
}

TEST_P(RsaKey, SharedPointerThatWasPassedInIsNotKept) {
    const RawKey source = around(rawRsa(source_));
    const OpenSSLPKey key{std::shared_ptr<const EVP_PKEY>(source)};

    EXPECT_EQ(source.use_count(), 1);
}

INSTANTIATE_TEST_SUITE_P(Origins, RsaKey, ::testing::ValuesIn(ORIGINS),
                         [](const auto& test) { return test.param.name; });

TEST(OpenSSLPKey, ObjectOutlivesItsSourceAndTheSourceTheObject) {
    RawKey source = around(rawRsa(separateCopy(rsa1024())));
    auto first = std::make_unique<OpenSSLPKey>(source.get());
    source.reset();
    const OpenSSLPKey second(*first);
    const std::string printed = OpenSSLPKey::print(first->getEVP_PKEY(), 0);
    first.reset();

    EXPECT_EQ(OpenSSLPKey::print(second.getEVP_PKEY(), 0), printed);
    EXPECT_EQ(second, OpenSSLPKey(rsa1024().get()));
}

TEST(OpenSSLPKey, RsaThatWasHandedOutOutlivesTheObject) {
    std::shared_ptr<RSA> rsa;
    {
        const OpenSSLPKey key(around(rawRsa(separateCopy(rsa1024()))).get());
        rsa = key.toRSA();
    }
    EXPECT_EQ(RSA_size(rsa.get()), 128);
    EXPECT_EQ(BN_cmp(RSA_get0_n(rsa.get()), RSA_get0_n(rawRsa(rsa1024()).get())), 0);
}

// OpenSSL would look for its size and not find it.
TEST(OpenSSLPKey, RsaWithoutAModulusIsNoKey) {
    const RawKey raw = around(std::shared_ptr<RSA>(RSA_new(), RSA_free));

    EXPECT_EQ(messageOf<OpenSSLException>([&] { OpenSSLPKey key(raw.get()); }),
              "EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::duplicate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { OpenSSLPKey::print(raw.get(), 0); }),
              "EVP_PKEY_get1_RSA() in OpenSSLPKey::print(pkey)");
}

TEST(OpenSSLPKey, AssignmentToItselfChangesNothing) {
    OpenSSLPKey key(rsa1024().get());
    const EVP_PKEY* const before = key.getEVP_PKEY();
    const OpenSSLPKey& same = key;
    key = same;

    EXPECT_EQ(key.getEVP_PKEY(), before);
    EXPECT_EQ(key.toRSA(), rawRsa(rsa1024()));
}

TEST(OpenSSLPKey, AssignmentReplacesTheKeyAndReturnsTheObject) {
    OpenSSLPKey key(rsa1024().get());
    const OpenSSLPKey other(otherRsa1024().get());

    EXPECT_EQ(&(key = other), &key);
    EXPECT_EQ(key, other);
    EXPECT_EQ(key.toRSA(), rawRsa(otherRsa1024()));
}

// Equality

TEST(OpenSSLPKeyEquality, IsThatOfTheNumbersAndNotOfTheObjects) {
    const OpenSSLPKey key(rsa1024().get());
    const OpenSSLPKey sameNumbers(separateCopy(rsa1024()).get());
    ASSERT_NE(key.toRSA(), sameNumbers.toRSA());

    EXPECT_TRUE(key == key);
    EXPECT_FALSE(key != key);
    EXPECT_TRUE(key == sameNumbers);
    EXPECT_FALSE(key != sameNumbers);
}

TEST(OpenSSLPKeyEquality, HoldsBetweenTheHalvesOfAPair) {
    const PrivKey priv(rsa1024().get());
    const PubKey pub(publicHalf(rsa1024()).get());

    EXPECT_TRUE(priv == pub);
    EXPECT_TRUE(pub == priv);
    EXPECT_FALSE(priv != pub);
    EXPECT_FALSE(pub != priv);
}

TEST(OpenSSLPKeyEquality, DoesNotHoldBetweenKeys) {
    const PrivKey priv(rsa1024().get());
    const PubKey pub(publicHalf(rsa1024()).get());

    for (const RawKey& raw : {otherRsa1024(), rsa2048()}) {
        const PrivKey otherPriv(raw.get());
        const PubKey otherPub(publicHalf(raw).get());
        EXPECT_TRUE(priv != otherPriv);
        EXPECT_TRUE(priv != otherPub);
        EXPECT_TRUE(pub != otherPriv);
        EXPECT_TRUE(pub != otherPub);
        EXPECT_FALSE(priv == otherPriv);
        EXPECT_FALSE(pub == otherPub);
    }
}

// The same modulus with another exponent is another key.
TEST(OpenSSLPKeyEquality, LooksAtTheExponentToo) {
    const std::shared_ptr<RSA> original = rawRsa(rsa1024());
    const std::shared_ptr<RSA> changed(RSA_new(), RSA_free);
    BIGNUM* const exponent = BN_new();
    ASSERT_EQ(BN_set_word(exponent, 3), 1);
    ASSERT_EQ(RSA_set0_key(changed.get(), BN_dup(RSA_get0_n(original.get())), exponent, nullptr), 1);

    EXPECT_NE(PubKey(around(changed).get()), PubKey(rsa1024().get()));
}

TEST(OpenSSLPKeyEquality, LeavesTheErrorQueueAsItWas) {
    const PrivKey priv(rsa1024().get());
    const PubKey pub(publicHalf(rsa1024()).get());
    const PubKey other(publicHalf(rsa2048()).get());
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_TRUE(priv == pub);
    EXPECT_FALSE(priv == other);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// Texts

TEST(OpenSSLPKeyText, NamesTheAlgorithm) {
    EXPECT_EQ(OpenSSLPKey(rsa1024().get()).toString(), "OpenSSL-PKEY (RSA)");
}

TEST(OpenSSLPKeyText, BlockIsOneLineBehindTheIndent) {
    const OpenSSLPKey key(rsa1024().get());

    EXPECT_EQ(key.toFormatString("Key", 80, 1, ":", 4), "    Key:  OpenSSL-PKEY (RSA)\n");
    EXPECT_EQ(key.toFormatString("server key", 80, 2, ":", 3), "      server key:  OpenSSL-PKEY (RSA)\n");
    EXPECT_EQ(key.toFormatString("", 80, 0, ":", 4), ":  OpenSSL-PKEY (RSA)\n");
}

TEST(OpenSSLPKeyText, BlockIgnoresWidthAndSeparator) {
    const OpenSSLPKey key(rsa1024().get());

    EXPECT_EQ(key.toFormatString("key", 0, 0, ", ", 4), "key:  OpenSSL-PKEY (RSA)\n");
    EXPECT_EQ(key.toFormatString("key", 5, 5, "", 0), "key:  OpenSSL-PKEY (RSA)\n");
}

// The numbers, as OpenSSL itself prints them

std::string rawPrint(const RawKey& key, int indent) {
    return rawText([&](BIO* bio) { return RSA_print(bio, rawRsa(key).get(), indent); });
}

TEST(OpenSSLPKeyPrint, GivesAllNumbersOfAPrivateKey) {
    const std::string text = OpenSSLPKey::print(rsa1024().get(), 0);

    EXPECT_EQ(text, rawPrint(rsa1024(), 0));
    EXPECT_NE(text.find("privateExponent:"), std::string::npos);
}

TEST(OpenSSLPKeyPrint, GivesThePublicNumbersOfAPublicKey) {
    const std::string text = OpenSSLPKey::print(publicHalf(rsa1024()).get(), 0);

    EXPECT_EQ(text, rawPrint(publicHalf(rsa1024()), 0));
    EXPECT_NE(text.find("Public-Key: (1024 bit)"), std::string::npos);
    EXPECT_EQ(text.find("rivate"), std::string::npos);
}

TEST(OpenSSLPKeyPrint, PrintsTheKeyOfAnObject) {
    const PrivKey priv(rsa2048().get());
    const PubKey pub(publicHalf(rsa2048()).get());

    EXPECT_EQ(OpenSSLPKey::print(priv.getEVP_PKEY(), 4), rawPrint(rsa2048(), 4));
    EXPECT_EQ(OpenSSLPKey::print(pub.getEVP_PKEY(), 4), rawPrint(publicHalf(rsa2048()), 4));
}

TEST(OpenSSLPKeyPrint, IndentsEveryLine) {
    for (const int indent : {1, 4, 20, 128, 1000}) {
        EXPECT_EQ(OpenSSLPKey::print(rsa1024().get(), static_cast<unsigned int>(indent)),
                  rawPrint(rsa1024(), indent));
    }
}

}  // namespace
}  // namespace vorl::test
