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
    const ErrorQueueMark mark;
    initObj();
}

HMAC::~HMAC() {
    OPENSSL_cleanse(key_.data(), key_.size());
}

void HMAC::init() {
    if (!fresh_) {
        const ErrorQueueMark mark;
        restart();
    }
}

void HMAC::update(const unsigned char* data, unsigned int len) {
    feed(data, len);
}

void HMAC::update(const bytes& data) {
    feed(data.data(), data.size());
}

bytes HMAC::final() {
    ErrorQueueMark mark;
    bytes code = finish();
    if (started_) {
        mark.nothingFailed();
    }
    return code;
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
    md_ = fetchedMd(algo_->md);
    ctx_.reset(HMAC_CTX_new());
    // OpenSSL takes a null pointer for "the key as before", so that an empty key would be none at all.
    static const unsigned char empty = 0;
    const unsigned char* const key = key_.empty() ? &empty : key_.data();
    const bool countable = key_.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max());
    keyed_ = ctx_ != nullptr && countable &&
             HMAC_Init_ex(ctx_.get(), key, static_cast<int>(key_.size()), md_, nullptr) != 0;
    started_ = keyed_;
    fresh_ = keyed_;
}

void HMAC::restart() {
    if (!keyed_) {
        initObj();
        return;
    }
    started_ = HMAC_Init_ex(ctx_.get(), nullptr, 0, nullptr, nullptr) != 0;
    fresh_ = started_;
}

void HMAC::feed(const unsigned char* data, std::size_t size) {
    fresh_ = false;
    if (algo_->md != md_) {
        // One of our own digests takes whatever it is given.
        feedUnmarked(data, size);
    } else {
        const ErrorQueueMark mark;
        feedUnmarked(data, size);
    }
}

void HMAC::feedUnmarked(const unsigned char* data, std::size_t size) {
    started_ = started_ && feedInPieces(data, size, [this](const unsigned char* piece, std::size_t n) {
                   return HMAC_Update(ctx_.get(), piece, n);
               });
}

bytes HMAC::finish() {
    bytes code(EVP_MAX_MD_SIZE);
    unsigned int length = 0;
    if (!started_ || HMAC_Final(ctx_.get(), code.data(), &length) == 0) {
        length = 0;
        started_ = false;
    } else {
        // Here, under the caller's mark, so that the next init() need not set another one.
        restart();
    }
    code.resize(length);
    return code;
}

bytes HMAC::base64CodeOf(const unsigned char* data, std::size_t size) {
    ErrorQueueMark mark;
    if (!fresh_) {
        restart();
    }
    feed(data, size);
    const bytes code = finish();
    if (started_) {
        mark.nothingFailed();
    }
    return Tarvik::BrisClient::Base64::encode(code);
}

}  // namespace vorl
