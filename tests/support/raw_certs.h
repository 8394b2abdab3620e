#ifndef VORL_TESTS_RAW_CERTS_H
#define VORL_TESTS_RAW_CERTS_H

#include "raw_keys.h"

#include <openssl/asn1.h>
#include <openssl/evp.h>
#include <openssl/obj_mac.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace vorl::test {

// Certificates by plain calls of OpenSSL. All throw std::runtime_error where OpenSSL fails.

using RawCert = std::shared_ptr<X509>;
using RawTime = std::shared_ptr<ASN1_TIME>;

/// One attribute of a name: `value` is the content of an ASN.1 string of the tag `tag`, as it stands.
struct NamePart {
    int nid;
    int tag;
    std::string value;
};

inline NamePart commonName(const std::string& utf8) {
    return {NID_commonName, V_ASN1_UTF8STRING, utf8};
}

/// A time as it stands: the tag V_ASN1_UTCTIME or V_ASN1_GENERALIZEDTIME, and any text.
inline RawTime rawTime(int tag, const std::string& text) {
    const RawTime time(ASN1_STRING_type_new(tag), ASN1_STRING_free);
    raw_keys::require(time && ASN1_STRING_set(time.get(), text.data(), static_cast<int>(text.size())) == 1,
                      "ASN1_STRING_set");
    return time;
}

inline RawTime utcTime(const std::string& text) {
    return rawTime(V_ASN1_UTCTIME, text);
}

inline RawTime generalizedTime(const std::string& text) {
    return rawTime(V_ASN1_GENERALIZEDTIME, text);
}

/// So many hours from now.
inline RawTime hoursFromNow(int hours) {
    const RawTime time(ASN1_TIME_adj(nullptr, std::time(nullptr), 0, hours * 3600L), ASN1_STRING_free);
    raw_keys::require(time != nullptr, "ASN1_TIME_adj");
    return time;
}

/// What goes into a certificate, which is signed with its own key.
struct CertForm {
    std::vector<NamePart> subject = {commonName("device-01")};
    RawTime notBefore = hoursFromNow(-1);
    RawTime notAfter = hoursFromNow(1);
    RawKey key = rsa1024();
};

inline RawCert rawCert(const CertForm& form) {
    const RawCert cert(X509_new(), X509_free);
    const std::unique_ptr<X509_NAME, decltype(&X509_NAME_free)> name(X509_NAME_new(), X509_NAME_free);
    raw_keys::require(cert && name, "X509_new");
    for (const NamePart& part : form.subject) {
        const bytes value = fromText(part.value);
        // Not data(), which may be null for an empty value.
        const unsigned char none = 0;
        raw_keys::require(
            X509_NAME_add_entry_by_NID(name.get(), part.nid, part.tag, value.empty() ? &none : value.data(),
                                       static_cast<int>(value.size()), -1, 0) == 1,
            "X509_NAME_add_entry_by_NID");
    }
    const bool edKey = EVP_PKEY_base_id(form.key.get()) == EVP_PKEY_ED25519;
    raw_keys::require(X509_set_version(cert.get(), 2) == 1 &&
                          ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), 42) == 1 &&
                          X509_set_subject_name(cert.get(), name.get()) == 1 &&
                          X509_set_issuer_name(cert.get(), name.get()) == 1 &&
                          X509_set1_notBefore(cert.get(), form.notBefore.get()) == 1 &&
                          X509_set1_notAfter(cert.get(), form.notAfter.get()) == 1 &&
                          X509_set_pubkey(cert.get(), publicHalf(form.key).get()) == 1 &&
                          X509_sign(cert.get(), form.key.get(), edKey ? nullptr : EVP_sha256()) > 0,
                      "making a certificate");
    return cert;
}

/// A certificate around a subject, otherwise an ordinary one.
inline RawCert certOf(const std::vector<NamePart>& subject) {
    CertForm form;
    form.subject = subject;
    return rawCert(form);
}

inline bytes rawDer(const RawCert& cert) {
    unsigned char* der = nullptr;
    const int size = i2d_X509(cert.get(), &der);
    raw_keys::require(size > 0, "i2d_X509");
    bytes copy(der, der + size);
    OPENSSL_free(der);
    return copy;
}

inline std::string certPem(const RawCert& cert) {
    return rawText([&](BIO* bio) { return PEM_write_bio_X509(bio, cert.get()); });
}

}  // namespace vorl::test

#endif
