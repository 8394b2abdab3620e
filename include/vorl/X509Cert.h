#ifndef VORL_X509CERT_H
#define VORL_X509CERT_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

class PubKey;

/// An X.509 certificate (RFC 5280). Copies share the OpenSSL object.
///
/// Nothing here says that a certificate can be trusted: the signature and the chain of issuers are not
/// checked.
class VORL_API X509Cert {
public:
    /// Shares the X509, which must not be null and must not be changed any more.
    explicit X509Cert(std::shared_ptr<X509> x509);

    /// The next PEM block of a certificate. Throw OpenSSLException where there is none, where it is encrypted
    /// (a password is neither asked for nor tried), and where a file cannot be opened.
    static std::shared_ptr<X509Cert> loadFromPEMBIO(const std::shared_ptr<BIO>& bio);
    static std::shared_ptr<X509Cert> loadFromPEMFile(const std::string& path);
    static std::shared_ptr<X509Cert> loadFromPEMStr(const std::string& pem);

    /// From DER; bytes behind the certificate are not looked at. Throw OpenSSLException "d2i_X509()".
    static std::shared_ptr<X509Cert> decode(const bytes& der);
    static std::shared_ptr<X509Cert> decodeB64(const bytes& text);

    /// DER. Throws OpenSSLException where OpenSSL cannot encode.
    bytes encode() const;
    bytes encodeB64() const;

    /// Throws OpenSSLException where OpenSSL cannot make the key out, VORLException where it is not RSA.
    std::shared_ptr<PubKey> getPubKey() const;

    /// The subject's first common name, escaped after RFC 2253: a control character, and each UTF-8 byte of a
    /// character outside ASCII, is \XX; one of , + " \ < > ; and a blank or # where it would be misread,
    /// stand behind a backslash; what is no text at all is # and its DER in hex. No terminating zero. Throws
    /// OpenSSLException for a subject without one, VORLException for an empty one.
    bytes getCommonName() const;

    /// Whether the current time lies within the validity period. Throws OpenSSLException for a period that
    /// OpenSSL cannot compare.
    bool isTimeValid() const;

    /// For example "Nov 21 12:00:00 2026 GMT"; "Bad time value" for what is none.
    /// Throws OpenSSLException where the text cannot be read back.
    static std::string print(const ASN1_TIME* time);

    /// The X509 itself, still owned by the object.
    X509* getX509() const { return x509_.get(); }

    /// OpenSSL's description of the whole certificate. For a public key that OpenSSL cannot make out, it
    /// prints the calling thread's error queue instead, and empties it. Throws OpenSSLException where OpenSSL
    /// cannot print.
    std::string toString() const;

private:
    std::shared_ptr<X509> x509_;
};

}  // namespace vorl

#endif
