#include "vorl/CipherSpec.h"

#include "GroupedDigits.h"
#include "vorl/CipherAlgo.h"
#include "vorl/CipherMode.h"
#include "vorl/PaddingType.h"

#include <tarvik/crypto/ICipherContext.h>

#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;

// A spec that differs from AES_128_CBC_PKCS5 where a test says so.
struct Parts {
    ICipherContext::Spec spec = ICipherContext::SPEC_AES_128_CBC;
    std::shared_ptr<const CipherAlgo> algo = CipherAlgo::AES();
    std::shared_ptr<const CipherMode> mode = CipherMode::CBC();
    std::shared_ptr<const PaddingType> padding = PaddingType::PKCS5Padding();
    unsigned int keySize = 16;
    unsigned int blockSize = 16;
    unsigned int ivSize = 16;
    const EVP_CIPHER* evpCipher = EVP_aes_128_cbc();

    CipherSpec make() const {
        return CipherSpec(spec, algo, mode, padding, keySize, blockSize, ivSize, evpCipher);
    }
};

struct NamedSpec {
    const char* name;
    std::shared_ptr<const CipherSpec> (*get)();
    unsigned int number;
    std::shared_ptr<const CipherAlgo> (*algo)();
    std::shared_ptr<const CipherMode> (*mode)();
    std::shared_ptr<const PaddingType> (*padding)();
    unsigned int keySize;
    unsigned int blockSize;
    unsigned int ivSize;
    const EVP_CIPHER* evpCipher;
    const char* text;
};

const NamedSpec NAMED_SPECS[] = {
    {"Null", CipherSpec::NULL_CIPHER, 0, CipherAlgo::NULL_CIPHER, CipherMode::NONE, PaddingType::NONE, 0, 0,
     0, nullptr, "[CipherSpec:NULL_CIPHER_0_[CipherMode:NONE]_NONE]"},
    {"Ecb", CipherSpec::AES_128_ECB_PKCS5, 1, CipherAlgo::AES, CipherMode::ECB, PaddingType::PKCS5Padding, 16,
     16, 0, EVP_aes_128_ecb(), "[CipherSpec:AES_128_[CipherMode:ECB]_PKCS5Padding]"},
    {"Cbc", CipherSpec::AES_128_CBC_PKCS5, 2, CipherAlgo::AES, CipherMode::CBC, PaddingType::PKCS5Padding, 16,
     16, 16, EVP_aes_128_cbc(), "[CipherSpec:AES_128_[CipherMode:CBC]_PKCS5Padding]"},
};

class NamedCipherSpec : public ::testing::TestWithParam<NamedSpec> {};

}  // namespace

TEST_P(NamedCipherSpec, HasItsPartsAndSizes) {
    const std::shared_ptr<const CipherSpec> spec = GetParam().get();

    EXPECT_EQ(static_cast<unsigned int>(spec->spec), GetParam().number);
    EXPECT_EQ(spec->algo, GetParam().algo());
    EXPECT_EQ(spec->mode, GetParam().mode());
    EXPECT_EQ(spec->padding, GetParam().padding());
    EXPECT_EQ(spec->keySize, GetParam().keySize);
    EXPECT_EQ(spec->blockSize, GetParam().blockSize);
    EXPECT_EQ(spec->ivSize, GetParam().ivSize);
    EXPECT_EQ(spec->evpCipher, GetParam().evpCipher);
}

TEST_P(NamedCipherSpec, PrintsItself) {
    EXPECT_EQ(GetParam().get()->toString(), GetParam().text);
}

TEST_P(NamedCipherSpec, IsMadeOnce) {
    EXPECT_EQ(GetParam().get(), GetParam().get());
}

TEST_P(NamedCipherSpec, EqualsItselfAndNoOther) {
    for (const NamedSpec& other : NAMED_SPECS) {
        const bool same = std::string(other.name) == GetParam().name;
        EXPECT_EQ(*GetParam().get() == *other.get(), same) << other.name;
        EXPECT_EQ(*GetParam().get() != *other.get(), !same) << other.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Named, NamedCipherSpec, ::testing::ValuesIn(NAMED_SPECS),
                         [](const auto& test) { return test.param.name; });

TEST(CipherSpec, KeepsEachArgumentInItsField) {
    const auto algo = std::make_shared<const CipherAlgo>("algo");
    const auto mode = std::make_shared<const CipherMode>("mode");
    const auto padding = std::make_shared<const PaddingType>("padding");

    const CipherSpec spec(static_cast<ICipherContext::Spec>(7), algo, mode, padding, 1, 2, 3,
                          EVP_aes_256_ctr());

    EXPECT_EQ(static_cast<unsigned int>(spec.spec), 7U);
    EXPECT_EQ(spec.algo, algo);
    EXPECT_EQ(spec.mode, mode);
    EXPECT_EQ(spec.padding, padding);
    EXPECT_EQ(spec.keySize, 1U);
    EXPECT_EQ(spec.blockSize, 2U);
    EXPECT_EQ(spec.ivSize, 3U);
    EXPECT_EQ(spec.evpCipher, EVP_aes_256_ctr());
}

TEST(CipherSpec, CarriesAnyIdentifier) {
    Parts parts;
    parts.spec = static_cast<ICipherContext::Spec>(0xffffffffU);
    EXPECT_EQ(static_cast<unsigned int>(parts.make().spec), 0xffffffffU);
}

TEST(CipherSpec, EqualsAnotherObjectOfTheSameParts) {
    EXPECT_TRUE(Parts().make() == *CipherSpec::AES_128_CBC_PKCS5());
    EXPECT_FALSE(Parts().make() != *CipherSpec::AES_128_CBC_PKCS5());
}

TEST(CipherSpec, IdentifierAndOpenSSLCipherAreNotCompared) {
    Parts otherNumber;
    otherNumber.spec = ICipherContext::SPEC_NULL;
    Parts otherCipher;
    otherCipher.evpCipher = EVP_aes_128_ctr();

    EXPECT_TRUE(otherNumber.make() == Parts().make());
    EXPECT_FALSE(otherNumber.make() != Parts().make());
    EXPECT_TRUE(otherCipher.make() == Parts().make());
    EXPECT_FALSE(otherCipher.make() != Parts().make());
}

namespace {

struct Difference {
    const char* name;
    void (*apply)(Parts&);
};

// The parts are compared by identity: an object of the same name is another one.
const Difference DIFFERENCES[] = {
    {"Algo", [](Parts& parts) { parts.algo = std::make_shared<const CipherAlgo>("AES"); }},
    {"Mode", [](Parts& parts) { parts.mode = std::make_shared<const CipherMode>("CBC"); }},
    {"Padding", [](Parts& parts) { parts.padding = std::make_shared<const PaddingType>("PKCS5Padding"); }},
    {"KeySize", [](Parts& parts) { parts.keySize = 17; }},
    {"BlockSize", [](Parts& parts) { parts.blockSize = 15; }},
    {"IvSize", [](Parts& parts) { parts.ivSize = 0; }},
};

class CipherSpecDifference : public ::testing::TestWithParam<Difference> {};

}  // namespace

TEST_P(CipherSpecDifference, MakesSpecsUnequal) {
    Parts parts;
    GetParam().apply(parts);

    EXPECT_FALSE(parts.make() == Parts().make());
    EXPECT_TRUE(parts.make() != Parts().make());
    EXPECT_FALSE(Parts().make() == parts.make());
}

INSTANTIATE_TEST_SUITE_P(OneField, CipherSpecDifference, ::testing::ValuesIn(DIFFERENCES),
                         [](const auto& test) { return test.param.name; });

TEST(CipherSpec, PrintsTheKeySizeInBits) {
    Parts parts;
    parts.keySize = 32;
    EXPECT_EQ(parts.make().toString(), "[CipherSpec:AES_256_[CipherMode:CBC]_PKCS5Padding]");
    parts.keySize = 0x20000000;
    EXPECT_EQ(parts.make().toString(), "[CipherSpec:AES_4294967296_[CipherMode:CBC]_PKCS5Padding]");
}

TEST(CipherSpec, FormatsItselfLineByLine) {
    EXPECT_EQ(CipherSpec::AES_128_CBC_PKCS5()->toFormatString(80, 1, ":", 4),
              "    CipherSpec ([CipherSpec:AES_128_[CipherMode:CBC]_PKCS5Padding]):\n"
              "    Cipher Algo:  AES\n"
              "    Cipher Mode:  [CipherMode:CBC]\n"
              "    Padding:  PKCS5Padding\n"
              "    Key Size:  16\n"
              "    Block Size:  16\n"
              "    IV Size:  16\n");
    EXPECT_EQ(CipherSpec::NULL_CIPHER()->toFormatString(80, 0, ":", 4),
              "CipherSpec ([CipherSpec:NULL_CIPHER_0_[CipherMode:NONE]_NONE]):\n"
              "Cipher Algo:  NULL_CIPHER\n"
              "Cipher Mode:  [CipherMode:NONE]\n"
              "Padding:  NONE\n"
              "Key Size:  0\n"
              "Block Size:  0\n"
              "IV Size:  0\n");
}

TEST(CipherSpec, IndentIsLevelTimesIndentSizeWhateverTheWidthAndSeparator) {
    const std::string lines = CipherSpec::AES_128_ECB_PKCS5()->toFormatString(1, 3, "", 2);

    EXPECT_EQ(lines,
              "      CipherSpec ([CipherSpec:AES_128_[CipherMode:ECB]_PKCS5Padding]):\n"
              "      Cipher Algo:  AES\n"
              "      Cipher Mode:  [CipherMode:ECB]\n"
              "      Padding:  PKCS5Padding\n"
              "      Key Size:  16\n"
              "      Block Size:  16\n"
              "      IV Size:  0\n");
    EXPECT_EQ(CipherSpec::AES_128_ECB_PKCS5()->toFormatString(1000, 3, "separator", 2), lines);
}

TEST(CipherSpec, ShortFormTakesTheIndentSizeOfTheEnvironment) {
    const CipherSpec& spec = *CipherSpec::AES_128_CBC_PKCS5();
    for (const unsigned int level : {0U, 1U, 2U}) {
        EXPECT_EQ(spec.toFormatString(80, level), spec.toFormatString(80, level, ":", 4)) << level;
    }
}

TEST(CipherSpec, TextsDoNotFollowTheGlobalLocale) {
    Parts parts;
    parts.keySize = 16384;
    parts.blockSize = 1234;
    parts.ivSize = 123456;
    const GroupedDigits grouped;

    EXPECT_EQ(parts.make().toString(), "[CipherSpec:AES_131072_[CipherMode:CBC]_PKCS5Padding]");
    EXPECT_EQ(parts.make().toFormatString(80, 0, ":", 4),
              "CipherSpec ([CipherSpec:AES_131072_[CipherMode:CBC]_PKCS5Padding]):\n"
              "Cipher Algo:  AES\n"
              "Cipher Mode:  [CipherMode:CBC]\n"
              "Padding:  PKCS5Padding\n"
              "Key Size:  16384\n"
              "Block Size:  1234\n"
              "IV Size:  123456\n");
}

TEST(CipherSpec, ThreadsThatRaceForTheFirstUseGetTheSameObject) {
    std::vector<std::shared_ptr<const CipherSpec>> seen(8);
    std::vector<std::thread> threads;
    for (auto& spec : seen) {
        threads.emplace_back([&spec] { spec = CipherSpec::AES_128_CBC_PKCS5(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& spec : seen) {
        EXPECT_EQ(spec, CipherSpec::AES_128_CBC_PKCS5());
    }
}

}  // namespace vorl::test
