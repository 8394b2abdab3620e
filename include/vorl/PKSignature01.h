#ifndef VORL_PKSIGNATURE01_H
#define VORL_PKSIGNATURE01_H

#include "vorl/PKSignature.h"

namespace vorl {

/// Version 1 of the signature record: an RSA signature over a SHA-1 digest, as an OctetString.
class VORL_API PKSignature01 : public PKSignature {
public:
    using PKSignature::decode;
    using PKSignature::encode;

    /// Any value, also an empty one.
    static std::shared_ptr<const PKSignature01> create(const bytes& val);
    /// Reads what follows the version byte. Throws ASN1Exception for a value that is missing or cut short.
    static std::shared_ptr<const PKSignature01> decode(Buffer& in);

    explicit PKSignature01(const bytes& val);

    /// The signature value in hex.
    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// 1.
    UInt8 version() const override;
    /// PKSignatureAlgo::SHA1withRSA().
    std::shared_ptr<const PKSignatureAlgo> algo() const override;
    bytes val() const override;
    void encode(Buffer& out) const override;

private:
    friend class PKSignature;

    static constexpr unsigned char VERSION = 1;

    bytes val_;
};

}  // namespace vorl

#endif
