#include "vorl/X509Cert.h"

#include "error_queue.h"
#include "isCaughtBy.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_certs.h"

#include "vorl/OpenSSLException.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Loading from PEM: pem_test.cpp.

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<X509Cert>);

std::string rawDescription(const RawCert& cert) {
    return rawText([&](BIO* bio) { return X509_print_ex(bio, cert.get(), 0, 0); });
}

// The object inside

TEST(X509Cert, SharesTheCertificateItWasMadeFrom) {
    const RawCert raw = rawCert(CertForm());
    const X509Cert cert(raw);

    EXPECT_EQ(cert.getX509(), raw.get());
    EXPECT_EQ(raw.use_count(), 2);
}

TEST(X509Cert, CopiesShareItUntilTheLastIsGone) {
    RawCert raw = rawCert(CertForm());
    const bytes der = rawDer(raw);
    const std::weak_ptr<X509> watch = raw;
    auto first = std::make_unique<X509Cert>(std::move(raw));
    auto copy = std::make_unique<X509Cert>(*first);
    X509Cert assigned(rawCert(CertForm()));
    assigned = *copy;

    EXPECT_EQ(copy->getX509(), first->getX509());
    EXPECT_EQ(assigned.getX509(), first->getX509());
    first.reset();
    copy.reset();
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(assigned.encode(), der);
    assigned = X509Cert(rawCert(CertForm()));
    EXPECT_TRUE(watch.expired());
}

// DER

TEST(X509CertDer, IsWhatOpenSSLWrites) {
    for (const RawKey& key : {rsa1024(), rsa2048(), dsa(), ec(), ed25519(), rsaPss()}) {
        CertForm form;
        form.key = key;
        const RawCert raw = rawCert(form);
        EXPECT_EQ(X509Cert(raw).encode(), rawDer(raw));
    }
}

TEST(X509CertDer, IsReadAndWrittenAgainAsItWas) {
    const bytes der = rawDer(rawCert(CertForm()));
    const std::shared_ptr<X509Cert> cert = X509Cert::decode(der);

    EXPECT_EQ(cert->encode(), der);
    EXPECT_EQ(cert->encode(), der);
    EXPECT_EQ(cert->getCommonName(), fromText("device-01"));
}

TEST(X509CertDer, OutlivesTheBytesItCameFrom) {
    const bytes der = rawDer(rawCert(CertForm()));
    auto given = std::make_unique<bytes>(der);
    const std::shared_ptr<X509Cert> cert = X509Cert::decode(*given);
    given->assign(given->size(), 0);
    given.reset();

    EXPECT_EQ(cert->encode(), der);
}

TEST(X509CertDer, BytesBehindItAreNotLookedAt) {
    const bytes der = rawDer(rawCert(CertForm()));

    EXPECT_EQ(X509Cert::decode(der + bytes{0x00})->encode(), der);
    EXPECT_EQ(X509Cert::decode(der + octets(1000))->encode(), der);
}

TEST(X509CertDer, CutShortAnywhereIsRefused) {
    const bytes der = rawDer(rawCert(CertForm()));

    for (std::size_t size = 0; size < der.size(); ++size) {
        EXPECT_EQ(messageOf<OpenSSLException>([&] { X509Cert::decode(slice(der, 0, size)); }), "d2i_X509()")
            << size;
    }
}

TEST(X509CertDer, RefusalCarriesWhatOpenSSLSays) {
    takeErrorQueue();
    try {
        X509Cert::decode(octets(100));
        FAIL() << "accepted";
    } catch (const OpenSSLException& e) {
        EXPECT_STREQ(e.what(), "d2i_X509()");
        EXPECT_NE(e.errorStack().find("asn1 encoding routines"), std::string::npos);
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{});
}

TEST(X509CertDer, OfSomethingElseIsRefused) {
    for (const bytes& junk : {bytes(), bytes{0x00}, bytes{0x30}, bytes{0x30, 0x00}, bytes(1000, 0xff),
                              fromText(certPem(rawCert(CertForm())))}) {
        EXPECT_EQ(messageOf<OpenSSLException>([&] { X509Cert::decode(junk); }), "d2i_X509()");
    }
}

TEST(X509CertDer, CannotBeWrittenForACertificateWithoutContent) {
    const X509Cert cert(RawCert(X509_new(), X509_free));

    EXPECT_EQ(messageOf<OpenSSLException>([&] { cert.encode(); }), "i2d_X509(x509_, NULL)");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { cert.encodeB64(); }), "i2d_X509(x509_, NULL)");
}

// Base64

TEST(X509CertBase64, IsThatOfTheDer) {
    const RawCert raw = rawCert(CertForm());

    EXPECT_EQ(X509Cert(raw).encodeB64(), rawBase64(rawDer(raw)));
}

TEST(X509CertBase64, IsReadBack) {
    const bytes der = rawDer(rawCert(CertForm()));
    const std::shared_ptr<X509Cert> cert = X509Cert::decodeB64(rawBase64(der));

    EXPECT_EQ(cert->encode(), der);
    EXPECT_EQ(cert->encodeB64(), rawBase64(der));
}

TEST(X509CertBase64, AnythingElseIsRefusedAsNoCertificate) {
    const bytes text = rawBase64(rawDer(rawCert(CertForm())));

    for (const bytes& bad : {bytes(), fromText("not Base64!"), fromText("AAAA"), text + fromText("\n"),
                             fromText(" ") + text, slice(text, 0, text.size() - 1), rawBase64(octets(40))}) {
        EXPECT_EQ(messageOf<OpenSSLException>([&] { X509Cert::decodeB64(bad); }), "d2i_X509()")
            << toText(bad);
    }
}

// The public key

TEST(X509CertPubKey, IsTheSubjects) {
    for (const RawKey& key : {rsa1024(), rsa2048()}) {
        CertForm form;
        form.key = key;
        const std::shared_ptr<PubKey> pub = X509Cert(rawCert(form)).getPubKey();

        EXPECT_EQ(pub->toString(), "Public-Key (RSA)");
        EXPECT_EQ(*pub, PubKey(key.get()));
        EXPECT_EQ(PubKey::print(pub->getEVP_PKEY(), 0), PubKey::print(publicHalf(key).get(), 0));
    }
}

TEST(X509CertPubKey, OutlivesTheCertificate) {
    std::shared_ptr<PubKey> pub;
    {
        const std::shared_ptr<X509Cert> cert = X509Cert::decode(rawDer(rawCert(CertForm())));
        pub = cert->getPubKey();
        EXPECT_NE(cert->getPubKey()->getEVP_PKEY(), pub->getEVP_PKEY());
    }
    EXPECT_EQ(*pub, PubKey(rsa1024().get()));
}

TEST(X509CertPubKey, OfAnotherAlgorithmIsRefusedByTheKey) {
    struct {
        RawKey key;
        const char* message;
    } const cases[] = {
        {dsa(), "Unknown EVP_PKEY type value: 116"},
        {ec(), "Unknown EVP_PKEY type value: 408"},
        {rsaPss(), "Unknown EVP_PKEY type value: 912"},
        {ed25519(), "Unknown EVP_PKEY type value: 1087"},
    };
    for (const auto& test : cases) {
        CertForm form;
        form.key = test.key;
        const X509Cert cert(rawCert(form));
        EXPECT_EQ(messageOf<VORLException>([&] { cert.getPubKey(); }), test.message);
    }
}

TEST(X509CertPubKey, ThatOpenSSLCannotMakeOutIsReported) {
    const RawCert raw = rawCert(CertForm());
    ASN1_OBJECT* algorithm = nullptr;
    ASSERT_EQ(X509_PUBKEY_get0_param(&algorithm, nullptr, nullptr, nullptr, X509_get_X509_PUBKEY(raw.get())),
              1);
    ASSERT_EQ(OBJ_obj2nid(algorithm), NID_rsaEncryption);
    bytes der = rawDer(raw);
    // rsaEncryption, 1.2.840.113549.1.1.1 (RFC 8017): its last arc becomes one that nobody has assigned. The
    // signature's algorithm, another arc of the same tree, is not touched.
    const bytes oid = fromHex("06 09 2a864886f70d010101");
    const auto at = std::search(der.begin(), der.end(), oid.begin(), oid.end());
    ASSERT_NE(at, der.end());
    *(at + 10) = 0x7f;
    const std::shared_ptr<X509Cert> cert = X509Cert::decode(der);
    takeErrorQueue();

    try {
        cert->getPubKey();
        FAIL() << "accepted";
    } catch (const OpenSSLException& e) {
        EXPECT_STREQ(e.what(), "X509_get_pubkey(x509_)");
        EXPECT_NE(e.errorStack(), "");
    }
}

// The common name

struct CommonNameCase {
    const char* name;
    std::vector<NamePart> subject;
    std::string expected;
};

NamePart organization(const std::string& text) {
    return {NID_organizationName, V_ASN1_UTF8STRING, text};
}

NamePart commonNameOf(int tag, const std::string& content) {
    return {NID_commonName, tag, content};
}

// The escapes are those of RFC 2253, section 2.4, with all that is not ASCII as UTF-8.
const CommonNameCase COMMON_NAMES[] = {
    {"PlainAscii", {commonName("device-01")}, "device-01"},
    {"OneCharacter", {commonName("x")}, "x"},
    {"Printable", {commonNameOf(V_ASN1_PRINTABLESTRING, "Device 01")}, "Device 01"},
    {"BehindOtherParts", {organization("Org"), commonName("name")}, "name"},
    {"BeforeOtherParts", {commonName("name"), organization("Org")}, "name"},
    {"FirstOfTwo", {commonName("first"), commonName("second")}, "first"},
    {"FirstOfTwoApart", {commonName("first"), organization("Org"), commonName("second")}, "first"},
    {"LatinInUtf8", {commonName("caf\xc3\xa9")}, "caf\\C3\\A9"},
    {"EuroInUtf8", {commonName("\xe2\x82\xac")}, "\\E2\\82\\AC"},
    {"BeyondTheBasicPlane", {commonName("\xf0\x9f\x98\x80")}, "\\F0\\9F\\98\\80"},
    {"LatinInBmp", {commonNameOf(V_ASN1_BMPSTRING, std::string("\0c\0a\0f\0\xe9", 8))}, "caf\\C3\\A9"},
    {"ChineseInBmp", {commonNameOf(V_ASN1_BMPSTRING, "\x4e\x2d\x65\x87")}, "\\E4\\B8\\AD\\E6\\96\\87"},
    {"LatinInTeletex", {commonNameOf(V_ASN1_T61STRING, "caf\xe9")}, "caf\\C3\\A9"},
    {"Universal",
     {commonNameOf(V_ASN1_UNIVERSALSTRING, std::string("\0\0\0A\0\1\xf6\0", 8))},
     "A\\F0\\9F\\98\\80"},
    {"Separators", {commonName("a,b+c;d")}, "a\\,b\\+c\\;d"},
    {"QuotesAndBrackets", {commonName("\"a\"<b>\\c")}, "\\\"a\\\"\\<b\\>\\\\c"},
    {"EqualsSign", {commonName("CN=a")}, "CN=a"},
    {"HashInFront", {commonName("#1#2")}, "\\#1#2"},
    {"BlanksAtTheEnds", {commonName(" a b ")}, "\\ a b\\ "},
    {"OnlyABlank", {commonName(" ")}, "\\ "},
    {"ControlCharacters", {commonName("a\n\x7f\x01z")}, "a\\0A\\7F\\01z"},
    {"Zero", {commonName(std::string("good\0.evil", 10))}, "good\\00.evil"},
    // No text at all: '#', and its DER in hex.
    {"BitString", {commonNameOf(V_ASN1_BIT_STRING, "\x05")}, "#03020005"},
    {"Long", {commonName(std::string(5000, 'n'))}, std::string(5000, 'n')},
};

class CommonName : public ::testing::TestWithParam<CommonNameCase> {};

TEST_P(CommonName, IsTheFirstEscaped) {
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();
    const RawCert raw = certOf(GetParam().subject);
    const bytes expected = fromText(GetParam().expected);

    EXPECT_EQ(toText(X509Cert(raw).getCommonName()), GetParam().expected);
    EXPECT_EQ(X509Cert::decode(rawDer(raw))->getCommonName(), expected);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

INSTANTIATE_TEST_SUITE_P(Forms, CommonName, ::testing::ValuesIn(COMMON_NAMES),
                         [](const auto& test) { return test.param.name; });

TEST(X509CertCommonName, WithoutOneIsReported) {
    const std::string message = "X509_NAME_get_index_by_NID(sn, NID_commonName, -1)";
    const X509Cert withOthers(certOf({organization("Org")}));
    const X509Cert withNothing(certOf({}));

    EXPECT_EQ(messageOf<OpenSSLException>([&] { withOthers.getCommonName(); }), message);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { withNothing.getCommonName(); }), message);
}

TEST(X509CertCommonName, ThatIsEmptyIsReportedWithTheWholeCertificate) {
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();
    const RawCert raw = certOf({organization("Org"), commonName("")});

    EXPECT_EQ(messageOf<VORLException>([&] { X509Cert(raw).getCommonName(); }),
              "Certificate SubjectName has an empty CommonName:\n" + rawDescription(raw));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST(X509CertCommonName, ThatIsEmptyHidesTheOneBehindIt) {
    const RawCert raw = certOf({commonName(""), commonName("second")});

    EXPECT_EQ(messageOf<VORLException>([&] { X509Cert(raw).getCommonName(); }),
              "Certificate SubjectName has an empty CommonName:\n" + rawDescription(raw));
}

// Half a character of a BMP string.
TEST(X509CertCommonName, ThatOpenSSLCannotMakeOutCountsAsEmpty) {
    const RawCert raw = certOf({commonNameOf(V_ASN1_BMPSTRING, std::string("\0a\0b", 4))});
    ASN1_STRING* const content =
        X509_NAME_ENTRY_get_data(X509_NAME_get_entry(X509_get_subject_name(raw.get()), 0));
    ASSERT_EQ(ASN1_STRING_set(content, "\0a\0", 3), 1);
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_EQ(messageOf<VORLException>([&] { X509Cert(raw).getCommonName(); }),
              "Certificate SubjectName has an empty CommonName:\n" + rawDescription(raw));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// The validity period

struct PeriodCase {
    const char* name;
    RawTime notBefore;
    RawTime notAfter;
    bool valid;
};

// Hours and years away from now, so that no test runs into a bound.
const PeriodCase PERIODS[] = {
    {"Now", hoursFromNow(-1), hoursFromNow(1), true},
    {"NotYet", hoursFromNow(1), hoursFromNow(2), false},
    {"Expired", hoursFromNow(-2), hoursFromNow(-1), false},
    {"Never", hoursFromNow(1), hoursFromNow(-1), false},
    {"SinceLongAgo", utcTime("500101000000Z"), hoursFromNow(1), true},
    {"ExpiredLongAgo", utcTime("500101000000Z"), utcTime("700101000000Z"), false},
    {"UntilTheEndOf32BitTime", hoursFromNow(-1), utcTime("491231235959Z"), true},
    {"Until2045", hoursFromNow(-1), generalizedTime("20450101000000Z"), true},
    {"Until2050", hoursFromNow(-1), generalizedTime("20500101000000Z"), true},
    {"Until2107", hoursFromNow(-1), generalizedTime("21070101000000Z"), true},
    {"ForEver", hoursFromNow(-1), generalizedTime("99991231235959Z"), true},
    {"NotBefore2045", generalizedTime("20450101000000Z"), generalizedTime("99991231235959Z"), false},
    {"NotBefore2107", generalizedTime("21070101000000Z"), generalizedTime("99991231235959Z"), false},
    {"NotYetWithAnEndThatCannotBeCompared", hoursFromNow(1), utcTime("4912312359Z"), false},
};

class ValidityPeriod : public ::testing::TestWithParam<PeriodCase> {};

TEST_P(ValidityPeriod, IsComparedWithTheCurrentTime) {
    CertForm form;
    form.notBefore = GetParam().notBefore;
    form.notAfter = GetParam().notAfter;
    const RawCert raw = rawCert(form);
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_EQ(X509Cert(raw).isTimeValid(), GetParam().valid);
    EXPECT_EQ(X509Cert::decode(rawDer(raw))->isTimeValid(), GetParam().valid);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

INSTANTIATE_TEST_SUITE_P(Periods, ValidityPeriod, ::testing::ValuesIn(PERIODS),
                         [](const auto& test) { return test.param.name; });

// RFC 5280, section 4.1.2.5, wants seconds, no fraction of them, and Greenwich time: OpenSSL compares nothing
// else.
struct UnusableTimeCase {
    const char* name;
    RawTime time;
};

const UnusableTimeCase UNUSABLE_TIMES[] = {
    {"UtcWithoutSeconds", utcTime("2001010000Z")},
    {"UtcWithZone", utcTime("200101000000+0100")},
    {"GeneralizedWithoutSeconds", generalizedTime("200001010000Z")},
    {"GeneralizedWithFraction", generalizedTime("20000101000000.5Z")},
    {"GeneralizedWithoutZone", generalizedTime("20000101000000")},
    {"MonthThatDoesNotExist", utcTime("201301000000Z")},
    {"Junk", utcTime("junk")},
    {"Empty", utcTime("")},
};

class UnusableTime : public ::testing::TestWithParam<UnusableTimeCase> {
protected:
    static void expectRefused(const CertForm& form) {
        const RawCert raw = rawCert(form);
        const X509Cert cert(raw);
        // The wording names notBefore for either bound.
        EXPECT_EQ(messageOf<OpenSSLException>([&] { cert.isTimeValid(); }),
                  "X509_cmp_current_time(notBefore) for X509Cert:\n" + rawDescription(raw));
    }
};

TEST_P(UnusableTime, AsTheBeginningIsReported) {
    CertForm form;
    form.notBefore = GetParam().time;

    expectRefused(form);
}

TEST_P(UnusableTime, AsTheEndIsReportedInTheSameWords) {
    CertForm form;
    form.notAfter = GetParam().time;

    expectRefused(form);
}

TEST_P(UnusableTime, AsTheBeginningIsReportedBeforeTheEndIsLookedAt) {
    CertForm form;
    form.notBefore = GetParam().time;
    form.notAfter = hoursFromNow(-1);

    expectRefused(form);
}

INSTANTIATE_TEST_SUITE_P(Forms, UnusableTime, ::testing::ValuesIn(UNUSABLE_TIMES),
                         [](const auto& test) { return test.param.name; });

// Texts

TEST(X509CertText, OfATimeIsInEnglishAndInGreenwichTime) {
    struct {
        RawTime time;
        const char* text;
    } const cases[] = {
        {utcTime("261121120000Z"), "Nov 21 12:00:00 2026 GMT"},
        {utcTime("500101000000Z"), "Jan  1 00:00:00 1950 GMT"},
        {utcTime("491231235959Z"), "Dec 31 23:59:59 2049 GMT"},
        {generalizedTime("20450101000000Z"), "Jan  1 00:00:00 2045 GMT"},
        {generalizedTime("21070630013005Z"), "Jun 30 01:30:05 2107 GMT"},
        {generalizedTime("20450101000000.5Z"), "Jan  1 00:00:00.5 2045 GMT"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(X509Cert::print(test.time.get()), test.text);
    }
}

TEST(X509CertText, OfATimeThatIsNoneSaysSoAndLeavesTheErrorQueueAsItWas) {
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_EQ(X509Cert::print(utcTime("junk").get()), "Bad time value");
    EXPECT_EQ(X509Cert::print(utcTime("").get()), "Bad time value");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// From `openssl ca -selfsign -startdate 20000101000000Z -enddate 20451231235959Z`. Its last second is more
// than a time_t of 32 bits can count.
const char VALID_TO_2045_PEM[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBnDCCAQUCAiBFMA0GCSqGSIb3DQEBCwUAMBYxFDASBgNVBAMMC2RldmljZS0y\n"
    "MDQ1MB4XDTAwMDEwMTAwMDAwMFoXDTQ1MTIzMTIzNTk1OVowFjEUMBIGA1UEAwwL\n"
    "ZGV2aWNlLTIwNDUwgZ8wDQYJKoZIhvcNAQEBBQADgY0AMIGJAoGBAMyK9AKNaGmo\n"
    "5vCYPVKqOk2+BIx4lNG92FAAGhryNbWN9R6ioBpnN6HqI/9HamD5G76bVgdqSp6+\n"
    "PqE1olhU0gqlExqms9foOIzYUHSvaUmqLR/sV0k85MwzQ+xrtnwXUcOjKwvJunP5\n"
    "I99U3ZczhrR5hblJJbm147mizRza8o2VAgMBAAEwDQYJKoZIhvcNAQELBQADgYEA\n"
    "fxv3X2rcsWubnhFIDGgFN0GIPPZt+0F4lU7JcTr9V5ITc4AvkF/C35oeTPeLX4og\n"
    "gZPD1/0Y/wt2Hb+Cs9RPunne8gWyAbaL3Wt7em+dudyM7PmX1wC+WRCpPWXIcLt7\n"
    "l7IvaO8VjzC0wqnNDh28G86v5x9zo05tjTkk/6nkjl4=\n"
    "-----END CERTIFICATE-----\n";

TEST(X509CertText, OfACertificateThatIsValidTo2045SaysSo) {
    const std::shared_ptr<X509Cert> cert = X509Cert::loadFromPEMStr(VALID_TO_2045_PEM);

    EXPECT_TRUE(cert->isTimeValid());
    EXPECT_EQ(toText(cert->getCommonName()), "device-2045");
    EXPECT_EQ(X509Cert::print(X509_get0_notAfter(cert->getX509())), "Dec 31 23:59:59 2045 GMT");
    const std::string text = cert->toString();
    EXPECT_NE(text.find("Not Before: Jan  1 00:00:00 2000 GMT\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Not After : Dec 31 23:59:59 2045 GMT\n"), std::string::npos) << text;
    EXPECT_EQ(X509Cert::decode(cert->encode())->toString(), text);
}

TEST(X509CertText, IsOpenSSLsDescription) {
    for (const RawKey& key : {rsa1024(), ec(), ed25519()}) {
        CertForm form;
        form.key = key;
        form.subject = {organization("Org, Ltd."), commonName("caf\xc3\xa9")};
        const RawCert raw = rawCert(form);

        const std::string text = X509Cert(raw).toString();
        EXPECT_EQ(text, rawDescription(raw));
        EXPECT_EQ(text.rfind("Certificate:\n", 0), 0U);
        EXPECT_EQ(X509Cert::decode(rawDer(raw))->toString(), rawDescription(raw));
    }
}

// A time that OpenSSL cannot print, it describes as such.
TEST(X509CertText, OfACertificateThatPrintsInPartLeavesTheErrorQueueAsItWas) {
    CertForm form;
    form.notAfter = utcTime("junk");
    const RawCert raw = rawCert(form);
    const std::string expected = rawDescription(raw);
    takeErrorQueue();
    const unsigned long left = leaveApplicationError();

    EXPECT_EQ(X509Cert(raw).toString(), expected);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// OpenSSL prints the error queue into the text, the application's entries among them.
TEST(X509CertText, OfACertificateWhoseKeyOpenSSLCannotMakeOutTakesTheErrorQueueWithIt) {
    bytes der = rawDer(rawCert(CertForm()));
    // rsaEncryption (RFC 8017), with a last arc that nobody has assigned.
    const bytes oid = fromHex("06 09 2a864886f70d010101");
    const auto at = std::search(der.begin(), der.end(), oid.begin(), oid.end());
    ASSERT_NE(at, der.end());
    *(at + 10) = 0x7f;
    const std::shared_ptr<X509Cert> cert = X509Cert::decode(der);
    takeErrorQueue();
    leaveApplicationError();

    const std::string text = cert->toString();
    EXPECT_NE(text.find("Unable to load Public Key\n"), std::string::npos);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{});
}

}  // namespace
}  // namespace vorl::test
