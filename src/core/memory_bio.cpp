#include "memory_bio.h"

#include "vorl/safe_ptr.h"

#include <openssl/bio.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace vorl {

namespace {

// OpenSSL counts in ints.
const std::size_t MAX_COUNT = static_cast<std::size_t>(std::numeric_limits<int>::max());

}  // namespace

std::shared_ptr<BIO> newMemoryBio() {
    return safe_ptr(BIO_new(BIO_s_mem()));
}

std::shared_ptr<BIO> memoryBioOver(const std::string& text) {
    if (text.size() > MAX_COUNT) {
        return nullptr;
    }
    return safe_ptr(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

bool readPending(BIO* bio, std::string& text) {
    text.assign(std::min(BIO_ctrl_pending(bio), MAX_COUNT), '\0');
    const int got = BIO_read(bio, text.data(), static_cast<int>(text.size()));
    // An empty BIO answers -1, which is no failure but no bytes.
    text.resize(static_cast<std::size_t>(std::max(got, 0)));
    return got != 0;
}

bool copyContent(BIO* bio, std::string& text) {
    char* content = nullptr;
    const long length = BIO_get_mem_data(bio, &content);
    if (length <= 0 || content == nullptr) {
        return false;
    }
    text.assign(content, static_cast<std::size_t>(length));
    return true;
}

int refusePassword(char* /*buffer*/, int /*size*/, int /*forWriting*/, void* /*userData*/) {
    return -1;
}

}  // namespace vorl
