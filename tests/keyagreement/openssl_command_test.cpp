#include "TempFolder.h"
#include "der_encoder.h"
#include "dh_group.h"
#include "dh_record.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

// The other party is the openssl command.

namespace vorl::test {
namespace {

using ::testing::HasSubstr;

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

class OpensslCommand : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v openssl >/dev/null") != 0) {
            GTEST_SKIP() << "no openssl command";
        }
    }

    // In the folder of the test.
    void openssl(const std::string& arguments) const {
        const std::string command = "cd '" + folder_.path() + "' && openssl " + arguments + " 2>errors";
        ASSERT_EQ(std::system(command.c_str()), 0) << command << "\n" << toText(contentOf("errors"));
    }

    bytes contentOf(const std::string& name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    File fileToWrite(const std::string& name) const {
        return File(std::fopen((folder_ / name).c_str(), "w"), std::fclose);
    }

    void writeGroup(const std::string& name, const DH* group) const {
        ASSERT_EQ(PEM_write_DHparams(fileToWrite(name).get(), group), 1);
    }
    void writePrivateKey(const std::string& name, DH* pair) const {
        ASSERT_EQ(PEM_write_PrivateKey(fileToWrite(name).get(), keyOf(pair).get(), nullptr, nullptr, 0,
                                       nullptr, nullptr),
                  1);
    }
    void writePublicKey(const std::string& name, DH* pair) const {
        ASSERT_EQ(PEM_write_PUBKEY(fileToWrite(name).get(), keyOf(pair).get()), 1);
    }

    std::shared_ptr<DH> privateKeyIn(const std::string& name) const {
        const File file(std::fopen((folder_ / name).c_str(), "r"), std::fclose);
        const Key key(PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
        return std::shared_ptr<DH>(EVP_PKEY_get1_DH(key.get()), DH_free);
    }

    static Key keyOf(DH* pair) {
        Key key(EVP_PKEY_new(), EVP_PKEY_free);
        EVP_PKEY_set1_DH(key.get(), pair);
        return key;
    }

    const TempFolder folder_;
};

// The number in the text that a pair sends.
Number sentNumber(const DiffieHellman& pair) {
    Buffer record(rawUnbase64(pair.getPubKey()));
    record.nextUInt32();
    return numberFrom(record.nextOctetString().toByteArray());
}

bytes textToSend(const BIGNUM* number) {
    return rawBase64(dhRecord(paddedTo(129, bytesOf(number))));
}

TEST_F(OpensslCommand, MakesAGroupThatIsRead) {
    openssl("dhparam -5 -out group.pem 512");
    const std::unique_ptr<DiffieHellmanParams> params = DiffieHellmanParams::load(folder_ / "group.pem");

    openssl("dhparam -in group.pem -outform DER -out group.der");
    EXPECT_EQ(*params, DiffieHellmanParams(contentOf("group.der")));
    Buffer numbers;
    params->encode(numbers);
    const bytes p = numbers.nextOctetString().toByteArray();
    const bytes g = numbers.nextOctetString().toByteArray();
    EXPECT_EQ(p.size(), 64U);
    EXPECT_EQ(contentOf("group.der"), derSequence(derInteger(p) + derInteger(g)));
}

TEST_F(OpensslCommand, AgreesWithAPairOfOurs) {
    writeGroup("group.pem", rawDh(RFC_2409_GROUP).get());
    const std::unique_ptr<DiffieHellman> own =
        DiffieHellman::generate(*DiffieHellmanParams::load(folder_ / "group.pem"));
    const Number ownNumber = sentNumber(*own);
    writePublicKey("own.pub",
                   rawDh(RFC_2409_GROUP.p().get(), RFC_2409_GROUP.g().get(), ownNumber.get()).get());

    openssl("genpkey -paramfile group.pem -out peer.pem");
    openssl("pkeyutl -derive -inkey peer.pem -peerkey own.pub -out secret");
    const std::shared_ptr<DH> peer = privateKeyIn("peer.pem");
    ASSERT_TRUE(peer);

    EXPECT_EQ(own->computeSharedSecret(textToSend(DH_get0_pub_key(peer.get()))),
              secretOf(numberFrom(contentOf("secret")).get()));
}

struct SecretCase {
    const char* name;
    BN_ULONG beyondOwnNumber;
    std::size_t bytesOfSecret;
};

// Found by trying one private number after the other; see DiffieHellman_test.cpp.
const SecretCase SECRETS[] = {{"OfFullSize", 0, 128}, {"ShortByOneByte", 187, 127}};

class OpensslCommandSecret : public OpensslCommand, public ::testing::WithParamInterface<SecretCase> {};

TEST_P(OpensslCommandSecret, IsTheSameWithItsLastByteOverwritten) {
    const Number ownNumber = plus(numberFrom(octets(32)).get(), GetParam().beyondOwnNumber);
    const std::shared_ptr<DH> own = rawPair(RFC_2409_GROUP, ownNumber.get());
    const std::shared_ptr<DH> peer = rawPair(RFC_2409_GROUP, numberFrom(octets(64)).get());
    writePrivateKey("own.pem", own.get());
    writePublicKey("peer.pub", peer.get());
    openssl("pkeyutl -derive -inkey own.pem -peerkey peer.pub -out secret");

    const Number secret = numberFrom(contentOf("secret"));
    ASSERT_EQ(bytesOf(secret).size(), GetParam().bytesOfSecret);
    EXPECT_EQ(DiffieHellman(own).computeSharedSecret(textToSend(DH_get0_pub_key(peer.get()))),
              secretOf(secret.get()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, OpensslCommandSecret, ::testing::ValuesIn(SECRETS),
                         [](const auto& test) { return test.param.name; });

// Ours as PEM, by way of its encoding.
TEST_F(OpensslCommand, ReadsAGroupOfOurs) {
    Buffer numbers;
    DiffieHellmanParams::generate(2, 512)->encode(numbers);
    const Number p = numberFrom(numbers.nextOctetString().toByteArray());
    const Number g = numberFrom(numbers.nextOctetString().toByteArray());
    writeGroup("group.pem", rawDh(p.get(), g.get()).get());

    openssl("dhparam -in group.pem -check -noout >verdict");
    EXPECT_THAT(toText(contentOf("verdict") + contentOf("errors")), HasSubstr("parameters appear to be ok"));
    openssl("genpkey -paramfile group.pem -out peer.pem");
    const std::shared_ptr<DH> peer = privateKeyIn("peer.pem");
    ASSERT_TRUE(peer);
    EXPECT_EQ(BN_cmp(DH_get0_p(peer.get()), p.get()), 0);
    EXPECT_EQ(DiffieHellmanParams(peer), *DiffieHellmanParams::load(folder_ / "group.pem"));
}

}  // namespace
}  // namespace vorl::test
