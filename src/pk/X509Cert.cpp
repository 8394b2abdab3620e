#include "vorl/X509Cert.h"

#include "core/ErrorQueueMark.h"
#include "core/memory_bio.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/safe_ptr.h"

#include <brisclient/Base64.h>
#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstddef>
#include <utility>

namespace vorl {

namespace {

[[noreturn]] void failInCert(const char* context, int line, const char* function) {
    OpenSSLException::throw_message(context, "X509Cert", line, function);
}

// The first common name of the subject, lent by the certificate.
const ASN1_STRING* firstCommonName(X509* x509, const char* function) {
    X509_NAME* const subject = X509_get_subject_name(x509);
    const int index = X509_NAME_get_index_by_NID(subject, NID_commonName, -1);
    if (index == -1) {
        failInCert("X509_NAME_get_index_by_NID(sn, NID_commonName, -1)", __LINE__, function);
    }
    X509_NAME_ENTRY* const entry = X509_NAME_get_entry(subject, index);
    if (entry == nullptr) {
        failInCert("X509_NAME_get_entry(sn, cn_idx)", __LINE__, function);
    }
    const ASN1_STRING* const name = X509_NAME_ENTRY_get_data(entry);
    if (name == nullptr) {
        failInCert("X509_NAME_ENTRY_get_data(cn_entry)", __LINE__, function);
    }
    return name;
}

// What OpenSSL cannot make out it describes as such, and succeeds with entries left in the queue.
bool printCertificate(BIO* bio, X509* x509) {
    ERR_set_mark();
    if (X509_print_ex(bio, x509, 0, 0) == 0) {
        ERR_clear_last_mark();
        return false;
    }
    ERR_pop_to_mark();
    return true;
}

// False for a name that is empty, or that OpenSSL cannot make out.
bool printEscaped(BIO* bio, const ASN1_STRING* name) {
    const ErrorQueueMark mark;
    return ASN1_STRING_print_ex(bio, name, ASN1_STRFLGS_RFC2253) > 0;
}

}  // namespace

X509Cert::X509Cert(std::shared_ptr<X509> x509) : x509_(std::move(x509)) {}

std::shared_ptr<X509Cert> X509Cert::loadFromPEMBIO(const std::shared_ptr<BIO>& bio) {
    std::shared_ptr<X509> x509 =
        safe_ptr(bio ? PEM_read_bio_X509(bio.get(), nullptr, refusePassword, nullptr) : nullptr);
    if (!x509) {
        failInCert("PEM_read_bio_X509()", __LINE__, __func__);
    }
    return std::make_shared<X509Cert>(std::move(x509));
}

std::shared_ptr<X509Cert> X509Cert::loadFromPEMFile(const std::string& path) {
    const std::shared_ptr<BIO> bio = safe_ptr(BIO_new_file(path.c_str(), "r"));
    if (!bio) {
        failInCert("BIO_new_file()", __LINE__, __func__);
    }
    return loadFromPEMBIO(bio);
}

std::shared_ptr<X509Cert> X509Cert::loadFromPEMStr(const std::string& pem) {
    const std::shared_ptr<BIO> bio = memoryBioOver(pem);
    if (!bio) {
        failInCert("BIO_new_mem_buf()", __LINE__, __func__);
    }
    return loadFromPEMBIO(bio);
}

std::shared_ptr<X509Cert> X509Cert::decode(const bytes& der) {
    const unsigned char* at = der.data();
    std::shared_ptr<X509> x509 =
        safe_ptr(!der.empty() ? d2i_X509(nullptr, &at, static_cast<long>(der.size())) : nullptr);
    if (!x509) {
        failInCert("d2i_X509()", __LINE__, __func__);
    }
    return std::make_shared<X509Cert>(std::move(x509));
}

std::shared_ptr<X509Cert> X509Cert::decodeB64(const bytes& text) {
    return decode(Tarvik::BrisClient::Base64::decode(text));
}

bytes X509Cert::encode() const {
    const int expected = i2d_X509(x509_.get(), nullptr);
    if (expected < 0) {
        failInCert("i2d_X509(x509_, NULL)", __LINE__, __func__);
    }
    bytes der(static_cast<std::size_t>(expected));
    unsigned char* at = der.data();
    const int actual = i2d_X509(x509_.get(), &at);
    if (actual != expected) {
        const std::string mismatch =
            "mismatch of encode length returned by i2d_X509; expected: " + std::to_string(expected) +
            ", actual: " + std::to_string(actual);
        failInCert(mismatch.c_str(), __LINE__, __func__);
    }
    return der;
}

bytes X509Cert::encodeB64() const {
    return Tarvik::BrisClient::Base64::encode(encode());
}

std::shared_ptr<PubKey> X509Cert::getPubKey() const {
    const std::shared_ptr<EVP_PKEY> pkey = safe_ptr(X509_get_pubkey(x509_.get()));
    if (!pkey) {
        failInCert("X509_get_pubkey(x509_)", __LINE__, __func__);
    }
    return std::make_shared<PubKey>(pkey);
}

bytes X509Cert::getCommonName() const {
    const ASN1_STRING* const name = firstCommonName(x509_.get(), __func__);
    const std::shared_ptr<BIO> bio = newMemoryBio();
    if (bio && !printEscaped(bio.get(), name)) {
        throw VORLException("Certificate SubjectName has an empty CommonName:\n" + toString());
    }
    std::string text;
    if (!bio || !copyContent(bio.get(), text)) {
        failInCert("BIO_get_mem_data(bio.get(), &data)", __LINE__, __func__);
    }
    return bytes(text.begin(), text.end());
}

bool X509Cert::isTimeValid() const {
    const ASN1_TIME* const notBefore = X509_get0_notBefore(x509_.get());
    if (notBefore == nullptr) {
        failInCert("X509_get_notBefore(x509_)", __LINE__, __func__);
    }
    const ASN1_TIME* const notAfter = X509_get0_notAfter(x509_.get());
    if (notAfter == nullptr) {
        failInCert("X509_get_notAfter(x509_)", __LINE__, __func__);
    }
    const int begun = X509_cmp_current_time(notBefore);
    if (begun > 0) {
        return false;
    }
    const int ended = begun != 0 ? X509_cmp_current_time(notAfter) : 0;
    if (begun == 0 || ended == 0) {
        // One wording, which names notBefore, serves both bounds on purpose.
        const std::string context = "X509_cmp_current_time(notBefore) for X509Cert:\n" + toString();
        failInCert(context.c_str(), __LINE__, __func__);
    }
    return ended > 0;
}

std::string X509Cert::print(const ASN1_TIME* time) {
    const std::shared_ptr<BIO> bio = newMemoryBio();
    if (bio) {
        // The result is not needed: for a time that it cannot print OpenSSL writes "Bad time value".
        const ErrorQueueMark mark;
        ASN1_TIME_print(bio.get(), time);
    }
    std::string text;
    if (!bio || !readPending(bio.get(), text)) {
        failInCert("BIO_read() in X509Cert::print(ASN1_TIME*)", __LINE__, __func__);
    }
    return text;
}

std::string X509Cert::toString() const {
    const std::shared_ptr<BIO> bio = newMemoryBio();
    if (!bio || !printCertificate(bio.get(), x509_.get())) {
        failInCert("X509_print_ex()", __LINE__, __func__);
    }
    std::string text;
    if (!copyContent(bio.get(), text)) {
        failInCert("BIO_get_mem_data(bio.get(), &certdata)", __LINE__, __func__);
    }
    return text;
}

}  // namespace vorl
