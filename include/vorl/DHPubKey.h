#ifndef VORL_DHPUBKEY_H
#define VORL_DHPUBKEY_H

#include "vorl/ASN1Primitive.h"
#include "vorl/UInt32.h"
#include "vorl/bytes.h"

#include <memory>

namespace vorl {

/// A Diffie-Hellman public value as it travels between client and server.
///
/// key() is an unsigned big-endian number. Version 2 goes on the wire as a UInt32 version and the key as an
/// OctetString; version 1 is the bare key, of 125 to 129 bytes.
class VORL_API DHPubKey : public ASN1Primitive {
public:
    /// 2: every record that the library makes has this version.
    static const UInt32 DEFAULT_VERSION;

    /// An empty key of version 0, to be decoded into.
    DHPubKey();
    /// Any key and version; encode() judges the version.
    DHPubKey(const bytes& key, const UInt32& version);

    /// A record of DEFAULT_VERSION around a key of 125 to 129 bytes.
    /// Throws VORLException for any other length.
    static std::unique_ptr<DHPubKey> create(const bytes& key);
    /// The same for the Base64 of a bare key, not of a record.
    static std::unique_ptr<DHPubKey> createB64(const bytes& b64Key);
    /// Reads the Base64 of a record. Throws VORLException, with a dump of the text, where it is not Base64;
    /// else as decode().
    static std::unique_ptr<DHPubKey> decodeB64(const bytes& b64Record);

    const bytes& key() const { return key_; }
    const UInt32& version() const { return version_; }

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    std::string toString() const override;

    /// Throws VORLException for a version other than 1 and 2.
    void encode(Buffer& out) const override;
    /// Reads either form, told apart by how many bytes `in` holds, read or not: up to 129 are a bare key as a
    /// whole, and the read index stays; more are a record, and bytes behind it stay unread.
    /// Throws VORLException for fewer than 125 bytes and for an unknown version, ASN1Exception for a key that
    /// is cut short.
    void decode(Buffer& in) override;

private:
    bytes key_;
    UInt32 version_;
};

}  // namespace vorl

#endif
