#include "OpenSSLMemory.h"
#include "OperatorNew.h"
#include "dh_group.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/BigNum.h"
#include "vorl/Buffer.h"
#include "vorl/ClientKeys.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OpenSSLException.h"

#include <openssl/bn.h>
#include <openssl/err.h>

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

// What is left when there is no memory: for OpenSSL, and for the library.

namespace vorl::test {
namespace {

class WithoutMemory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(openssl_memory::isOurs());
        // What OpenSSL makes once, it makes now.
        BigNum(octets(3)).toString();
        ClientKeys(octets(48));
        ERR_clear_error();
    }
    void TearDown() override { ERR_clear_error(); }
};

using BigNumWithoutMemory = WithoutMemory;
using ClientKeysWithoutMemory = WithoutMemory;

TEST_F(BigNumWithoutMemory, IsNotMadeAndEachConstructorSaysSoInItsOwnWords) {
    const bytes data = octets(100);
    const BigNum number(data);
    const std::shared_ptr<BIGNUM> raw(BN_new(), BN_free);
    const BIGNUM* const none = nullptr;
    ASSERT_EQ(BN_set_word(raw.get(), 7), 1);

    const OpenSSLOutOfMemory exhausted;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum(data.data(), 100); }), "BN_bin2bn()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum(data.data(), 0); }), "BN_bin2bn()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum other(data); }), "BN_bin2bn");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum other{bytes()}; }), "BN_bin2bn");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum other(raw.get()); }), "BN_dup/BN_new");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum other(none); }), "BN_dup/BN_new");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum other(number); }), "BN_dup()");
}

TEST_F(BigNumWithoutMemory, HasNoText) {
    const BigNum number(octets(100));
    {
        const OpenSSLOutOfMemory exhausted;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { number.toString(); }),
                  "BN_print() in BigNum::toString()");
        EXPECT_EQ(number.encode(), octets(100));
    }
    EXPECT_EQ(number.toString().size(), 199U);  // the first byte is 01
}

// The result is not examined, so that the assignment itself reports nothing.
TEST_F(BigNumWithoutMemory, IsLeftWithoutANumberByAnAssignment) {
    const BigNum source(octets(100));
    BigNum number(bytes{0x12});
    {
        const OpenSSLOutOfMemory exhausted;
        EXPECT_NO_THROW(number = source);
    }
    EXPECT_EQ(number.getBIGNUM(), nullptr);
    EXPECT_EQ(number.size(), 0U);
    EXPECT_EQ(number.encode(), bytes());
    EXPECT_EQ(number.toBase64(), bytes());
    EXPECT_FALSE(number == source);
    EXPECT_TRUE(number != source);
    EXPECT_EQ(number.toFormatString("p", 80, 1, ":", 4), "    p:  (NULL)");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { number.toString(); }), "BN_print() in BigNum::toString()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum other(number); }), "BN_dup()");
    EXPECT_EQ(source.encode(), octets(100));

    number = source;
    EXPECT_TRUE(number == source);
}

// Which no exception reports, so that its entry must not turn up in a report of something else.
TEST_F(BigNumWithoutMemory, LeavesTheErrorQueueAsItWasWhereItCannotBeAssigned) {
    const BigNum source(octets(100));
    BigNum number(octets(3));
    const unsigned long left = leaveApplicationError();
    {
        const OpenSSLOutOfMemory exhausted;
        number = source;
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_F(BigNumWithoutMemory, KeepsItsNumberWhereItIsAssignedToItself) {
    BigNum number(octets(100));
    const BigNum& same = number;
    {
        const OpenSSLOutOfMemory exhausted;
        number = same;
    }
    EXPECT_EQ(number.encode(), octets(100));
}

TEST_F(BigNumWithoutMemory, FreesWhatItTook) {
    const long before = openssl_memory::liveBlocks();
    {
        BigNum number(octets(100));
        BigNum copy(number);
        copy = BigNum(bytes{0x12});
        BigNum::fromBase64(copy.toBase64()).toString();
    }
    EXPECT_EQ(openssl_memory::liveBlocks(), before);
}

TEST_F(ClientKeysWithoutMemory, AreNotMade) {
    const OpenSSLOutOfMemory exhausted;
    EXPECT_EQ(messageOf<OpenSSLException>([] { ClientKeys(octets(48)); }), "EVP_DigestInit_ex()");
    EXPECT_EQ(messageOf<OpenSSLException>([] { ClientKeys("123456789"); }), "EVP_DigestInit_ex()");
    EXPECT_EQ(messageOf<OpenSSLException>([] { ClientKeys(octets(9).data(), 9); }), "EVP_DigestInit_ex()");
}

TEST_F(ClientKeysWithoutMemory, StayWhatTheyWereWhereOpenSSLHasNone) {
    ClientKeys keys(octets(48));
    const ClientKeys before(keys);
    {
        const OpenSSLOutOfMemory exhausted;
        EXPECT_EQ(messageOf<OpenSSLException>([&] { keys.derive(octets(99)); }), "EVP_DigestInit_ex()");
    }
    EXPECT_EQ(keys.encryptionKey(), before.encryptionKey());
    EXPECT_EQ(keys.hmacKey(), before.hmacKey());
    keys.derive(octets(99));
    EXPECT_TRUE(keys == ClientKeys(octets(99)));
}

TEST_F(ClientKeysWithoutMemory, StayWhatTheyWereWhereTheLibraryHasNone) {
    ClientKeys keys(octets(48));
    const ClientKeys before(keys);
    const bytes material = octets(99);
    bool refused = false;
    {
        const OperatorNew none(0);
        try {
            keys.derive(material);
        } catch (const std::bad_alloc&) {
            refused = true;
        }
    }
    EXPECT_TRUE(refused);
    EXPECT_EQ(keys.encryptionKey(), before.encryptionKey());
    EXPECT_EQ(keys.hmacKey(), before.hmacKey());
}

// Records, groups and pairs whose last block is too large for the memory, behind others that are not.

const std::size_t TOO_MANY_BYTES = 20000;

// The buffer has the room, so that it is the block for which there is none.
template <typename Encodable>
void expectNothingIsWrittenOf(const Encodable& object) {
    Buffer out(2 * static_cast<unsigned int>(TOO_MANY_BYTES));
    out.put(octets(3));
    bool refused = false;
    {
        const OperatorNew few(TOO_MANY_BYTES);
        try {
            object.encode(out);
        } catch (const std::bad_alloc&) {
            refused = true;
        }
    }
    EXPECT_TRUE(refused);
    EXPECT_EQ(out.toByteArray(), octets(3));
}

TEST(DHPubKeyWithoutMemory, IsWrittenAsAWholeOrNotAtAll) {
    expectNothingIsWrittenOf(DHPubKey(octets(TOO_MANY_BYTES), UInt32(2)));
}

TEST(DiffieHellmanParamsWithoutRoom, AreWrittenAsAWholeOrNotAtAll) {
    const Number large = numberFrom(octets(TOO_MANY_BYTES));
    expectNothingIsWrittenOf(DiffieHellmanParams(rawDh(numberOf(23).get(), large.get())));
}

TEST(DiffieHellmanWithoutRoom, IsWrittenAsAWholeOrNotAtAll) {
    const Number small = numberOf(23);
    const Number large = numberFrom(octets(TOO_MANY_BYTES));
    expectNothingIsWrittenOf(DiffieHellman(rawDh(small.get(), small.get(), small.get(), large.get())));
    expectNothingIsWrittenOf(DiffieHellman(rawDh(small.get(), small.get(), large.get(), small.get())));
}

}  // namespace
}  // namespace vorl::test
