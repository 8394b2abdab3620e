#include "vorl/HMAC.h"

#include "core/ErrorQueueMark.h"
#include "feed_in_pieces.h"
#include "fetched_md.h"
#include "vorl/DigestAlgo.h"

#include <brisclient/Base64.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <limits>
#include <utility>

namespace vorl {

HMAC::HMAC(const bytes& key) : HMAC(key, DigestAlgo::SHA256()) {}

HMAC::HMAC(const bytes& key, std::shared_ptr<const DigestAlgo> algo) : key_(key), algo_(std::move(algo)) {
    initObj();
}

HMAC::~HMAC() {
    OPENSSL_cleanse(key_.data(), key_.size());
}

void HMAC::init() {
    const ErrorQueueMark mark;
    started_ = restart();
}

void HMAC::update(const unsigned char* data, unsigned int len) {
    const ErrorQueueMark mark;
    feed(data, len);
}

void HMAC::update(const bytes& data) {
    const ErrorQueueMark mark;
    feed(data.data(), data.size());
}

bytes HMAC::final() {
    const ErrorQueueMark mark;
    return finish();
}

bytes HMAC::hmac(const unsigned char* data, unsigned int len) {
    return base64CodeOf(data, len);
}

bytes HMAC::hmac(const bytes& data) {
    return base64CodeOf(data.data(), data.size());
}

void HMAC::FreeContext::operator()(HMAC_CTX* context) const {
    HMAC_CTX_free(context);
}

void HMAC::initObj() {
    const ErrorQueueMark mark;
    ctx_.reset(HMAC_CTX_new());
    // OpenSSL takes a null pointer for "the key as before", so that an empty key would be none at all.
    static const unsigned char empty = 0;
    const unsigned char* const key = key_.empty() ? &empty : key_.data();
    const bool countable = key_.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max());
    keyed_ = ctx_ != nullptr && countable &&
             HMAC_Init_ex(ctx_.get(), key, static_cast<int>(key_.size()), fetchedMd(algo_->md), nullptr) != 0;
    started_ = keyed_;
}

bool HMAC::restart() {
    if (!keyed_) {
        initObj();
        return started_;
    }
    return HMAC_Init_ex(ctx_.get(), nullptr, 0, nullptr, nullptr) != 0;
}

void HMAC::feed(const unsigned char* data, std::size_t size) {
    started_ = started_ && feedInPieces(data, size, [this](const unsigned char* piece, std::size_t n) {
                   return HMAC_Update(ctx_.get(), piece, n);
               });
}

bytes HMAC::finish() {
    bytes code(EVP_MAX_MD_SIZE);
    unsigned int length = 0;
    if (!started_ || HMAC_Final(ctx_.get(), code.data(), &length) == 0) {
        length = 0;
    }
    code.resize(length);
    return code;
}

bytes HMAC::base64CodeOf(const unsigned char* data, std::size_t size) {
    const ErrorQueueMark mark;
    started_ = restart();
    feed(data, size);
    return Tarvik::BrisClient::Base64::encode(finish());
}

}  // namespace vorl
