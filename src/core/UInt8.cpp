#include "vorl/UInt8.h"

#include "vorl/Buffer.h"
#include "vorl/Util.h"

namespace vorl {

std::string UInt8::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                  const std::string& separator, unsigned int indentSize) const {
    return Util::toFormatHexString(&val_, 1, name, width, level, separator, indentSize);
}

std::string UInt8::toString() const {
    return "[UInt8: 0x " + Util::toHexString(val_) + "]";
}

void UInt8::encode(Buffer& b) const {
    b.put(val_);
}

void UInt8::decode(Buffer& b) {
    val_ = b.get();
}

}  // namespace vorl
