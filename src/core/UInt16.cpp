#include "vorl/UInt16.h"

#include "big_endian.h"
#include "vorl/Buffer.h"
#include "vorl/Util.h"

namespace vorl {

std::string UInt16::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                   const std::string& separator, unsigned int indentSize) const {
    return Util::toFormatHexString(encodeBytes(val_), name, width, level, separator, indentSize);
}

std::string UInt16::toString() const {
    return "[UInt16: 0x " + Util::toHexString(encodeBytes(val_)) + "]";
}

void UInt16::encode(Buffer& b) const {
    b.put(encodeBytes(val_));
}

void UInt16::decode(Buffer& b) {
    val_ = readBigEndian<unsigned short>(b, "UInt16");
}

bytes UInt16::encodeBytes(unsigned short v) {
    return encodeBigEndian(v);
}

unsigned short UInt16::decodeBytes(const bytes& v) {
    return decodeBigEndian<unsigned short>(v);
}

}  // namespace vorl
