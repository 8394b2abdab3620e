#ifndef VORL_TOOL_INSPECT_ASN1_TIME_H
#define VORL_TOOL_INSPECT_ASN1_TIME_H

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl::tool {

/// A moment as it stands in a certificate, in calendar fields, so that its year is not bound by time_t.
using Moment = std::shared_ptr<const ASN1_TIME>;

/// The moment that a text names in UTC: "2026-11-21T12:00:00Z", or "2026-11-21" for the first second of that
/// day. Null for any other text, and for a moment that no calendar has.
Moment momentFrom(const std::string& text);

/// The form that momentFrom() reads; what OpenSSL makes of a time that is none.
std::string momentText(const ASN1_TIME* time);

}  // namespace vorl::tool

#endif
