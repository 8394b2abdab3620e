#ifndef VORL_VORLCONTEXT_H
#define VORL_VORLCONTEXT_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <tarvik/http/IHttpStream.h>

#include <memory>
#include <string>

namespace tarvik::crypto {
class ICipherContext;
class IRequestSigner;
}  // namespace tarvik::crypto

namespace vorl {

class CipherWrapper;

/// What an application holds for one peer: it protects messages with a key, and signs requests with it.
///
/// Messages are the Base64 text of CipherWrapper's envelopes. The cipher context serves both directions and
/// is started anew for each message, so a context, and every copy of it, is used by one thread at a time.
class VORL_API VorlContext {
public:
    /// A context that sends messages of the current type, VORLLib::type_, with a cipher and a signer that the
    /// platform makes from `key`: 16 bytes for AES-128, which the software platform checks when it encrypts.
    /// Throws VORLException where VORLLib::init() was never called, and whatever the platform throws.
    explicit VorlContext(const bytes& key);

    /// The protected form of a message, as Base64 text. Throws what CipherWrapper::encrypt() throws.
    /// At the Full and Test types, a message of 16368 to 16383 bytes modulo 16384 cannot be opened again; at
    /// None, neither an empty one nor a multiple of 16384 bytes can.
    bytes encrypt(const bytes& message);
    /// The message of a Base64 text. Throws what CipherWrapper::decrypt() throws; a text that is not Base64
    /// is an envelope without a byte.
    bytes decrypt(const bytes& text);

    /// Passed on to the platform's signer as they are.
    void sign(const std::string& s, tarvik::http::IHttpStream::Request& request);
    bool verify(const std::string& s, tarvik::http::IHttpStream& stream);

private:
    std::shared_ptr<const CipherWrapper> wrapper_;
    std::shared_ptr<tarvik::crypto::ICipherContext> cipherContext_;
    std::shared_ptr<tarvik::crypto::IRequestSigner> signContext_;
};

}  // namespace vorl

#endif
