#include "DefaultDhMethod.h"
#include "OpenSSLFaults.h"
#include "dh_group.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/BigNum.h"
#include "vorl/ClientKeys.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <dlfcn.h>
#include <openssl/dh.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

// What the library makes of answers that OpenSSL gives it for no input, and what needs a digest that no input
// is known for.

namespace {

struct Verdict {
    int result;
    int codes;
};

thread_local const Verdict* verdict = nullptr;
thread_local bool pubKeysAreMissing = false;
thread_local bool privKeysAreMissing = false;

// OpenSSL's own function, of the same type as the one here that takes its place.
template <typename Function>
Function* own(Function* /*same*/, const char* name) {
    void* const address = dlsym(RTLD_NEXT, name);
    Function* function = nullptr;
    std::memcpy(&function, &address, sizeof(function));
    return function;
}

}  // namespace

// Each takes the place of OpenSSL's function for all but OpenSSL itself.

extern "C" int DH_check(const DH* dh, int* codes) {
    if (verdict == nullptr) {
        return own(DH_check, "DH_check")(dh, codes);
    }
    *codes = verdict->codes;
    return verdict->result;
}

extern "C" void DH_get0_key(const DH* dh, const BIGNUM** pubKey, const BIGNUM** privKey) {
    own(DH_get0_key, "DH_get0_key")(dh, pubKey, privKey);
    if (pubKeysAreMissing && pubKey != nullptr) {
        *pubKey = nullptr;
    }
    if (privKeysAreMissing && privKey != nullptr) {
        *privKey = nullptr;
    }
}

namespace vorl::test {
namespace {

TEST(BigNumOfFaultyOpenSSL, ReportsANumberThatCannotBePrinted) {
    const BigNum number(bytes{0x12, 0x34});
    {
        const UnprintableNumbers fault;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { number.toString(); }),
                  "BN_print() in BigNum::toString()");
    }
    EXPECT_EQ(number.toString(), "1234");
}

TEST(BigNumOfFaultyOpenSSL, ReportsATextThatCannotBeReadBack) {
    const BigNum number(bytes{0x12, 0x34});
    {
        const UnreadableBios fault;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { number.toString(); }),
                  "BIO_read() in BigNum::toString()");
    }
    EXPECT_EQ(number.toString(), "1234");
}

TEST(ClientKeysOfFaultyOpenSSL, RefuseADigestOfAnyOtherSizeAndStayWhatTheyWere) {
    ClientKeys keys(octets(128));
    const ClientKeys before(keys);
    for (const std::size_t size : {0U, 16U, 32U, 47U, 49U, 64U}) {
        const bytes digest = octets(size);
        const FixedDigest fault(digest);
        EXPECT_EQ(messageOf<VORLException>([&] { keys.derive(octets(99)); }), "invalid digest output size")
            << size;
        EXPECT_EQ(messageOf<VORLException>([] { ClientKeys(octets(48)); }), "invalid digest output size");
        EXPECT_EQ(messageOf<VORLException>([] { ClientKeys("123456789"); }), "invalid digest output size");
        EXPECT_EQ(messageOf<VORLException>([] { ClientKeys(octets(9).data(), 9); }),
                  "invalid digest output size");
        EXPECT_EQ(keys.encryptionKey(), before.encryptionKey());
        EXPECT_EQ(keys.hmacKey(), before.hmacKey());
    }
}

ClientKeys keysOfDigest(const bytes& digest) {
    const FixedDigest fixed(digest);
    return ClientKeys(octets(128));
}

TEST(ClientKeysOfAChosenDigest, DifferWhereEitherKeyDiffers) {
    const ClientKeys keys = keysOfDigest(octets(48));
    EXPECT_EQ(keys.encryptionKey(), slice(octets(48), 0, 16));
    EXPECT_EQ(keys.hmacKey(), slice(octets(48), 16, 32));
    EXPECT_TRUE(keysOfDigest(octets(48)) == keys);

    // The first and the last byte of each.
    for (const std::size_t at : {0U, 15U, 16U, 47U}) {
        bytes digest = octets(48);
        digest[at] ^= 0x01;
        const ClientKeys others = keysOfDigest(digest);
        EXPECT_FALSE(others == keys) << at;
        EXPECT_TRUE(others != keys) << at;
        EXPECT_FALSE(keys == others) << at;
        EXPECT_EQ(others.encryptionKey() == keys.encryptionKey(), at >= 16) << at;
        EXPECT_EQ(others.hmacKey() == keys.hmacKey(), at < 16) << at;
    }
}

// The judgement of a generated group. OpenSSL 3.0 has no doubts that it does not put into the codes, and
// never says that it cannot check a generator, as older versions do.

struct VerdictCase {
    const char* name;
    Verdict verdict;
    bool isTaken;
};

const VerdictCase VERDICTS[] = {
    {"Good", {1, 0}, true},
    {"NotAPrime", {1, DH_CHECK_P_NOT_PRIME}, true},
    {"NotASafePrime", {1, DH_CHECK_P_NOT_SAFE_PRIME}, false},
    {"GeneratorNotChecked", {1, DH_UNABLE_TO_CHECK_GENERATOR}, false},
    {"UnsuitableGenerator", {1, DH_NOT_SUITABLE_GENERATOR}, false},
    {"EveryDoubt", {1, 0xff}, false},
    {"DoubtsOfOtherKinds", {1, 0xf0 | DH_CHECK_P_NOT_PRIME}, true},
    {"NotJudged", {0, 0}, false},
    // Only 0 is a failure.
    {"MinusOne", {-1, 0}, true},
};

class GenerationJudgedByOpenSSL : public ::testing::TestWithParam<VerdictCase> {
protected:
    void SetUp() override {
        DH_meth_set_generate_params(method_.method(), [](DH* dh, int, int, BN_GENCB*) {
            return DH_set0_pqg(dh, GROUP_512_2.p().release(), nullptr, GROUP_512_2.g().release());
        });
        verdict = &GetParam().verdict;
    }
    void TearDown() override { verdict = nullptr; }

private:
    const DefaultDhMethod method_;
};

TEST_P(GenerationJudgedByOpenSSL, TakesTheGroupOrFails) {
    const auto generate = [] { DiffieHellmanParams::generate(2, 512); };
    EXPECT_EQ(messageOf<VORLException>(generate),
              GetParam().isTaken ? "<no exception>" : "failed DH generation");
}

INSTANTIATE_TEST_SUITE_P(Verdicts, GenerationJudgedByOpenSSL, ::testing::ValuesIn(VERDICTS),
                         [](const auto& test) { return test.param.name; });

// A pair has all its numbers from construction on; should one be lost, that comes before all else.
TEST(DiffieHellmanOfFaultyOpenSSL, ComputesNoSecretWithoutBothKeys) {
    const DiffieHellman pair(rawPair(RFC_2409_GROUP, numberFrom(octets(32)).get()));
    const DiffieHellman small(rawPair(GROUP_512_2, numberFrom(octets(32)).get()));
    const bytes text = pair.getPubKey();
    const auto expectUninitialized = [&] {
        for (const bytes& peer : {text, fromText("????"), bytes()}) {
            for (const DiffieHellman* own : {&pair, &small}) {
                EXPECT_EQ(messageOf<VORLException>([&] { own->computeSharedSecret(peer); }),
                          "Unitialized DiffieHellman object");
            }
        }
    };

    pubKeysAreMissing = true;
    expectUninitialized();
    privKeysAreMissing = true;
    expectUninitialized();
    pubKeysAreMissing = false;
    expectUninitialized();
    privKeysAreMissing = false;
    EXPECT_EQ(pair.computeSharedSecret(text).size(), 128U);
}

}  // namespace
}  // namespace vorl::test
