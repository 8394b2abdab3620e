#include "DefaultDhMethod.h"
#include "FakeClock.h"
#include "SecretWatch.h"
#include "dh_group.h"
#include "dh_record.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"
#include "vorl/BigNum.h"
#include "vorl/Buffer.h"
#include "vorl/ClientKeys.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/Env.h"
#include "vorl/OpenSSLException.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

// Secrets are gone from memory when it is given back.

namespace {

// What OpenSSL takes and gives back itself, with the size in front. It keeps the words of a number in an
// order of its own, so that a number to be looked for has equal octets only.

const std::size_t SIZE_BYTES = alignof(std::max_align_t);
const unsigned char REPEATED = 0xc5;
const std::size_t REPEATED_ENOUGH = 64;

thread_local int openSslReleases = 0;

void* allocate(std::size_t size, const char* /*file*/, int /*line*/) {
    auto* const block = size != 0 ? static_cast<unsigned char*>(std::malloc(SIZE_BYTES + size)) : nullptr;
    if (block == nullptr) {
        return nullptr;
    }
    *static_cast<std::size_t*>(static_cast<void*>(block)) = size;
    // Nothing of what an earlier block held.
    std::fill_n(block + SIZE_BYTES, size, static_cast<unsigned char>(0xa5));
    return block + SIZE_BYTES;
}

std::size_t sizeOf(void* p) {
    return *static_cast<std::size_t*>(static_cast<void*>(static_cast<unsigned char*>(p) - SIZE_BYTES));
}

void release(void* p, const char* /*file*/, int /*line*/) {
    if (p == nullptr) {
        return;
    }
    auto* const content = static_cast<unsigned char*>(p);
    auto* const end = content + sizeOf(p);
    openSslReleases += std::search_n(content, end, REPEATED_ENOUGH, REPEATED) != end ? 1 : 0;
    std::free(content - SIZE_BYTES);
}

void* reallocate(void* p, std::size_t size, const char* file, int line) {
    void* const larger = allocate(size, file, line);
    if (p != nullptr && (larger != nullptr || size == 0)) {
        if (larger != nullptr) {
            std::copy_n(static_cast<unsigned char*>(p), std::min(size, sizeOf(p)),
                        static_cast<unsigned char*>(larger));
        }
        release(p, file, line);
    }
    return larger;
}

// OpenSSL takes other functions only before its first allocation.
const bool installed = CRYPTO_set_mem_functions(allocate, reallocate, release) == 1;

}  // namespace

namespace vorl::test {
namespace {

const bytes SECRET = octets(128);
const bytes DIGEST = rawDigest(EVP_sha384(), SECRET);
const bytes KEYS[] = {slice(DIGEST, 0, 16), slice(DIGEST, 16, 32)};

TEST(ClientKeysMemory, HoldsNoKeyWhenItIsGivenBack) {
    const std::string id = toText(SECRET);
    for (const bytes& key : KEYS) {
        const SecretWatch watch(key);
        {
            ClientKeys keys(SECRET);
            const ClientKeys copy(keys);
            const ClientKeys ofId(id);
            const ClientKeys ofPointer(SECRET.data(), 128);
            keys.derive(SECRET);
            keys.derive(bytes(3, 0x61));
            keys = copy;
        }
        EXPECT_EQ(watch.releasedWithSecret(), 0);
    }
}

TEST(ClientKeysMemory, HoldsNoMaterialWhenItIsGivenBack) {
    const std::string id = toText(SECRET);
    const SecretWatch watch(SECRET);
    {
        const ClientKeys ofSecret(SECRET);
        const ClientKeys ofId(id);
        const ClientKeys ofPointer(SECRET.data(), 128);
    }
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

TEST(BigNumMemory, HoldsNoNumberWhenItIsGivenBack) {
    const bytes text = rawBase64(SECRET);
    const SecretWatch watch(SECRET);
    {
        const BigNum number(SECRET);
        BigNum copy(number);
        copy = BigNum::fromBase64(text);
        EXPECT_EQ(copy.toBase64(), text);
        copy.toFormatString("x");
        copy.toFormatString("x", 80, 1);
        copy.toFormatString("x", 80, 1, ":", 4);
    }
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

const bytes REPEATED_SECRET(127, REPEATED);

TEST(OpenSSLReleases, ShowASecretThatIsLeftBehind) {
    ASSERT_TRUE(installed);
    openSslReleases = 0;
    numberFrom(REPEATED_SECRET);
    EXPECT_EQ(openSslReleases, 1);
}

TEST(BigNumMemory, HoldsNoNumberWhenOpenSSLGivesItBack) {
    openSslReleases = 0;
    {
        const BigNum number(REPEATED_SECRET);
        const BigNum ofPointer(REPEATED_SECRET.data(), 127);
        const BigNum ofOpenSSL(number.getBIGNUM());
        BigNum assigned(number);
        assigned = ofPointer;
        assigned = BigNum(bytes{0x01});
    }
    EXPECT_EQ(openSslReleases, 0);
}

// The buffers are the caller's, who wipes them.
TEST(DiffieHellmanMemory, HoldsNoPrivateNumberWhenItIsGivenBack) {
    for (const bytes& privKey : {SECRET, REPEATED_SECRET}) {
        const std::shared_ptr<DH> dh = rawPair(RFC_2409_GROUP, numberFrom(privKey).get());
        Buffer state(2000);
        const SecretWatch watch(privKey);
        openSslReleases = 0;
        {
            const DiffieHellman pair(dh);
            pair.encode(state);
            std::unique_ptr<DiffieHellman> back = DiffieHellman::decode(state);
            EXPECT_EQ(*back, pair);
            const DiffieHellman copy(*back);
            *back = copy;
            const DiffieHellmanParams group(*back);
            back->getPubKey();
        }
        EXPECT_EQ(watch.releasedWithSecret(), 0);
        EXPECT_EQ(openSslReleases, 0);
    }
}

TEST(DiffieHellmanMemory, HoldsNoSecretThatIsNotHandedOut) {
    const DefaultDhMethod method;
    DH_meth_set_compute_key(method.method(), [](unsigned char* secret, const BIGNUM*, DH*) {
        std::copy(SECRET.begin(), SECRET.end(), secret);
        return 0;
    });
    const DiffieHellman pair(rawPair(RFC_2409_GROUP, numberOf(7).get()));
    const bytes peer = rawBase64(dhRecord(bytes(127) + bytes{0x02}));

    const SecretWatch watch(SECRET);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { pair.computeSharedSecret(peer); }), "DH_compute_key()");
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

class DiffieHellmanInstrumentationMemory : public ::testing::Test {
protected:
    void SetUp() override {
        ::unlink(path().c_str());
        Env::setInstrumentation(DIFFIE_HELLMAN, true);
    }
    void TearDown() override {
        Env::setInstrumentation(DIFFIE_HELLMAN, false);
        EXPECT_EQ(::unlink(path().c_str()), 0);
    }

private:
    std::string path() const { return "/tmp/DiffieHellman." + std::to_string(clock_.now()) + ".0"; }

    FakeClock clock_;
};

TEST_F(DiffieHellmanInstrumentationMemory, HoldsNoPrivateNumberWhenItIsGivenBack) {
    const DefaultDhMethod method;
    DH_meth_set_generate_key(method.method(), [](DH* dh) {
        return DH_set0_key(dh, numberOf(8).release(), numberFrom(SECRET).release());
    });
    const DiffieHellmanParams group(rawDh(RFC_2409_GROUP));

    const SecretWatch watch(SECRET);
    DiffieHellman::generate(group);
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

}  // namespace
}  // namespace vorl::test
