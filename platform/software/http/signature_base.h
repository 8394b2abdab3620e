#ifndef TARVIK_SOFTWARE_SIGNATURE_BASE_H
#define TARVIK_SOFTWARE_SIGNATURE_BASE_H

#include "http/structured_fields.h"
#include "tarvik/http/IHttpStream.h"

#include <optional>
#include <string>

namespace tarvik::http {

/// What a signature speaks of: a request, or a response with the request that it answers. Lends everything.
class SignedMessage {
public:
    explicit SignedMessage(const IHttpStream::Request& request);
    explicit SignedMessage(const IHttpStream& response);

    bool isResponse() const { return response_ != nullptr; }
    const IHttpStream::Fields& fields() const;
    const std::vector<unsigned char>& body() const;
    /// The request itself, or the one that is answered; null where that is not known.
    const IHttpStream::Request* request() const { return request_; }

    /// The value of a component (RFC 9421, section 2). Throws vorl::VORLException, which names the component,
    /// for one that is not known, that the message does not have, or that cannot stand in a signature base.
    std::string valueOf(const structured::Item& item) const;

private:
    std::string derived(const std::string& name) const;

    const IHttpStream::Request* request_;
    const IHttpStream* response_ = nullptr;
};

/// A component as it is written in a profile: its name, with ";req" behind it for that of an answered
/// request. Nothing for a name that no component has.
std::optional<structured::Item> parseComponent(const std::string& text);

/// The value of a header field: its lines without the white space around them, joined by ", ". Nothing where
/// there is none.
std::optional<std::string> fieldValue(const IHttpStream::Fields& fields, const std::string& lowerCaseName);

/// Whether a field has that name; names of fields do not distinguish case.
bool isNamed(const IHttpStream::Fields::value_type& field, const std::string& lowerCaseName);

/// What is signed (RFC 9421, section 2.5): a line for each component, then the parameters; lines end with LF,
/// except the last. Throws as SignedMessage::valueOf().
std::string signatureBase(const SignedMessage& message, const structured::InnerList& covered);

}  // namespace tarvik::http

#endif
