#include "vorl/PubKey.h"

#include "raw_keys.h"

#include "vorl/PKAlgo.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

// Loading from PEM: pem_test.cpp. What is common to all keys: OpenSSLPKey_test.cpp.

namespace vorl::test {
namespace {

static_assert(std::is_base_of_v<OpenSSLPKey, PubKey>);

RawKey rawPub() {
    return publicHalf(rsa1024());
}

RawKey otherRawPub() {
    return publicHalf(otherRsa1024());
}

TEST(PubKey, IsMadeFromAKeyThatStaysTheCallers) {
    const RawKey source = rawPub();
    const PubKey fromPointer(source.get());
    const PubKey fromShared{std::shared_ptr<const EVP_PKEY>(source)};

    for (const PubKey* key : {&fromPointer, &fromShared}) {
        EXPECT_EQ(key->algo(), PKAlgo::RSA());
        EXPECT_NE(key->getEVP_PKEY(), source.get());
        EXPECT_EQ(key->toRSA(), rawRsa(source));
    }
}

TEST(PubKey, CopyHasAKeyOfItsOwnAroundTheSameRsa) {
    const PubKey key(rawPub().get());
    const PubKey copy(key);

    EXPECT_NE(copy.getEVP_PKEY(), key.getEVP_PKEY());
    EXPECT_EQ(copy.toRSA(), key.toRSA());
    EXPECT_EQ(copy.toString(), key.toString());
}

TEST(PubKey, AssignmentReplacesTheKeyOfThisObjectOnly) {
    PubKey key(rawPub().get());
    const PubKey copy(key);
    const PubKey other(otherRawPub().get());

    EXPECT_EQ(&(key = other), &key);
    EXPECT_EQ(key, other);
    EXPECT_NE(key.getEVP_PKEY(), other.getEVP_PKEY());
    EXPECT_EQ(key.toRSA(), other.toRSA());
    EXPECT_NE(copy, key);
}

TEST(PubKey, AssignmentToItselfChangesNothing) {
    PubKey key(rawPub().get());
    const EVP_PKEY* const before = key.getEVP_PKEY();
    const PubKey& same = key;
    key = same;

    EXPECT_EQ(key.getEVP_PKEY(), before);
    EXPECT_EQ(key, PubKey(rawPub().get()));
}

TEST(PubKey, TextNamesTheHalfAndTheAlgorithm) {
    const PubKey key(rawPub().get());
    const FormatPrintable& printable = key;

    EXPECT_EQ(key.toString(), "Public-Key (RSA)");
    EXPECT_EQ(printable.toString(), "Public-Key (RSA)");
}

// Without any of its numbers, whatever the width.
TEST(PubKey, BlockIsOneLineBehindTheIndent) {
    const PubKey key(rawPub().get());
    const FormatPrintable& printable = key;

    EXPECT_EQ(printable.toFormatString("Key", 80, 1, ":", 4), "    Key:  Public-Key (RSA)\n");
    EXPECT_EQ(key.toFormatString("server key", 80, 2, ":", 4), "        server key:  Public-Key (RSA)\n");
    EXPECT_EQ(key.toFormatString("", 80, 3, ":", 1), "   :  Public-Key (RSA)\n");
    EXPECT_EQ(key.toFormatString("key", 0, 0, ", ", 4), "key:  Public-Key (RSA)\n");
}

}  // namespace
}  // namespace vorl::test
