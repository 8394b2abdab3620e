#include "octets.h"
#include "vorl/CipherSpec.h"
#include "vorl/SoftwareKeyCipher.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>

// OpenSSL counts in ints. More than they hold comes from, and goes to, a few MiB that are mapped again and
// again.

namespace vorl::test {

namespace {

const std::size_t STEP = std::size_t{4} << 20;

class RepeatedStorage {
public:
    explicit RepeatedStorage(std::size_t size) : size_((size / STEP + 2) * STEP) {
        const int file = memfd_create("storage", 0);
        void* const room =
            mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (file < 0 || room == MAP_FAILED || ftruncate(file, static_cast<off_t>(STEP)) != 0) {
            throw std::bad_alloc();
        }
        data_ = static_cast<unsigned char*>(room);
        for (std::size_t at = 0; at < size_; at += STEP) {
            if (mmap(data_ + at, STEP, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0) ==
                MAP_FAILED) {
                throw std::bad_alloc();
            }
        }
        close(file);
    }
    ~RepeatedStorage() { munmap(data_, size_); }
    RepeatedStorage(const RepeatedStorage&) = delete;
    RepeatedStorage& operator=(const RepeatedStorage&) = delete;

    unsigned char* data() const { return data_; }

private:
    const std::size_t size_;
    unsigned char* data_ = nullptr;
};

TEST(SoftwareKeyCipherOfLargeInput, IsFedInPiecesThatOpenSSLCanCount) {
    if (sizeof(void*) < 8) {
        GTEST_SKIP() << "no room for so much in 32 bits";
    }
    const std::size_t size = (std::size_t{1} << 31) + 4096 + 5;
    const RepeatedStorage in(size);
    const RepeatedStorage out(size);
    SoftwareKeyCipher cipher(CipherSpec::AES_128_ECB_PKCS5(), octets(16));

    cipher.encryptInit(bytes());
    EXPECT_EQ(cipher.update(in.data(), size, out.data()), size - 5);
    unsigned char last[16];
    EXPECT_EQ(cipher.final(last), 16U);
}

}  // namespace

}  // namespace vorl::test
