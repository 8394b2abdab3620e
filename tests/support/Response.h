#ifndef VORL_TESTS_RESPONSE_H
#define VORL_TESTS_RESPONSE_H

#include "vorl/bytes.h"

#include <tarvik/http/IHttpStream.h>

namespace vorl::test {

/// An empty response, for what only passes one on.
class Response : public tarvik::http::IHttpStream {
public:
    unsigned int status() const override { return 200; }
    const Fields& fields() const override { return fields_; }
    const bytes& body() const override { return body_; }
    const Request* request() const override { return nullptr; }

private:
    Fields fields_;
    bytes body_;
};

}  // namespace vorl::test

#endif
