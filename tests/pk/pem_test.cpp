#include "TempFolder.h"
#include "error_queue.h"
#include "messageOf.h"
#include "raw_pem.h"

#include "vorl/OpenSSLException.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

// What the two key classes and the certificate have in common: a PEM text in, an object or a refusal out.

namespace vorl::test {
namespace {

constexpr const char* NO_KEY_FOUND = "PEM_read_bio_PUBKEY() in PubKey::loadFromPEMBIO()";

std::string publicBlock(const RawKey& key) {
    return publicPem(key);
}
std::string privateBlock(const RawKey& key) {
    return privatePem(key);
}
std::string traditionalBlock(const RawKey& key) {
    return traditionalPem(key);
}
std::string certificateBlock(const RawKey& key) {
    CertForm form;
    form.key = key;
    return certPem(rawCert(form));
}

struct PublicKind {
    using Object = PubKey;
    static constexpr const char* NAME = "PubKey";
    static constexpr const char* REFUSAL = NO_KEY_FOUND;
    // The key classes do not look whether the file could be opened: it shows as the failure to read.
    static constexpr const char* UNOPENED = NO_KEY_FOUND;
    static constexpr auto BLOCK = publicBlock;
    static bool isOf(const Object& object, const RawKey& key) { return object == PubKey(key.get()); }
    static std::vector<std::string> otherKinds() {
        return {privatePem(rsa1024()), traditionalPem(rsa1024()), certificateBlock(rsa1024())};
    }
    static std::vector<std::string> encrypted() {
        return {encryptedPem(derOfPublicKey, PEM_STRING_PUBLIC, rsa1024().get())};
    }
};

struct PrivateKind {
    using Object = PrivKey;
    static constexpr const char* NAME = "PrivKey";
    static constexpr const char* REFUSAL = NO_KEY_FOUND;
    static constexpr const char* UNOPENED = NO_KEY_FOUND;
    static constexpr auto BLOCK = privateBlock;
    // The private half is there too: it prints the same.
    static bool isOf(const Object& object, const RawKey& key) {
        return object == PrivKey(key.get()) &&
               PrivKey::print(object.getEVP_PKEY(), 0) == PrivKey::print(key.get(), 0);
    }
    static std::vector<std::string> otherKinds() {
        return {publicPem(rsa1024()), certificateBlock(rsa1024())};
    }
    static std::vector<std::string> encrypted() {
        return {privatePem(rsa1024(), EVP_aes_128_cbc(), PASSWORD),
                traditionalPem(rsa1024(), EVP_aes_128_cbc(), PASSWORD)};
    }
};

struct TraditionalKind : PrivateKind {
    static constexpr const char* NAME = "PrivKeyTraditional";
    static constexpr auto BLOCK = traditionalBlock;
};

struct CertificateKind {
    using Object = X509Cert;
    static constexpr const char* NAME = "X509Cert";
    static constexpr const char* REFUSAL = "PEM_read_bio_X509()";
    static constexpr const char* UNOPENED = "BIO_new_file()";
    static constexpr auto BLOCK = certificateBlock;
    static bool isOf(const Object& object, const RawKey& key) {
        return *object.getPubKey() == PubKey(key.get());
    }
    static std::vector<std::string> otherKinds() {
        return {publicPem(rsa1024()), privatePem(rsa1024()), traditionalPem(rsa1024())};
    }
    static std::vector<std::string> encrypted() {
        return {encryptedPem(derOfCertificate, PEM_STRING_X509, rawCert(CertForm()).get())};
    }
};

struct Refusal {
    std::string message;
    std::string stack;
};

template <typename Action>
Refusal refusalOf(Action&& action) {
    try {
        action();
    } catch (const OpenSSLException& e) {
        return {e.what(), e.errorStack()};
    } catch (const std::exception& e) {
        return {std::string("<another exception: ") + e.what() + ">", ""};
    }
    return {"<no exception>", ""};
}

template <typename Kind>
class Pem : public ::testing::Test {
protected:
    using Object = typename Kind::Object;

    void SetUp() override { takeErrorQueue(); }

    // OpenSSL has something to say about every one of these, and it all goes into the exception.
    template <typename Action>
    static void expectRefused(const std::string& message, Action&& action) {
        const Refusal refusal = refusalOf(action);
        EXPECT_EQ(refusal.message, message);
        EXPECT_NE(refusal.stack, "");
        EXPECT_EQ(takeErrorQueue(), ErrorCodes{});
    }

    static void expectRefused(const std::string& text) {
        SCOPED_TRACE(text);
        expectRefused(Kind::REFUSAL, [&] { Object::loadFromPEMStr(text); });
    }
};

using Kinds = ::testing::Types<PublicKind, PrivateKind, TraditionalKind, CertificateKind>;

struct KindNames {
    template <typename Kind>
    static std::string GetName(int) {
        return Kind::NAME;
    }
};

TYPED_TEST_SUITE(Pem, Kinds, KindNames);

TYPED_TEST(Pem, IsLoadedFromAString) {
    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMStr(TypeParam::BLOCK(rsa1024())), rsa1024()));
    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMStr(TypeParam::BLOCK(rsa2048())), rsa2048()));
}

TYPED_TEST(Pem, IsLoadedFromAFile) {
    const TempFolder folder;
    const std::string path = savedAs(folder / "in.pem", TypeParam::BLOCK(rsa1024()));

    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMFile(path), rsa1024()));
}

TYPED_TEST(Pem, IsLoadedFromABioThatStaysTheCallers) {
    const RawBio bio = bioWith(TypeParam::BLOCK(rsa1024()));

    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMBIO(bio), rsa1024()));
    EXPECT_EQ(bio.use_count(), 1);
}

TYPED_TEST(Pem, OutlivesTheTextItCameFrom) {
    auto text = std::make_unique<std::string>(TypeParam::BLOCK(rsa1024()));
    const auto object = TypeParam::Object::loadFromPEMStr(*text);
    text->assign(text->size(), 'x');
    text.reset();

    EXPECT_TRUE(TypeParam::isOf(*object, rsa1024()));
}

TYPED_TEST(Pem, LoadingLeavesTheErrorQueueAsItWas) {
    const unsigned long left = leaveApplicationError();

    TypeParam::Object::loadFromPEMStr(TypeParam::BLOCK(rsa1024()));
    TypeParam::Object::loadFromPEMStr("text before the block\n" + TypeParam::BLOCK(rsa1024()));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TYPED_TEST(Pem, TextAroundTheBlockIsSkipped) {
    const std::string block = TypeParam::BLOCK(rsa1024());

    for (const std::string& text :
         {"Bag Attributes\n    friendlyName: key\n\n" + block, block + "text behind it\n", "\r\n\r\n" + block,
          std::string("a\0b\n", 4) + block}) {
        EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMStr(text), rsa1024()));
    }
}

TYPED_TEST(Pem, LinesMayEndAsOnOtherSystems) {
    std::string block;
    for (const char c : TypeParam::BLOCK(rsa1024())) {
        block += c == '\n' ? "\r\n" : std::string(1, c);
    }
    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMStr(block), rsa1024()));
}

TYPED_TEST(Pem, BlocksOfOneBioComeOneAfterTheOther) {
    const RawBio bio =
        bioWith(TypeParam::BLOCK(rsa1024()) + "and\n" + TypeParam::BLOCK(rsa2048()) + "no more\n");

    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMBIO(bio), rsa1024()));
    EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMBIO(bio), rsa2048()));
    this->expectRefused(TypeParam::REFUSAL, [&] { TypeParam::Object::loadFromPEMBIO(bio); });
}

TYPED_TEST(Pem, BlocksOfOtherKindsAreSkipped) {
    for (const std::string& other : TypeParam::otherKinds()) {
        EXPECT_TRUE(TypeParam::isOf(*TypeParam::Object::loadFromPEMStr(other + TypeParam::BLOCK(rsa2048())),
                                    rsa2048()));
    }
}

TYPED_TEST(Pem, BlockOfAnotherKindAloneIsRefused) {
    for (const std::string& other : TypeParam::otherKinds()) {
        this->expectRefused(other);
    }
}

TYPED_TEST(Pem, TextWithoutABlockIsRefused) {
    this->expectRefused("");
    this->expectRefused("junk");
    this->expectRefused("junk\nand more\n");
    this->expectRefused(std::string(1000, '\0'));
    this->expectRefused(std::string(100000, 'A'));
}

TYPED_TEST(Pem, DamagedBlockIsRefused) {
    const std::string block = TypeParam::BLOCK(rsa1024());
    const std::size_t begin = block.find('\n') + 1;
    const std::size_t end = block.find("-----END");

    this->expectRefused(block.substr(0, begin));
    this->expectRefused(block.substr(0, end));
    this->expectRefused(block.substr(0, block.size() / 2));
    this->expectRefused(block.substr(0, begin) + "%%%%\n" + block.substr(end));
    this->expectRefused(block.substr(0, begin) + "AAAA\n" + block.substr(end));
    this->expectRefused(block.substr(0, begin) + std::string(4, '\0') + block.substr(begin));
}

// OpenSSL itself does not say why it refuses such a certificate.
TYPED_TEST(Pem, EmptyBlockIsRefused) {
    const std::string block = TypeParam::BLOCK(rsa1024());
    const std::string empty = block.substr(0, block.find('\n') + 1) + block.substr(block.find("-----END"));

    for (const std::string& text : {empty, std::string("-----BEGIN -----\n-----END -----\n")}) {
        EXPECT_EQ(messageOf<OpenSSLException>([&] { TypeParam::Object::loadFromPEMStr(text); }),
                  TypeParam::REFUSAL);
    }
}

TYPED_TEST(Pem, BlockThatEndsAsAnotherKindIsRefused) {
    std::string block = TypeParam::BLOCK(rsa1024());
    block.replace(block.find("-----END"), std::string::npos, "-----END SOMETHING-----\n");

    this->expectRefused(block);
}

TYPED_TEST(Pem, NoBioIsRefused) {
    EXPECT_EQ(messageOf<OpenSSLException>([] { TypeParam::Object::loadFromPEMBIO(nullptr); }),
              TypeParam::REFUSAL);
}

TYPED_TEST(Pem, EncryptedBlockIsRefused) {
    for (const std::string& block : TypeParam::encrypted()) {
        ASSERT_NE(block.find("ENCRYPTED"), std::string::npos);
        this->expectRefused(block);
    }
}

TYPED_TEST(Pem, FileThatIsNotThereIsRefused) {
    const TempFolder folder;

    for (const std::string& path : {folder / "missing.pem", folder / "missing/in.pem", std::string()}) {
        SCOPED_TRACE(path);
        this->expectRefused(TypeParam::UNOPENED, [&] { TypeParam::Object::loadFromPEMFile(path); });
    }
    EXPECT_NE(refusalOf([&] {
                  TypeParam::Object::loadFromPEMFile(folder / "missing.pem");
              }).stack.find("missing.pem"),
              std::string::npos);
}

// A folder can be opened but not be read.
TYPED_TEST(Pem, FolderIsRefused) {
    const TempFolder folder;

    this->expectRefused(TypeParam::REFUSAL, [&] { TypeParam::Object::loadFromPEMFile(folder.path()); });
}

TYPED_TEST(Pem, FileWithoutABlockIsRefused) {
    const TempFolder folder;

    for (const std::string& text : {std::string(), std::string("junk\n"), std::string("\0\0\0", 3)}) {
        const std::string path = savedAs(folder / "in.pem", text);
        this->expectRefused(TypeParam::REFUSAL, [&] { TypeParam::Object::loadFromPEMFile(path); });
    }
}

// Keys of other algorithms

struct PemTypeCase {
    const char* name;
    const RawKey& (*key)();
    const char* message;
};

const PemTypeCase OTHER_PEM_TYPES[] = {
    {"Dsa", dsa, "Unknown EVP_PKEY type value: 116"},
    {"Ec", ec, "Unknown EVP_PKEY type value: 408"},
    {"RsaPss", rsaPss, "Unknown EVP_PKEY type value: 912"},
    {"Ed25519", ed25519, "Unknown EVP_PKEY type value: 1087"},
};

class PemOfAnotherAlgorithm : public ::testing::TestWithParam<PemTypeCase> {};

TEST_P(PemOfAnotherAlgorithm, IsRefusedByTheKeyThatItWouldMake) {
    const RawKey& key = GetParam().key();
    const std::string message = GetParam().message;
    const TempFolder folder;
    const std::string publicPath = savedAs(folder / "pub.pem", publicPem(key));
    const std::string privatePath = savedAs(folder / "priv.pem", privatePem(key));

    EXPECT_EQ(messageOf<VORLException>([&] { PubKey::loadFromPEMStr(publicPem(key)); }), message);
    EXPECT_EQ(messageOf<VORLException>([&] { PubKey::loadFromPEMFile(publicPath); }), message);
    EXPECT_EQ(messageOf<VORLException>([&] { PubKey::loadFromPEMBIO(bioWith(publicPem(key))); }), message);
    EXPECT_EQ(messageOf<VORLException>([&] { PrivKey::loadFromPEMStr(privatePem(key)); }), message);
    EXPECT_EQ(messageOf<VORLException>([&] { PrivKey::loadFromPEMFile(privatePath); }), message);
    EXPECT_EQ(messageOf<VORLException>([&] { PrivKey::loadFromPEMBIO(bioWith(privatePem(key))); }), message);
}

INSTANTIATE_TEST_SUITE_P(Types, PemOfAnotherAlgorithm, ::testing::ValuesIn(OTHER_PEM_TYPES),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace vorl::test
