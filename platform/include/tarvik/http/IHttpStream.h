#ifndef TARVIK_HTTP_IHTTPSTREAM_H
#define TARVIK_HTTP_IHTTPSTREAM_H

#include "tarvik/export.h"

#include <string>
#include <utility>
#include <vector>

namespace tarvik::http {

/// An HTTP response as the platform received it, for a request signer to judge.
class TARVIK_API IHttpStream {
public:
    /// Header fields in the order in which they go on the wire; a name may stand more than once.
    using Fields = std::vector<std::pair<std::string, std::string>>;

    /// An HTTP request that is about to be sent.
    struct Request {
        std::string method;     // "GET", "POST" ...
        std::string targetUri;  // the absolute URI: "http://example.com/path?query"
        Fields fields;
        std::vector<unsigned char> body;  // empty where there is none
    };

    virtual ~IHttpStream() = default;
    /// The status code, 100 to 599.
    virtual unsigned int status() const = 0;
    virtual const Fields& fields() const = 0;
    virtual const std::vector<unsigned char>& body() const = 0;
    /// The request that this response answers; null where the platform does not know it any more.
    virtual const Request* request() const = 0;

protected:
    IHttpStream() = default;
    IHttpStream(const IHttpStream&) = default;
    IHttpStream& operator=(const IHttpStream&) = default;
};

}  // namespace tarvik::http

#endif
