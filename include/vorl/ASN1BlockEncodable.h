#ifndef VORL_ASN1BLOCKENCODABLE_H
#define VORL_ASN1BLOCKENCODABLE_H

#include "vorl/ASN1Primitive.h"
#include "vorl/bytes.h"

namespace vorl {

/// A block of variable length: a length determinant and the content, without a tag.
///
/// The determinant is that of the ASN.1 Packed Encoding Rules (ITU-T X.691, clause 11.9, unconstrained
/// length): it counts units, and content of 16384 units and more is split into fragments. Two rules of this
/// format differ from X.691 and stay, because the other end has them too: an empty block is written as
/// nothing at all, although a 00 byte is read as one; and content of an exact multiple of 16384 units gets no
/// closing fragment, so that it cannot be read back.
///
/// A subclass supplies the content; coding and printing are done here.
class VORL_API ASN1BlockEncodable : public ASN1Primitive {
public:
    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// toFormatString() under getName(), with the defaults of Env.
    std::string toString() const override;

    /// Throws ASN1Exception, and writes nothing, where unitSize() is not a power of two or the content does
    /// not fit unitSize() and unitLength().
    void encode(Buffer& b) const override;
    /// Throws ASN1Exception for a truncated or unknown determinant and for content that ends early. What was
    /// read until then stays read; the content of this object is what it was before.
    void decode(Buffer& b) override;

    /// Bits in a unit of the content.
    virtual unsigned int unitSize() const = 0;
    /// Units in the content.
    virtual unsigned int unitLength() const = 0;
    /// The bytes that unitLength() units take, the last one perhaps in part.
    /// Throws std::length_error above 2^32 - 1.
    virtual unsigned int byteLength() const;
    /// The label under which the block prints itself.
    virtual std::string getName() const = 0;
    virtual void setVal(const bytes& val) = 0;
    virtual bytes toByteArray() const = 0;
};

}  // namespace vorl

#endif
