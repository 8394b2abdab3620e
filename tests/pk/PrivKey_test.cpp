#include "vorl/PrivKey.h"

#include "raw_keys.h"

#include "vorl/PKAlgo.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

// Loading from PEM: pem_test.cpp. What is common to all keys: OpenSSLPKey_test.cpp.

namespace vorl::test {
namespace {

static_assert(std::is_base_of_v<OpenSSLPKey, PrivKey>);

RawKey rawPriv() {
    return rsa1024();
}

RawKey otherRawPriv() {
    return otherRsa1024();
}

TEST(PrivKey, IsMadeFromAKeyThatStaysTheCallers) {
    const RawKey source = rawPriv();
    const PrivKey fromPointer(source.get());
    const PrivKey fromShared{std::shared_ptr<const EVP_PKEY>(source)};

    for (const PrivKey* key : {&fromPointer, &fromShared}) {
        EXPECT_EQ(key->algo(), PKAlgo::RSA());
        EXPECT_NE(key->getEVP_PKEY(), source.get());
        EXPECT_EQ(key->toRSA(), rawRsa(source));
    }
}

TEST(PrivKey, CopyHasAKeyOfItsOwnAroundTheSameRsa) {
    const PrivKey key(rawPriv().get());
    const PrivKey copy(key);

    EXPECT_NE(copy.getEVP_PKEY(), key.getEVP_PKEY());
    EXPECT_EQ(copy.toRSA(), key.toRSA());
    EXPECT_EQ(copy.toString(), key.toString());
}

TEST(PrivKey, AssignmentReplacesTheKeyOfThisObjectOnly) {
    PrivKey key(rawPriv().get());
    const PrivKey copy(key);
    const PrivKey other(otherRawPriv().get());

    EXPECT_EQ(&(key = other), &key);
    EXPECT_EQ(key, other);
    EXPECT_NE(key.getEVP_PKEY(), other.getEVP_PKEY());
    EXPECT_EQ(key.toRSA(), other.toRSA());
    EXPECT_NE(copy, key);
}

TEST(PrivKey, AssignmentToItselfChangesNothing) {
    PrivKey key(rawPriv().get());
    const EVP_PKEY* const before = key.getEVP_PKEY();
    const PrivKey& same = key;
    key = same;

    EXPECT_EQ(key.getEVP_PKEY(), before);
    EXPECT_EQ(key, PrivKey(rawPriv().get()));
}

TEST(PrivKey, TextNamesTheHalfAndTheAlgorithm) {
    const PrivKey key(rawPriv().get());
    const FormatPrintable& printable = key;

    EXPECT_EQ(key.toString(), "Private-Key (RSA)");
    EXPECT_EQ(printable.toString(), "Private-Key (RSA)");
}

// Without any of its numbers, whatever the width.
TEST(PrivKey, BlockIsOneLineBehindTheIndent) {
    const PrivKey key(rawPriv().get());
    const FormatPrintable& printable = key;

    EXPECT_EQ(printable.toFormatString("Key", 80, 1, ":", 4), "    Key:  Private-Key (RSA)\n");
    EXPECT_EQ(key.toFormatString("server key", 80, 2, ":", 4), "        server key:  Private-Key (RSA)\n");
    EXPECT_EQ(key.toFormatString("", 80, 3, ":", 1), "   :  Private-Key (RSA)\n");
    EXPECT_EQ(key.toFormatString("key", 0, 0, ", ", 4), "key:  Private-Key (RSA)\n");
}

}  // namespace
}  // namespace vorl::test
