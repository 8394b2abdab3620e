#include "vorl/UInt32.h"

#include "big_endian.h"
#include "vorl/Buffer.h"
#include "vorl/Util.h"

namespace vorl {

std::string UInt32::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                   const std::string& separator, unsigned int indentSize) const {
    return Util::toFormatHexString(encodeBytes(val_), name, width, level, separator, indentSize);
}

std::string UInt32::toString() const {
    return "[UInt32: 0x " + Util::toHexString(encodeBytes(val_)) + "]";
}

void UInt32::encode(Buffer& b) const {
    b.put(encodeBytes(val_));
}

void UInt32::decode(Buffer& b) {
    val_ = readBigEndian<unsigned int>(b, "UInt32");
}

bytes UInt32::encodeBytes(unsigned int v) {
    return encodeBigEndian(v);
}

unsigned int UInt32::decodeBytes(const bytes& v) {
    return decodeBigEndian<unsigned int>(v);
}

}  // namespace vorl
