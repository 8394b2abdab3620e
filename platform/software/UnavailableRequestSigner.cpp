#include "UnavailableRequestSigner.h"

#include "request_signer.h"
#include "vorl/VORLException.h"

namespace tarvik::crypto {

namespace {

[[noreturn]] void refuse() {
    throw vorl::VORLException("request signing is not available in this build");
}

}  // namespace

void UnavailableRequestSigner::sign(const std::string& /*s*/,
                                    tarvik::http::IHttpStream::Request& /*request*/) {
    refuse();
}

bool UnavailableRequestSigner::verify(const std::string& /*s*/, tarvik::http::IHttpStream& /*stream*/) {
    refuse();
}

std::shared_ptr<IRequestSigner> requestSignerFor(const std::vector<unsigned char>& /*contextKey*/) {
    return std::make_shared<UnavailableRequestSigner>();
}

}  // namespace tarvik::crypto
