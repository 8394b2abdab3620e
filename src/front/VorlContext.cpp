#include "vorl/VorlContext.h"

#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/EncryptionType.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"

#include <brisclient/Base64.h>
#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/IRequestSigner.h>
#include <tarvik/crypto/VorlCryptoFactory.h>

#include <tuple>

namespace vorl {

using Tarvik::BrisClient::Base64;
using tarvik::crypto::VorlCryptoFactory;
using tarvik::http::IHttpStream;

VorlContext::VorlContext(const bytes& key) {
    // Only the type is needed here: after cleanup() it is still there, and the factory refuses.
    if (!VORLLib::type_) {
        throw VORLException("VORLLib must be initialized before use");
    }
    wrapper_ = VORLLib::type_->wrapper;
    std::tie(cipherContext_, signContext_) =
        VorlCryptoFactory::cryptContext(wrapper_->getCipherSpec()->spec, key);
}

bytes VorlContext::encrypt(const bytes& message) {
    return Base64::encode(wrapper_->encrypt(message, *cipherContext_));
}

bytes VorlContext::decrypt(const bytes& text) {
    return CipherWrapper::decrypt(Base64::decode(text), *cipherContext_);
}

void VorlContext::sign(const std::string& s, IHttpStream::Request& request) {
    signContext_->sign(s, request);
}

bool VorlContext::verify(const std::string& s, IHttpStream& stream) {
    return signContext_->verify(s, stream);
}

}  // namespace vorl
