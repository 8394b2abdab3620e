#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_certs.h"
#include "raw_signature.h"

#include "vorl/OpenSSLException.h"
#include "vorl/OpenSSLPKey.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

// What the library makes of answers that OpenSSL gives it for no input.

namespace {

thread_local const char* faultyCall = "";
thread_local int faultyResult = 0;

bool isFaulty(const char* call) {
    return std::strcmp(faultyCall, call) == 0;
}

// What a call leaves in the error queue, whether it succeeds or not.
int withAnEntry(int result) {
    ERR_put_error(ERR_LIB_USER, 0, 43, "openssl", 1);
    return result;
}

// OpenSSL's own function, of the same type as the one here that takes its place.
template <typename Function>
Function* own(Function* /*same*/, const char* name) {
    void* const address = dlsym(RTLD_NEXT, name);
    Function* function = nullptr;
    std::memcpy(&function, &address, sizeof(function));
    return function;
}

}  // namespace

// Each takes the place of OpenSSL's function for all but OpenSSL itself.

extern "C" {

RSA* EVP_PKEY_get1_RSA(EVP_PKEY* pkey) {
    return isFaulty(__func__) ? nullptr : own(EVP_PKEY_get1_RSA, __func__)(pkey);
}

int EVP_PKEY_set1_RSA(EVP_PKEY* pkey, RSA* rsa) {
    return isFaulty(__func__) ? faultyResult : own(EVP_PKEY_set1_RSA, __func__)(pkey, rsa);
}

int EVP_PKEY_cmp(const EVP_PKEY* left, const EVP_PKEY* right) {
    return isFaulty(__func__) ? withAnEntry(faultyResult) : own(EVP_PKEY_cmp, __func__)(left, right);
}

int RSA_print(BIO* out, const RSA* rsa, int indent) {
    return isFaulty(__func__) ? faultyResult : own(RSA_print, __func__)(out, rsa, indent);
}

int BIO_read(BIO* in, void* data, int size) {
    return isFaulty(__func__) ? faultyResult : own(BIO_read, __func__)(in, data, size);
}

int RSA_sign(int type, const unsigned char* digest, unsigned int digestSize, unsigned char* val,
             unsigned int* valSize, RSA* rsa) {
    const int result = own(RSA_sign, __func__)(type, digest, digestSize, val, valSize, rsa);
    if (!isFaulty(__func__)) {
        return result;
    }
    *valSize = 5;
    return faultyResult;
}

int RSA_verify(int type, const unsigned char* digest, unsigned int digestSize, const unsigned char* val,
               unsigned int valSize, RSA* rsa) {
    return isFaulty(__func__) ? faultyResult
                              : own(RSA_verify, __func__)(type, digest, digestSize, val, valSize, rsa);
}

// One byte less than announced is written.
int i2d_X509(const X509* x509, unsigned char** out) {
    const int size = own(i2d_X509, __func__)(x509, out);
    return isFaulty(__func__) && out != nullptr ? size - 1 : size;
}

X509_NAME_ENTRY* X509_NAME_get_entry(const X509_NAME* name, int at) {
    return isFaulty(__func__) ? nullptr : own(X509_NAME_get_entry, __func__)(name, at);
}

ASN1_STRING* X509_NAME_ENTRY_get_data(const X509_NAME_ENTRY* entry) {
    return isFaulty(__func__) ? nullptr : own(X509_NAME_ENTRY_get_data, __func__)(entry);
}

int ASN1_STRING_print_ex(BIO* out, const ASN1_STRING* text, unsigned long flags) {
    return isFaulty(__func__) ? faultyResult : own(ASN1_STRING_print_ex, __func__)(out, text, flags);
}

const ASN1_TIME* X509_get0_notBefore(const X509* x509) {
    return isFaulty(__func__) ? nullptr : own(X509_get0_notBefore, __func__)(x509);
}

const ASN1_TIME* X509_get0_notAfter(const X509* x509) {
    return isFaulty(__func__) ? nullptr : own(X509_get0_notAfter, __func__)(x509);
}

int X509_print_ex(BIO* out, X509* x509, unsigned long nameFlags, unsigned long certFlags) {
    if (isFaulty(__func__)) {
        return faultyResult;
    }
    const int result = own(X509_print_ex, __func__)(out, x509, nameFlags, certFlags);
    return isFaulty("X509_print_ex, in part") ? withAnEntry(result) : result;
}

int ASN1_TIME_print(BIO* out, const ASN1_TIME* time) {
    const int result = own(ASN1_TIME_print, __func__)(out, time);
    return isFaulty(__func__) ? withAnEntry(faultyResult) : result;
}

}  // extern "C"

namespace vorl::test {
namespace {

// While it lives, the call gives this thread null, or the result.
class Faulty {
public:
    explicit Faulty(const char* call, int result = 0) {
        faultyCall = call;
        faultyResult = result;
    }
    ~Faulty() { faultyCall = ""; }
    Faulty(const Faulty&) = delete;
    Faulty& operator=(const Faulty&) = delete;
};

template <typename Action>
std::string messageWith(const char* call, int result, Action&& action) {
    const Faulty fault(call, result);
    return messageOf<OpenSSLException>(action);
}

TEST(KeyOfFaultyOpenSSL, IsNotMade) {
    const RawKey raw = rsa1024();

    EXPECT_EQ(messageWith("EVP_PKEY_get1_RSA", 0, [&] { PubKey key(raw.get()); }),
              "EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::duplicate()");
    EXPECT_EQ(messageWith("EVP_PKEY_set1_RSA", 0, [&] { PubKey key(raw.get()); }),
              "EVP_PKEY_set1_RSA(pkey_new.get(), rsa.get()) in OpenSSLPKey::duplicate()");
}

TEST(KeyOfFaultyOpenSSL, StaysWhatItWasWhereItCannotBeAssigned) {
    PrivKey key(rsa1024().get());
    const PrivKey other(otherRsa1024().get());

    EXPECT_EQ(messageWith("EVP_PKEY_set1_RSA", 0, [&] { key = other; }),
              "EVP_PKEY_set1_RSA(pkey_new.get(), rsa.get()) in OpenSSLPKey::duplicate()");
    EXPECT_EQ(key.toRSA(), rawRsa(rsa1024()));
}

TEST(KeyOfFaultyOpenSSL, HasNoRsa) {
    const PubKey key(rsa1024().get());

    EXPECT_EQ(messageWith("EVP_PKEY_get1_RSA", 0, [&] { key.toRSA(); }),
              "EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::toRSA()");
}

TEST(KeyOfFaultyOpenSSL, IsNotPrinted) {
    const RawKey raw = rsa1024();
    const auto print = [&] { OpenSSLPKey::print(raw.get(), 0); };

    EXPECT_EQ(messageWith("EVP_PKEY_get1_RSA", 0, print), "EVP_PKEY_get1_RSA() in OpenSSLPKey::print(pkey)");
    EXPECT_EQ(messageWith("RSA_print", 0, print), "RSA_print() in OpenSSLPKey::print(pkey)");
    EXPECT_EQ(messageWith("BIO_read", 0, print), "BIO_read() in OpenSSLPKey::print(pkey)");
}

TEST(KeyOfFaultyOpenSSL, IsEqualOnlyWhereOpenSSLAnswersOne) {
    const PubKey key(rsa1024().get());
    const PubKey same(rsa1024().get());

    for (const int answer : {0, -1, -2, 2}) {
        const Faulty fault("EVP_PKEY_cmp", answer);
        EXPECT_FALSE(key == same) << answer;
        EXPECT_TRUE(key != same) << answer;
        // Nobody is asked.
        EXPECT_TRUE(key == key);
    }
    const Faulty fault("EVP_PKEY_cmp", 1);
    EXPECT_TRUE(key == PubKey(otherRsa1024().get()));
}

TEST(KeyOfFaultyOpenSSL, IsComparedWithoutATraceInTheErrorQueue) {
    const PubKey key(rsa1024().get());
    const PubKey other(otherRsa1024().get());
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();
    {
        const Faulty fault("EVP_PKEY_cmp", -2);
        EXPECT_FALSE(key == other);
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST(SignatureOfFaultyOpenSSL, IsAsLongAsOpenSSLSays) {
    const auto key = std::make_shared<const PrivKey>(rsa1024().get());
    const Faulty fault("RSA_sign", 1);

    EXPECT_EQ(PKSignatureProcessor::sign(key, octets(10))->val(),
              slice(rawDigestSign(rsa1024(), EVP_sha1(), octets(10)), 0, 5));
}

TEST(SignatureOfFaultyOpenSSL, IsNotMade) {
    const auto key = std::make_shared<const PrivKey>(rsa1024().get());
    const std::shared_ptr<PKSignatureProcessor> processor = PKSignatureProcessor::create();
    processor->initSign(key);

    EXPECT_EQ(messageWith("RSA_sign", 0, [&] { PKSignatureProcessor::sign(key, octets(10)); }),
              "RSA_sign() in PKSignatureProcessor::sign()");
    EXPECT_EQ(messageWith("EVP_PKEY_get1_RSA", 0, [&] { processor->sign(); }),
              "EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::toRSA()");
}

TEST(SignatureOfFaultyOpenSSL, MatchesOnlyWhereOpenSSLAnswersOne) {
    const auto key = std::make_shared<const PubKey>(rsa1024().get());
    const std::shared_ptr<const PKSignature> signature =
        PKSignature01::create(rawDigestSign(rsa1024(), EVP_sha1(), octets(10)));
    ASSERT_TRUE(PKSignatureProcessor::verify(signature, key, octets(10)));

    for (const int answer : {0, -1, 2}) {
        const Faulty fault("RSA_verify", answer);
        EXPECT_FALSE(PKSignatureProcessor::verify(signature, key, octets(10))) << answer;
    }
}

TEST(CertOfFaultyOpenSSL, IsNotEncodedInAnotherLengthThanAnnounced) {
    const RawCert raw = rawCert(CertForm());
    const std::size_t size = rawDer(raw).size();
    const X509Cert cert(raw);

    EXPECT_EQ(messageWith("i2d_X509", 0, [&] { cert.encode(); }),
              "mismatch of encode length returned by i2d_X509; expected: " + std::to_string(size) +
                  ", actual: " + std::to_string(size - 1));
}

TEST(CertOfFaultyOpenSSL, HasNoCommonName) {
    const X509Cert cert(rawCert(CertForm()));
    const auto read = [&] { cert.getCommonName(); };

    EXPECT_EQ(messageWith("X509_NAME_get_entry", 0, read), "X509_NAME_get_entry(sn, cn_idx)");
    EXPECT_EQ(messageWith("X509_NAME_ENTRY_get_data", 0, read), "X509_NAME_ENTRY_get_data(cn_entry)");
    // A text that was announced but is not there.
    EXPECT_EQ(messageWith("ASN1_STRING_print_ex", 1, read), "BIO_get_mem_data(bio.get(), &data)");
}

TEST(CertOfFaultyOpenSSL, CountsAsOneWithAnEmptyCommonNameWhereThatIsNotPrinted) {
    const X509Cert cert(rawCert(CertForm()));

    for (const int result : {0, -1}) {
        const Faulty fault("ASN1_STRING_print_ex", result);
        EXPECT_EQ(messageOf<VORLException>([&] { cert.getCommonName(); }),
                  "Certificate SubjectName has an empty CommonName:\n" + cert.toString());
    }
}

TEST(CertOfFaultyOpenSSL, HasNoPeriod) {
    const X509Cert cert(rawCert(CertForm()));
    const auto ask = [&] { cert.isTimeValid(); };

    EXPECT_EQ(messageWith("X509_get0_notBefore", 0, ask), "X509_get_notBefore(x509_)");
    EXPECT_EQ(messageWith("X509_get0_notAfter", 0, ask), "X509_get_notAfter(x509_)");
}

// A bound that is missing shows before the other one is looked at.
TEST(CertOfFaultyOpenSSL, HasNoPeriodEvenWhereItHasNotBegun) {
    CertForm form;
    form.notBefore = hoursFromNow(1);
    const X509Cert cert(rawCert(form));

    EXPECT_EQ(messageWith("X509_get0_notAfter", 0, [&] { cert.isTimeValid(); }), "X509_get_notAfter(x509_)");
}

// The texts that tell why are nobody's: whether they could be made does not matter.
TEST(CertOfFaultyOpenSSL, IsOutsideItsPeriodWithoutAText) {
    CertForm notYet;
    notYet.notBefore = hoursFromNow(1);
    CertForm expired;
    expired.notAfter = hoursFromNow(-1);
    const X509Cert certs[] = {X509Cert(rawCert(notYet)), X509Cert(rawCert(expired))};

    for (const X509Cert& cert : certs) {
        const Faulty fault("X509_print_ex", 0);
        EXPECT_FALSE(cert.isTimeValid());
    }
}

TEST(CertOfFaultyOpenSSL, IsNotPrinted) {
    const X509Cert cert(rawCert(CertForm()));
    const auto print = [&] { cert.toString(); };

    EXPECT_EQ(messageWith("X509_print_ex", 0, print), "X509_print_ex()");
    EXPECT_EQ(messageWith("X509_print_ex", 1, print), "BIO_get_mem_data(bio.get(), &certdata)");
}

TEST(CertOfFaultyOpenSSL, HasNoTextOfATime) {
    const RawTime time = hoursFromNow(0);

    EXPECT_EQ(messageWith("BIO_read", 0, [&] { X509Cert::print(time.get()); }),
              "BIO_read() in X509Cert::print(ASN1_TIME*)");
}

TEST(CertOfFaultyOpenSSL, IsPrintedWithoutATraceInTheErrorQueue) {
    const X509Cert cert(rawCert(CertForm()));
    const std::string text = cert.toString();
    const RawTime time = utcTime("261121120000Z");
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();
    {
        const Faulty fault("X509_print_ex, in part");
        EXPECT_EQ(cert.toString(), text);
    }
    {
        const Faulty fault("ASN1_TIME_print");
        EXPECT_EQ(X509Cert::print(time.get()), "Nov 21 12:00:00 2026 GMT");
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace
}  // namespace vorl::test
