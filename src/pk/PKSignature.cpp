#include "vorl/PKSignature.h"

#include "vorl/Buffer.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <brisclient/Base64.h>

#include <utility>

// PKSignature, field by field:
//
//   version   UInt8   tells what follows, and the algorithm

namespace vorl {

std::string PKSignature::toString() const {
    return "Public-Key-Signature (Version 0x" + Util::toHexString(version().val()) + ", " +
           algo()->toString() + ")";
}

PKSignature::~PKSignature() = default;

void PKSignature::encode(Buffer& out) const {
    out.put(version());
}

bytes PKSignature::encode() const {
    Buffer record;
    encode(record);
    return std::move(record).toByteArray();
}

bytes PKSignature::encodeB64() const {
    return Tarvik::BrisClient::Base64::encode(encode());
}

std::shared_ptr<const PKSignature> PKSignature::decode(Buffer& in) {
    const UInt8 version = in.nextUInt8();
    if (version.val() == PKSignature01::VERSION) {
        return PKSignature01::decode(in);
    }
    throw VORLException("Unknown PKSignature version: " + version.toString());
}

std::shared_ptr<const PKSignature> PKSignature::decode(const bytes& record) {
    Buffer in(record);
    return decode(in);
}

std::shared_ptr<const PKSignature> PKSignature::create(
    const bytes& val, const std::shared_ptr<const PKSignatureAlgo>& sigAlgo) {
    if (sigAlgo == PKSignatureAlgo::SHA1withRSA()) {
        return PKSignature01::create(val);
    }
    throw VORLException("Unknown signature algorithm: " + sigAlgo->toString());
}

}  // namespace vorl
