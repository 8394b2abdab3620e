#include "vorl/CipherWrapper.h"

#include "core/octet_runs.h"
#include "envelope.h"
#include "software_path.h"
#include "unread_bytes.h"
#include "vorl/Buffer.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper00.h"
#include "vorl/CipherWrapper01.h"
#include "vorl/CipherWrapper02.h"
#include "vorl/Random.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"

#include <tarvik/crypto/ICipherContext.h>

#include <map>
#include <utility>

namespace vorl {

using tarvik::crypto::ICipherContext;

namespace {

using Registry = std::map<unsigned char, std::shared_ptr<const CipherWrapper>>;

Registry& wrappers() {
    static Registry registry;
    return registry;
}

void checkSpec(ICipherContext& ctx, const CipherSpec& spec) {
    if (ctx.id() != spec.spec) {
        throw VORLException("Cipher spec mismatch between cipher and wrapper");
    }
}

bytes readIv(Buffer& in, const CipherSpec& spec) {
    if (spec.ivSize == 0) {
        return bytes();
    }
    bytes iv = in.nextOctetString().takeBytes();
    if (iv.size() != spec.ivSize) {
        // Without a closing parenthesis; logs are searched for it as it is.
        throw VORLException("Parsed IV length(" + std::to_string(iv.size()) + ") != CipherSpec iv size(" +
                            std::to_string(spec.ivSize));
    }
    return iv;
}

// All of `data` through a started context: one update, one final.
bytes passThrough(ICipherContext& ctx, const bytes& data) {
    bytes out = ctx.update(data);
    const bytes rest = ctx.final();
    out.insert(out.end(), rest.begin(), rest.end());
    return out;
}

}  // namespace

bool CipherWrapper::init_ = false;

std::shared_ptr<const CipherWrapper> CipherWrapper::NULL_CIPHER() {
    static const auto instance = std::make_shared<const CipherWrapper00>("Null");
    return instance;
}

std::shared_ptr<const CipherWrapper> CipherWrapper::TEST_CIPHER() {
    static const auto instance = std::make_shared<const CipherWrapper01>("Test");
    return instance;
}

std::shared_ptr<const CipherWrapper> CipherWrapper::FULL_CIPHER() {
    static const auto instance = std::make_shared<const CipherWrapper02>("Full");
    return instance;
}

void CipherWrapper::init() {
    for (const auto& wrapper : {NULL_CIPHER(), TEST_CIPHER(), FULL_CIPHER()}) {
        wrappers().emplace(wrapper->id(), wrapper);
    }
    init_ = true;
}

void CipherWrapper::cleanup() {
    init_ = false;
    wrappers().clear();
}

void CipherWrapper::checkInit() {
    if (!init_) {
        throw VORLException("CipherWrapper must be initialized before use");
    }
}

std::shared_ptr<const CipherWrapper> CipherWrapper::forID(unsigned char id) {
    return registered(id);
}

bytes CipherWrapper::decrypt(const bytes& envelope, ICipherContext& ctx) {
    return decrypt(bytes(envelope), ctx);
}

bytes CipherWrapper::decrypt(bytes&& envelope, ICipherContext& ctx) {
    checkInit();
    Buffer in(std::move(envelope));
    const std::shared_ptr<const CipherWrapper>& wrapper = registered(in.nextUInt8().val());
    if (!VORLLib::isAllowedCipherWrapper(wrapper)) {
        // The wrapper's text begins with the same word.
        throw VORLException("CipherWrapper " + wrapper->toString() + " not allowed");
    }
    checkSpec(ctx, *wrapper->getCipherSpec());
    return wrapper->doDecrypt(in, ctx);
}

bytes CipherWrapper::encrypt(const bytes& data, ICipherContext& ctx) const {
    checkInit();
    const std::shared_ptr<const CipherSpec> spec = getCipherSpec();
    checkSpec(ctx, *spec);
    const bytes iv = spec->ivSize != 0 ? Random::next(spec->ivSize) : bytes();
    ctx.encryptInit(iv);
    if (SoftwareKeyCipher* const cipher = softwareCipher(ctx, *spec)) {
        return encryptIntoEnvelope(id(), iv, data, *cipher);
    }
    const bytes body = passThrough(ctx, data);
    bytes envelope = beginEnvelope(id(), iv, body.size());
    appendBody(envelope, body);
    return envelope;
}

std::string CipherWrapper::toString() const {
    return "CipherWrapper[" + name_ + ":0x" + Util::toHexString(id()) + "]";
}

bool CipherWrapper::operator==(const CipherWrapper& other) const {
    return this == &other;
}

bool CipherWrapper::operator!=(const CipherWrapper& other) const {
    return !(*this == other);
}

CipherWrapper::~CipherWrapper() = default;

CipherWrapper::CipherWrapper(const std::string& name) : name_(name) {}

bytes CipherWrapper::doDecrypt(Buffer& in, ICipherContext& ctx) const {
    const std::shared_ptr<const CipherSpec> spec = getCipherSpec();
    ctx.decryptInit(readIv(in, *spec));
    const std::vector<OctetRun> body = readOctetRuns(in);
    // Before anything is decrypted.
    refuseUnreadBytes(in, "decrypted data");
    bytes store = std::move(in).toByteArray();
    if (SoftwareKeyCipher* const cipher = softwareCipher(ctx, *spec)) {
        return decryptInPlace(std::move(store), body, *cipher);
    }
    return passThrough(ctx, joinOctetRuns(std::move(store), body));
}

const std::shared_ptr<const CipherWrapper>& CipherWrapper::registered(unsigned char id) {
    checkInit();
    const auto entry = wrappers().find(id);
    if (entry == wrappers().end()) {
        throw VORLException("Unknown CipherWrapper version: 0x" + Util::toHexString(id));
    }
    return entry->second;
}

}  // namespace vorl
