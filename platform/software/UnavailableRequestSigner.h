#ifndef TARVIK_SOFTWARE_UNAVAILABLEREQUESTSIGNER_H
#define TARVIK_SOFTWARE_UNAVAILABLEREQUESTSIGNER_H

#include "tarvik/crypto/IRequestSigner.h"

namespace tarvik::crypto {

/// The signer of a platform that cannot sign: both operations throw vorl::VORLException, so that an
/// unsigned request is never taken for a signed one.
class UnavailableRequestSigner : public IRequestSigner {
public:
    void sign(const std::string& s, tarvik::http::IHttpStream::Request& request) override;
    bool verify(const std::string& s, tarvik::http::IHttpStream& stream) override;
};

}  // namespace tarvik::crypto

#endif
