#include "vorl/CipherWrapper00.h"

#include "core/OctetRuns.h"
#include "envelope.h"
#include "unread_bytes.h"
#include "vorl/Buffer.h"
#include "vorl/CipherSpec.h"

#include <utility>

namespace vorl {

CipherWrapper00::CipherWrapper00(const std::string& name) : CipherWrapper(name, CipherSpec::NULL_CIPHER()) {}

bytes CipherWrapper00::encrypt(const bytes& data, tarvik::crypto::ICipherContext& /*ctx*/) const {
    bytes envelope = beginEnvelope(id(), bytes(), data.size());
    BodyWriter(envelope, data.size()).append(data);
    return envelope;
}

unsigned char CipherWrapper00::id() const {
    return 0x00;
}

std::shared_ptr<const CipherSpec> CipherWrapper00::getCipherSpec() const {
    return spec_;
}

bytes CipherWrapper00::doDecrypt(Buffer& in, tarvik::crypto::ICipherContext& /*ctx*/) const {
    const OctetRuns body(in);
    refuseUnreadBytes(in, "NULL_CIPHER decrypted data");
    return body.joinIn(std::move(in).toByteArray());
}

}  // namespace vorl
