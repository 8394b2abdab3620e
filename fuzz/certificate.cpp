// X509Cert on any bytes, as the first of them says: DER, Base64 or PEM. Only the library's exceptions, also
// from everything that a certificate can be asked.

#include "attempt.h"
#include "vorl/PubKey.h"
#include "vorl/X509Cert.h"

#include <openssl/x509.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vorl::fuzz {

namespace {

// '0' to '2' in the seeds.
enum Source : unsigned int { DER, BASE64, PEM, SOURCES };

std::shared_ptr<X509Cert> readCertificate(Source source, const bytes& content) {
    switch (source) {
        case DER:
            return X509Cert::decode(content);
        case BASE64:
            return X509Cert::decodeB64(content);
        default:
            return X509Cert::loadFromPEMStr(std::string(content.begin(), content.end()));
    }
}

void checkEncoding(const X509Cert& cert) {
    const bytes der = cert.encode();
    require(X509Cert::decode(der)->encode() == der, "what was written reads back");
    require(X509Cert::decodeB64(cert.encodeB64())->encode() == der, "so does its text");
}

void checkCommonName(const X509Cert& cert) {
    const bytes name = cert.getCommonName();
    require(!name.empty(), "an empty name is refused");
    for (const unsigned char c : name) {
        require(c >= 0x20 && c < 0x7f, "whatever is not printable ASCII is escaped");
    }
}

void checkText(const X509Cert& cert) {
    require(cert.toString().compare(0, 13, "Certificate:\n") == 0, "a certificate has a text");
}

}  // namespace

void readAnything(Source source, const bytes& content) {
    std::shared_ptr<X509Cert> cert;
    if (!attempt([&] { cert = readCertificate(source, content); })) {
        return;
    }
    require(attempt([&] { checkEncoding(*cert); }), "what was read can be written");
    attempt([&] { require(cert->getPubKey()->toString() == "Public-Key (RSA)", "a key has a text"); });
    attempt([&] { cert->isTimeValid(); });
    attempt([&] { X509Cert::print(X509_get0_notBefore(cert->getX509())); });
    attempt([&] { X509Cert::print(X509_get0_notAfter(cert->getX509())); });

    // For a key that it cannot make out OpenSSL prints the whole queue.
    const ErrorQueue queue =
        X509_get0_pubkey(cert->getX509()) == nullptr ? ErrorQueue::MAY_BE_TAKEN : ErrorQueue::STAYS;
    attempt([&] { checkCommonName(*cert); }, queue);
    attempt([&] { checkText(*cert); }, queue);
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vorl::fuzz::Source;
    if (size > 0) {
        vorl::fuzz::readAnything(static_cast<Source>(data[0] % vorl::fuzz::SOURCES),
                                 vorl::bytes(data + 1, data + size));
    }
    return 0;
}
