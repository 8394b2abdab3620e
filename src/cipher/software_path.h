#ifndef VORL_CIPHER_SOFTWARE_PATH_H
#define VORL_CIPHER_SOFTWARE_PATH_H

#include "core/OctetRuns.h"
#include "vorl/bytes.h"

#include <tarvik/crypto/ICipherContext.h>

namespace vorl {

class Buffer;
class CipherSpec;
class SoftwareKeyCipher;

// The short cut for the library's own cipher: OpenSSL works straight from and into the envelope's storage,
// which saves the vectors of the cipher-context interface. Nothing else about a message changes.

/// `ctx` as a SoftwareKeyCipher, where it is exactly that (a subclass wants its overrides to be called) and
/// both it and the wrapper have one of the library's AES specs (so that sizes are known beforehand); else
/// null.
SoftwareKeyCipher* softwareCipher(tarvik::crypto::ICipherContext& ctx, const CipherSpec& spec);

/// The whole envelope of `data`; `cipher` is ready to encrypt.
bytes encryptIntoEnvelope(unsigned char version, const bytes& iv, const bytes& data,
                          SoftwareKeyCipher& cipher);

/// The message of an envelope of which the IV has been read, decrypted within the storage of `in`.
/// Where that fails, what was decrypted is wiped.
bytes decryptInPlace(Buffer& in, const OctetRuns& iv, SoftwareKeyCipher& cipher);

}  // namespace vorl

#endif
