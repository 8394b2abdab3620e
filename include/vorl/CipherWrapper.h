#ifndef VORL_CIPHERWRAPPER_H
#define VORL_CIPHERWRAPPER_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <memory>
#include <string>

namespace tarvik::crypto {
class ICipherContext;
}

namespace vorl {

class Buffer;
class CipherSpec;

/// The envelope of a protected message: a version byte that names the wrapper, the IV where the wrapper's
/// CipherSpec has one, and the ciphertext; the last two are OctetStrings.
///
/// The three wrappers are made on first use, kept until the process ends and compared by identity. A registry
/// finds the wrapper of an envelope by its version byte. It is filled by VORLLib::init() and unsynchronised:
/// init() and cleanup() run while no other thread works with envelopes.
///
/// A ciphertext of an exact multiple of 16384 octets is written but cannot be read back (see
/// ASN1BlockEncodable), and neither can the null envelope of an empty message.
class VORL_API CipherWrapper {
public:
    /// Version 0x00: the message as it is.
    static std::shared_ptr<const CipherWrapper> NULL_CIPHER();
    /// Version 0x01: AES-128-ECB. Equal blocks stay visible; for tests.
    static std::shared_ptr<const CipherWrapper> TEST_CIPHER();
    /// Version 0x02: AES-128-CBC with a fresh random IV.
    static std::shared_ptr<const CipherWrapper> FULL_CIPHER();

    /// Fills the registry. May be repeated.
    static void init();
    /// Empties the registry.
    static void cleanup();
    /// Throws VORLException before init() and after cleanup().
    static void checkInit();

    /// The wrapper of a version byte. Throws VORLException for one that is not in the registry.
    static std::shared_ptr<const CipherWrapper> forID(unsigned char id);

    /// Opens an envelope with `ctx`, whose id() must be that of the envelope's cipher configuration.
    /// Throws VORLException where the registry is empty, the version is unknown or not allowed (see
    /// VORLLib::setAllowedEncryptionType), the configuration is another, the IV has a wrong length or bytes
    /// follow the envelope; ASN1Exception where it is malformed; std::length_error for more than 2^32 - 1
    /// bytes; and whatever `ctx` throws. The second form reuses the storage of the envelope for the message.
    static bytes decrypt(const bytes& envelope, tarvik::crypto::ICipherContext& ctx);
    static bytes decrypt(bytes&& envelope, tarvik::crypto::ICipherContext& ctx);

    CipherWrapper(const CipherWrapper&) = delete;
    CipherWrapper& operator=(const CipherWrapper&) = delete;

    /// The envelope of a message.
    /// Throws VORLException where the registry is empty or `ctx` is of another configuration,
    /// OpenSSLException where Random is not ready, std::length_error where the envelope would pass 2^32 - 1
    /// bytes, and whatever `ctx` throws.
    virtual bytes encrypt(const bytes& data, tarvik::crypto::ICipherContext& ctx) const;
    /// The version byte.
    virtual unsigned char id() const = 0;
    /// For example "CipherWrapper[Full:0x02]".
    virtual std::string toString() const;
    /// Identity.
    virtual bool operator==(const CipherWrapper& other) const;
    virtual bool operator!=(const CipherWrapper& other) const;
    virtual std::shared_ptr<const CipherSpec> getCipherSpec() const = 0;
    virtual ~CipherWrapper();

protected:
    explicit CipherWrapper(const std::string& name);
    /// For a wrapper whose getCipherSpec() is always `spec`.
    CipherWrapper(const std::string& name, std::shared_ptr<const CipherSpec> spec);

    /// Opens the rest of an envelope, behind its version byte. Uses up `in`.
    virtual bytes doDecrypt(Buffer& in, tarvik::crypto::ICipherContext& ctx) const;

    /// Null unless given at construction.
    const std::shared_ptr<const CipherSpec> spec_;

private:
    class SpecInUse;

    static const std::shared_ptr<const CipherWrapper>& registered(unsigned char id);

    static bool init_;

    const std::string name_;
};

}  // namespace vorl

#endif
