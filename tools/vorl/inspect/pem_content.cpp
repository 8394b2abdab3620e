#include "inspect/pem_content.h"

#include "inspect/pem_text.h"
#include "vorl/safe_ptr.h"

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include <algorithm>
#include <limits>

namespace vorl::tool {

namespace {

// What OpenSSL reads of a block, still in its own storage.
class RawBlock {
public:
    explicit RawBlock(BIO* bio) : isWhole_(PEM_read_bio(bio, &label_, &header_, &data_, &size_) == 1) {}
    ~RawBlock() {
        OPENSSL_free(label_);
        OPENSSL_free(header_);
        OPENSSL_clear_free(data_, static_cast<std::size_t>(size_));
    }
    RawBlock(const RawBlock&) = delete;
    RawBlock& operator=(const RawBlock&) = delete;

    bool isWhole() const { return isWhole_; }
    // Either the label says so, or a header that older forms have before the data.
    bool isEncrypted() const {
        return std::string(label_) == "ENCRYPTED PRIVATE KEY" ||
               std::string(header_).find("ENCRYPTED") != std::string::npos;
    }
    bytes data() const { return bytes(data_, data_ + size_); }

private:
    char* label_ = nullptr;
    char* header_ = nullptr;
    unsigned char* data_ = nullptr;
    long size_ = 0;
    // Behind the others, which the reading of it sets.
    const bool isWhole_;
};

PemContent contentOf(const std::shared_ptr<BIO>& bio) {
    PemContent content;
    if (bio) {
        const RawBlock block(bio.get());
        if (block.isWhole()) {
            content = {SecretBytes(block.data()), block.isEncrypted()};
        }
    }
    ERR_clear_error();
    return content;
}

}  // namespace

std::shared_ptr<BIO> bioOver(const bytes& text, std::size_t offset) {
    const std::size_t size = text.size() - offset;
    const bool isCountable = size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
    return safe_ptr(isCountable ? BIO_new_mem_buf(text.data() + offset, static_cast<int>(size)) : nullptr);
}

PemContent pemContentIn(const bytes& text, bool (*isWanted)(const std::string& label)) {
    const std::vector<PemBlock> blocks = pemBlocksIn(text);
    const auto wanted = std::find_if(blocks.begin(), blocks.end(),
                                     [isWanted](const PemBlock& block) { return isWanted(block.label); });
    return wanted != blocks.end() ? contentOf(bioOver(text, wanted->offset)) : PemContent();
}

}  // namespace vorl::tool
