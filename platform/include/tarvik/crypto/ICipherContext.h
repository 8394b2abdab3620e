#ifndef TARVIK_CRYPTO_ICIPHERCONTEXT_H
#define TARVIK_CRYPTO_ICIPHERCONTEXT_H

#include "tarvik/export.h"

#include <vector>

namespace tarvik::crypto {

/// One symmetric cipher with one key, as the platform implements it.
///
/// After encryptInit() or decryptInit(), one or more calls of update() and one of final() produce the whole
/// result: the outputs of update() in order, then that of final(). An init starts afresh, whatever went
/// before it. Failures are thrown. An object is used by one thread at a time.
class TARVIK_API ICipherContext {
public:
    /// A cipher configuration. Any value may be carried; the library uses these.
    enum Spec : unsigned int {
        SPEC_NULL = 0,
        SPEC_AES_128_ECB = 1,
        SPEC_AES_128_CBC = 2,
    };

    virtual ~ICipherContext() = default;
    /// The configuration that this context implements.
    virtual Spec id() = 0;
    /// Starts an encryption. `iv` is empty for a configuration without one.
    virtual void encryptInit(const std::vector<unsigned char>& iv) = 0;
    /// Starts a decryption.
    virtual void decryptInit(const std::vector<unsigned char>& iv) = 0;
    /// Feeds `data` and returns whatever output is ready.
    virtual std::vector<unsigned char> update(const std::vector<unsigned char>& data) = 0;
    /// Finishes the operation and returns the rest of the output: with padding, the last block of a
    /// ciphertext or the unpadded end of a plaintext.
    virtual std::vector<unsigned char> final() = 0;

protected:
    ICipherContext() = default;
    ICipherContext(const ICipherContext&) = default;
    ICipherContext& operator=(const ICipherContext&) = default;
};

}  // namespace tarvik::crypto

#endif
