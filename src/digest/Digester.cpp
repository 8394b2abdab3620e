#include "vorl/Digester.h"

#include "feed_in_pieces.h"
#include "fetched_md.h"
#include "vorl/DigestAlgo.h"
#include "vorl/OpenSSLException.h"

#include <openssl/evp.h>

#include <utility>

namespace vorl {

Digester::Digester(std::shared_ptr<const DigestAlgo> algo)
    : algo_(std::move(algo)), md_(fetchedMd(algo_->md)), ctx_(EVP_MD_CTX_new()) {}

Digester::~Digester() = default;

void Digester::init() {
    if (ctx_ == nullptr) {
        // There was no memory for it before.
        ctx_.reset(EVP_MD_CTX_new());
    }
    started_ = ctx_ != nullptr && EVP_DigestInit_ex(ctx_.get(), md_, nullptr) != 0;
    if (!started_) {
        OpenSSLException::throw_message("EVP_DigestInit_ex()", "Digester", __LINE__, __func__);
    }
}

void Digester::update(const unsigned char* data, unsigned int len) {
    feed(data, len);
}

void Digester::update(const std::string& data) {
    feed(data.data(), data.size());
}

void Digester::update(const bytes& data) {
    feed(data.data(), data.size());
}

bytes Digester::final() {
    bytes digest(EVP_MAX_MD_SIZE);
    unsigned int length = 0;
    if (!started_ || EVP_DigestFinal_ex(ctx_.get(), digest.data(), &length) == 0) {
        OpenSSLException::throw_message("EVP_DigestFinal_ex()", "Digester", __LINE__, __func__);
    }
    digest.resize(length);
    return digest;
}

void Digester::FreeContext::operator()(EVP_MD_CTX* context) const {
    EVP_MD_CTX_free(context);
}

void Digester::feed(const void* data, std::size_t size) {
    const bool succeeded = feedInPieces(static_cast<const unsigned char*>(data), size,
                                        [this](const unsigned char* piece, std::size_t n) {
                                            return started_ ? EVP_DigestUpdate(ctx_.get(), piece, n) : 0;
                                        });
    if (!succeeded) {
        OpenSSLException::throw_message("EVP_DigestUpdate()", "Digester", __LINE__, "update");
    }
}

}  // namespace vorl
