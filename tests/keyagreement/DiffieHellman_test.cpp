#include "vorl/DiffieHellman.h"

#include "DefaultDhMethod.h"
#include "block_encoder.h"
#include "der_encoder.h"
#include "dh_group.h"
#include "dh_record.h"
#include "dh_without_generator.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;

bytes blocksOf(const bytes& p, const bytes& g, const bytes& pubKey, const bytes& privKey) {
    return block(p) + block(g) + block(pubKey) + block(privKey);
}

bytes encoded(const DiffieHellman& pair) {
    Buffer out;
    pair.encode(out);
    return out.toByteArray();
}

std::unique_ptr<DiffieHellman> decodedPair(const bytes& blocks) {
    Buffer in(blocks);
    return DiffieHellman::decode(in);
}

// A private number that fills the group as a generated one does.
Number privateNumber() {
    return numberFrom(octets(128));
}

class DiffieHellmanTest : public ::testing::Test {
protected:
    void SetUp() override { takeErrorQueue(); }
    void TearDown() override { takeErrorQueue(); }

    // A refusal with a text of our own leaves the application's entries, and no others.
    template <typename E, typename Action>
    void expectRefused(Action&& action, const std::string& message) {
        const unsigned long left = leaveApplicationError();
        EXPECT_EQ(messageOf<E>(action), message);
        EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    }
};

// Generation.

class DiffieHellmanGeneration : public DiffieHellmanTest {};

TEST_F(DiffieHellmanGeneration, MakesTheKeysOfAPairInTheGroup) {
    for (const Group& group : {RFC_2409_GROUP, GROUP_512_2, GROUP_512_5}) {
        const std::unique_ptr<DiffieHellman> pair =
            DiffieHellman::generate(DiffieHellmanParams(rawDh(group)));

        Buffer numbers(encoded(*pair));
        EXPECT_EQ(numbers.nextOctetString().toByteArray(), bytesOf(group.p()));
        EXPECT_EQ(numbers.nextOctetString().toByteArray(), bytesOf(group.g()));
        const bytes pubKey = numbers.nextOctetString().toByteArray();
        const bytes privKey = numbers.nextOctetString().toByteArray();
        EXPECT_EQ(pubKey, bytesOf(group.raise(numberFrom(privKey).get())));
        EXPECT_GT(privKey.size(), 16U);
    }
}

TEST_F(DiffieHellmanGeneration, MakesAnotherPairEachTimeAndLeavesTheGroup) {
    const DiffieHellmanParams params(rawDh(GROUP_512_5));
    EXPECT_NE(*DiffieHellman::generate(params), *DiffieHellman::generate(params));
    EXPECT_EQ(params, DiffieHellmanParams(rawDh(GROUP_512_5)));
}

TEST_F(DiffieHellmanGeneration, OfAGroupThatOpensslRefusesFails) {
    const DiffieHellmanParams tooSmall(rawDh(numberOf(23).get(), numberOf(5).get()));
    try {
        DiffieHellman::generate(tooSmall);
        FAIL() << "no exception";
    } catch (const OpenSSLException& e) {
        EXPECT_STREQ(e.what(), "DH_generate_key()");
        EXPECT_THAT(e.errorStack(), HasSubstr("modulus too small"));
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

int makeKeysAndAnswer(DH* dh, int result) {
    return DH_set0_key(dh, numberOf(8).release(), numberOf(6).release()) == 1 ? result : 0;
}

// Only 0 is a failure, even with keys, and anything else a success.
TEST_F(DiffieHellmanGeneration, GoesByWhetherOpensslAnswersZero) {
    const DefaultDhMethod method;
    const DiffieHellmanParams params(rawDh(numberOf(23).get(), numberOf(5).get()));

    DH_meth_set_generate_key(method.method(), [](DH* dh) { return makeKeysAndAnswer(dh, -1); });
    EXPECT_EQ(encoded(*DiffieHellman::generate(params)), fromHex("0117 0105 0108 0106"));
    DH_meth_set_generate_key(method.method(), [](DH* dh) { return makeKeysAndAnswer(dh, 0); });
    EXPECT_EQ(messageOf<OpenSSLException>([&] { DiffieHellman::generate(params); }), "DH_generate_key()");
    DH_meth_set_generate_key(method.method(), [](DH*) { return 1; });
    EXPECT_EQ(messageOf<VORLException>([&] { DiffieHellman::generate(params); }), "DH pub_key is NULL");
}

// Construction.

class DiffieHellmanConstruction : public DiffieHellmanTest {
protected:
    const Number p_ = numberOf(23);
    const Number g_ = numberOf(5);
    const Number pub_ = numberOf(8);
    const Number priv_ = numberOf(6);
};

TEST_F(DiffieHellmanConstruction, CopiesTheFourNumbers) {
    const std::shared_ptr<DH> dh = rawDh(p_.get(), g_.get(), pub_.get(), priv_.get());
    const DiffieHellman pair(dh);
    EXPECT_EQ(dh.use_count(), 1);

    ASSERT_EQ(DH_set0_pqg(dh.get(), numberOf(47).release(), nullptr, numberOf(2).release()), 1);
    ASSERT_EQ(DH_set0_key(dh.get(), numberOf(3).release(), numberOf(4).release()), 1);
    EXPECT_EQ(encoded(pair), fromHex("0117 0105 0108 0106"));
}

TEST_F(DiffieHellmanConstruction, TakesNumbersAsTheyAre) {
    const std::shared_ptr<DH> dh = rawDh(p_.get(), g_.get(), numberOf(0).get(), numberOf(77).get());
    EXPECT_EQ(encoded(DiffieHellman(dh)), fromHex("0117 0105 014d"));
}

TEST_F(DiffieHellmanConstruction, NeedsAPrime) {
    expectRefused<VORLException>([] { DiffieHellman{std::shared_ptr<DH>()}; }, "DH prime is NULL");
    const std::shared_ptr<DH> empty(DH_new(), DH_free);
    expectRefused<VORLException>([&] { DiffieHellman{empty}; }, "DH prime is NULL");

    ASSERT_EQ(DH_set0_key(empty.get(), numberOf(8).release(), numberOf(6).release()), 1);
    expectRefused<VORLException>([&] { DiffieHellman{empty}; }, "DH prime is NULL");
}

#if OPENSSL_VERSION_NUMBER >= 0x30000000L
TEST_F(DiffieHellmanConstruction, NeedsAGenerator) {
    const std::shared_ptr<DH> dh = rawDhWithoutGenerator(RFC_2409_GROUP.p().get());
    expectRefused<VORLException>([&] { DiffieHellman{dh}; }, "DH generator is NULL");

    ASSERT_EQ(DH_set0_key(dh.get(), numberOf(8).release(), numberOf(6).release()), 1);
    expectRefused<VORLException>([&] { DiffieHellman{dh}; }, "DH generator is NULL");
}
#endif

TEST_F(DiffieHellmanConstruction, NeedsAPublicKey) {
    expectRefused<VORLException>([&] { DiffieHellman{rawDh(p_.get(), g_.get())}; }, "DH pub_key is NULL");
    expectRefused<VORLException>([&] { DiffieHellman{rawDh(p_.get(), g_.get(), nullptr, priv_.get())}; },
                                 "DH pub_key is NULL");
}

TEST_F(DiffieHellmanConstruction, NeedsAPrivateKey) {
    expectRefused<VORLException>([&] { DiffieHellman{rawDh(p_.get(), g_.get(), pub_.get(), nullptr)}; },
                                 "DH priv_key is NULL");
}

TEST_F(DiffieHellmanConstruction, OfACopyIsIndependent) {
    DiffieHellman source(rawDh(p_.get(), g_.get(), pub_.get(), priv_.get()));
    const DiffieHellman constructed(source);
    DiffieHellman assigned(rawPair(GROUP_512_2, numberOf(7).get()));
    EXPECT_EQ(&(assigned = source), &assigned);
    source = DiffieHellman(rawPair(GROUP_512_2, numberOf(7).get()));

    EXPECT_EQ(encoded(constructed), fromHex("0117 0105 0108 0106"));
    EXPECT_EQ(encoded(assigned), fromHex("0117 0105 0108 0106"));
    EXPECT_NE(source, constructed);
}

TEST_F(DiffieHellmanConstruction, OfACopyToItselfChangesNothing) {
    DiffieHellman pair(rawDh(p_.get(), g_.get(), pub_.get(), priv_.get()));
    const DiffieHellman& same = pair;
    pair = same;
    EXPECT_EQ(encoded(pair), fromHex("0117 0105 0108 0106"));
}

// The public key as text. The generator of the groups here is 2, so that a private number below the size of
// the group is the place of the one bit that its public number has.

struct PublicKeyCase {
    const char* name;
    const Group& group;
    BN_ULONG privKey;
    bytes key;
};

const PublicKeyCase PUBLIC_KEYS[] = {
    {"OneByte", RFC_2409_GROUP, 1, bytes(127) + bytes{0x02}},
    {"OneByteWithTopBit", RFC_2409_GROUP, 7, bytes(127) + bytes{0x80}},
    {"Bytes127", RFC_2409_GROUP, 1008, bytes{0x00, 0x01} + bytes(126)},
    {"Bytes127WithTopBit", RFC_2409_GROUP, 1015, bytes{0x00, 0x80} + bytes(126)},
    {"Bytes128", RFC_2409_GROUP, 1016, bytes{0x01} + bytes(127)},
    {"Bytes128BelowTopBit", RFC_2409_GROUP, 1022, bytes{0x40} + bytes(127)},
    {"Bytes128WithTopBit", RFC_2409_GROUP, 1023, bytes{0x00, 0x80} + bytes(127)},
    {"AllOfASmallGroup", GROUP_512_2, 511, bytes(64) + bytes{0x80} + bytes(63)},
    {"LittleOfALargeGroup", RFC_3526_GROUP_14, 1, bytes(127) + bytes{0x02}},
    {"Bytes129OfALargeGroup", RFC_3526_GROUP_14, 1030, bytes{0x40} + bytes(128)},
};

class DiffieHellmanPublicKey : public DiffieHellmanTest,
                               public ::testing::WithParamInterface<PublicKeyCase> {};

TEST_P(DiffieHellmanPublicKey, IsPaddedToAPositiveNumberOf128BytesAtTheLeast) {
    const DiffieHellman pair(rawPair(GetParam().group, numberOf(GetParam().privKey).get()));
    const bytes expected = rawBase64(dhRecord(GetParam().key));
    EXPECT_EQ(pair.getPubKey(), expected);
    EXPECT_EQ(pair.getPubKey(), expected) << "any number of times";
}

INSTANTIATE_TEST_SUITE_P(PrivateNumbers, DiffieHellmanPublicKey, ::testing::ValuesIn(PUBLIC_KEYS),
                         [](const auto& test) { return test.param.name; });

class DiffieHellmanPublicKeyText : public DiffieHellmanTest {};

TEST_F(DiffieHellmanPublicKeyText, OfTheNumberZeroIsAllZeros) {
    const Number zero = numberOf(0);
    const DiffieHellman pair(
        rawDh(RFC_2409_GROUP.p().get(), RFC_2409_GROUP.g().get(), zero.get(), numberOf(1).get()));
    EXPECT_EQ(pair.getPubKey(), rawBase64(dhRecord(bytes(128))));
}

TEST_F(DiffieHellmanPublicKeyText, OfANumberThatFillsTheGroup) {
    const bytes number = bytesOf(RFC_2409_GROUP.raise(privateNumber().get()));
    ASSERT_EQ(number.size(), 128U);
    const std::size_t size = number.front() >= 0x80 ? 129 : 128;
    EXPECT_EQ(DiffieHellman(rawPair(RFC_2409_GROUP, privateNumber().get())).getPubKey(),
              rawBase64(dhRecord(paddedTo(size, number))));
}

TEST_F(DiffieHellmanPublicKeyText, OfMoreThan129BytesIsRefusedByTheRecord) {
    const DiffieHellman tooLong(rawPair(RFC_3526_GROUP_14, numberOf(1031).get()));
    expectRefused<VORLException>([&] { tooLong.getPubKey(); }, "DH PubKey length (130) out of range");
    const DiffieHellman full(rawPair(RFC_3526_GROUP_14, numberOf(2046).get()));
    expectRefused<VORLException>([&] { full.getPubKey(); }, "DH PubKey length (256) out of range");
}

// The shared secret. This side's private number is 256 bits long, the peer's 512.

Number ownNumber() {
    return numberFrom(octets(32));
}

Number peerPublicNumber() {
    return RFC_2409_GROUP.raise(numberFrom(octets(64)).get());
}

Number sharedNumber(const Number& peer, const Number& privKey) {
    return power(peer.get(), privKey.get(), RFC_2409_GROUP.p().get());
}

DiffieHellman pairOf(const Number& privKey) {
    return DiffieHellman(rawPair(RFC_2409_GROUP, privKey.get()));
}

bytes textOfKey(const bytes& key) {
    return rawBase64(dhRecord(key));
}

bytes textOfNumber(const BIGNUM* number) {
    return textOfKey(paddedTo(129, bytesOf(number)));
}

class DiffieHellmanSecret : public DiffieHellmanTest {
protected:
    const DiffieHellman own_ = pairOf(ownNumber());
};

TEST_F(DiffieHellmanSecret, IsWhatBothPartiesCompute) {
    const DiffieHellmanParams params(rawDh(RFC_2409_GROUP));
    const std::unique_ptr<DiffieHellman> client = DiffieHellman::generate(params);
    const std::unique_ptr<DiffieHellman> server = DiffieHellman::generate(params);

    const bytes secret = client->computeSharedSecret(server->getPubKey());
    EXPECT_EQ(server->computeSharedSecret(client->getPubKey()), secret);
    EXPECT_EQ(secret.size(), 128U);
    EXPECT_EQ(secret.back(), 0);
    EXPECT_NE(secret, bytes(128));
    EXPECT_NE(client->computeSharedSecret(client->getPubKey()), secret);
}

TEST_F(DiffieHellmanSecret, IsThePeersNumberRaisedWithItsLastByteOverwritten) {
    const Number shared = sharedNumber(peerPublicNumber(), ownNumber());
    ASSERT_EQ(bytesOf(shared).size(), 128U);
    ASSERT_NE(bytesOf(shared).back(), 0);

    const bytes secret = own_.computeSharedSecret(textOfNumber(peerPublicNumber().get()));
    EXPECT_EQ(secret, slice(bytesOf(shared), 0, 127) + bytes{0x00});
    EXPECT_EQ(own_.computeSharedSecret(textOfNumber(peerPublicNumber().get())), secret)
        << "any number of times";
    EXPECT_EQ(own_, pairOf(ownNumber())) << "unchanged";
}

TEST_F(DiffieHellmanSecret, IsMadeOfFullSizeNumbersToo) {
    const Number peer = RFC_2409_GROUP.raise(minus(privateNumber().get(), 1).get());
    EXPECT_EQ(pairOf(privateNumber()).computeSharedSecret(textOfNumber(peer.get())),
              secretOf(sharedNumber(peer, privateNumber()).get()));
}

// Found by trying one private number after the other.
struct ShortSecretCase {
    const char* name;
    BN_ULONG beyondOwnNumber;
    std::size_t bytesOfNumber;
};

const ShortSecretCase SHORT_SECRETS[] = {
    {"ByOneByte", 187, 127},
    {"ByTwoBytes", 70895, 126},
};

class DiffieHellmanShortSecret : public DiffieHellmanTest,
                                 public ::testing::WithParamInterface<ShortSecretCase> {};

TEST_P(DiffieHellmanShortSecret, StandsAtTheFrontWithZerosBehind) {
    const Number privKey = plus(ownNumber().get(), GetParam().beyondOwnNumber);
    const bytes number = bytesOf(sharedNumber(peerPublicNumber(), privKey));
    const std::size_t size = GetParam().bytesOfNumber;
    ASSERT_EQ(number.size(), size);
    ASSERT_NE(number.back(), 0);

    EXPECT_EQ(pairOf(privKey).computeSharedSecret(textOfNumber(peerPublicNumber().get())),
              number + bytes(128 - size));
}

INSTANTIATE_TEST_SUITE_P(Numbers, DiffieHellmanShortSecret, ::testing::ValuesIn(SHORT_SECRETS),
                         [](const auto& test) { return test.param.name; });

TEST_F(DiffieHellmanSecret, OfOneByteIsFollowedByZeros) {
    EXPECT_EQ(pairOf(numberOf(3)).computeSharedSecret(textOfNumber(numberOf(2).get())),
              bytes{0x08} + bytes(127));
}

struct RefusedPeerCase {
    const char* name;
    Number (*number)();
};

const RefusedPeerCase REFUSED_PEERS[] = {
    {"Zero", [] { return numberOf(0); }},
    {"One", [] { return numberOf(1); }},
    {"PrimeMinusOne", [] { return minus(RFC_2409_GROUP.p().get(), 1); }},
    {"Prime", [] { return RFC_2409_GROUP.p(); }},
};

class DiffieHellmanRefusedPeer : public DiffieHellmanTest,
                                 public ::testing::WithParamInterface<RefusedPeerCase> {};

TEST_P(DiffieHellmanRefusedPeer, GivesASecretOfZerosAndNoError) {
    const bytes peer = textOfNumber(GetParam().number().get());
    const unsigned long left = leaveApplicationError();
    EXPECT_EQ(pairOf(ownNumber()).computeSharedSecret(peer), bytes(128));
    // The number before the prime has 1 for its even powers and itself for the odd ones.
    EXPECT_EQ(pairOf(plus(ownNumber().get(), 1)).computeSharedSecret(peer), bytes(128));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

INSTANTIATE_TEST_SUITE_P(Numbers, DiffieHellmanRefusedPeer, ::testing::ValuesIn(REFUSED_PEERS),
                         [](const auto& test) { return test.param.name; });

TEST_F(DiffieHellmanSecret, IsMadeWithTheNumbersBesideTheRefusedOnes) {
    for (const Number& peer : {numberOf(2), minus(RFC_2409_GROUP.p().get(), 2)}) {
        const bytes secret = own_.computeSharedSecret(textOfNumber(peer.get()));
        EXPECT_EQ(secret, secretOf(sharedNumber(peer, ownNumber()).get()));
        EXPECT_NE(secret, bytes(128));
    }
}

// What the peer may send.

class DiffieHellmanPeerText : public DiffieHellmanTest {
protected:
    void expectSecretOf(const bytes& number, const bytes& record) {
        EXPECT_EQ(own_.computeSharedSecret(rawBase64(record)),
                  secretOf(sharedNumber(numberFrom(number), ownNumber()).get()));
    }
    template <typename E = VORLException>
    void expectRefusal(const bytes& record, const std::string& message) {
        expectRefused<E>([&] { own_.computeSharedSecret(rawBase64(record)); }, message);
    }

    // A record of fewer than 130 bytes would be taken for a bare key.
    static bytes longEnough(bytes record) {
        record.resize(std::max<std::size_t>(record.size(), 130), 0xee);
        return record;
    }
    static bytes keyOf(std::size_t size) { return paddedTo(size, octets(std::min<std::size_t>(size, 127))); }

    const DiffieHellman own_ = pairOf(ownNumber());
};

TEST_F(DiffieHellmanPeerText, IsARecordWithAKeyOf120To129Bytes) {
    for (const std::size_t size : {120U, 121U, 124U, 125U, 127U, 128U, 129U}) {
        SCOPED_TRACE(size);
        expectSecretOf(keyOf(size), longEnough(dhRecord(keyOf(size))));
    }
}

TEST_F(DiffieHellmanPeerText, WithAKeyOfAnotherLengthIsRefused) {
    for (const std::size_t size : {1U, 64U, 119U, 130U, 131U, 256U}) {
        SCOPED_TRACE(size);
        expectRefusal(longEnough(dhRecord(keyOf(size))),
                      "DH public key from server is " + std::to_string(size) + "bytes, expected 120-129");
    }
    expectRefusal(longEnough(fromHex("00000002 00")),
                  "DH public key from server is 0bytes, expected 120-129");
}

TEST_F(DiffieHellmanPeerText, MayBeABareKeyOf125To129Bytes) {
    for (const std::size_t size : {125U, 126U, 127U, 128U, 129U}) {
        SCOPED_TRACE(size);
        expectSecretOf(keyOf(size), keyOf(size));
    }
}

// Their 125 to 129 bytes are what a bare key has.
TEST_F(DiffieHellmanPeerText, ThatIsARecordWithAKeyOf120To124BytesIsReadAsABareKey) {
    for (const std::size_t size : {120U, 124U}) {
        SCOPED_TRACE(size);
        const bytes record = dhRecord(keyOf(size));
        ASSERT_EQ(record.size(), size + 5);
        expectSecretOf(record, record);
    }
}

TEST_F(DiffieHellmanPeerText, ThatIsTooShortOrOfAnotherVersionIsRefusedByTheRecord) {
    expectRefusal(keyOf(124), "DH PubKey length (124) out of range");
    expectRefusal(dhRecord(keyOf(119)), "DH PubKey length (124) out of range");
    expectRefusal({0x02}, "DH PubKey length (1) out of range");
    expectRefusal(fromHex("00000003") + slice(longEnough(dhRecord(keyOf(128))), 4, 130),
                  "Unknown DHPubKey version: 3");
    expectRefusal(bytes{0xff} + bytes(129), "Unknown DHPubKey version: 4278190080");
}

TEST_F(DiffieHellmanPeerText, ThatIsCutOrNoBlockIsRefusedByTheBlock) {
    expectRefusal<ASN1Exception>(fromHex("00000002 80ff") + bytes(124),
                                 "Unable to read 255 bytes from buffer, only 124 available");
    expectRefusal<ASN1Exception>(fromHex("00000002 c5") + bytes(125),
                                 "Unknown ASN.1 length value: b11000101");
}

TEST_F(DiffieHellmanPeerText, ThatIsNoBase64IsRefusedWithADumpOfIt) {
    expectRefused<VORLException>([&] { own_.computeSharedSecret(fromText("????")); },
                                 "Unable to Base64 decode input:\n     0: 3f:3f:3f:3f" +
                                     std::string(36, ' ') + "    ????" + std::string(12, ' ') + "\n\n");
    expectRefused<VORLException>([&] { own_.computeSharedSecret(bytes()); },
                                 "Unable to Base64 decode input:\n\n");
}

// The size of the group. For the bounds a number of that size takes the place of its prime.

DiffieHellman pairModulo(const BIGNUM* modulus) {
    return DiffieHellman(rawDh(modulus, numberOf(2).get(), numberOf(8).get(), numberOf(3).get()));
}

// 2 ^ bits and a small one.
Number powerOfTwo(int bits, BN_ULONG summand) {
    Number number = numberOf(0);
    BN_set_bit(number.get(), bits);
    return plus(number.get(), summand);
}

struct GroupSizeCase {
    const char* name;
    Number (*modulus)();
    const char* bytesOfIt;
};

const GroupSizeCase WRONG_SIZES[] = {
    {"Bits512", [] { return GROUP_512_2.p(); }, "64"},
    {"Bits1016", [] { return minus(powerOfTwo(1016, 0).get(), 1); }, "127"},
    {"Bits1025", [] { return powerOfTwo(1024, 1); }, "129"},
    {"Bits2048", [] { return RFC_3526_GROUP_14.p(); }, "256"},
};

class DiffieHellmanGroupSize : public DiffieHellmanTest,
                               public ::testing::WithParamInterface<GroupSizeCase> {};

TEST_P(DiffieHellmanGroupSize, OtherThan128BytesGivesNoSecret) {
    const DiffieHellman pair = pairModulo(GetParam().modulus().get());
    const std::string message = std::string("DH shared secret size (") + GetParam().bytesOfIt + ") != 128";
    expectRefused<VORLException>([&] { pair.computeSharedSecret(textOfNumber(numberOf(2).get())); }, message);
}

TEST_P(DiffieHellmanGroupSize, IsLookedAtAfterTheKey) {
    const DiffieHellman pair = pairModulo(GetParam().modulus().get());
    expectRefused<VORLException>([&] { pair.computeSharedSecret(textOfKey(bytes(130))); },
                                 "DH public key from server is 130bytes, expected 120-129");
}

INSTANTIATE_TEST_SUITE_P(Sizes, DiffieHellmanGroupSize, ::testing::ValuesIn(WRONG_SIZES),
                         [](const auto& test) { return test.param.name; });

TEST_F(DiffieHellmanSecret, IsMadeInAllGroupsOf128Bytes) {
    for (const Number& modulus : {powerOfTwo(1016, 1), minus(powerOfTwo(1024, 0).get(), 1)}) {
        ASSERT_EQ(bytesOf(modulus).size(), 128U);
        const Number peer = numberFrom(octets(127));
        const Number shared = power(peer.get(), numberOf(3).get(), modulus.get());
        EXPECT_EQ(pairModulo(modulus.get()).computeSharedSecret(textOfNumber(peer.get())),
                  secretOf(shared.get()));
    }
}

TEST_F(DiffieHellmanSecret, OfAGeneratedPairInASmallGroupIsRefused) {
    const DiffieHellmanParams params(rawDh(GROUP_512_5));
    const std::unique_ptr<DiffieHellman> client = DiffieHellman::generate(params);
    const std::unique_ptr<DiffieHellman> server = DiffieHellman::generate(params);
    expectRefused<VORLException>([&] { client->computeSharedSecret(server->getPubKey()); },
                                 "DH shared secret size (64) != 128");
}

// What OpenSSL's own method never answers in a group of the right size.
TEST_F(DiffieHellmanSecret, OfWhichOpensslComputesNothingFails) {
    const DefaultDhMethod method;
    DH_meth_set_compute_key(method.method(), [](unsigned char*, const BIGNUM*, DH*) { return 0; });
    const DiffieHellman pair = pairOf(ownNumber());
    EXPECT_EQ(messageOf<OpenSSLException>(
                  [&] { pair.computeSharedSecret(textOfNumber(peerPublicNumber().get())); }),
              "DH_compute_key()");
}

// Encoding.

class DiffieHellmanEncoding : public DiffieHellmanTest {
protected:
    const bytes p_ = bytesOf(RFC_2409_GROUP.p());
    const bytes pub_ = bytesOf(RFC_2409_GROUP.raise(privateNumber().get()));
    const bytes priv_ = bytesOf(privateNumber());
    const bytes blocks_ = blocksOf(p_, {0x02}, pub_, priv_);
};

TEST_F(DiffieHellmanEncoding, IsAppendedAndItsDecodingLeavesTheRest) {
    const DiffieHellman pair(rawPair(RFC_2409_GROUP, privateNumber().get()));
    Buffer buffer(bytes{0xaa});
    pair.encode(buffer);
    pairOf(numberOf(5)).encode(buffer);
    EXPECT_EQ(buffer.toByteArray(), bytes{0xaa} + blocks_ + blocksOf(p_, {0x02}, {0x20}, {0x05}));

    EXPECT_EQ(buffer.get(), 0xaa);
    EXPECT_EQ(*DiffieHellman::decode(buffer), pair);
    EXPECT_EQ(buffer.toByteArrayRemain(), blocksOf(p_, {0x02}, {0x20}, {0x05}));
}

TEST_F(DiffieHellmanEncoding, IsReadBackToAnEqualPair) {
    const std::unique_ptr<DiffieHellman> pair =
        DiffieHellman::generate(DiffieHellmanParams(rawDh(RFC_2409_GROUP)));
    const std::unique_ptr<DiffieHellman> back = decodedPair(encoded(*pair));
    EXPECT_EQ(*back, *pair);
    EXPECT_EQ(back->getPubKey(), pair->getPubKey());
    const bytes peer = textOfNumber(peerPublicNumber().get());
    EXPECT_EQ(back->computeSharedSecret(peer), pair->computeSharedSecret(peer));
}

TEST_F(DiffieHellmanEncoding, IsReadAsItIs) {
    EXPECT_EQ(encoded(*decodedPair(blocks_)), blocks_);
    EXPECT_EQ(encoded(*decodedPair(fromHex("0117 0105 0109 0106"))), fromHex("0117 0105 0109 0106"))
        << "keys that do not fit";
    EXPECT_EQ(encoded(*decodedPair(fromHex("020017 020005 03000080 020006"))), fromHex("0117 0105 0180 0106"))
        << "leading zeros";
}

TEST_F(DiffieHellmanEncoding, DoesNotWriteAZero) {
    EXPECT_EQ(encoded(*decodedPair(fromHex("0117 0105 00 0106"))), fromHex("0117 0105 0106"));
    EXPECT_EQ(encoded(*decodedPair(fromHex("00 00 0100 00"))), bytes());
}

TEST_F(DiffieHellmanEncoding, CutShortAnywhereIsRefused) {
    for (std::size_t size = 0; size < blocks_.size(); ++size) {
        EXPECT_THROW(decodedPair(slice(blocks_, 0, size)), ASN1Exception) << size;
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

struct PairCutCase {
    const char* name;
    bytes blocks;
    const char* message;
};

const PairCutCase PAIR_CUTS[] = {
    {"Nothing", {}, "index out of bounds: read index(0) >= write index(0)"},
    {"Prime", {0x03, 0x17}, "Unable to read 3 bytes from buffer, only 1 available"},
    {"Generator", {0x01, 0x17}, "index out of bounds: read index(2) >= write index(2)"},
    {"PublicKey", {0x01, 0x17, 0x01, 0x05, 0x80}, "index out of bounds: read index(5) >= write index(5)"},
    {"PrivateKey",
     {0x01, 0x17, 0x01, 0x05, 0x01, 0x08, 0x02, 0x06},
     "Unable to read 2 bytes from buffer, only 1 available"},
    {"UnknownLength",
     {0x01, 0x17, 0x01, 0x05, 0x01, 0x08, 0xc0, 0x06},
     "Unknown ASN.1 length value: b11000000"},
};

class DiffieHellmanCut : public DiffieHellmanTest, public ::testing::WithParamInterface<PairCutCase> {};

TEST_P(DiffieHellmanCut, IsRefusedInTheWordsOfTheBlock) {
    expectRefused<ASN1Exception>([] { decodedPair(GetParam().blocks); }, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Blocks, DiffieHellmanCut, ::testing::ValuesIn(PAIR_CUTS),
                         [](const auto& test) { return test.param.name; });

// Comparing.

TEST_F(DiffieHellmanTest, IsEqualWithTheSameFourNumbers) {
    const std::unique_ptr<DiffieHellman> pair = decodedPair(fromHex("0117 0105 0108 0106"));
    EXPECT_TRUE(*pair == *pair);
    EXPECT_FALSE(*pair != *pair);
    EXPECT_TRUE(*pair == *decodedPair(fromHex("0117 0105 0108 0106")));
    EXPECT_FALSE(*pair != *decodedPair(fromHex("0117 0105 0108 0106")));
}

struct DifferenceCase {
    const char* name;
    const char* hex;
};

const DifferenceCase DIFFERENCES[] = {
    {"Prime", "012f 0105 0108 0106"},
    {"Generator", "0117 0107 0108 0106"},
    {"PublicKey", "0117 0105 0109 0106"},
    {"PrivateKey", "0117 0105 0108 0107"},
};

class DiffieHellmanDifference : public DiffieHellmanTest,
                                public ::testing::WithParamInterface<DifferenceCase> {};

TEST_P(DiffieHellmanDifference, IsSeenEitherWay) {
    const std::unique_ptr<DiffieHellman> pair = decodedPair(fromHex("0117 0105 0108 0106"));
    const std::unique_ptr<DiffieHellman> other = decodedPair(fromHex(GetParam().hex));
    EXPECT_FALSE(*pair == *other);
    EXPECT_FALSE(*other == *pair);
    EXPECT_TRUE(*pair != *other);
}

INSTANTIATE_TEST_SUITE_P(Numbers, DiffieHellmanDifference, ::testing::ValuesIn(DIFFERENCES),
                         [](const auto& test) { return test.param.name; });

// Printing.

TEST_F(DiffieHellmanTest, PrintsItsFourNumbers) {
    EXPECT_EQ(decodedPair(fromHex("0117 0105 020108 0106"))->toString(),
              "Diffie-Hellman-Structure:\n"
              "    prime:  17\n"
              "    generator:  05\n"
              "    public-key:  01:08\n"
              "    private-key:  06\n");
    EXPECT_EQ(decodedPair(fromHex("0117 0105 00 0106"))->toString(),
              "Diffie-Hellman-Structure:\n"
              "    prime:  17\n"
              "    generator:  05\n"
              "    public-key:  (NULL)"
              "    private-key:  06\n");
    EXPECT_EQ(DiffieHellman(rawPair(GROUP_512_2, numberOf(8).get())).toString(),
              "Diffie-Hellman-Structure:\n"
              "    prime:\n"
              "        cf:a7:2f:ea:1b:38:c2:49:fb:e8:3e:08:e8:c2:5b:dd:8e:ca:b5:72:b3:ad:47:ab\n"
              "        f7:3f:72:25:8f:5f:cd:65:e8:4d:93:64:c8:47:f4:6b:9d:37:aa:8a:da:26:38:81\n"
              "        47:4f:bf:7a:31:c0:35:fe:47:ae:2d:42:14:37:da:87\n"
              "    generator:  02\n"
              "    public-key:  01:00\n"
              "    private-key:  08\n");
}

// The dump of an OpenSSL DH.

class DiffieHellmanDump : public DiffieHellmanTest {
protected:
    // As the standard library prints it.
    static std::string addressOf(const void* p) {
        std::ostringstream text;
        text << p;
        return text.str();
    }

    static std::vector<std::string> linesOf(const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    // The group of ANSI X9.42 with all that OpenSSL remembers of how it was generated.
    static std::shared_ptr<DH> groupWith(const bytes& generation) {
        const bytes encoded =
            derSequence(derInteger({0x17}) + derInteger({0x04}) + derInteger({0x0b}) + generation);
        const unsigned char* at = encoded.data();
        return std::shared_ptr<DH>(d2i_DHxparams(nullptr, &at, static_cast<long>(encoded.size())), DH_free);
    }
};

TEST_F(DiffieHellmanDump, HasALineForEachField) {
    const std::shared_ptr<DH> dh = rawPair(RFC_2409_GROUP, numberOf(0x1abc).get());
    ASSERT_EQ(DH_set_length(dh.get(), 160), 1);
    DH_clear_flags(dh.get(), ~0);
    DH_set_flags(dh.get(), DH_FLAG_CACHE_MONT_P | 0x4000);
    const unsigned long left = leaveApplicationError();

    char* const pubKey = BN_bn2hex(RFC_2409_GROUP.raise(numberOf(0x1abc).get()).get());
    const std::string pubKeyHex = pubKey;
    OPENSSL_free(pubKey);
    ASSERT_EQ(pubKeyHex.size(), 256U);
    ASSERT_NE(pubKeyHex.front(), '0');

    EXPECT_EQ(DiffieHellman::toString(dh),
              "OpenSSL DH struct:\n"
              "    pad:            n/a\n"
              "    version:        n/a\n"
              "    p:              " +
                  std::string(RFC_2409_GROUP.primeHex) +
                  "\n"
                  "    g:              2\n"
                  "    length:         160\n"
                  "    pub_key:        " +
                  pubKeyHex +
                  "\n"
                  "    priv_key:       1ABC\n"
                  "    flags:          16385\n"
                  "    method_mont_p:  n/a\n"
                  "    q:              0\n"
                  "    j:              n/a\n"
                  "    seed:           n/a\n"
                  "    counter:        n/a\n"
                  "    references:     n/a\n"
                  "    &ex_data:       n/a\n"
                  "    meth:           n/a\n"
                  "    engine:         " +
                  addressOf(nullptr) + "\n");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    EXPECT_EQ(dh.use_count(), 1);
}

TEST_F(DiffieHellmanDump, OfAnEmptyOneHasZeros) {
    const std::shared_ptr<DH> dh(DH_new(), DH_free);
    const std::vector<std::string> lines = linesOf(DiffieHellman::toString(dh));
    ASSERT_EQ(lines.size(), 18U);
    EXPECT_EQ(lines[3], "    p:              0");
    EXPECT_EQ(lines[4], "    g:              0");
    EXPECT_EQ(lines[5], "    length:         0");
    EXPECT_EQ(lines[6], "    pub_key:        0");
    EXPECT_EQ(lines[7], "    priv_key:       0");
    EXPECT_EQ(lines[10], "    q:              0");
}

TEST_F(DiffieHellmanDump, TellsHowTheGroupWasGenerated) {
    const std::shared_ptr<DH> dh =
        groupWith(derInteger({0x02}) + derSequence(derBitString(octets(20)) + derInteger({0x01, 0x00})));
    ASSERT_TRUE(dh);
    const std::string dump = DiffieHellman::toString(dh);

    EXPECT_THAT(dump, HasSubstr("    p:              17\n"
                                "    g:              4\n"));
    EXPECT_THAT(dump, HasSubstr("    q:              B\n"
                                "    j:              2\n"
                                "    seed:           ByteArray[data(0x"));
    EXPECT_THAT(dump, ContainsRegex("ByteArray\\[data\\(0x[1-9a-f][0-9a-f]*\\) size\\(20\\)\\] "));
    // As Util prints a block of bytes with the defaults.
    EXPECT_THAT(dump, HasSubstr(":  01:20:3f:5e:7d:9c:bb:da:f9:18:37:56:75:94:b3:d2:f1:10:2f:4e\n"));
    EXPECT_THAT(dump, HasSubstr("\n    counter:        256\n    references:     n/a\n"));
}

TEST_F(DiffieHellmanDump, SaysWhatOfItIsNotKnown) {
    const std::shared_ptr<DH> dh = groupWith({});
    ASSERT_TRUE(dh);
    EXPECT_THAT(DiffieHellman::toString(dh), HasSubstr("    q:              B\n"
                                                       "    j:              n/a\n"
                                                       "    seed:           n/a\n"
                                                       "    counter:        n/a\n"));
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

}  // namespace
}  // namespace vorl::test
