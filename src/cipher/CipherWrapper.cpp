#include "vorl/CipherWrapper.h"

#include "core/OctetRuns.h"
#include "core/WipeUnlessKept.h"
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

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

namespace vorl {

using tarvik::crypto::ICipherContext;

namespace {

using Registry = std::map<unsigned char, std::shared_ptr<const CipherWrapper>>;

// Never destroyed: an application's own static object may clean up the library when the process ends.
Registry& wrappers() {
    static auto& registry = *new Registry;
    return registry;
}

// What a spec may add to the room that is reserved for a ciphertext; a guess is not worth more.
const unsigned int LARGEST_EXPECTED_BLOCK = 256;

void checkSpec(ICipherContext& ctx, const CipherSpec& spec) {
    if (ctx.id() != spec.spec) {
        throw VORLException("Cipher spec mismatch between cipher and wrapper");
    }
}

OctetRuns readIv(Buffer& in, const CipherSpec& spec) {
    if (spec.ivSize == 0) {
        return OctetRuns();
    }
    OctetRuns iv(in);
    if (iv.octets() != spec.ivSize) {
        // Without a closing parenthesis; logs are searched for it as it is.
        throw VORLException("Parsed IV length(" + std::to_string(iv.octets()) + ") != CipherSpec iv size(" +
                            std::to_string(spec.ivSize));
    }
    return iv;
}

bytes copyOf(const OctetRuns& octets, const Buffer& in) {
    bytes copy(octets.octets());
    octets.copyFrom(in, copy.data());
    return copy;
}

}  // namespace

// The spec of a wrapper for the length of a call. Sharing it would cost a message little, but the shares are
// counted in one place, for which threads would wait in turn; so a wrapper that has fixed its spec lends it.
class CipherWrapper::SpecInUse {
public:
    explicit SpecInUse(const CipherWrapper& wrapper)
        : shared_(wrapper.spec_ ? nullptr : wrapper.getCipherSpec()),
          spec_(wrapper.spec_ ? *wrapper.spec_ : *shared_) {}

    const CipherSpec& operator*() const { return spec_; }
    const CipherSpec* operator->() const { return &spec_; }

private:
    const std::shared_ptr<const CipherSpec> shared_;
    const CipherSpec& spec_;
};

bool CipherWrapper::init_ = false;

std::shared_ptr<const CipherWrapper> CipherWrapper::NULL_CIPHER() {
    static const auto& instance = *new auto(std::make_shared<const CipherWrapper00>("Null"));
    return instance;
}

std::shared_ptr<const CipherWrapper> CipherWrapper::TEST_CIPHER() {
    static const auto& instance = *new auto(std::make_shared<const CipherWrapper01>("Test"));
    return instance;
}

std::shared_ptr<const CipherWrapper> CipherWrapper::FULL_CIPHER() {
    static const auto& instance = *new auto(std::make_shared<const CipherWrapper02>("Full"));
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
    const std::shared_ptr<const CipherWrapper>& wrapper = registered(in.get());
    if (!VORLLib::isAllowedCipherWrapper(wrapper)) {
        // The wrapper's text begins with the same word.
        throw VORLException("CipherWrapper " + wrapper->toString() + " not allowed");
    }
    checkSpec(ctx, *SpecInUse(*wrapper));
    return wrapper->doDecrypt(in, ctx);
}

bytes CipherWrapper::encrypt(const bytes& data, ICipherContext& ctx) const {
    checkInit();
    const SpecInUse spec(*this);
    checkSpec(ctx, *spec);
    const bytes iv = spec->ivSize != 0 ? Random::next(spec->ivSize) : bytes();
    ctx.encryptInit(iv);
    if (SoftwareKeyCipher* const cipher = softwareCipher(ctx, *spec)) {
        return encryptIntoEnvelope(id(), iv, data, *cipher);
    }
    // Room for the envelope is taken before the cipher takes its own, which is then free again when the
    // envelope goes on to be encoded: large messages make the heap grow less.
    bytes envelope = beginEnvelope(
        id(), iv, std::uint64_t{data.size()} + std::min(spec->blockSize, LARGEST_EXPECTED_BLOCK));
    const bytes updated = ctx.update(data);
    const bytes finished = ctx.final();
    BodyWriter body(envelope, std::uint64_t{updated.size()} + finished.size());
    body.append(updated);
    body.append(finished);
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

CipherWrapper::CipherWrapper(const std::string& name) : CipherWrapper(name, nullptr) {}

CipherWrapper::CipherWrapper(const std::string& name, std::shared_ptr<const CipherSpec> spec)
    : spec_(std::move(spec)), name_(name) {}

bytes CipherWrapper::doDecrypt(Buffer& in, ICipherContext& ctx) const {
    const SpecInUse spec(*this);
    if (SoftwareKeyCipher* const cipher = softwareCipher(ctx, *spec)) {
        return decryptInPlace(in, readIv(in, *spec), *cipher);
    }
    ctx.decryptInit(copyOf(readIv(in, *spec), in));
    const OctetRuns body(in);
    // Before anything is decrypted.
    refuseUnreadBytes(in, "decrypted data");
    const bytes ciphertext = body.joinIn(std::move(in).toByteArray());
    bytes message = ctx.update(ciphertext);
    WipeUnlessKept wipe(message);
    const bytes finished = ctx.final();
    message.reserve(message.size() + finished.size());
    message.insert(message.end(), finished.begin(), finished.end());
    wipe.keep();
    return message;
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
