#ifndef VORL_BUFFER_H
#define VORL_BUFFER_H

#include "vorl/OctetString.h"
#include "vorl/UInt16.h"
#include "vorl/UInt32.h"
#include "vorl/UInt8.h"
#include "vorl/bytes.h"
#include "vorl/export.h"

#include <cstdint>
#include <string>

namespace vorl {

class OctetRuns;
class WholeAppend;

/// The growable byte array that every record is written into and read from.
///
/// One store and two positions: writes append at widx(), reads consume from ridx() and never pass widx().
/// The store may be larger than what is written; the reserve is zero. Indices are 32-bit: an operation that
/// would take one past 2^32 - 1 throws std::length_error and changes nothing.
class VORL_API Buffer {
public:
    Buffer() = default;
    /// An empty buffer with room for `size` bytes.
    explicit Buffer(unsigned int size);
    /// A buffer that holds the given bytes, ready to be read. A list of octets is written Buffer(bytes{...}):
    /// by itself it would be taken for a size, or for a pointer and a length.
    Buffer(const unsigned char* p, unsigned int n);
    Buffer(const bytes& v);  // NOLINT(google-explicit-constructor): bytes are as good as a buffer of them
    Buffer(bytes&& v);       // NOLINT(google-explicit-constructor)

    Buffer(const Buffer&) = default;
    /// A buffer that was moved from is empty.
    Buffer(Buffer&& other) noexcept;
    Buffer& operator=(const Buffer&) = default;
    Buffer& operator=(Buffer&& other) noexcept;
    ~Buffer() = default;

    /// Where the next byte is read.
    unsigned int ridx() const { return ridx_; }
    /// How many bytes are written.
    unsigned int widx() const { return widx_; }
    /// The mark, which no operation moves.
    unsigned int midx() const { return midx_; }

    /// Appends the `n` bytes at `p` + `offset`.
    void put(const unsigned char* p, unsigned int offset, unsigned int n);
    void put(const unsigned char* p, unsigned int n);
    void put(const bytes& v);
    /// One byte. A wider number is cut to its low byte: it is written as a UInt16 or UInt32.
    void put(unsigned char b);
    /// Lets `obj` append its own encoding.
    void put(const ASN1Primitive& obj);

    /// The next byte. Throws ASN1Exception where none is left.
    unsigned char get() {
        if (ridx_ >= widx_) {
            refuseRead();
        }
        return data_[ridx_++];
    }
    /// Copies up to `n` of the unread bytes to `dst` and returns how many there were.
    unsigned int get(unsigned char* dst, unsigned int n);
    /// Passes over up to `n` of the unread bytes and returns how many there were.
    unsigned int skip(unsigned int n) {
        const unsigned int count = n < widx_ - ridx_ ? n : widx_ - ridx_;
        ridx_ += count;
        return count;
    }

    /// The next field, with the exceptions of its decode().
    UInt8 nextUInt8();
    UInt16 nextUInt16();
    UInt32 nextUInt32();
    OctetString nextOctetString();

    /// All that was written, read or not.
    bytes toByteArray() const&;
    /// The same, moved out of a buffer that is no longer needed, which is empty afterwards.
    bytes toByteArray() &&;
    /// What is still unread.
    bytes toByteArrayRemain() const;
    /// For example "Buffer[ridx_=0,widx_=3,midx_=0,len=1024]"; len is the size of the store.
    std::string toString() const;

    /// Grows the store by at least `extra` bytes: to twice its size and to 1024 bytes at the least.
    /// Throws std::bad_alloc or std::length_error, with the content as it was.
    void resize(unsigned int extra);

private:
    friend class OctetRuns;
    friend class WholeAppend;

    [[noreturn]] void refuseRead() const;
    // Takes back what was written from `end` on.
    void truncate(unsigned int end);
    void append(const unsigned char* p, std::uint64_t n);

    unsigned int ridx_ = 0;
    unsigned int widx_ = 0;
    unsigned int midx_ = 0;
    bytes data_;
};

}  // namespace vorl

#endif
