#include "LibraryState.h"
#include "cipher_contexts.h"
#include "levels.h"
#include "messageOf.h"
#include "message_sizes.h"
#include "octets.h"
#include "raw_base64.h"
#include "replaced_new.h"
#include "sample_key.h"
#include "vorl/CipherSpec.h"
#include "vorl/OpenSSLException.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VorlContext.h"

#include <openssl/err.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

// What the library takes from the heap, and what it leaves there. OpenSSL's own storage is not part of it: it
// comes from malloc.

namespace vorl::test {

namespace {

// Stands before each block that the program allocates.
struct alignas(std::max_align_t) Block {
    std::size_t size;
    Block* previous;
    Block* next;
};

struct Heap {
    Block* blocks = nullptr;
    std::size_t allocations = 0;
    std::size_t live = 0;
    std::size_t peak = 0;
    std::size_t refuseAbove = std::numeric_limits<std::size_t>::max();
    // How many allocations succeed before one is refused; negative for all.
    long succeed = -1;
    // A secret that no block should hold when it is released.
    const unsigned char* secret = nullptr;
    std::size_t secretSize = 0;
    std::size_t releasedWithSecret = 0;
};

Heap heap;

bool holdsSecret(const Block* block) {
    const auto* const begin = reinterpret_cast<const unsigned char*>(block + 1);
    const auto* const end = begin + block->size;
    return std::search(begin, end, heap.secret, heap.secret + heap.secretSize) != end;
}

}  // namespace

void* allocate(std::size_t size) noexcept {
    if (size > heap.refuseAbove) {
        return nullptr;
    }
    if (heap.succeed == 0) {
        heap.succeed = -1;
        return nullptr;
    }
    if (heap.succeed > 0) {
        --heap.succeed;
    }
    auto* const block = static_cast<Block*>(std::malloc(sizeof(Block) + size));
    if (block == nullptr) {
        return nullptr;
    }
    // What a block held in an earlier life is not what its next owner leaves behind.
    std::memset(block + 1, 0xa5, size);
    *block = {size, nullptr, heap.blocks};
    if (heap.blocks != nullptr) {
        heap.blocks->previous = block;
    }
    heap.blocks = block;
    ++heap.allocations;
    heap.live += size;
    heap.peak = std::max(heap.peak, heap.live);
    return block + 1;
}

void release(void* memory) noexcept {
    Block* const block = static_cast<Block*>(memory) - 1;
    if (heap.secret != nullptr && holdsSecret(block)) {
        ++heap.releasedWithSecret;
    }
    (block->previous != nullptr ? block->previous->next : heap.blocks) = block->next;
    if (block->next != nullptr) {
        block->next->previous = block->previous;
    }
    heap.live -= block->size;
    std::free(block);
}

namespace {

using tarvik::crypto::ICipherContext;

struct Usage {
    std::size_t allocations;
    std::size_t peak;
};

template <typename Action>
Usage usageOf(Action&& action) {
    const std::size_t liveBefore = heap.live;
    heap.allocations = 0;
    heap.peak = heap.live;
    action();
    return {heap.allocations, heap.peak - liveBefore};
}

// Counts the blocks that hold a secret when they are released, while it lives.
class SecretWatch {
public:
    explicit SecretWatch(const bytes& secret) {
        heap.secret = secret.data();
        heap.secretSize = secret.size();
        heap.releasedWithSecret = 0;
    }
    ~SecretWatch() { heap.secret = nullptr; }
    SecretWatch(const SecretWatch&) = delete;
    SecretWatch& operator=(const SecretWatch&) = delete;

    std::size_t released() const { return heap.releasedWithSecret; }
    std::size_t held() const {
        std::size_t count = 0;
        for (const Block* block = heap.blocks; block != nullptr; block = block->next) {
            count += holdsSecret(block) ? 1 : 0;
        }
        return count;
    }
};

class Allocations : public StartedLibrary {};

struct MessageCase {
    Level level;
    std::size_t size;
};

class MessageAllocations : public StartedLibrary, public ::testing::WithParamInterface<MessageCase> {
protected:
    void SetUp() override {
        StartedLibrary::SetUp();
        VORLLib::type_ = typeOf(GetParam().level);
        context_ = std::make_unique<VorlContext>(KEY);
    }
    void TearDown() override {
        context_.reset();
        StartedLibrary::TearDown();
    }

    const std::size_t size_ = GetParam().size;
    const bytes message_ = octets(GetParam().size);
    std::unique_ptr<VorlContext> context_;
};

class ReadableMessageAllocations : public MessageAllocations {};

std::vector<MessageCase> messageCases(bool readableOnly) {
    std::vector<MessageCase> cases;
    for (const Level level : {NONE, TEST, FULL}) {
        // One more than a multiple of 16384 can be read back at each level.
        for (const std::size_t size : {std::size_t{64}, std::size_t{1024}, std::size_t{16384},
                                       std::size_t{16385}, std::size_t{1} << 20, (std::size_t{1} << 20) + 1,
                                       std::size_t{1} << 24, (std::size_t{1} << 24) + 1}) {
            if (!readableOnly || canBeReadBack(level, size)) {
                cases.push_back({level, size});
            }
        }
    }
    return cases;
}

std::string caseName(const ::testing::TestParamInfo<MessageCase>& test) {
    const char* const levels[] = {"None", "Test", "Full"};
    return levels[test.param.level] + std::to_string(test.param.size);
}

}  // namespace

TEST_P(MessageAllocations, OfEncryptAreAtMostFour) {
    // The first message makes the cipher ready, the others find it so.
    for (int round = 0; round < 3; ++round) {
        bytes text;
        const Usage usage = usageOf([&] { text = context_->encrypt(message_); });
        EXPECT_LE(usage.allocations, 4U);
        if (size_ >= 16384) {
            EXPECT_LE(static_cast<double>(usage.peak), 2.4 * static_cast<double>(size_));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Messages, MessageAllocations, ::testing::ValuesIn(messageCases(false)), caseName);

TEST_P(ReadableMessageAllocations, OfDecryptAreAtMostThree) {
    const bytes text = context_->encrypt(message_);
    for (int round = 0; round < 3; ++round) {
        bytes message;
        const Usage usage = usageOf([&] { message = context_->decrypt(text); });
        EXPECT_TRUE(message == message_);
        EXPECT_LE(usage.allocations, 3U);
        if (size_ >= 16384) {
            EXPECT_LE(static_cast<double>(usage.peak), 1.2 * static_cast<double>(size_));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Messages, ReadableMessageAllocations, ::testing::ValuesIn(messageCases(true)),
                         caseName);

TEST_F(Allocations, LackOfMemoryIsNothingButThat) {
    for (const Level level : {NONE, TEST, FULL}) {
        VORLLib::type_ = typeOf(level);
        VorlContext context(KEY);
        const bytes message = octets(1000);
        const bytes text = rawBase64(expectedEnvelope(level, KEY, IV, message));
        for (const bool encrypting : {true, false}) {
            // Until all allocations of the call succeed.
            for (long succeed = 0;; ++succeed) {
                ASSERT_LT(succeed, 100);
                bool lacked = false;
                heap.succeed = succeed;
                try {
                    encrypting ? context.encrypt(message) : context.decrypt(text);
                } catch (const std::bad_alloc&) {
                    lacked = true;
                }
                heap.succeed = -1;
                if (!lacked) {
                    EXPECT_GT(succeed, 0);
                    break;
                }
                EXPECT_EQ(context.decrypt(text), message);
            }
        }
    }
}

TEST_F(Allocations, ConstructionThatLacksMemoryLeavesNothingBehind) {
    // What is made on first use stays.
    const VorlContext first(KEY);
    for (long succeed = 0;; ++succeed) {
        ASSERT_LT(succeed, 100);
        bool lacked = false;
        const std::size_t liveBefore = heap.live;
        heap.succeed = succeed;
        try {
            const VorlContext context(KEY);
        } catch (const std::bad_alloc&) {
            lacked = true;
        }
        heap.succeed = -1;
        EXPECT_EQ(heap.live, liveBefore);
        if (!lacked) {
            EXPECT_GT(succeed, 0);
            break;
        }
    }
}

// INT_MAX bytes are not refused for their number; here it is the heap that does not have them.
TEST_F(Allocations, LargestRandomDrawIsTried) {
    bool lacked = false;
    heap.refuseAbove = std::size_t{1} << 30;
    try {
        Random::next(static_cast<unsigned int>(std::numeric_limits<int>::max()));
    } catch (const std::bad_alloc&) {
        lacked = true;
    }
    heap.refuseAbove = std::numeric_limits<std::size_t>::max();
    EXPECT_TRUE(lacked);
}

TEST_F(Allocations, WatchSeesASecretThatIsNotWiped) {
    const bytes secret = octets(16);
    const SecretWatch watch(secret);
    {
        const bytes copy = octets(3) + secret;
        EXPECT_GE(watch.held(), 2U);
    }
    EXPECT_GE(watch.released(), 1U);
}

TEST_F(Allocations, KeyOfACipherIsWipedBeforeItsStorageIsReleased) {
    for (const std::size_t size : {8U, 15U, 16U, 32U, 100U}) {
        const bytes key = slice(octets(256), 256 - size, size);
        const SecretWatch watch(key);
        for (const bool fromPointer : {true, false}) {
            auto cipher =
                fromPointer ? std::make_unique<SoftwareKeyCipher>(CipherSpec::AES_128_CBC_PKCS5(), key.data(),
                                                                  static_cast<unsigned int>(size))
                            : std::make_unique<SoftwareKeyCipher>(CipherSpec::AES_128_CBC_PKCS5(), key);
            cipher->decryptInit(IV);
            cipher->update(octets(40));
            EXPECT_EQ(watch.held(), 2U) << "the test's and the cipher's";
            cipher.reset();
            EXPECT_EQ(watch.held(), 1U);
        }
        EXPECT_EQ(watch.released(), 0U) << size;
    }
}

TEST_F(Allocations, KeyOfAContextIsWipedBeforeItsStorageIsReleased) {
    const SecretWatch watch(KEY);
    auto context = std::make_unique<VorlContext>(KEY);
    EXPECT_EQ(watch.held(), 2U) << "the test's and the cipher's";
    context->decrypt(context->encrypt(octets(1000)));
    context.reset();
    EXPECT_EQ(watch.held(), 1U);
    EXPECT_EQ(watch.released(), 0U);
}

// What was started before, in the other direction, must not be taken for what could not be started now.
TEST_F(Allocations, DecryptInitWithoutMemoryForTheKeyStartsNothing) {
    SoftwareKeyCipher cipher(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    cipher.encryptInit(IV);
    bytes iv = IV;
    bool refused = false;
    heap.refuseAbove = 0;
    try {
        cipher.decryptInit(iv.data());
    } catch (const std::bad_alloc&) {
        refused = true;
    }
    heap.refuseAbove = std::numeric_limits<std::size_t>::max();
    ASSERT_TRUE(refused);

    ERR_clear_error();
    try {
        cipher.final();
        FAIL() << "no exception";
    } catch (const OpenSSLException& e) {
        EXPECT_STREQ(e.what(), "failed EVP final operation");
        EXPECT_EQ(e.errorStack(), "") << "OpenSSL was not asked";
    }
}

TEST_F(Allocations, FailedDecryptLeavesNoPlaintextInReleasedStorage) {
    for (const Level level : {TEST, FULL}) {
        VORLLib::type_ = typeOf(level);
        VorlContext context(KEY);
        const bytes secret = octets(32);
        for (const std::size_t repeats : {1U, 2U, 100U, 300U, 2000U, 40000U}) {
            bytes message;
            for (std::size_t i = 0; i < repeats; ++i) {
                message.insert(message.end(), secret.begin(), secret.end());
            }
            const bytes ciphertext = expectedEnvelope(level, KEY, IV, message + octets(3));
            bytes damaged = ciphertext;
            damaged.back() ^= 0x01;
            const bytes text = rawBase64(damaged);

            const SecretWatch watch(secret);
            EXPECT_EQ(messageOf<OpenSSLException>([&] { context.decrypt(text); }),
                      "failed EVP final operation");
            EXPECT_EQ(watch.released(), 0U) << repeats;
            ForwardingContext foreign(cipherOf(level, KEY));
            EXPECT_EQ(messageOf<OpenSSLException>([&] { CipherWrapper::decrypt(damaged, foreign); }),
                      "failed EVP final operation");
            EXPECT_EQ(watch.released(), 0U) << repeats << ", through another context";
        }
    }
}

}  // namespace vorl::test
