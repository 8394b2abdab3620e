#ifndef VORL_TOOL_VECTORS_SAMPLE_BYTES_H
#define VORL_TOOL_VECTORS_SAMPLE_BYTES_H

#include "vorl/bytes.h"

#include <openssl/ossl_typ.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace vorl::tool {

/// Byte i is i mod 251, so that no power of two is a period of it.
bytes sampleMessage(std::size_t size);

/// Bytes that look random, that everybody knows, and that are the same on every machine: SHA-256 of the label
/// and a number of 32 bits, which counts the digests from 0, high byte first.
class SampleStream {
public:
    explicit SampleStream(std::string label);

    void fill(unsigned char* out, std::size_t size);

private:
    std::string label_;
    std::uint32_t blocks_ = 0;
    bytes block_;
    std::size_t used_ = 0;
};

/// The first bytes of such a stream.
bytes sampleBytes(const std::string& label, std::size_t size);

/// Makes a stream what OpenSSL takes random numbers from, for as long as the object exists. One at a time.
class SampleRandom {
public:
    explicit SampleRandom(const std::string& label);
    ~SampleRandom();
    SampleRandom(const SampleRandom&) = delete;
    SampleRandom& operator=(const SampleRandom&) = delete;

private:
    const RAND_METHOD* before_;
};

}  // namespace vorl::tool

#endif
