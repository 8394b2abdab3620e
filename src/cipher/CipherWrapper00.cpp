#include "vorl/CipherWrapper00.h"

#include "core/octet_runs.h"
#include "envelope.h"
#include "unread_bytes.h"
#include "vorl/Buffer.h"
#include "vorl/CipherSpec.h"

#include <utility>

namespace vorl {

CipherWrapper00::CipherWrapper00(const std::string& name) : CipherWrapper(name) {}

CipherWrapper00::~CipherWrapper00() = default;

bytes CipherWrapper00::encrypt(const bytes& data, tarvik::crypto::ICipherContext& /*ctx*/) const {
    bytes envelope = beginEnvelope(id(), bytes(), data.size());
    appendBody(envelope, data);
    return envelope;
}

unsigned char CipherWrapper00::id() const {
    return 0x00;
}

std::shared_ptr<const CipherSpec> CipherWrapper00::getCipherSpec() const {
    return CipherSpec::NULL_CIPHER();
}

bytes CipherWrapper00::doDecrypt(Buffer& in, tarvik::crypto::ICipherContext& /*ctx*/) const {
    const std::vector<OctetRun> body = readOctetRuns(in);
    refuseUnreadBytes(in, "NULL_CIPHER decrypted data");
    return joinOctetRuns(std::move(in).toByteArray(), body);
}

}  // namespace vorl
