#ifndef VORL_ASN1PRIMITIVE_H
#define VORL_ASN1PRIMITIVE_H

#include "vorl/FormatPrintable.h"

namespace vorl {

class Buffer;

/// What can write itself into a Buffer and read itself back.
class VORL_API ASN1Primitive : public FormatPrintable {
public:
    /// Appends the encoding to `b`.
    virtual void encode(Buffer& b) const = 0;
    /// Replaces the value by what stands at the read index of `b`. After an exception the value is what it
    /// was before.
    virtual void decode(Buffer& b) = 0;
};

}  // namespace vorl

#endif
