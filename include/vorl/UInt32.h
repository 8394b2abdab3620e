#ifndef VORL_UINT32_H
#define VORL_UINT32_H

#include "vorl/ASN1Primitive.h"
#include "vorl/bytes.h"

namespace vorl {

/// An unsigned number of 4 bytes in a record, the most significant byte first. No tag, no length.
class VORL_API UInt32 : public ASN1Primitive {
public:
    constexpr explicit UInt32(unsigned int val) : val_(val) {}

    unsigned int val() const { return val_; }

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// For example "[UInt32: 0x 01 02 03 04]".
    std::string toString() const override;

    void encode(Buffer& b) const override;
    /// Throws VORLException where fewer than 4 bytes are left, and reads none of them.
    void decode(Buffer& b) override;

    static bytes encodeBytes(unsigned int v);
    /// Throws VORLException for any other length than 4.
    static unsigned int decodeBytes(const bytes& v);

private:
    unsigned int val_;
};

}  // namespace vorl

#endif
