#ifndef VORL_TOOL_SHARED_SECRETBUFFER_H
#define VORL_TOOL_SHARED_SECRETBUFFER_H

#include "shared/SecretBytes.h"
#include "vorl/Buffer.h"

#include <utility>

namespace vorl::tool {

/// A library's buffer for bytes that are secret, which it does not wipe itself.
class SecretBuffer {
public:
    /// Empty, with room for `size` bytes. What outgrows it leaves a copy behind.
    explicit SecretBuffer(unsigned int size) : buffer_(size) {}
    explicit SecretBuffer(const bytes& content) : buffer_(content) {}
    ~SecretBuffer() { takeBytes(); }
    SecretBuffer(const SecretBuffer&) = delete;
    SecretBuffer& operator=(const SecretBuffer&) = delete;

    Buffer& get() { return buffer_; }
    /// All that was written. The buffer is empty afterwards.
    SecretBytes takeBytes() { return SecretBytes(std::move(buffer_).toByteArray()); }

private:
    Buffer buffer_;
};

}  // namespace vorl::tool

#endif
