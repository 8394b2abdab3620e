#ifndef VORL_OCTETSTRING_H
#define VORL_OCTETSTRING_H

#include "vorl/ASN1BlockEncodable.h"

#include <utility>

namespace vorl {

/// Octets behind their length: every IV, ciphertext, key, number and signature in a record is one.
class VORL_API OctetString : public ASN1BlockEncodable {
public:
    OctetString() = default;
    /// Both throw std::length_error for more than 2^32 - 1 octets.
    explicit OctetString(const bytes& v);
    explicit OctetString(bytes&& v);

    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;

    /// 8.
    unsigned int unitSize() const override;
    unsigned int unitLength() const override;
    /// "OCTET STRING".
    std::string getName() const override;
    void setVal(const bytes& val) override;
    bytes toByteArray() const override;

    /// The octets themselves, moved out of an object that is no longer needed.
    bytes takeBytes() && { return std::move(val_); }

    /// In a time that depends on the number of octets only, since they may be a key.
    bool operator==(const OctetString& other) const;
    bool operator!=(const OctetString& other) const { return !(*this == other); }

private:
    bytes val_;
};

}  // namespace vorl

#endif
