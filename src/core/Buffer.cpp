#include "vorl/Buffer.h"

#include "block_content.h"
#include "index32.h"
#include "vorl/ASN1Exception.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace vorl {

namespace {

const std::uint64_t SMALLEST_GROWN_SIZE = 1024;
const char INDEX_TOO_LARGE[] = "Buffer: an index would pass 2^32-1";

}  // namespace

Buffer::Buffer(unsigned int size) : data_(size) {}

Buffer::Buffer(const unsigned char* p, unsigned int n) : widx_(n), data_(p, p + n) {}

Buffer::Buffer(const bytes& v) : widx_(index32(v.size(), INDEX_TOO_LARGE)), data_(v) {}

Buffer::Buffer(bytes&& v) : widx_(index32(v.size(), INDEX_TOO_LARGE)), data_(std::move(v)) {}

Buffer::Buffer(Buffer&& other) noexcept
    : ridx_(std::exchange(other.ridx_, 0)),
      widx_(std::exchange(other.widx_, 0)),
      midx_(std::exchange(other.midx_, 0)),
      data_(std::move(other.data_)) {}

Buffer& Buffer::operator=(Buffer&& other) noexcept {
    // By way of a third, so that a buffer may be moved to itself.
    Buffer moved(std::move(other));
    std::swap(ridx_, moved.ridx_);
    std::swap(widx_, moved.widx_);
    std::swap(midx_, moved.midx_);
    data_.swap(moved.data_);
    return *this;
}

void Buffer::put(const unsigned char* p, unsigned int offset, unsigned int n) {
    append(p + offset, n);
}

void Buffer::put(const unsigned char* p, unsigned int n) {
    append(p, n);
}

void Buffer::put(const bytes& v) {
    append(v.data(), v.size());
}

void Buffer::put(unsigned char b) {
    append(&b, 1);
}

void Buffer::put(const ASN1Primitive& obj) {
    obj.encode(*this);
}

unsigned int Buffer::get(unsigned char* dst, unsigned int n) {
    const unsigned int count = std::min(n, widx_ - ridx_);
    std::copy_n(data_.data() + ridx_, count, dst);
    ridx_ += count;
    return count;
}

UInt8 Buffer::nextUInt8() {
    UInt8 field(0);
    field.decode(*this);
    return field;
}

UInt16 Buffer::nextUInt16() {
    UInt16 field(0);
    field.decode(*this);
    return field;
}

UInt32 Buffer::nextUInt32() {
    UInt32 field(0);
    field.decode(*this);
    return field;
}

OctetString Buffer::nextOctetString() {
    // As OctetString::decode() does, without a second copy of the octets.
    return OctetString(readBlockContent(*this, OctetString().unitSize()));
}

bytes Buffer::toByteArray() const& {
    return bytes(data_.data(), data_.data() + widx_);
}

bytes Buffer::toByteArray() && {
    data_.resize(widx_);
    ridx_ = 0;
    widx_ = 0;
    return std::move(data_);
}

bytes Buffer::toByteArrayRemain() const {
    return bytes(data_.data() + ridx_, data_.data() + widx_);
}

std::string Buffer::toString() const {
    return "Buffer[ridx_=" + std::to_string(ridx_) + ",widx_=" + std::to_string(widx_) +
           ",midx_=" + std::to_string(midx_) + ",len=" + std::to_string(data_.size()) + "]";
}

void Buffer::resize(unsigned int extra) {
    const std::uint64_t size = data_.size();
    const std::uint64_t grown = std::max({size + extra, 2 * size, SMALLEST_GROWN_SIZE});
    if (grown > data_.max_size()) {
        throw std::length_error("Buffer: the store would be larger than memory");
    }
    data_.resize(static_cast<std::size_t>(grown));
}

void Buffer::refuseRead() const {
    throw ASN1Exception("index out of bounds: read index(" + std::to_string(ridx_) + ") >= write index(" +
                        std::to_string(widx_) + ")");
}

void Buffer::truncate(unsigned int end) {
    std::fill(data_.begin() + end, data_.begin() + widx_, static_cast<unsigned char>(0));
    widx_ = end;
}

void Buffer::append(const unsigned char* p, std::uint64_t n) {
    const unsigned int end = index32(widx_ + n, INDEX_TOO_LARGE);
    const std::uint64_t room = data_.size() - widx_;
    if (n > room) {
        resize(static_cast<unsigned int>(n - room));
    }
    std::copy_n(p, static_cast<std::size_t>(n), data_.data() + widx_);
    widx_ = end;
}

}  // namespace vorl
