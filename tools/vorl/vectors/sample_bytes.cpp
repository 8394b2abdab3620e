#include "vectors/sample_bytes.h"

#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/OpenSSLException.h"

#include <openssl/rand.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

namespace vorl::tool {

namespace {

std::unique_ptr<SampleStream>& currentStream() {
    static std::unique_ptr<SampleStream> stream;
    return stream;
}

int fillFromStream(unsigned char* out, int size) {
    // OpenSSL would be no place for an exception to pass through.
    try {
        currentStream()->fill(out, static_cast<std::size_t>(size));
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

int isReady() {
    return 1;
}

const RAND_METHOD SAMPLE_METHOD = {nullptr, fillFromStream, nullptr, nullptr, fillFromStream, isReady};

}  // namespace

bytes sampleMessage(std::size_t size) {
    bytes message(size);
    std::generate(message.begin(), message.end(),
                  [i = 0U]() mutable { return static_cast<unsigned char>(i++ % 251); });
    return message;
}

SampleStream::SampleStream(std::string label) : label_(std::move(label)) {}

void SampleStream::fill(unsigned char* out, std::size_t size) {
    for (unsigned char* const end = out + size; out != end; ++out) {
        if (used_ == block_.size()) {
            const std::uint32_t n = blocks_++;
            Digester digester(DigestAlgo::SHA256());
            digester.init();
            digester.update(label_);
            digester.update(bytes{static_cast<unsigned char>(n >> 24), static_cast<unsigned char>(n >> 16),
                                  static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)});
            block_ = digester.final();
            used_ = 0;
        }
        *out = block_[used_++];
    }
}

bytes sampleBytes(const std::string& label, std::size_t size) {
    bytes content(size);
    SampleStream(label).fill(content.data(), size);
    return content;
}

SampleRandom::SampleRandom(const std::string& label) : before_(RAND_get_rand_method()) {
    currentStream() = std::make_unique<SampleStream>(label);
    if (RAND_set_rand_method(&SAMPLE_METHOD) != 1) {
        OpenSSLException::throw_message("RAND_set_rand_method()", "sample_bytes", __LINE__, __func__);
    }
}

SampleRandom::~SampleRandom() {
    RAND_set_rand_method(before_);
    currentStream().reset();
}

}  // namespace vorl::tool
