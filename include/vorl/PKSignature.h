#ifndef VORL_PKSIGNATURE_H
#define VORL_PKSIGNATURE_H

#include "vorl/FormatPrintable.h"
#include "vorl/UInt8.h"
#include "vorl/bytes.h"

#include <memory>

namespace vorl {

class Buffer;
class PKSignatureAlgo;

/// A signature as it travels: a version byte, which also stands for the algorithm, then what the version
/// says.
class VORL_API PKSignature : public FormatPrintable {
public:
    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override = 0;
    /// For example "Public-Key-Signature (Version 0x01, SHA1withRSA)".
    std::string toString() const override;
    ~PKSignature() override;

    virtual UInt8 version() const = 0;
    virtual std::shared_ptr<const PKSignatureAlgo> algo() const = 0;
    /// The signature value. One that a key has made is as long as its modulus; a record may hold any.
    virtual bytes val() const = 0;
    /// Appends the record; in this class, its version byte.
    virtual void encode(Buffer& out) const;

    bytes encode() const;
    bytes encodeB64() const;

    /// Reads a record of any version; bytes behind it stay unread.
    /// Throws VORLException for an unknown version, ASN1Exception for a value that is missing or cut short.
    static std::shared_ptr<const PKSignature> decode(Buffer& in);
    static std::shared_ptr<const PKSignature> decode(const bytes& record);

    /// The record for a signature value made by `sigAlgo`, which is PKSignatureAlgo::SHA1withRSA() itself:
    /// throws VORLException for any other object, whatever its name.
    static std::shared_ptr<const PKSignature> create(const bytes& val,
                                                     const std::shared_ptr<const PKSignatureAlgo>& sigAlgo);

protected:
    PKSignature() = default;
    PKSignature(const PKSignature&) = default;
    PKSignature& operator=(const PKSignature&) = default;
};

}  // namespace vorl

#endif
