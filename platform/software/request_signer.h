#ifndef TARVIK_SOFTWARE_REQUEST_SIGNER_H
#define TARVIK_SOFTWARE_REQUEST_SIGNER_H

#include <memory>
#include <vector>

namespace tarvik::crypto {

class IRequestSigner;

/// The signing context that goes with a cipher context of that key. Which one, the build decides: see
/// VORL_HTTP_SIGNER.
std::shared_ptr<IRequestSigner> requestSignerFor(const std::vector<unsigned char>& contextKey);

}  // namespace tarvik::crypto

#endif
