#include "vorl/ClientKeys.h"

#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_digest.h"
#include "vorl/VORLException.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<ClientKeys>);

// The second example of FIPS 180 for SHA-384, a message of 112 characters.
const std::string EXAMPLE =
    "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrst"
    "nopqrstu";
const bytes EXAMPLE_ENCRYPTION_KEY = fromHex("09330c33f71147e83d192fc782cd1b47");
const bytes EXAMPLE_HMAC_KEY = fromHex("53111b173b3b05d22fa08086e3b0f712fcc7c71a557e2db966c3e9fa91746039");

bytes bothOf(const ClientKeys& keys) {
    return keys.encryptionKey() + keys.hmacKey();
}

void expectTheKeysOf(const bytes& material, const ClientKeys& keys) {
    const bytes digest = rawDigest(EVP_sha384(), material);
    EXPECT_EQ(keys.encryptionKey(), slice(digest, 0, 16));
    EXPECT_EQ(keys.hmacKey(), slice(digest, 16, 32));
}

TEST(ClientKeys, AreTheTwoPartsOfThePublishedDigest) {
    const ClientKeys ofSecret(fromText(EXAMPLE));
    EXPECT_EQ(ofSecret.encryptionKey(), EXAMPLE_ENCRYPTION_KEY);
    EXPECT_EQ(ofSecret.hmacKey(), EXAMPLE_HMAC_KEY);

    const ClientKeys ofId(EXAMPLE);
    EXPECT_EQ(ofId.encryptionKey(), EXAMPLE_ENCRYPTION_KEY);
    EXPECT_EQ(ofId.hmacKey(), EXAMPLE_HMAC_KEY);
}

TEST(ClientKeys, RefuseASecretOfFewerThan48Bytes) {
    for (const std::size_t size : {0U, 1U, 16U, 47U}) {
        EXPECT_EQ(messageOf<VORLException>([size] { ClientKeys(octets(size)); }), "shared secret too small")
            << size;
    }
}

TEST(ClientKeys, ComeFromASecretOf48BytesOrMore) {
    for (const std::size_t size : {48U, 49U, 63U, 64U, 65U, 127U, 128U, 129U, 1000U}) {
        SCOPED_TRACE(size);
        expectTheKeysOf(octets(size), ClientKeys(octets(size)));
    }
}

// An exchange that its peer has spoilt gives zeros; the keys are still those of all 128.
TEST(ClientKeys, ComeFromEveryByteOfTheSecret) {
    bytes secret(128, 0x00);
    expectTheKeysOf(secret, ClientKeys(secret));
    const ClientKeys ofZeros(secret);
    secret[127] = 0x01;
    expectTheKeysOf(secret, ClientKeys(secret));
    EXPECT_TRUE(ClientKeys(secret) != ofZeros);
}

struct ShortIdCase {
    const char* name;
    const char* id;
    const char* message;
};

const ShortIdCase SHORT_IDS[] = {
    {"None", "", "ShopperID/esn length (0) < 9"},
    {"One", "1", "ShopperID/esn length (1) < 9"},
    {"Seven", "1234567", "ShopperID/esn length (7) < 9"},
    {"Eight", "12345678", "ShopperID/esn length (8) < 9"},
};

class ClientKeysOfAShortId : public ::testing::TestWithParam<ShortIdCase> {};

TEST_P(ClientKeysOfAShortId, AreRefused) {
    const std::string id = GetParam().id;
    const bytes characters = fromText(id);

    EXPECT_EQ(messageOf<VORLException>([&] { ClientKeys keys(id); }), GetParam().message);
    EXPECT_EQ(messageOf<VORLException>(
                  [&] { ClientKeys(characters.data(), static_cast<unsigned int>(characters.size())); }),
              GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Lengths, ClientKeysOfAShortId, ::testing::ValuesIn(SHORT_IDS),
                         [](const auto& test) { return test.param.name; });

TEST(ClientKeys, RefuseANullPointerWithoutCharacters) {
    EXPECT_EQ(messageOf<VORLException>([] { ClientKeys(nullptr, 0); }), "ShopperID/esn length (0) < 9");
}

TEST(ClientKeys, ComeFromAnIdOf9CharactersOrMore) {
    for (const std::size_t size : {9U, 10U, 16U, 47U, 48U, 64U, 1000U}) {
        SCOPED_TRACE(size);
        const bytes material = octets(size);
        const ClientKeys ofText(toText(material));
        const ClientKeys ofPointer(material.data(), static_cast<unsigned int>(size));

        expectTheKeysOf(material, ofText);
        expectTheKeysOf(material, ofPointer);
        EXPECT_TRUE(ofText == ofPointer);
    }
}

TEST(ClientKeys, TakeTheCharactersOfAnIdExactlyAsTheyAre) {
    // Neither cut at a zero, nor ended with one, nor trimmed.
    const std::string id(" \0A\x80\xff\0\t\n\0", 9);
    expectTheKeysOf(fromHex("20 00 41 80 ff 00 09 0a 00"), ClientKeys(id));
    expectTheKeysOf(fromText("123456789"), ClientKeys("123456789"));
}

TEST(ClientKeys, ReadNoMoreOfAnIdThanTheyAreGiven) {
    expectTheKeysOf(octets(9), ClientKeys(octets(100).data(), 9));
}

TEST(ClientKeys, DeriveReplacesBothForMaterialOfAnyLength) {
    ClientKeys keys(octets(128));
    for (const std::size_t size : {0U, 1U, 8U, 47U, 48U, 100000U}) {
        SCOPED_TRACE(size);
        keys.derive(octets(size));
        expectTheKeysOf(octets(size), keys);
    }
}

TEST(ClientKeys, MayBeDerivedFromThemselves) {
    ClientKeys keys(octets(128));
    const bytes encryptionKey = keys.encryptionKey();
    keys.derive(keys.encryptionKey());
    expectTheKeysOf(encryptionKey, keys);
}

TEST(ClientKeys, AreEqualWhenTheMaterialIs) {
    EXPECT_TRUE(ClientKeys(octets(128)) == ClientKeys(octets(128)));
    EXPECT_FALSE(ClientKeys(octets(128)) != ClientKeys(octets(128)));
    EXPECT_FALSE(ClientKeys(octets(128)) == ClientKeys(octets(129)));
    EXPECT_TRUE(ClientKeys(octets(128)) != ClientKeys(octets(129)));

    ClientKeys keys(octets(128));
    EXPECT_TRUE(keys == keys);
    keys.derive(octets(129));
    EXPECT_TRUE(keys == ClientKeys(octets(129)));
}

TEST(ClientKeys, AreCopied) {
    auto original = std::make_unique<ClientKeys>(octets(128));
    ClientKeys copy(*original);
    ClientKeys assigned(octets(48));
    assigned = *original;
    EXPECT_TRUE(copy == *original);
    EXPECT_TRUE(assigned == *original);

    original->derive(octets(1));
    expectTheKeysOf(octets(128), copy);
    expectTheKeysOf(octets(128), assigned);
    copy.derive(octets(2));
    expectTheKeysOf(octets(1), *original);
    original.reset();
    expectTheKeysOf(octets(2), copy);
}

TEST(ClientKeys, AreMoved) {
    ClientKeys original(octets(128));
    ClientKeys moved(std::move(original));
    expectTheKeysOf(octets(128), moved);

    ClientKeys assigned(octets(48));
    assigned = std::move(moved);
    expectTheKeysOf(octets(128), assigned);
}

TEST(ClientKeys, MayBeAssignedToThemselves) {
    ClientKeys keys(octets(128));
    const ClientKeys& same = keys;
    keys = same;
    expectTheKeysOf(octets(128), keys);
}

TEST(ClientKeys, PrintBothInFull) {
    EXPECT_EQ(ClientKeys(EXAMPLE).toString(),
              "Client-Keys:\n"
              "    Client-Encryption-Key:  09:33:0c:33:f7:11:47:e8:3d:19:2f:c7:82:cd:1b:47\n"
              "    Client-HMAC-Key:\n"
              "        53:11:1b:17:3b:3b:05:d2:2f:a0:80:86:e3:b0:f7:12:fc:c7:c7:1a:55:7e:2d:b9\n"
              "        66:c3:e9:fa:91:74:60:39\n");
}

TEST(ClientKeys, LeaveTheErrorQueueAsItWas) {
    ERR_clear_error();
    const unsigned long left = leaveApplicationError();
    EXPECT_EQ(bothOf(ClientKeys(octets(128))).size(), 48U);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace
}  // namespace vorl::test
