#ifndef VORL_TOOL_SHARED_SECRETBYTES_H
#define VORL_TOOL_SHARED_SECRETBYTES_H

#include "vorl/bytes.h"

#include <openssl/crypto.h>

#include <utility>

namespace vorl::tool {

/// Bytes that are wiped before their memory is released. They are never copied, nor made to grow.
class SecretBytes {
public:
    SecretBytes() = default;
    explicit SecretBytes(bytes content) : content_(std::move(content)) {}
    ~SecretBytes() { wipe(); }
    SecretBytes(SecretBytes&& other) noexcept : content_(std::exchange(other.content_, bytes())) {}
    SecretBytes& operator=(SecretBytes&& other) noexcept {
        if (this != &other) {
            wipe();
            content_ = std::exchange(other.content_, bytes());
        }
        return *this;
    }
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;

    const bytes& get() const { return content_; }
    std::size_t size() const { return content_.size(); }

private:
    void wipe() { OPENSSL_cleanse(content_.data(), content_.size()); }

    bytes content_;
};

}  // namespace vorl::tool

#endif
