#include "vorl/PKSignature01.h"

#include "core/WholeAppend.h"
#include "core/length_determinant.h"
#include "vorl/Buffer.h"
#include "vorl/OctetString.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/Util.h"

// PKSignature01, field by field:
//
//   version   UInt8         01
//   value     OctetString   ends with a determinant of less than a fragment, so an empty value is 00

namespace vorl {

std::shared_ptr<const PKSignature01> PKSignature01::create(const bytes& val) {
    return std::make_shared<const PKSignature01>(val);
}

std::shared_ptr<const PKSignature01> PKSignature01::decode(Buffer& in) {
    return create(in.nextOctetString().takeBytes());
}

PKSignature01::PKSignature01(const bytes& val) : val_(val) {}

std::string PKSignature01::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                          const std::string& separator, unsigned int indentSize) const {
    return Util::toFormatHexString(val_, name, width, level, separator, indentSize);
}

UInt8 PKSignature01::version() const {
    return UInt8(VERSION);
}

std::shared_ptr<const PKSignatureAlgo> PKSignature01::algo() const {
    return PKSignatureAlgo::SHA1withRSA();
}

bytes PKSignature01::val() const {
    return val_;
}

void PKSignature01::encode(Buffer& out) const {
    WholeAppend append(out);
    PKSignature::encode(out);
    out.put(OctetString(val_));
    if (val_.size() % LONG_FORM_LIMIT == 0) {
        // A block of whole fragments, or of none, does not end by itself.
        out.put(static_cast<unsigned char>(0x00));
    }
    append.complete();
}

}  // namespace vorl
