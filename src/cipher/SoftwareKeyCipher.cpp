#include "vorl/SoftwareKeyCipher.h"

#include "core/ErrorQueueMark.h"
#include "mode_text.h"
#include "vorl/CipherSpec.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <optional>
#include <utility>

// What is handed to OpenSSL lies in blocks of the size that it reads, zero beyond what was given: it reads as
// much as its cipher takes, whatever the spec says.

namespace vorl {

namespace {

// OpenSSL counts in ints.
const std::size_t MAX_PIECE = std::size_t{1} << 30;

// Stays in the first-level cache between the pass that provides storage and the cipher's.
const std::size_t CACHED_PIECE = std::size_t{8} * 1024;

// A mark in the error queue around an update that may fail without a report. Others are spared its cost.
class MarkWhereUnreported {
public:
    MarkWhereUnreported(std::size_t size, const CipherSpec& spec) {
        if (size < spec.blockSize) {
            mark_.emplace();
        }
    }

private:
    std::optional<ErrorQueueMark> mark_;
};

bool modeTakesNoIv(const CipherSpec& spec) {
    return spec.mode == CipherMode::ECB() || spec.mode == CipherMode::NONE();
}

bool cipherTakesIv(const CipherSpec& spec) {
    return spec.evpCipher != nullptr && EVP_CIPHER_iv_length(spec.evpCipher) != 0;
}

bool isAes128(const CipherSpec& spec) {
    return spec.evpCipher == EVP_aes_128_cbc() || spec.evpCipher == EVP_aes_128_ecb();
}

struct IvBlock {
    explicit IvBlock(const bytes& iv) {
        std::copy_n(iv.data(), std::min<std::size_t>(iv.size(), sizeof octets), octets);
    }
    unsigned char octets[EVP_MAX_IV_LENGTH] = {};
};

// The key as OpenSSL reads it: as long as its cipher takes, whatever was given.
class KeyBlock {
public:
    KeyBlock(const bytes& key, const EVP_CIPHER* cipher)
        : octets_(std::max({key.size(), std::size_t{EVP_MAX_KEY_LENGTH},
                            static_cast<std::size_t>(EVP_CIPHER_key_length(cipher))})) {
        std::copy(key.begin(), key.end(), octets_.begin());
    }
    ~KeyBlock() { OPENSSL_cleanse(octets_.data(), octets_.size()); }
    KeyBlock(const KeyBlock&) = delete;
    KeyBlock& operator=(const KeyBlock&) = delete;

    const unsigned char* octets() const { return octets_.data(); }

private:
    bytes octets_;
};

const unsigned char ZERO_IV[EVP_MAX_IV_LENGTH] = {};

}  // namespace

SoftwareKeyCipher::SoftwareKeyCipher(std::shared_ptr<const CipherSpec> spec, const unsigned char* theKey,
                                     unsigned int keyLen)
    : Cipher(std::move(spec)),
      ignoresIv(modeTakesNoIv(*spec_)),
      feedsIv(cipherTakesIv(*spec_)),
      isAes(isAes128(*spec_)),
      restartsWithIv(isAes || feedsIv),
      key(theKey, theKey + keyLen) {
    initObj();
}

SoftwareKeyCipher::SoftwareKeyCipher(std::shared_ptr<const CipherSpec> spec, const bytes& theKey)
    : Cipher(std::move(spec)),
      ignoresIv(modeTakesNoIv(*spec_)),
      feedsIv(cipherTakesIv(*spec_)),
      isAes(isAes128(*spec_)),
      restartsWithIv(isAes || feedsIv),
      key(theKey) {
    initObj();
}

SoftwareKeyCipher::~SoftwareKeyCipher() {
    OPENSSL_cleanse(key.data(), key.size());
}

void SoftwareKeyCipher::encryptInit(const bytes& iv) {
    if (ignoresIv) {
        encryptInit(nullptr);
        return;
    }
    if (iv.empty()) {
        throw VORLException(modeText(*spec_->mode) + " cannot be initialized without initialization vector");
    }
    if (iv.size() != spec_->ivSize) {
        throw VORLException("input IV size (" + std::to_string(iv.size()) + ") != CipherSpec IV size (" +
                            std::to_string(spec_->ivSize) + ")");
    }
    encryptInit(IvBlock(iv).octets);
}

void SoftwareKeyCipher::decryptInit(const bytes& iv) {
    decryptInit(ignoresIv ? nullptr : IvBlock(iv).octets);
}

bytes SoftwareKeyCipher::update(const bytes& data) {
    const MarkWhereUnreported mark(data.size(), *spec_);
    bytes out;
    out.reserve(data.size() + EVP_MAX_BLOCK_LENGTH);
    bool succeeded = started;
    for (std::size_t done = 0; succeeded && done < data.size();) {
        const std::size_t piece = std::min(data.size() - done, isAes ? CACHED_PIECE : MAX_PIECE);
        const std::size_t at = out.size();
        out.resize(at + piece + EVP_MAX_BLOCK_LENGTH);
        std::size_t produced = 0;
        succeeded = feed(data.data() + done, piece, out.data() + at, produced);
        out.resize(at + produced);
        done += piece;
    }
    reportFailure(succeeded, data.size(), out.size());
    return out;
}

bytes SoftwareKeyCipher::final() {
    bytes out(EVP_MAX_BLOCK_LENGTH);
    out.resize(final(out.data()));
    return out;
}

void SoftwareKeyCipher::encryptInit(std::initializer_list<unsigned char> iv) {
    encryptInit(bytes(iv));
}

void SoftwareKeyCipher::decryptInit(std::initializer_list<unsigned char> iv) {
    decryptInit(bytes(iv));
}

void SoftwareKeyCipher::encryptInit(unsigned char* iv) {
    decrypting = 0;
    started = false;
    if (key.size() != spec_->keySize) {
        throw VORLException("SoftwareKeyCipher key size (" + std::to_string(key.size()) +
                            ") != CipherSpec key size (" + std::to_string(spec_->keySize) + ")");
    }
    start(iv);
}

void SoftwareKeyCipher::decryptInit(unsigned char* iv) {
    decrypting = 1;
    started = false;
    start(iv);
}

std::size_t SoftwareKeyCipher::update(const unsigned char* data, std::size_t size, unsigned char* out) {
    const MarkWhereUnreported mark(size, *spec_);
    std::size_t produced = 0;
    const bool succeeded = feed(data, size, out, produced);
    reportFailure(succeeded, size, produced);
    return produced;
}

std::size_t SoftwareKeyCipher::final(unsigned char* out) {
    const auto finish = decrypting != 0 ? EVP_DecryptFinal : EVP_EncryptFinal;
    int written = 0;
    if (!started || finish(ctx[decrypting].get(), out, &written) == 0) {
        OpenSSLException::throw_message("failed EVP final operation", "SoftwareKeyCipher", __LINE__,
                                        __func__);
    }
    return static_cast<std::size_t>(written);
}

void SoftwareKeyCipher::FreeContext::operator()(EVP_CIPHER_CTX* context) const {
    EVP_CIPHER_CTX_free(context);
}

void SoftwareKeyCipher::initObj() {
    const ErrorQueueMark mark;
    for (const int direction : {0, 1}) {
        ctx[direction].reset(EVP_CIPHER_CTX_new());
        keyed[direction] = false;
    }
    decrypting = 0;
    started = false;
}

// The result of an init is not reported, but it is remembered: OpenSSL does not survive being fed through a
// context that it has only half made.
void SoftwareKeyCipher::start(const unsigned char* iv) {
    if (!feedsIv) {
        iv = nullptr;
    } else if (iv == nullptr) {
        // To a context in use, a null IV would mean the last one.
        iv = ZERO_IV;
    }

    if (!keyed[decrypting] || !restartsWithIv) {
        started = setKey(iv);
    } else if (isAes) {
        started = restart(iv);
    } else {
        const ErrorQueueMark mark;
        started = restart(iv);
    }
}

bool SoftwareKeyCipher::restart(const unsigned char* iv) {
    const auto init = decrypting != 0 ? EVP_DecryptInit_ex : EVP_EncryptInit_ex;
    return init(ctx[decrypting].get(), nullptr, nullptr, nullptr, iv) != 0;
}

bool SoftwareKeyCipher::setKey(const unsigned char* iv) {
    const auto init = decrypting != 0 ? EVP_DecryptInit_ex : EVP_EncryptInit_ex;
    const EVP_CIPHER* const cipher = spec_->evpCipher;
    auto& context = ctx[decrypting];
    const ErrorQueueMark mark;
    if (context == nullptr) {
        context.reset(EVP_CIPHER_CTX_new());
    }
    keyed[decrypting] = context != nullptr && cipher != nullptr &&
                        init(context.get(), cipher, nullptr, KeyBlock(key, cipher).octets(), iv) != 0;
    if (!keyed[decrypting]) {
        // What is left of it is not used again.
        context.reset();
    }
    return keyed[decrypting];
}

bool SoftwareKeyCipher::feed(const unsigned char* data, std::size_t size, unsigned char* out,
                             std::size_t& produced) {
    const auto step = decrypting != 0 ? EVP_DecryptUpdate : EVP_EncryptUpdate;
    bool succeeded = started;
    for (std::size_t done = 0; succeeded && done < size;) {
        const std::size_t piece = std::min(size - done, MAX_PIECE);
        int written = 0;
        succeeded =
            step(ctx[decrypting].get(), out + produced, &written, data + done, static_cast<int>(piece)) != 0;
        produced += static_cast<std::size_t>(written);
        done += piece;
    }
    return succeeded;
}

// Short feeds legitimately produce nothing, so a failure without output on less than a block is passed over.
void SoftwareKeyCipher::reportFailure(bool succeeded, std::size_t size, std::size_t produced) const {
    if (succeeded || (produced == 0 && size < spec_->blockSize)) {
        return;
    }
    OpenSSLException::throw_message(
        produced > 0 ? "failed EVP update operation" : "failed EVP update, no output with input >= blocksize",
        "SoftwareKeyCipher", __LINE__, "update");
}

}  // namespace vorl
