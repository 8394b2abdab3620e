#include "inspect/certificate.h"

#include "inspect/asn1_time.h"
#include "inspect/base64_text.h"
#include "inspect/der.h"
#include "inspect/numbers.h"
#include "inspect/openssl_key.h"
#include "inspect/pem_content.h"
#include "inspect/pem_text.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"
#include "vorl/safe_ptr.h"

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/objects.h>
#include <openssl/x509.h>

#include <algorithm>
#include <array>
#include <utility>

namespace vorl::tool {

namespace {

template <class Read>
ReadCertificate attemptCertificate(const Read& read) {
    try {
        return {read(), ""};
    } catch (const OpenSSLException& fault) {
        return {nullptr, std::string(fault.what()) + " failed in OpenSSL"};
    }
}

ReadCertificate certificateInPem(const bytes& text) {
    return attemptCertificate([&text] { return X509Cert::loadFromPEMBIO(bioOver(text)); });
}

ReadCertificate certificateInDer(const bytes& record) {
    return attemptCertificate([&record] { return X509Cert::decode(record); });
}

// After RFC 2253, so that it is ASCII, whatever is in it.
std::string nameText(const X509_NAME* name) {
    const std::shared_ptr<BIO> bio = safe_ptr(BIO_new(BIO_s_mem()));
    char* text = nullptr;
    const bool isPrinted = bio && X509_NAME_print_ex(bio.get(), name, 0, XN_FLAG_RFC2253) >= 0;
    const long size = isPrinted ? BIO_get_mem_data(bio.get(), &text) : 0;
    ERR_clear_error();
    return size > 0 ? std::string(text, static_cast<std::size_t>(size)) : "";
}

std::string serialText(const ASN1_INTEGER* serial) {
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(ASN1_INTEGER_to_BN(serial, nullptr), BN_free);
    if (!number) {
        ERR_clear_error();
        return "";
    }
    bytes content(std::max(static_cast<std::size_t>(BN_num_bytes(number.get())), std::size_t{1}));
    BN_bn2binpad(number.get(), content.data(), static_cast<int>(content.size()));
    return (BN_is_negative(number.get()) == 1 ? "-" : "") + Util::toHexString(content, "");
}

std::string signatureAlgorithmText(const X509* x509) {
    const ASN1_OBJECT* id = nullptr;
    X509_ALGOR_get0(&id, nullptr, nullptr, X509_get0_tbs_sigalg(x509));
    std::array<char, 80> text = {};
    OBJ_obj2txt(text.data(), static_cast<int>(text.size()), id, 0);
    ERR_clear_error();
    return text.data();
}

// Left out where there is none.
void addCommonName(const X509Cert& certificate, Report& report) {
    try {
        const bytes name = certificate.getCommonName();
        report.facts.push_back(
            {"commonName", "subject's common name", std::string(name.begin(), name.end())});
    } catch (const OpenSSLException&) {
        report.unknown.emplace_back("a common name: its subject has none");
    } catch (const VORLException&) {
        report.unknown.emplace_back("a common name: the one of its subject is empty");
    }
}

void addKey(const X509Cert& certificate, Report& report) {
    EVP_PKEY* const key = X509_get0_pubkey(certificate.getX509());
    ERR_clear_error();
    if (key != nullptr) {
        addKeyFacts(key, report);
        report.libraryVerdict = libraryVerdictOn(key);
    } else {
        report.unknown.emplace_back("its public key: OpenSSL cannot make it out");
    }
}

void addFacts(const X509Cert& certificate, Report& report) {
    X509* const x509 = certificate.getX509();
    addCommonName(certificate, report);
    report.facts.push_back({"subject", "subject", subjectText(certificate)});
    report.facts.push_back({"issuer", "issuer", nameText(X509_get_issuer_name(x509))});
    report.facts.push_back({"serial", "serial number", serialText(X509_get0_serialNumber(x509))});
    report.facts.push_back({"notBefore", "not valid before", momentText(X509_get0_notBefore(x509))});
    report.facts.push_back({"notAfter", "not valid after", momentText(X509_get0_notAfter(x509))});
    addKey(certificate, report);
    report.facts.push_back({"signatureAlgorithm", "signature algorithm", signatureAlgorithmText(x509)});
    report.facts.push_back({"sha256", "SHA-256 of the certificate", sha256Text(certificate.encode())});
}

void enter(const ReadCertificate& read, Report& report) {
    report.kind = "certificate";
    if (!read.certificate) {
        report.problem = Problem{0, "no certificate can be read from this"};
        report.libraryVerdict = read.fault;
        return;
    }
    addFacts(*read.certificate, report);
    report.unknown.insert(report.unknown.end(),
                          {"whether it is valid now: 'vorl cert check' tells",
                           "whether its issuer signed it, and whether that one can be trusted: vorl does not "
                           "check the chain of trust"});
}

// Nothing where the library would not say where it ends.
std::size_t sizeInDer(const bytes& record) {
    const unsigned char* at = record.data();
    long size = 0;
    int tag = 0;
    int tagClass = 0;
    const int form = ASN1_get_object(&at, &size, &tag, &tagClass, static_cast<long>(record.size()));
    ERR_clear_error();
    // The content of an indefinite length has an end of its own.
    return form == V_ASN1_CONSTRUCTED ? static_cast<std::size_t>(at - record.data() + size) : record.size();
}

}  // namespace

bool isCertificateLabel(const std::string& label) {
    return label == "CERTIFICATE" || label == "X509 CERTIFICATE";
}

bool isCertificateInDer(const bytes& record) {
    return beginsSequence(record) && certificateInDer(record).certificate != nullptr;
}

void inspectCertificateInPem(const bytes& text, Report& report) {
    enter(certificateInPem(text), report);
}

void inspectCertificateInDer(const bytes& record, Report& report) {
    const ReadCertificate read = certificateInDer(record);
    enter(read, report);
    const std::size_t size = sizeInDer(record);
    if (read.certificate && size < record.size()) {
        report.problem = Problem{size, "the certificate ends here, but " + moreText(record.size() - size)};
    }
}

ReadCertificate readCertificate(const bytes& input) {
    const std::vector<PemBlock> blocks = pemBlocksIn(input);
    if (!blocks.empty()) {
        const bool isOfKind = std::any_of(blocks.begin(), blocks.end(), [](const PemBlock& block) {
            return isCertificateLabel(block.label);
        });
        return isOfKind ? certificateInPem(input)
                        : ReadCertificate{nullptr, "PEM text of another kind: " + blocks.front().label};
    }
    const DecodedText text = decodeBase64Text(input);
    const bytes& record = text.problem ? input : text.data;
    if (!isCertificateInDer(record)) {
        return {nullptr, "neither PEM text nor DER of a certificate"};
    }
    return certificateInDer(record);
}

std::string subjectText(const X509Cert& certificate) {
    return nameText(X509_get_subject_name(certificate.getX509()));
}

}  // namespace vorl::tool
