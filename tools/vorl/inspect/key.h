#ifndef VORL_TOOL_INSPECT_KEY_H
#define VORL_TOOL_INSPECT_KEY_H

#include "inspect/Report.h"
#include "shared/fingerprint.h"

namespace vorl::tool {

/// Whether a block of PEM text with that label holds a key.
bool isPublicKeyLabel(const std::string& label);
bool isPrivateKeyLabel(const std::string& label);

/// Whether a record is a key in DER, one that is encrypted with a password included. An RSAPublicKey looks
/// like a Diffie-Hellman group and is none here.
bool isPublicKeyInDer(const bytes& record);
bool isPrivateKeyInDer(const bytes& record);

/// Enter the first key of the kind in PEM text, or a key in DER, into the report. These forms have no fields
/// of ours. No password is asked for.
void inspectPublicKeyInPem(const bytes& text, Report& report);
void inspectPublicKeyInDer(const bytes& record, Report& report);
void inspectPrivateKeyInPem(const bytes& text, Report& report, Secrets secrets);
void inspectPrivateKeyInDer(const bytes& record, Report& report, Secrets secrets);

}  // namespace vorl::tool

#endif
