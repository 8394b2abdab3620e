#ifndef VORL_TOOL_HTTP_HTTPMESSAGE_H
#define VORL_TOOL_HTTP_HTTPMESSAGE_H

#include "vorl/bytes.h"

#include <tarvik/http/IHttpStream.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::tool {

/// An HTTP/1.1 message, and where a text has it.
struct HttpMessage {
    using Fields = tarvik::http::IHttpStream::Fields;

    /// From the first byte of a line to the one behind its end.
    struct Line {
        std::size_t begin;
        std::size_t end;
    };

    bool isResponse() const { return status != 0; }

    /// 100 to 599; 0 for a request.
    unsigned int status = 0;
    /// Of a request.
    std::string method;
    /// Of a request: always absolute.
    std::string targetUri;
    /// Without the blanks around their values.
    Fields fields;
    bytes body;
    /// One for each field.
    std::vector<Line> fieldLines;
    /// Where the empty line behind the fields begins.
    std::size_t fieldsEnd = 0;
    /// How the start line ends: LF or CRLF.
    std::string lineEnd;
};

/// Why a text is no message; what() names the line.
class MalformedHttp : public std::runtime_error {
public:
    MalformedHttp(std::size_t line, const std::string& problem)
        : std::runtime_error("line " + std::to_string(line) + ": " + problem) {}
};

/// Reads a request or a response: a start line, fields, an empty line, and the body. Lines of the head end
/// with LF or CRLF. The body has as many bytes as Content-Length says, behind which one newline is tolerated;
/// without that field, it is all the rest.
///
/// `scheme` is that of a request whose target does not name one. Throws MalformedHttp.
HttpMessage parseHttpMessage(const bytes& text, const std::string& scheme);

/// The text of a message with other fields: lines whose fields are still there stay as they were, in their
/// order, and new ones follow them.
bytes textWithFields(const bytes& text, const HttpMessage& message, const HttpMessage::Fields& fields);

}  // namespace vorl::tool

#endif
