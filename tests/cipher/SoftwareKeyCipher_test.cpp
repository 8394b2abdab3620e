#include "vorl/SoftwareKeyCipher.h"

#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_cipher.h"
#include "raw_openssl.h"
#include "sample_key.h"
#include "vorl/CipherAlgo.h"
#include "vorl/CipherMode.h"
#include "vorl/CipherSpec.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PaddingType.h"
#include "vorl/VORLException.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;

// NIST SP 800-38A, appendix F.
const bytes NIST_KEY_256 = fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
const bytes NIST_COUNTER = fromHex("f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff");
const bytes NIST_PLAIN = fromHex(
    "6bc1bee22e409f96e93d7e117393172a ae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52ef f69f2445df4f9b17ad2b417be66c3710");

std::shared_ptr<const CipherSpec> ecb() {
    return CipherSpec::AES_128_ECB_PKCS5();
}

std::shared_ptr<const CipherSpec> cbc() {
    return CipherSpec::AES_128_CBC_PKCS5();
}

// A configuration of the caller's own.
std::shared_ptr<const CipherSpec> ownSpec(const EVP_CIPHER* cipher, unsigned int keySize,
                                          unsigned int blockSize, unsigned int ivSize,
                                          const std::shared_ptr<const CipherMode>& mode = CipherMode::CBC()) {
    return std::make_shared<const CipherSpec>(static_cast<ICipherContext::Spec>(9), CipherAlgo::AES(), mode,
                                              PaddingType::PKCS5Padding(), keySize, blockSize, ivSize,
                                              cipher);
}

bytes finishWith(Cipher& cipher, const bytes& data) {
    const bytes updated = cipher.update(data);
    return updated + cipher.final();
}

bytes encryptWith(Cipher& cipher, const bytes& iv, const bytes& data) {
    cipher.encryptInit(iv);
    return finishWith(cipher, data);
}

bytes decryptWith(Cipher& cipher, const bytes& iv, const bytes& data) {
    cipher.decryptInit(iv);
    return finishWith(cipher, data);
}

bytes rawDecryptCbc(const bytes& key, const bytes& iv, const bytes& data) {
    return rawCipher(EVP_aes_128_cbc(), false, key, iv, data);
}

// `given` cut or filled up with zero octets.
bytes sized(bytes given, std::size_t size) {
    given.resize(size);
    return given;
}

class SoftwareKeyCipherTest : public ::testing::Test {
protected:
    void SetUp() override { ERR_clear_error(); }
    void TearDown() override { ERR_clear_error(); }
};

}  // namespace

TEST_F(SoftwareKeyCipherTest, IsAnUncopyableCipherOfItsSpec) {
    SoftwareKeyCipher test(ecb(), KEY);
    SoftwareKeyCipher full(cbc(), KEY);

    EXPECT_EQ(static_cast<unsigned int>(test.id()), 1U);
    EXPECT_EQ(static_cast<unsigned int>(full.id()), 2U);
    EXPECT_TRUE(full.isBoundTo(*cbc()));
    EXPECT_TRUE((std::is_base_of_v<Cipher, SoftwareKeyCipher>));
    EXPECT_FALSE(std::is_copy_constructible_v<SoftwareKeyCipher>);
    EXPECT_FALSE(std::is_copy_assignable_v<SoftwareKeyCipher>);
}

// FIPS 197, appendix C.1.
TEST_F(SoftwareKeyCipherTest, EncryptsTheExampleOfFips197) {
    SoftwareKeyCipher cipher(ecb(), fromHex("000102030405060708090a0b0c0d0e0f"));
    const bytes plain = fromHex("00112233445566778899aabbccddeeff");
    const bytes encrypted = fromHex("69c4e0d86a7b0430d8cdb78070b4c55a");

    cipher.encryptInit({});
    EXPECT_EQ(cipher.update(plain), encrypted);
}

// SP 800-38A, F.1.1 and F.2.1; the padding is the only block that is not in the standard.
TEST_F(SoftwareKeyCipherTest, EncryptsTheEcbBlocksOfSp80038A) {
    SoftwareKeyCipher cipher(ecb(), KEY);
    cipher.encryptInit({});
    EXPECT_EQ(cipher.update(NIST_PLAIN),
              fromHex("3ad77bb40d7a3660a89ecaf32466ef97 f5d3d58503b9699de785895a96fdbaaf"
                      "43b1cd7f598ece23881b00e3ed030688 7b0c785e27e8ad3f8223207104725dd4"));
    EXPECT_EQ(cipher.final(), slice(rawEncrypt(KEY, {}, NIST_PLAIN), 64, 16));
}

TEST_F(SoftwareKeyCipherTest, EncryptsTheCbcBlocksOfSp80038A) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update(NIST_PLAIN),
              fromHex("7649abac8119b246cee98e9b12e9197d 5086cb9b507219ee95db113a917678b2"
                      "73bed6b8e3c1743b7116e69e22229516 3ff1caa1681fac09120eca307586e1a7"));
    EXPECT_EQ(cipher.final(), slice(rawEncrypt(KEY, IV, NIST_PLAIN), 64, 16));
}

// SP 800-38A, F.5.1: a configuration that is not the library's own, without padding.
TEST_F(SoftwareKeyCipherTest, EncryptsTheCounterBlocksOfSp80038A) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_ctr(), 16, 16, 16), KEY);
    const bytes encrypted = fromHex(
        "874d6191b620e3261bef6864990db6ce 9806f66b7970fdff8617187bb9fffdff"
        "5ae4df3edbd5d35e5b4f09020db03eab 1e031dda2fbe03d1792170a0f3009cee");

    cipher.encryptInit(NIST_COUNTER);
    EXPECT_EQ(cipher.update(NIST_PLAIN), encrypted);
    EXPECT_EQ(cipher.final(), bytes());
    EXPECT_EQ(decryptWith(cipher, NIST_COUNTER, encrypted), NIST_PLAIN);
}

// SP 800-38A, F.2.5.
TEST_F(SoftwareKeyCipherTest, EncryptsTheCbcBlocksOfALongerKey) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_256_cbc(), 32, 16, 16), NIST_KEY_256);
    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update(NIST_PLAIN),
              fromHex("f58c4c04d6e5f1ba779eabfb5f7bfbd6 9cfc4e967edb808d679f777bc6702c7d"
                      "39f23369a9d9bacfa530e26304231461 b2eb05e2c39be9fcda6c19078c6a9d1b"));
}

TEST_F(SoftwareKeyCipherTest, KeyMayBeGivenAsPointerAndLength) {
    const bytes keyAndMore = KEY + octets(4);
    SoftwareKeyCipher cipher(cbc(), keyAndMore.data(), 16);
    EXPECT_EQ(encryptWith(cipher, IV, octets(20)), rawEncrypt(KEY, IV, octets(20)));
}

TEST_F(SoftwareKeyCipherTest, KeyIsCopied) {
    bytes key = KEY;
    SoftwareKeyCipher fromVector(cbc(), key);
    SoftwareKeyCipher fromPointer(cbc(), key.data(), 16);
    std::fill(key.begin(), key.end(), static_cast<unsigned char>(0));

    EXPECT_EQ(encryptWith(fromVector, IV, octets(20)), rawEncrypt(KEY, IV, octets(20)));
    EXPECT_EQ(encryptWith(fromPointer, IV, octets(20)), rawEncrypt(KEY, IV, octets(20)));
}

TEST_F(SoftwareKeyCipherTest, EachLengthBecomesWholeBlocksWithPadding) {
    SoftwareKeyCipher test(ecb(), KEY);
    SoftwareKeyCipher full(cbc(), KEY);
    for (std::size_t size = 0; size <= 80; ++size) {
        const bytes message = octets(size);
        const bytes tested = encryptWith(test, {}, message);
        const bytes filled = encryptWith(full, IV, message);

        EXPECT_EQ(tested.size(), size / 16 * 16 + 16) << size;
        EXPECT_EQ(tested, rawEncrypt(KEY, {}, message)) << size;
        EXPECT_EQ(filled, rawEncrypt(KEY, IV, message)) << size;
        EXPECT_EQ(decryptWith(test, {}, tested), message) << size;
        EXPECT_EQ(decryptWith(full, IV, filled), message) << size;
    }
}

TEST_F(SoftwareKeyCipherTest, EmptyMessageIsOneBlockFromFinal) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update({}), bytes());
    EXPECT_EQ(cipher.final(), rawEncrypt(KEY, IV, {}));

    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.final(), rawEncrypt(KEY, IV, {}));
}

TEST_F(SoftwareKeyCipherTest, OutputComesAsSoonAsItIsReady) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const bytes message = octets(40);
    const bytes encrypted = rawEncrypt(KEY, IV, message);

    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update(slice(message, 0, 15)), bytes());
    EXPECT_EQ(cipher.update(slice(message, 15, 1)), slice(encrypted, 0, 16));
    EXPECT_EQ(cipher.update(slice(message, 16, 24)), slice(encrypted, 16, 16));
    EXPECT_EQ(cipher.final(), slice(encrypted, 32, 16));

    // Decryption holds a whole block back, because it may be the padded one.
    cipher.decryptInit(IV);
    EXPECT_EQ(cipher.update(slice(encrypted, 0, 16)), bytes());
    EXPECT_EQ(cipher.update(slice(encrypted, 16, 1)), slice(message, 0, 16));
    EXPECT_EQ(cipher.update(slice(encrypted, 17, 31)), slice(message, 16, 16));
    EXPECT_EQ(cipher.final(), slice(message, 32, 8));
}

TEST_F(SoftwareKeyCipherTest, LargeInputInPiecesIsTheSameAsAtOnce) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const bytes message = octets(300001);
    const bytes encrypted = rawEncrypt(KEY, IV, message);
    for (const std::size_t piece : {7U, 4096U, 65537U, 300001U}) {
        for (const bool encrypting : {true, false}) {
            const bytes& in = encrypting ? message : encrypted;
            encrypting ? cipher.encryptInit(IV) : cipher.decryptInit(IV);
            bytes out;
            for (std::size_t at = 0; at < in.size(); at += piece) {
                const bytes ready = cipher.update(slice(in, at, std::min(piece, in.size() - at)));
                out.insert(out.end(), ready.begin(), ready.end());
            }
            const bytes rest = cipher.final();
            out.insert(out.end(), rest.begin(), rest.end());
            EXPECT_TRUE(out == (encrypting ? encrypted : message)) << piece << encrypting;
        }
    }
}

TEST_F(SoftwareKeyCipherTest, CbcEncryptionNeedsAnIv) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(bytes()); }),
              "[CipherMode:CBC] cannot be initialized without initialization vector");
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit({}); }),
              "[CipherMode:CBC] cannot be initialized without initialization vector");
}

TEST_F(SoftwareKeyCipherTest, MissingIvIsReportedWithTheModesName) {
    SoftwareKeyCipher cipher(
        ownSpec(EVP_aes_128_ctr(), 16, 16, 16, std::make_shared<const CipherMode>("CTR")), KEY);
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit({}); }),
              "[CipherMode:CTR] cannot be initialized without initialization vector");
}

TEST_F(SoftwareKeyCipherTest, CbcEncryptionNeedsAnIvOfTheSpecsSize) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    for (const std::size_t size : {1U, 15U, 17U, 32U, 20000U}) {
        EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(octets(size)); }),
                  "input IV size (" + std::to_string(size) + ") != CipherSpec IV size (16)");
    }
}

// A mode that only bears the name of ECB is another one: modes are compared by identity.
TEST_F(SoftwareKeyCipherTest, ModeIsJudgedByIdentity) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_ecb(), 16, 16, 0, std::make_shared<const CipherMode>("ECB")),
                             KEY);
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit({}); }),
              "[CipherMode:ECB] cannot be initialized without initialization vector");
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit({0x01}); }),
              "input IV size (1) != CipherSpec IV size (0)");
}

TEST_F(SoftwareKeyCipherTest, EcbIgnoresTheIv) {
    SoftwareKeyCipher cipher(ecb(), KEY);
    const bytes encrypted = rawEncrypt(KEY, {}, octets(20));
    for (const std::size_t size : {0U, 1U, 16U, 100U}) {
        EXPECT_EQ(encryptWith(cipher, octets(size), octets(20)), encrypted) << size;
        EXPECT_EQ(decryptWith(cipher, octets(size), encrypted), octets(20)) << size;
    }
}

TEST_F(SoftwareKeyCipherTest, ModeNoneIgnoresTheIv) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_ecb(), 16, 16, 16, CipherMode::NONE()), KEY);
    const bytes encrypted = rawEncrypt(KEY, {}, octets(20));
    EXPECT_EQ(encryptWith(cipher, {}, octets(20)), encrypted);
    EXPECT_EQ(encryptWith(cipher, octets(3), octets(20)), encrypted);
    EXPECT_EQ(decryptWith(cipher, octets(3), encrypted), octets(20));
}

// Without an IV, a CBC cipher of mode NONE works with zeros, also after an operation that had one.
TEST_F(SoftwareKeyCipherTest, MissingIvIsAlwaysZeroNeverTheLastOne) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const bytes zero = rawEncrypt(KEY, bytes(16), octets(40));

    encryptWith(cipher, IV, octets(40));
    cipher.encryptInit(static_cast<unsigned char*>(nullptr));
    EXPECT_EQ(finishWith(cipher, octets(40)), zero);

    decryptWith(cipher, IV, rawEncrypt(KEY, IV, octets(40)));
    cipher.decryptInit(static_cast<unsigned char*>(nullptr));
    EXPECT_EQ(finishWith(cipher, zero), octets(40));
}

TEST_F(SoftwareKeyCipherTest, PointerFormsTakeTheIvAsItIs) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    bytes iv = IV;

    cipher.encryptInit(iv.data());
    const bytes encrypted = finishWith(cipher, octets(33));
    EXPECT_EQ(encrypted, rawEncrypt(KEY, IV, octets(33)));

    cipher.decryptInit(iv.data());
    EXPECT_EQ(finishWith(cipher, encrypted), octets(33));
    EXPECT_EQ(iv, IV);
}

TEST_F(SoftwareKeyCipherTest, ListFormsMeanAVector) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    cipher.encryptInit({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    const bytes encrypted = finishWith(cipher, octets(33));
    EXPECT_EQ(encrypted, rawEncrypt(KEY, IV, octets(33)));

    cipher.decryptInit({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_EQ(finishWith(cipher, encrypted), octets(33));

    cipher.decryptInit({});
    EXPECT_EQ(finishWith(cipher, encrypted), rawDecryptCbc(KEY, bytes(16), encrypted));
}

namespace {

class SoftwareKeyCipherIv : public ::testing::TestWithParam<std::size_t> {};

}  // namespace

// The IV touches the first block only, so any of them unpads.
TEST_P(SoftwareKeyCipherIv, OfAnyLengthIsFilledWithZerosOrCutToDecrypt) {
    const bytes given = octets(GetParam());
    const bytes encrypted = rawEncrypt(KEY, IV, octets(40));
    SoftwareKeyCipher fresh(cbc(), KEY);
    SoftwareKeyCipher used(cbc(), KEY);
    decryptWith(used, IV, encrypted);

    const bytes expected = rawDecryptCbc(KEY, sized(given, 16), encrypted);
    EXPECT_EQ(decryptWith(fresh, given, encrypted), expected);
    EXPECT_EQ(decryptWith(used, given, encrypted), expected);
}

INSTANTIATE_TEST_SUITE_P(Octets, SoftwareKeyCipherIv, ::testing::Values(0, 1, 8, 15, 16, 17, 32, 64, 5000));

namespace {

class SoftwareKeyCipherKey : public ::testing::TestWithParam<std::size_t> {};

}  // namespace

TEST_P(SoftwareKeyCipherKey, OfAnotherLengthIsRefusedToEncrypt) {
    const std::string text =
        "SoftwareKeyCipher key size (" + std::to_string(GetParam()) + ") != CipherSpec key size (16)";
    SoftwareKeyCipher test(ecb(), octets(GetParam()));
    SoftwareKeyCipher full(cbc(), octets(GetParam()));
    bytes iv = IV;

    EXPECT_EQ(messageOf<VORLException>([&] { test.encryptInit({}); }), text);
    EXPECT_EQ(messageOf<VORLException>([&] { full.encryptInit(IV); }), text);
    EXPECT_EQ(messageOf<VORLException>([&] { full.encryptInit(iv.data()); }), text);
    EXPECT_EQ(messageOf<VORLException>([&] { full.encryptInit(static_cast<unsigned char*>(nullptr)); }),
              text);
}

TEST_P(SoftwareKeyCipherKey, OfAnotherLengthIsFilledWithZerosOrCutToDecrypt) {
    const bytes given = octets(GetParam());
    const bytes effective = sized(given, 16);
    SoftwareKeyCipher test(ecb(), given);
    SoftwareKeyCipher full(cbc(), given.data(), static_cast<unsigned int>(given.size()));

    EXPECT_EQ(decryptWith(test, {}, rawEncrypt(effective, {}, octets(40))), octets(40));
    EXPECT_EQ(decryptWith(full, IV, rawEncrypt(effective, IV, octets(40))), octets(40));
}

TEST_P(SoftwareKeyCipherKey, OfAnotherLengthStillDecryptsAfterItWasRefusedToEncrypt) {
    const bytes given = octets(GetParam());
    SoftwareKeyCipher cipher(cbc(), given);
    EXPECT_NE(messageOf<VORLException>([&] { cipher.encryptInit(IV); }), "<no exception>");
    EXPECT_EQ(decryptWith(cipher, IV, rawEncrypt(sized(given, 16), IV, octets(40))), octets(40));
}

INSTANTIATE_TEST_SUITE_P(Octets, SoftwareKeyCipherKey, ::testing::Values(0, 1, 15, 17, 24, 32, 64, 65, 5000));

TEST_F(SoftwareKeyCipherTest, NullPointerWithLengthZeroIsAnEmptyKey) {
    SoftwareKeyCipher cipher(cbc(), nullptr, 0);
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(IV); }),
              "SoftwareKeyCipher key size (0) != CipherSpec key size (16)");
    EXPECT_EQ(decryptWith(cipher, IV, rawEncrypt(bytes(16), IV, octets(40))), octets(40));
}

TEST_F(SoftwareKeyCipherTest, IvIsJudgedBeforeTheKey) {
    SoftwareKeyCipher cipher(cbc(), octets(15));
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit({}); }),
              "[CipherMode:CBC] cannot be initialized without initialization vector");
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(octets(15)); }),
              "input IV size (15) != CipherSpec IV size (16)");
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(octets(16)); }),
              "SoftwareKeyCipher key size (15) != CipherSpec key size (16)");
}

TEST_F(SoftwareKeyCipherTest, RefusedIvLeavesTheOperationInProgressAsItWas) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const bytes encrypted = rawEncrypt(KEY, IV, octets(40));

    cipher.decryptInit(IV);
    const bytes first = cipher.update(slice(encrypted, 0, 32));
    EXPECT_NE(messageOf<VORLException>([&] { cipher.encryptInit({}); }), "<no exception>");
    EXPECT_NE(messageOf<VORLException>([&] { cipher.encryptInit(octets(15)); }), "<no exception>");
    EXPECT_EQ(first + finishWith(cipher, slice(encrypted, 32, 16)), octets(40));
}

TEST_F(SoftwareKeyCipherTest, RefusedKeyEndsTheOperationInProgress) {
    SoftwareKeyCipher cipher(cbc(), octets(15));
    const bytes encrypted = rawEncrypt(sized(octets(15), 16), IV, octets(40));

    cipher.decryptInit(IV);
    cipher.update(slice(encrypted, 0, 32));
    EXPECT_NE(messageOf<VORLException>([&] { cipher.encryptInit(IV); }), "<no exception>");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(slice(encrypted, 32, 16)); }),
              "failed EVP update, no output with input >= blocksize");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
}

namespace {

struct Interruption {
    const char* name;
    void (*apply)(SoftwareKeyCipher&);
};

// What may have gone before an init, with an IV and data of its own.
const Interruption INTERRUPTIONS[] = {
    {"Nothing", [](SoftwareKeyCipher&) {}},
    {"FinishedEncryption", [](SoftwareKeyCipher& cipher) { encryptWith(cipher, octets(16), octets(50)); }},
    {"FinishedDecryption",
     [](SoftwareKeyCipher& cipher) {
         decryptWith(cipher, octets(16), rawEncrypt(KEY, octets(16), octets(50)));
     }},
    {"StartedEncryption", [](SoftwareKeyCipher& cipher) { cipher.encryptInit(octets(16)); }},
    {"StartedDecryption", [](SoftwareKeyCipher& cipher) { cipher.decryptInit(octets(16)); }},
    {"AbandonedEncryption",
     [](SoftwareKeyCipher& cipher) {
         cipher.encryptInit(octets(16));
         cipher.update(octets(21));
     }},
    {"AbandonedDecryption",
     [](SoftwareKeyCipher& cipher) {
         cipher.decryptInit(octets(16));
         cipher.update(octets(37));
     }},
    {"BadPadding",
     [](SoftwareKeyCipher& cipher) {
         EXPECT_EQ(messageOf<OpenSSLException>([&] { decryptWith(cipher, IV, bytes(32)); }),
                   "failed EVP final operation");
     }},
    {"IncompleteBlock",
     [](SoftwareKeyCipher& cipher) {
         EXPECT_EQ(messageOf<OpenSSLException>([&] { decryptWith(cipher, IV, octets(31)); }),
                   "failed EVP final operation");
     }},
    {"RefusedIv",
     [](SoftwareKeyCipher& cipher) {
         EXPECT_NE(messageOf<VORLException>([&] { cipher.encryptInit(octets(5)); }), "<no exception>");
     }},
    {"TwiceFinal",
     [](SoftwareKeyCipher& cipher) {
         encryptWith(cipher, octets(16), octets(50));
         cipher.encryptInit(octets(16));
         cipher.final();
     }},
};

class SoftwareKeyCipherReuse : public ::testing::TestWithParam<Interruption> {};

}  // namespace

TEST_P(SoftwareKeyCipherReuse, EncryptsAfreshAfterwards) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    for (int round = 0; round < 3; ++round) {
        GetParam().apply(cipher);
        EXPECT_EQ(encryptWith(cipher, IV, octets(45)), rawEncrypt(KEY, IV, octets(45)));
    }
}

TEST_P(SoftwareKeyCipherReuse, DecryptsAfreshAfterwards) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    for (int round = 0; round < 3; ++round) {
        GetParam().apply(cipher);
        EXPECT_EQ(decryptWith(cipher, IV, rawEncrypt(KEY, IV, octets(45))), octets(45));
    }
}

TEST_P(SoftwareKeyCipherReuse, WorksInEcbModeToo) {
    SoftwareKeyCipher cipher(ecb(), KEY);
    const bytes encrypted = rawEncrypt(KEY, {}, octets(45));
    for (int round = 0; round < 3; ++round) {
        cipher.encryptInit({});
        cipher.update(octets(21));
        EXPECT_EQ(decryptWith(cipher, {}, encrypted), octets(45));
        cipher.decryptInit({});
        cipher.update(octets(21));
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
        EXPECT_EQ(encryptWith(cipher, {}, octets(45)), encrypted);
    }
}

INSTANTIATE_TEST_SUITE_P(After, SoftwareKeyCipherReuse, ::testing::ValuesIn(INTERRUPTIONS),
                         [](const auto& test) { return test.param.name; });

namespace {

struct OtherCipher {
    const char* name;
    const EVP_CIPHER* (*cipher)();
};

const OtherCipher OTHER_CIPHERS[] = {
    {"Aes128Ctr", EVP_aes_128_ctr},    {"Aes128Ofb", EVP_aes_128_ofb},
    {"Aes128Cfb", EVP_aes_128_cfb128}, {"Aes128Cfb8", EVP_aes_128_cfb8},
    {"Aes192Cbc", EVP_aes_192_cbc},    {"Aes256Cbc", EVP_aes_256_cbc},
    {"Aes256Ecb", EVP_aes_256_ecb},    {"Camellia128", EVP_camellia_128_cbc},
    {"TripleDes", EVP_des_ede3_cbc},   {"ChaCha20", EVP_chacha20},
    {"Aria256Ctr", EVP_aria_256_ctr},  {"Aes128Xts", EVP_aes_128_xts},
};

class SoftwareKeyCipherOfOpenSSL : public ::testing::TestWithParam<OtherCipher> {
protected:
    const EVP_CIPHER* cipher_ = GetParam().cipher();
    const unsigned int keySize_ = static_cast<unsigned int>(EVP_CIPHER_key_length(cipher_));
    const unsigned int blockSize_ = static_cast<unsigned int>(EVP_CIPHER_block_size(cipher_));
    const unsigned int ivSize_ = static_cast<unsigned int>(EVP_CIPHER_iv_length(cipher_));
    const bytes key_ = octets(keySize_);
    const bytes iv_ = octets(ivSize_);
};

}  // namespace

// A context stays keyed between operations; each cipher has to forget the rest of the one before.
TEST_P(SoftwareKeyCipherOfOpenSSL, StartsAfreshAfterFinishedAndAbandonedOperations) {
    SoftwareKeyCipher cipher(
        ownSpec(cipher_, keySize_, blockSize_, ivSize_, ivSize_ == 0 ? CipherMode::ECB() : CipherMode::CBC()),
        key_);
    const bytes otherIv(ivSize_, 0x77);
    const bytes encrypted = rawCipher(cipher_, true, key_, iv_, octets(45));

    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(encryptWith(cipher, iv_, octets(45)), encrypted);
        cipher.encryptInit(otherIv);
        cipher.update(octets(21));
        EXPECT_EQ(encryptWith(cipher, iv_, octets(45)), encrypted);
        cipher.decryptInit(otherIv);
        cipher.update(octets(21));
        EXPECT_EQ(decryptWith(cipher, iv_, encrypted), octets(45));
    }
}

// XTS takes each call as a unit of its own, so that data that is cut would come out otherwise.
TEST_P(SoftwareKeyCipherOfOpenSSL, IsFedAllTheDataInOneCall) {
    SoftwareKeyCipher cipher(
        ownSpec(cipher_, keySize_, blockSize_, ivSize_, ivSize_ == 0 ? CipherMode::ECB() : CipherMode::CBC()),
        key_);
    for (const std::size_t size : {4097U, 8193U, 20000U}) {
        EXPECT_TRUE(encryptWith(cipher, iv_, octets(size)) ==
                    rawCipher(cipher_, true, key_, iv_, octets(size)))
            << size;
    }
}

INSTANTIATE_TEST_SUITE_P(Ciphers, SoftwareKeyCipherOfOpenSSL, ::testing::ValuesIn(OTHER_CIPHERS),
                         [](const auto& test) { return test.param.name; });

TEST_F(SoftwareKeyCipherTest, TwoCiphersDoNotDisturbEachOther) {
    SoftwareKeyCipher one(cbc(), KEY);
    SoftwareKeyCipher other(cbc(), octets(16));

    one.encryptInit(IV);
    other.encryptInit(octets(16));
    const bytes fromOne = one.update(octets(20));
    const bytes fromOther = other.update(octets(30));
    EXPECT_EQ(fromOne + one.final(), rawEncrypt(KEY, IV, octets(20)));
    EXPECT_EQ(fromOther + other.final(), rawEncrypt(octets(16), octets(16), octets(30)));
}

// PKCS #5 checks the last block only. The numbers are fixed, since random ones unpad once in 256 times.
TEST_F(SoftwareKeyCipherTest, DamagedPaddingFailsInFinal) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    bytes encrypted = rawEncrypt(KEY, IV, octets(20));
    encrypted.back() ^= 0x01;

    cipher.decryptInit(IV);
    EXPECT_EQ(cipher.update(encrypted), octets(16));
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
}

TEST_F(SoftwareKeyCipherTest, WrongKeyFailsInFinal) {
    SoftwareKeyCipher cipher(cbc(), octets(16));
    cipher.decryptInit(IV);
    EXPECT_EQ(cipher.update(rawEncrypt(KEY, IV, octets(20))).size(), 16U);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
}

TEST_F(SoftwareKeyCipherTest, CiphertextThatIsNoWholeBlocksFailsInFinal) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    for (const std::size_t size : {0U, 1U, 15U, 17U, 31U}) {
        cipher.decryptInit(IV);
        cipher.update(octets(size));
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation") << size;
    }
}

TEST_F(SoftwareKeyCipherTest, FailedFinalCarriesTheErrorQueueAndEmptiesIt) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    cipher.decryptInit(IV);
    cipher.update(octets(31));
    leaveApplicationError();
    try {
        cipher.final();
        FAIL() << "no exception";
    } catch (const OpenSSLException& e) {
        EXPECT_NE(e.errorStack(), "");
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

TEST_F(SoftwareKeyCipherTest, NothingIsDoneBeforeTheFirstInit) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    EXPECT_EQ(cipher.update({}), bytes());
    EXPECT_EQ(cipher.update(octets(15)), bytes());
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(16)); }),
              "failed EVP update, no output with input >= blocksize");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
    EXPECT_EQ(encryptWith(cipher, IV, octets(20)), rawEncrypt(KEY, IV, octets(20)));
}

namespace {

// A cipher that an application adds to OpenSSL: it copies, and fails where it is told to. OpenSSL's own ones
// do not fail once they are started.
struct Fault {
    int initsUntilFailure = -1;
    int stepsUntilFailure = -1;
};

Fault fault;

int failAtZero(int& countdown) {
    if (countdown == 0) {
        leaveApplicationError();
        return 0;
    }
    --countdown;
    return 1;
}

// Whatever key OpenSSL hands to the cipher, as far as it is to be read.
bytes keyOfCipher;

int faultyInit(EVP_CIPHER_CTX* ctx, const unsigned char* key, const unsigned char* /*iv*/, int /*enc*/) {
    if (key != nullptr) {
        keyOfCipher.assign(key, key + EVP_CIPHER_CTX_key_length(ctx));
    }
    return failAtZero(fault.initsUntilFailure);
}

int faultyStep(EVP_CIPHER_CTX* /*ctx*/, unsigned char* out, const unsigned char* in, std::size_t size) {
    std::copy_n(in, size, out);
    return failAtZero(fault.stepsUntilFailure);
}

class FaultyCipherTest : public SoftwareKeyCipherTest {
protected:
    void SetUp() override {
        SoftwareKeyCipherTest::SetUp();
        fault = Fault();
        EVP_CIPHER_meth_set_iv_length(method_.get(), 16);
        // A restart with an IV alone reaches the cipher too.
        EVP_CIPHER_meth_set_flags(method_.get(), EVP_CIPH_CBC_MODE | EVP_CIPH_ALWAYS_CALL_INIT);
        EVP_CIPHER_meth_set_init(method_.get(), faultyInit);
        EVP_CIPHER_meth_set_do_cipher(method_.get(), faultyStep);
    }

    const EVP_CIPHER* faulty() const { return method_.get(); }

    static std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_meth_free)> withKeyOf(int keyOctets) {
        std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_meth_free)> method(
            EVP_CIPHER_meth_new(NID_undef, 16, keyOctets), EVP_CIPHER_meth_free);
        EVP_CIPHER_meth_set_init(method.get(), faultyInit);
        EVP_CIPHER_meth_set_do_cipher(method.get(), faultyStep);
        return method;
    }

    void expectFailedStart(SoftwareKeyCipher& cipher) {
        EXPECT_EQ(cipher.update(octets(15)), bytes());
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(16)); }),
                  "failed EVP update, no output with input >= blocksize");
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
    }

private:
    std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_meth_free)> method_{
        EVP_CIPHER_meth_new(NID_undef, 16, 16), EVP_CIPHER_meth_free};
};

}  // namespace

TEST_F(FaultyCipherTest, CopiesAsLongAsItIsNotTold) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update(octets(32)), octets(32));
    EXPECT_EQ(cipher.final(), bytes(16, 0x10));
}

// Longer than any key of OpenSSL's own ciphers.
TEST_F(FaultyCipherTest, KeyOfAnyLengthReachesTheCipherWhole) {
    const auto method = withKeyOf(100);
    SoftwareKeyCipher whole(ownSpec(method.get(), 100, 16, 0, CipherMode::NONE()), octets(100));
    whole.encryptInit({});
    EXPECT_EQ(keyOfCipher, octets(100));

    SoftwareKeyCipher shortKey(ownSpec(method.get(), 100, 16, 0, CipherMode::NONE()), octets(70));
    shortKey.decryptInit({});
    EXPECT_EQ(keyOfCipher, sized(octets(70), 100));
}

// Without an IV, nothing but the key takes a stream back to its beginning.
TEST_F(FaultyCipherTest, CipherWithoutAnIvIsKeyedAtEachStart) {
    const auto method = withKeyOf(16);
    SoftwareKeyCipher cipher(ownSpec(method.get(), 16, 16, 0, CipherMode::NONE()), KEY);
    for (int round = 0; round < 3; ++round) {
        keyOfCipher.clear();
        cipher.encryptInit({});
        EXPECT_EQ(keyOfCipher, KEY) << round;
    }
}

TEST_F(FaultyCipherTest, FailureInLongDataIsThatOfOneCall) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    cipher.encryptInit(IV);
    fault.stepsUntilFailure = 0;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(20000)); }),
              "failed EVP update, no output with input >= blocksize");
}

TEST_F(SoftwareKeyCipherTest, InitObjGoesBackToTheBeginning) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    cipher.decryptInit(IV);
    cipher.update(octets(5));
    cipher.initObj();
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
    EXPECT_EQ(cipher.update(octets(15)), bytes());
    EXPECT_EQ(encryptWith(cipher, IV, octets(20)), rawEncrypt(KEY, IV, octets(20)));
}

TEST_F(FaultyCipherTest, FailedInitIsRememberedAndTheNextOneStartsAfresh) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    for (const bool encrypting : {true, false, true}) {
        fault.initsUntilFailure = 0;
        encrypting ? cipher.encryptInit(IV) : cipher.decryptInit(IV);
        expectFailedStart(cipher);

        fault.initsUntilFailure = -1;
        cipher.encryptInit(IV);
        EXPECT_EQ(cipher.update(octets(16)), octets(16));
    }
}

TEST_F(FaultyCipherTest, InitThatFailsUnreportedLeavesTheErrorQueueAsItWas) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    const unsigned long left = leaveApplicationError();

    fault.initsUntilFailure = 0;
    cipher.encryptInit(IV);
    cipher.decryptInit(IV);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// The same for a cipher that is already keyed.
TEST_F(FaultyCipherTest, RestartThatFailsUnreportedLeavesTheErrorQueueAsItWas) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    cipher.encryptInit(IV);
    cipher.decryptInit(IV);
    const unsigned long left = leaveApplicationError();

    fault.initsUntilFailure = 0;
    cipher.encryptInit(IV);
    cipher.decryptInit(IV);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    expectFailedStart(cipher);
}

TEST_F(FaultyCipherTest, StepThatFailsWithoutOutputIsPassedOverBelowABlockOnly) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update(octets(15)), bytes());
    const unsigned long left = leaveApplicationError();

    fault.stepsUntilFailure = 0;
    EXPECT_EQ(cipher.update(octets(1)), bytes());
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_F(FaultyCipherTest, StepThatFailsWithoutOutputOnABlockIsReported) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    cipher.encryptInit(IV);
    fault.stepsUntilFailure = 0;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(16)); }),
              "failed EVP update, no output with input >= blocksize");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

// The block that was begun comes out before the next ones fail.
TEST_F(FaultyCipherTest, StepThatFailsAfterSomeOutputIsReported) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 16, 16), KEY);
    cipher.encryptInit(IV);
    cipher.update(octets(1));
    fault.stepsUntilFailure = 1;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(31)); }), "failed EVP update operation");
}

TEST_F(FaultyCipherTest, StepThatFailsAfterSomeOutputIsReportedBelowABlockToo) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 100, 16), KEY);
    cipher.encryptInit(IV);
    cipher.update(octets(1));
    fault.stepsUntilFailure = 1;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(31)); }), "failed EVP update operation");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

TEST_F(FaultyCipherTest, ReportedFailureCarriesItsEntries) {
    SoftwareKeyCipher cipher(ownSpec(faulty(), 16, 100, 16), KEY);
    cipher.encryptInit(IV);
    cipher.update(octets(1));
    fault.stepsUntilFailure = 1;
    try {
        cipher.update(octets(31));
        FAIL() << "no exception";
    } catch (const OpenSSLException& e) {
        EXPECT_NE(e.errorStack(), "");
    }
}

TEST_F(SoftwareKeyCipherTest, SpecWithoutACipherAnswersAsIfOpenSSLHadFailed) {
    SoftwareKeyCipher cipher(ownSpec(nullptr, 16, 16, 16), KEY);
    const unsigned long left = leaveApplicationError();
    for (const bool encrypting : {true, false, true, false}) {
        encrypting ? cipher.encryptInit(IV) : cipher.decryptInit(IV);
        EXPECT_EQ(cipher.update(octets(15)), bytes());
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(16)); }),
              "failed EVP update, no output with input >= blocksize");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
}

TEST_F(SoftwareKeyCipherTest, NullSpecTakesTheEmptyKeyOnly) {
    SoftwareKeyCipher cipher(CipherSpec::NULL_CIPHER(), KEY);
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit({}); }),
              "SoftwareKeyCipher key size (16) != CipherSpec key size (0)");
}

// Its block size is 0, so that no input is short enough for a failure to be passed over.
TEST_F(SoftwareKeyCipherTest, NullSpecHasNothingToEncryptWith) {
    SoftwareKeyCipher cipher(CipherSpec::NULL_CIPHER(), bytes());
    for (const bool encrypting : {true, false}) {
        encrypting ? cipher.encryptInit({}) : cipher.decryptInit({});
        for (const std::size_t size : {0U, 1U, 16U}) {
            EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(size)); }),
                      "failed EVP update, no output with input >= blocksize");
        }
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(); }), "failed EVP final operation");
    }
}

TEST_F(SoftwareKeyCipherTest, ShortFeedThatFailsLeavesTheErrorQueueAsItWas) {
    SoftwareKeyCipher cipher(ownSpec(nullptr, 16, 16, 16), KEY);
    const unsigned long left = leaveApplicationError();

    EXPECT_EQ(cipher.update(octets(3)), bytes());
    cipher.decryptInit(IV);
    EXPECT_EQ(cipher.update(octets(3)), bytes());
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_F(SoftwareKeyCipherTest, SuccessLeavesTheErrorQueueAsItWas) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const unsigned long left = leaveApplicationError();

    decryptWith(cipher, IV, encryptWith(cipher, IV, octets(3)));
    decryptWith(cipher, IV, encryptWith(cipher, IV, octets(300)));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_F(SoftwareKeyCipherTest, BlockSizeZeroLosesNoOutput) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 16, 0, 16), KEY);
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 100U}) {
        const bytes encrypted = encryptWith(cipher, IV, octets(size));
        EXPECT_EQ(encrypted, rawEncrypt(KEY, IV, octets(size))) << size;
        EXPECT_EQ(decryptWith(cipher, IV, encrypted), octets(size)) << size;
    }
}

TEST_F(SoftwareKeyCipherTest, BlockSizeLargerThanTheCiphersLosesNoOutput) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 16, 0xffffffffU, 16), KEY);
    const bytes encrypted = encryptWith(cipher, IV, octets(100));
    EXPECT_EQ(encrypted, rawEncrypt(KEY, IV, octets(100)));
    EXPECT_EQ(decryptWith(cipher, IV, encrypted), octets(100));
}

// Below the block size of the spec a failure is passed over, however much OpenSSL was given.
TEST_F(SoftwareKeyCipherTest, BlockSizeOfTheSpecBoundsTheLeniency) {
    SoftwareKeyCipher cipher(ownSpec(nullptr, 16, 5, 16), KEY);
    cipher.decryptInit(IV);
    EXPECT_EQ(cipher.update(octets(4)), bytes());
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(octets(5)); }),
              "failed EVP update, no output with input >= blocksize");
}

TEST_F(SoftwareKeyCipherTest, IvShorterThanTheCiphersIsFilledWithZeros) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 16, 16, 8), KEY);
    const bytes filled = sized(octets(8), 16);

    const bytes encrypted = encryptWith(cipher, octets(8), octets(40));
    EXPECT_EQ(encrypted, rawEncrypt(KEY, filled, octets(40)));
    EXPECT_EQ(decryptWith(cipher, octets(8), encrypted), octets(40));
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(octets(16)); }),
              "input IV size (16) != CipherSpec IV size (8)");
}

TEST_F(SoftwareKeyCipherTest, IvLongerThanTheCiphersIsCut) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 16, 16, 100), KEY);
    EXPECT_EQ(encryptWith(cipher, octets(100), octets(40)), rawEncrypt(KEY, octets(16), octets(40)));
}

TEST_F(SoftwareKeyCipherTest, KeyShorterThanTheCiphersIsFilledWithZeros) {
    SoftwareKeyCipher none(ownSpec(EVP_aes_128_cbc(), 0, 16, 16), bytes());
    EXPECT_EQ(encryptWith(none, IV, octets(40)), rawEncrypt(bytes(16), IV, octets(40)));

    SoftwareKeyCipher half(ownSpec(EVP_aes_256_cbc(), 16, 16, 16), KEY);
    EXPECT_EQ(encryptWith(half, IV, octets(40)),
              rawCipher(EVP_aes_256_cbc(), true, sized(KEY, 32), IV, octets(40)));
}

TEST_F(SoftwareKeyCipherTest, KeyLongerThanTheCiphersIsCut) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 100, 16, 16), octets(100));
    EXPECT_EQ(encryptWith(cipher, IV, octets(40)), rawEncrypt(octets(16), IV, octets(40)));
}

TEST_F(SoftwareKeyCipherTest, KeySizeOfTheSpecIsWhatTheKeyIsJudgedBy) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 0, 16, 16), KEY);
    EXPECT_EQ(messageOf<VORLException>([&] { cipher.encryptInit(IV); }),
              "SoftwareKeyCipher key size (16) != CipherSpec key size (0)");
}

TEST_F(SoftwareKeyCipherTest, StorageFormsYieldTheSameBytes) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const bytes message = octets(1000);
    const bytes encrypted = rawEncrypt(KEY, IV, message);
    bytes out(message.size() + 32);

    cipher.encryptInit(IV);
    std::size_t written = cipher.update(message.data(), 999, out.data());
    EXPECT_EQ(written, 992U);
    written += cipher.update(message.data() + 999, 1, out.data() + written);
    EXPECT_EQ(written, 992U);
    written += cipher.final(out.data() + written);
    EXPECT_EQ(slice(out, 0, written), encrypted);

    cipher.decryptInit(IV);
    written = cipher.update(encrypted.data(), encrypted.size(), out.data());
    written += cipher.final(out.data() + written);
    EXPECT_EQ(slice(out, 0, written), message);
}

TEST_F(SoftwareKeyCipherTest, StorageFormsFailLikeTheOthers) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    const bytes data(64);
    bytes out(64);
    EXPECT_EQ(cipher.update(data.data(), 15, out.data()), 0U);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.update(data.data(), 16, out.data()); }),
              "failed EVP update, no output with input >= blocksize");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cipher.final(out.data()); }), "failed EVP final operation");
}

TEST_F(SoftwareKeyCipherTest, StorageFormsTakeNothingFromNowhere) {
    SoftwareKeyCipher cipher(cbc(), KEY);
    bytes out(16);
    cipher.encryptInit(IV);
    EXPECT_EQ(cipher.update(nullptr, 0, out.data()), 0U);
    EXPECT_EQ(cipher.final(out.data()), 16U);
    EXPECT_EQ(out, rawEncrypt(KEY, IV, {}));
}

TEST_F(SoftwareKeyCipherTest, IsUsableThroughItsInterface) {
    const std::unique_ptr<ICipherContext> context = std::make_unique<SoftwareKeyCipher>(cbc(), KEY);
    context->encryptInit(IV);
    const bytes updated = context->update(octets(20));
    EXPECT_EQ(updated + context->final(), rawEncrypt(KEY, IV, octets(20)));
}

}  // namespace vorl::test
