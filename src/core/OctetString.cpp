#include "vorl/OctetString.h"

#include "index32.h"
#include "vorl/Util.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstddef>

namespace vorl {

namespace {

const char TOO_MANY_OCTETS[] = "OctetString: more than 2^32-1 octets";

}  // namespace

OctetString::OctetString(const bytes& v) : OctetString(bytes(v)) {}

OctetString::OctetString(bytes&& v) : val_(std::move(v)) {
    index32(val_.size(), TOO_MANY_OCTETS);
}

std::string OctetString::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                        const std::string& separator, unsigned int indentSize) const {
    // A subclass may have another idea of its length, but there is no more than there is.
    const auto length = static_cast<unsigned int>(std::min<std::size_t>(byteLength(), val_.size()));
    return Util::toFormatHexString(val_.data(), length, name, width, level, separator, indentSize);
}

unsigned int OctetString::unitSize() const {
    return 8;
}

unsigned int OctetString::unitLength() const {
    return static_cast<unsigned int>(val_.size());
}

std::string OctetString::getName() const {
    return "OCTET STRING";
}

void OctetString::setVal(const bytes& val) {
    index32(val.size(), TOO_MANY_OCTETS);
    val_ = val;
}

bytes OctetString::toByteArray() const {
    return val_;
}

bool OctetString::operator==(const OctetString& other) const {
    return val_.size() == other.val_.size() &&
           CRYPTO_memcmp(val_.data(), other.val_.data(), val_.size()) == 0;
}

}  // namespace vorl
