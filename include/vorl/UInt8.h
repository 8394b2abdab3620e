#ifndef VORL_UINT8_H
#define VORL_UINT8_H

#include "vorl/ASN1Primitive.h"

namespace vorl {

/// An unsigned number of one byte in a record: a version byte, an identifier. No tag, no length.
class VORL_API UInt8 : public ASN1Primitive {
public:
    constexpr explicit UInt8(unsigned char val) : val_(val) {}

    unsigned char val() const { return val_; }

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// For example "[UInt8: 0x 0a]".
    std::string toString() const override;

    void encode(Buffer& b) const override;
    /// Throws ASN1Exception where no byte is left.
    void decode(Buffer& b) override;

private:
    unsigned char val_;
};

}  // namespace vorl

#endif
