#include "LibraryState.h"
#include "cipher_contexts.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_cipher.h"
#include "replaced_new.h"
#include "sample_key.h"
#include "vorl/CipherAlgo.h"
#include "vorl/CipherMode.h"
#include "vorl/CipherSpec.h"
#include "vorl/NullCipher.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PaddingType.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VORLException.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>

#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <utility>

// OpenSSL's assembler reads past the end of what it is given without a sanitizer noticing. Here each
// allocation ends where a page ends that is followed by one that cannot be touched, so that such a read ends
// the program.

namespace vorl::test {

namespace {

struct Region {
    void* block;
    unsigned char* base;
    std::size_t length;
};

// 32-bit ARM moves two words at once only to and from where a word may stand, and the standard library keeps
// words before the characters of an exception's text. Up to three bytes behind a block may be read there
// unnoticed.
#ifdef __arm__
const std::size_t ALIGNMENT = 4;
#else
const std::size_t ALIGNMENT = 1;
#endif

const std::size_t MAX_REGIONS = 20000;

bool guarding = false;
Region regions[MAX_REGIONS];
std::size_t regionCount = 0;

void* allocateGuarded(std::size_t size) noexcept {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t usable = std::max((size + page - 1) / page, std::size_t{1}) * page;
    void* const mapped = regionCount == MAX_REGIONS ? MAP_FAILED
                                                    : mmap(nullptr, usable + page, PROT_READ | PROT_WRITE,
                                                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
    }
    auto* const base = static_cast<unsigned char*>(mapped);
    if (mprotect(base + usable, page, PROT_NONE) != 0) {
        std::abort();
    }
    // An object's size is a multiple of its alignment, so that it stays aligned here.
    void* const block = base + usable - (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
    regions[regionCount++] = {block, base, usable + page};
    return block;
}

}  // namespace

void* allocate(std::size_t size) noexcept {
    return guarding ? allocateGuarded(size) : std::malloc(size);
}

void release(void* block) noexcept {
    // The latest are the first to go.
    for (std::size_t i = regionCount; i-- > 0;) {
        if (regions[i].block == block) {
            munmap(regions[i].base, regions[i].length);
            regions[i] = regions[--regionCount];
            return;
        }
    }
    std::free(block);
}

namespace {

using Tarvik::BrisClient::Base64;
using tarvik::crypto::ICipherContext;

class GuardedMemory : public StartedLibrary {
protected:
    void SetUp() override {
        StartedLibrary::SetUp();
        guarding = true;
    }
    void TearDown() override {
        guarding = false;
        StartedLibrary::TearDown();
    }
};

using GuardedMemoryDeathTest = GuardedMemory;

bytes sized(bytes given, std::size_t size) {
    given.resize(size);
    return given;
}

// A copy that takes exactly its size, in guarded storage.
bytes guarded(const bytes& given) {
    return bytes(given.begin(), given.end());
}

std::shared_ptr<const CipherSpec> ownSpec(const EVP_CIPHER* cipher, unsigned int keySize,
                                          unsigned int blockSize, unsigned int ivSize) {
    return std::make_shared<const CipherSpec>(static_cast<ICipherContext::Spec>(9), CipherAlgo::AES(),
                                              CipherMode::CBC(), PaddingType::PKCS5Padding(), keySize,
                                              blockSize, ivSize, cipher);
}

bytes finishWith(Cipher& cipher, const bytes& data) {
    const bytes updated = cipher.update(data);
    return updated + cipher.final();
}

const std::size_t SEAM_SIZES[] = {127,   128,   8175,  8176,  8191,  8192,  8193,  12287, 12288, 12289,
                                  16351, 16367, 16368, 16383, 16384, 16385, 24577, 32752, 49153, 65537};

}  // namespace

TEST_F(GuardedMemoryDeathTest, ReadPastTheEndOfAVectorIsNoticed) {
    const bytes key = octets(12);
    const volatile unsigned char* const octetsOfKey = key.data();
    EXPECT_EQ(octetsOfKey[11], key[11]);
    EXPECT_DEATH(static_cast<void>(octetsOfKey[12]), "");
}

TEST_F(GuardedMemoryDeathTest, OpenSSLReadsAWholeKeyAndIsNoticed) {
    const bytes key = octets(12);
    EXPECT_DEATH(
        {
            EVP_CIPHER_CTX* const ctx = EVP_CIPHER_CTX_new();
            EVP_DecryptInit_ex(ctx, EVP_aes_128_cbc(), nullptr, key.data(), IV.data());
        },
        "");
}

TEST_F(GuardedMemory, KeysAndIvsOfAnyLengthDecrypt) {
    for (const std::size_t keySize : {0U, 1U, 8U, 15U, 16U, 17U, 32U, 64U, 65U}) {
        const bytes key = octets(keySize);
        const bytes encrypted = rawEncrypt(sized(key, 16), IV, octets(40));
        SoftwareKeyCipher fromVector(CipherSpec::AES_128_CBC_PKCS5(), key);
        SoftwareKeyCipher fromPointer(CipherSpec::AES_128_CBC_PKCS5(), key.data(),
                                      static_cast<unsigned int>(keySize));
        for (const std::size_t ivSize : {0U, 1U, 8U, 15U, 16U, 17U, 64U}) {
            const bytes iv = octets(ivSize);
            const bytes expected =
                rawCipher(EVP_aes_128_cbc(), false, sized(key, 16), sized(iv, 16), encrypted);
            for (int round = 0; round < 2; ++round) {
                fromVector.decryptInit(iv);
                EXPECT_EQ(finishWith(fromVector, encrypted), expected) << keySize << " " << ivSize;
                fromPointer.decryptInit(iv);
                EXPECT_EQ(finishWith(fromPointer, encrypted), expected) << keySize << " " << ivSize;
            }
        }
    }
}

TEST_F(GuardedMemory, KeysOfAnyLengthDecryptInEcbMode) {
    for (const std::size_t keySize : {0U, 1U, 15U, 16U, 17U}) {
        const bytes key = octets(keySize);
        SoftwareKeyCipher cipher(CipherSpec::AES_128_ECB_PKCS5(), key);
        cipher.decryptInit(octets(1));
        EXPECT_EQ(finishWith(cipher, rawEncrypt(sized(key, 16), {}, octets(40))), octets(40));
    }
}

TEST_F(GuardedMemory, SpecMayPromiseLessThanTheCipherReads) {
    SoftwareKeyCipher halfKey(ownSpec(EVP_aes_256_cbc(), 16, 16, 16), octets(16));
    halfKey.encryptInit(octets(16));
    EXPECT_EQ(finishWith(halfKey, octets(40)),
              rawCipher(EVP_aes_256_cbc(), true, sized(octets(16), 32), octets(16), octets(40)));

    SoftwareKeyCipher nothing(ownSpec(EVP_aes_128_cbc(), 0, 0, 1), bytes());
    nothing.encryptInit(octets(1));
    EXPECT_EQ(finishWith(nothing, octets(40)), rawEncrypt(bytes(16), sized(octets(1), 16), octets(40)));
}

TEST_F(GuardedMemory, SpecMayPromiseMoreThanTheCipherReads) {
    SoftwareKeyCipher cipher(ownSpec(EVP_aes_128_cbc(), 100, 1000, 100), octets(100));
    cipher.encryptInit(octets(100));
    const bytes encrypted = finishWith(cipher, octets(40));
    EXPECT_EQ(encrypted, rawEncrypt(octets(16), octets(16), octets(40)));
    cipher.decryptInit(octets(100));
    EXPECT_EQ(finishWith(cipher, encrypted), octets(40));
}

TEST_F(GuardedMemory, DataOfAnySizeEncryptsAndDecrypts) {
    SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), guarded(KEY));
    for (std::size_t size = 0; size <= 300; ++size) {
        const bytes message = octets(size);
        cipher.encryptInit(guarded(IV));
        const bytes encrypted = guarded(finishWith(cipher, message));
        cipher.decryptInit(guarded(IV));
        EXPECT_EQ(finishWith(cipher, encrypted), message) << size;
    }
}

// `out` holds what was given and a block more, as is asked for.
TEST_F(GuardedMemory, StorageFormsKeepToTheirStorage) {
    SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    for (std::size_t size = 0; size <= 100; ++size) {
        const bytes message = octets(size);
        for (std::size_t first = 0; first <= size; first += 7) {
            bytes firstOut(first + 16);
            bytes secondOut(size - first + 16);
            bytes last(16);
            cipher.encryptInit(IV);
            firstOut.resize(cipher.update(message.data(), first, firstOut.data()));
            secondOut.resize(cipher.update(message.data() + first, size - first, secondOut.data()));
            last.resize(cipher.final(last.data()));
            ASSERT_EQ(firstOut + secondOut + last, rawEncrypt(KEY, IV, message));
        }
    }
}

TEST_F(GuardedMemory, EnvelopesOfAnySizeOpen) {
    SoftwareKeyCipher own(CipherSpec::AES_128_CBC_PKCS5(), guarded(KEY));
    ForwardingContext foreign(
        std::make_shared<SoftwareKeyCipher>(CipherSpec::AES_128_CBC_PKCS5(), guarded(KEY)));
    SoftwareKeyCipher ecb(CipherSpec::AES_128_ECB_PKCS5(), guarded(KEY));
    NullCipher null;
    const std::pair<Level, ICipherContext*> ways[] = {
        {FULL, &own}, {FULL, &foreign}, {TEST, &ecb}, {NONE, &null}};
    for (const auto& [level, context] : ways) {
        const auto wrapper = CipherWrapper::forID(level);
        const auto check = [&, level = level, context = context](std::size_t size) {
            const bytes message = octets(size);
            const bytes written = wrapper->encrypt(message, *context);
            const bytes envelope =
                expectedEnvelope(level, KEY, level == FULL ? ivOf(written) : bytes(), message);
            ASSERT_TRUE(written == envelope) << size;
            if (canBeReadBack(level, size)) {
                ASSERT_TRUE(CipherWrapper::decrypt(envelope, *context) == message) << size;
                ASSERT_TRUE(CipherWrapper::decrypt(guarded(envelope), *context) == message) << size;
            } else {
                EXPECT_THROW(CipherWrapper::decrypt(guarded(envelope), *context), VORLException);
            }
        };
        for (std::size_t size = 0; size <= 70; ++size) {
            check(size);
        }
        for (const std::size_t size : SEAM_SIZES) {
            check(size);
        }
    }
}

TEST_F(GuardedMemory, EnvelopesThatAreCutOffOrDamagedAreRefusedOrOpen) {
    SoftwareKeyCipher own(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    ForwardingContext foreign(std::make_shared<SoftwareKeyCipher>(CipherSpec::AES_128_CBC_PKCS5(), KEY));
    SoftwareKeyCipher ecb(CipherSpec::AES_128_ECB_PKCS5(), KEY);
    NullCipher null;
    const std::pair<Level, ICipherContext*> ways[] = {
        {FULL, &own}, {FULL, &foreign}, {TEST, &ecb}, {NONE, &null}};
    for (const auto& [level, context] : ways) {
        for (const std::size_t size : {1U, 20U, 150U}) {
            const bytes envelope = expectedEnvelope(level, KEY, IV, octets(size));
            for (std::size_t at = 0; at < envelope.size(); ++at) {
                EXPECT_THROW(CipherWrapper::decrypt(slice(envelope, 0, at), *context), VORLException);
                for (unsigned int bit = 0; bit < 8; ++bit) {
                    bytes damaged = guarded(envelope);
                    damaged[at] = static_cast<unsigned char>(damaged[at] ^ (1U << bit));
                    try {
                        CipherWrapper::decrypt(std::move(damaged), *context);
                    } catch (const VORLException&) {
                    } catch (const OpenSSLException&) {
                    }
                }
            }
        }
    }
}

TEST_F(GuardedMemory, TextsOfAnySizeOpen) {
    for (const auto& [level, type] : {std::make_pair(FULL, EncryptionType::FULL_CIPHER()),
                                      std::make_pair(TEST, EncryptionType::TEST_CIPHER()),
                                      std::make_pair(NONE, EncryptionType::NULL_CIPHER())}) {
        VORLLib::type_ = type;
        VorlContext context(guarded(KEY));
        const auto check = [&, level = level](std::size_t size) {
            if (canBeReadBack(level, size)) {
                const bytes message = octets(size);
                ASSERT_TRUE(context.decrypt(guarded(context.encrypt(message))) == message) << size;
            }
        };
        for (std::size_t size = 0; size <= 70; ++size) {
            check(size);
        }
        for (const std::size_t size : SEAM_SIZES) {
            check(size);
        }
    }
}

TEST_F(GuardedMemory, Base64KeepsToItsStorage) {
    const auto check = [](std::size_t size) {
        const bytes data = octets(size);
        ASSERT_TRUE(Base64::encode(data) == rawBase64(data)) << size;
        const bytes text = guarded(rawBase64(data));
        ASSERT_TRUE(Base64::decode(text) == data) << size;
    };
    for (std::size_t size = 0; size <= 100; ++size) {
        check(size);
    }
    for (const std::size_t size : SEAM_SIZES) {
        check(size);
    }
}

TEST_F(GuardedMemory, TextThatIsNoBase64IsJudgedWithinItsStorage) {
    for (const char* text : {"=", "==", "===", "====", "A", "AA", "AAA", "A===", "    ", "-", "----",
                             "\n\n\n\n", "AB==", "AAAA=", "AAAA====", "AAAA    "}) {
        EXPECT_TRUE(Base64::decode(guarded(fromText(text))).empty()) << text;
    }
}

TEST_F(GuardedMemory, RandomBytesKeepToTheirStorage) {
    for (unsigned int n = 0; n <= 64; ++n) {
        EXPECT_EQ(Random::next(n).size(), n);
    }
}

}  // namespace vorl::test
