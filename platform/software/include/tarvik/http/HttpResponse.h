#ifndef TARVIK_HTTP_HTTPRESPONSE_H
#define TARVIK_HTTP_HTTPRESPONSE_H

#include "tarvik/http/IHttpStream.h"

#include <optional>
#include <vector>

namespace tarvik::http {

/// A response held in memory: what a client has received, or what a service is about to send.
class TARVIK_API HttpResponse final : public IHttpStream {
public:
    unsigned int status() const override { return statusCode; }
    const Fields& fields() const override { return headerFields; }
    const std::vector<unsigned char>& body() const override { return content; }
    const Request* request() const override { return answered ? &*answered : nullptr; }

    unsigned int statusCode = 200;
    Fields headerFields;
    std::vector<unsigned char> content;
    /// The request that it answers; nothing where that is not known.
    std::optional<Request> answered;
};

}  // namespace tarvik::http

#endif
