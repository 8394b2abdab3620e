#ifndef TARVIK_CRYPTO_IREQUESTSIGNER_H
#define TARVIK_CRYPTO_IREQUESTSIGNER_H

#include "tarvik/export.h"
#include "tarvik/http/IHttpStream.h"

#include <string>

namespace tarvik::crypto {

/// Signs HTTP requests and verifies responses with one key, as the platform implements it.
class TARVIK_API IRequestSigner {
public:
    virtual ~IRequestSigner() = default;
    /// Adds a signature to `request`. What `s` means is the platform's to say.
    virtual void sign(const std::string& s, tarvik::http::IHttpStream::Request& request) = 0;
    /// Whether the response carries a signature that holds.
    virtual bool verify(const std::string& s, tarvik::http::IHttpStream& stream) = 0;

protected:
    IRequestSigner() = default;
    IRequestSigner(const IRequestSigner&) = default;
    IRequestSigner& operator=(const IRequestSigner&) = default;
};

}  // namespace tarvik::crypto

#endif
