#include "floor.h"

#include <openssl/rand.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace vorl::bench {

namespace {

const std::size_t IV_SIZE = 16;
const std::size_t K16 = 16384;

void require(bool succeeded) {
    if (!succeeded) {
        std::abort();
    }
}

// Writes the determinant for `rest` more octets and returns how many of them follow it.
std::size_t putDeterminant(unsigned char*& out, std::size_t rest) {
    if (rest >= K16) {
        const std::size_t multiple = std::min<std::size_t>(rest / K16, 4);
        *out++ = static_cast<unsigned char>(0xc0 + multiple);
        return multiple * K16;
    }
    if (rest >= 128) {
        *out++ = static_cast<unsigned char>(0x80 | rest >> 8);
    }
    *out++ = static_cast<unsigned char>(rest);
    return rest;
}

// Reads a determinant: how many octets follow it. `last` is set when no further fragment does.
std::size_t getDeterminant(const unsigned char*& in, bool& last) {
    const std::size_t head = *in++;
    last = head < 0xc0;
    if (!last) {
        return (head & 0x3f) * K16;
    }
    return head < 0x80 ? head : (head & 0x3f) << 8 | *in++;
}

}  // namespace

Floor::Floor(const bytes& key) : encrypting_(EVP_CIPHER_CTX_new()), decrypting_(EVP_CIPHER_CTX_new()) {
    const unsigned char iv[IV_SIZE] = {};
    require(EVP_EncryptInit_ex(encrypting_.get(), EVP_aes_128_cbc(), nullptr, key.data(), iv) == 1);
    require(EVP_DecryptInit_ex(decrypting_.get(), EVP_aes_128_cbc(), nullptr, key.data(), iv) == 1);
}

RawOctets Floor::encrypt(const bytes& message) {
    const std::size_t bodySize = (message.size() / 16 + 1) * 16;
    unsigned char* const envelope = envelopeOf(2 + IV_SIZE + bodySize + bodySize / K16 + 3);
    unsigned char* out = envelope;
    *out++ = 0x02;
    *out++ = IV_SIZE;
    require(RAND_bytes(out, IV_SIZE) == 1);
    require(EVP_EncryptInit_ex(encrypting_.get(), nullptr, nullptr, nullptr, out) == 1);
    out += IV_SIZE;

    const unsigned char* in = message.data();
    std::size_t left = message.size();
    for (std::size_t done = 0; done < bodySize;) {
        const std::size_t fragment = putDeterminant(out, bodySize - done);
        const std::size_t plain = std::min(fragment, left);
        int written = 0;
        require(EVP_EncryptUpdate(encrypting_.get(), out, &written, in, static_cast<int>(plain)) == 1);
        out += written;
        in += plain;
        left -= plain;
        done += fragment;
    }
    int written = 0;
    require(EVP_EncryptFinal_ex(encrypting_.get(), out, &written) == 1);
    out += written;

    const auto size = static_cast<std::size_t>(out - envelope);
    const std::size_t textSize = (size + 2) / 3 * 4;
    RawOctets text{std::unique_ptr<unsigned char[]>(new unsigned char[textSize + 1]), textSize};
    EVP_EncodeBlock(text.data.get(), envelope, static_cast<int>(size));
    return text;
}

RawOctets Floor::decrypt(const bytes& text) {
    unsigned char* const envelope = envelopeOf(text.size() / 4 * 3);
    const int decoded = EVP_DecodeBlock(envelope, text.data(), static_cast<int>(text.size()));
    require(decoded > 0 && envelope[0] == 0x02 && envelope[1] == IV_SIZE);
    require(EVP_DecryptInit_ex(decrypting_.get(), nullptr, nullptr, nullptr, envelope + 2) == 1);

    RawOctets message{std::unique_ptr<unsigned char[]>(new unsigned char[static_cast<std::size_t>(decoded)]),
                      0};
    unsigned char* out = message.data.get();
    const unsigned char* in = envelope + 2 + IV_SIZE;
    for (bool last = false; !last;) {
        const std::size_t fragment = getDeterminant(in, last);
        int written = 0;
        require(EVP_DecryptUpdate(decrypting_.get(), out, &written, in, static_cast<int>(fragment)) == 1);
        in += fragment;
        out += written;
    }
    int written = 0;
    require(EVP_DecryptFinal_ex(decrypting_.get(), out, &written) == 1);
    out += written;
    message.size = static_cast<std::size_t>(out - message.data.get());
    return message;
}

unsigned char* Floor::envelopeOf(std::size_t size) {
    if (size > capacity_) {
        envelope_.reset(new unsigned char[size]);
        capacity_ = size;
    }
    return envelope_.get();
}

}  // namespace vorl::bench
