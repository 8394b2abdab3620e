#ifndef VORL_TOOL_INSPECT_CERTIFICATE_H
#define VORL_TOOL_INSPECT_CERTIFICATE_H

#include "inspect/Report.h"

#include <memory>

namespace vorl {
class X509Cert;
}

namespace vorl::tool {

/// Whether a block of PEM text with that label holds a certificate.
bool isCertificateLabel(const std::string& label);

/// Whether a record is a certificate in DER.
bool isCertificateInDer(const bytes& record);

/// Enter the first certificate in PEM text, or one in DER, into the report. These forms have no fields of
/// ours.
void inspectCertificateInPem(const bytes& text, Report& report);
void inspectCertificateInDer(const bytes& record, Report& report);

/// A certificate that was read, or why it was not.
struct ReadCertificate {
    std::shared_ptr<const X509Cert> certificate;
    std::string fault;
};

/// The certificate in an input: PEM text, DER, or the Base64 text of DER.
ReadCertificate readCertificate(const bytes& input);

/// The subject in one line of ASCII, after RFC 2253.
std::string subjectText(const X509Cert& certificate);

}  // namespace vorl::tool

#endif
