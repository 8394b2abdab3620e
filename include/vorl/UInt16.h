#ifndef VORL_UINT16_H
#define VORL_UINT16_H

#include "vorl/ASN1Primitive.h"
#include "vorl/bytes.h"

namespace vorl {

/// An unsigned number of 2 bytes in a record, the most significant byte first. No tag, no length.
class VORL_API UInt16 : public ASN1Primitive {
public:
    constexpr explicit UInt16(unsigned short val) : val_(val) {}

    unsigned short val() const { return val_; }

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// For example "[UInt16: 0x 12 34]".
    std::string toString() const override;

    void encode(Buffer& b) const override;
    /// Throws VORLException where fewer than 2 bytes are left, and reads none of them.
    void decode(Buffer& b) override;

    static bytes encodeBytes(unsigned short v);
    /// Throws VORLException for any other length than 2.
    static unsigned short decodeBytes(const bytes& v);

private:
    unsigned short val_;
};

}  // namespace vorl

#endif
