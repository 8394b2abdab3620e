#include "TempFolder.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_pem.h"
#include "signature_record.h"

#include "vorl/PKSignature.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/X509Cert.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

// The service's side is the openssl command.

namespace vorl::test {
namespace {

class OpensslSignature : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v openssl >/dev/null") != 0) {
            GTEST_SKIP() << "no openssl command";
        }
        savedAs(folder_ / "priv.pem", privatePem(rsa1024()));
        savedAs(folder_ / "pub.pem", publicPem(rsa1024()));
        savedAs(folder_ / "data", toText(DATA));
    }

    int statusOf(const std::string& arguments) const {
        const std::string command =
            "cd '" + folder_.path() + "' && openssl " + arguments + " </dev/null >output 2>errors";
        return std::system(command.c_str());
    }

    // In the folder of the test.
    void openssl(const std::string& arguments) const {
        ASSERT_EQ(statusOf(arguments), 0) << arguments << "\n" << toText(contentOf("errors"));
    }

    bytes contentOf(const std::string& name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    std::shared_ptr<const PKSignature> signedByTheLibrary() const {
        return PKSignatureProcessor::sign(PrivKey::loadFromPEMFile(folder_ / "priv.pem"), DATA);
    }

    bool isVerified(const bytes& val, const bytes& data) const {
        return PKSignatureProcessor::verify(PKSignature01::create(val),
                                            PubKey::loadFromPEMFile(folder_ / "pub.pem"), data);
    }

    static inline const bytes DATA = octets(10000);

    const TempFolder folder_;
};

TEST_F(OpensslSignature, OfTheLibraryIsVerifiedByTheCommand) {
    savedAs(folder_ / "sig", toText(signedByTheLibrary()->val()));

    openssl("dgst -sha1 -verify pub.pem -signature sig data");
    EXPECT_EQ(toText(contentOf("output")), "Verified OK\n");
}

TEST_F(OpensslSignature, OfTheLibraryIsRefusedByTheCommandForOtherData) {
    savedAs(folder_ / "sig", toText(signedByTheLibrary()->val()));
    savedAs(folder_ / "data", "other data");

    EXPECT_NE(statusOf("dgst -sha1 -verify pub.pem -signature sig data"), 0);
}

TEST_F(OpensslSignature, OfTheCommandIsVerifiedByTheLibrary) {
    openssl("dgst -sha1 -sign priv.pem -out sig data");
    const bytes val = contentOf("sig");

    EXPECT_EQ(val.size(), 128U);
    EXPECT_TRUE(isVerified(val, DATA));
    EXPECT_FALSE(isVerified(val, octets(9999)));
    EXPECT_EQ(signedByTheLibrary()->val(), val);
}

TEST_F(OpensslSignature, IsMadeAndVerifiedWithKeysOfTheCommand) {
    openssl("genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out priv.pem");
    openssl("pkey -in priv.pem -pubout -out pub.pem");
    openssl("dgst -sha1 -sign priv.pem -out sig data");

    EXPECT_EQ(signedByTheLibrary()->val(), contentOf("sig"));
    EXPECT_TRUE(isVerified(contentOf("sig"), DATA));
}

TEST_F(OpensslSignature, TravelsAsABase64RecordThatTheCommandDecodes) {
    savedAs(folder_ / "record.b64", toText(signedByTheLibrary()->encodeB64()));
    openssl("base64 -d -A -in record.b64 -out record");
    openssl("dgst -sha1 -sign priv.pem -out sig data");

    EXPECT_EQ(contentOf("record"), signatureRecord(contentOf("sig")));
    EXPECT_EQ(PKSignature::decode(contentOf("record"))->val(), contentOf("sig"));
}

TEST_F(OpensslSignature, IsVerifiedByACertificateOfTheCommand) {
    openssl("req -x509 -new -key priv.pem -sha256 -days 2 -utf8 -subj '/O=Org/CN=caf\xc3\xa9' -out cert.pem");
    openssl("x509 -in cert.pem -outform DER -out cert.der");
    openssl("dgst -sha1 -sign priv.pem -out sig data");
    const std::shared_ptr<const X509Cert> cert = X509Cert::loadFromPEMFile(folder_ / "cert.pem");

    EXPECT_EQ(cert->encode(), contentOf("cert.der"));
    EXPECT_EQ(toText(cert->getCommonName()), "caf\\C3\\A9");
    EXPECT_TRUE(cert->isTimeValid());
    EXPECT_EQ(*cert->getPubKey(), *PubKey::loadFromPEMFile(folder_ / "pub.pem"));
    const std::shared_ptr<PKSignatureProcessor> processor = PKSignatureProcessor::create();
    processor->initVerify(cert);
    processor->update(DATA);
    EXPECT_TRUE(processor->verify(PKSignature01::create(contentOf("sig"))));
}

TEST_F(OpensslSignature, IsMadeWithTheOlderFormOfAPrivateKey) {
    openssl("rsa -in priv.pem -traditional -out old.pem");
    ASSERT_NE(toText(contentOf("old.pem")).find("BEGIN RSA PRIVATE KEY"), std::string::npos);

    EXPECT_EQ(*PrivKey::loadFromPEMFile(folder_ / "old.pem"),
              *PrivKey::loadFromPEMFile(folder_ / "priv.pem"));
    EXPECT_EQ(PKSignatureProcessor::sign(PrivKey::loadFromPEMFile(folder_ / "old.pem"), DATA)->val(),
              signedByTheLibrary()->val());
}

}  // namespace
}  // namespace vorl::test
