#include "vorl/HMAC.h"

#include "ScriptedDigest.h"
#include "TempFolder.h"
#include "digest_algos.h"
#include "error_queue.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"
#include "test_vectors.h"
#include "vorl/DigestAlgo.h"
#include "vorl/vorl.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <type_traits>

namespace {

// OpenSSL has a function of the same name, which would make this one ambiguous if a header of the library
// declared it.
vorl::bytes codeByAnApplicationThatUsesTheNamespace() {
    using namespace vorl;
    HMAC code(bytes{0x4a, 0x65, 0x66, 0x65});
    return code.final();
}

}  // namespace

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<HMAC>);
static_assert(!std::is_copy_constructible_v<HMAC>);
static_assert(!std::is_copy_assignable_v<HMAC>);

// RFC 4231, section 4.3.
const bytes JEFE = fromText("Jefe");
const bytes QUESTION = fromText("what do ya want for nothing?");
const bytes JEFE_SHA256 = fromHex("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");

class HMACTest : public ::testing::Test {
protected:
    void SetUp() override { ERR_clear_error(); }
    void TearDown() override { ERR_clear_error(); }
};

bytes codeOf(const std::shared_ptr<const DigestAlgo>& algo, const bytes& key, const bytes& data) {
    HMAC code(key, algo);
    code.update(data);
    return code.final();
}

void expectVectors(const std::string& file, std::size_t count) {
    const std::size_t compared = forEachVector(VORL_TEST_VECTORS "/" + file, [](TestVector& vector) {
        const DigestAlgoCase& algo = digestAlgoNamed(vector.text("Algorithm"));
        const bytes key = vector.octets("Key");
        const bytes data = vector.octets("Data");
        const bytes code = codeOf(algo.factory(), key, data);

        EXPECT_EQ(code.size(), algo.digestBytes) << vector.place();
        if (vector.has("Truncated")) {
            const bytes leading = vector.octets("Truncated");
            EXPECT_EQ(slice(code, 0, leading.size()), leading) << vector.place();
        } else {
            EXPECT_EQ(code, vector.octets("Code")) << vector.place();
            EXPECT_EQ(HMAC(key, algo.factory()).hmac(data), rawBase64(vector.octets("Code")))
                << vector.place();
        }
    });
    EXPECT_EQ(compared, count);
}

TEST_F(HMACTest, AgreesWithRfc2202) {
    expectVectors("hmac_rfc2202.txt", 7);
}

TEST_F(HMACTest, AgreesWithRfc4231) {
    expectVectors("hmac_rfc4231.txt", 28);
}

class HMACWith : public ::testing::TestWithParam<DigestAlgoCase> {};

TEST_P(HMACWith, IsThatOfRfc2104ForEverySizeOfKey) {
    for (const std::size_t keyBytes :
         {0U, 1U, 19U, 20U, 32U, 55U, 56U, 63U, 64U, 65U, 111U, 127U, 128U, 129U, 130U, 131U, 200U, 1000U}) {
        const bytes key = octets(keyBytes);
        for (const std::size_t size : {0U, 1U, 55U, 56U, 64U, 112U, 128U, 300U}) {
            const bytes data = octets(size);
            EXPECT_EQ(codeOf(GetParam().factory(), key, data), rawHmac(GetParam().md(), key, data))
                << "a key of " << keyBytes << ", data of " << size;
        }
    }
}

TEST_P(HMACWith, GivesAsManyBytesAsTheDigest) {
    EXPECT_EQ(codeOf(GetParam().factory(), JEFE, bytes()).size(), GetParam().digestBytes);
}

TEST_P(HMACWith, DoesNotMindWhereTheDataIsCut) {
    const bytes message = octets(260);
    const bytes whole = rawHmac(GetParam().md(), JEFE, message);
    HMAC code(JEFE, GetParam().factory());

    for (std::size_t cut = 0; cut <= message.size(); ++cut) {
        code.init();
        code.update(slice(message, 0, cut));
        code.update(slice(message, cut, message.size() - cut));
        EXPECT_EQ(code.final(), whole) << cut;
    }
}

// An empty key must not be taken for none: every message would have the same, empty, code.
TEST_P(HMACWith, TakesAnEmptyKey) {
    HMAC code(bytes(), GetParam().factory());
    code.update(QUESTION);
    const bytes first = code.final();

    EXPECT_EQ(first, rawHmac(GetParam().md(), bytes(), QUESTION));
    EXPECT_EQ(first.size(), GetParam().digestBytes);
    code.init();
    code.update(QUESTION);
    EXPECT_EQ(code.final(), first);
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(first));
}

TEST_P(HMACWith, IsThatOfTheOpensslCommand) {
    if (std::system("command -v openssl >/dev/null") != 0) {
        GTEST_SKIP() << "no openssl command";
    }
    const TempFolder folder;
    std::ofstream(folder / "message", std::ios::binary) << toText(octets(1000));
    const std::string command = "cd '" + folder.path() + "' && openssl dgst -" + GetParam().name +
                                " -mac HMAC -macopt hexkey:00ff61 -binary message >code";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;

    std::ifstream file(folder / "code", std::ios::binary);
    const bytes expected{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    EXPECT_EQ(codeOf(GetParam().factory(), fromHex("00ff61"), octets(1000)), expected);
}

INSTANTIATE_TEST_SUITE_P(All, HMACWith, ::testing::ValuesIn(DIGEST_ALGOS),
                         [](const auto& test) { return test.param.name; });

TEST_F(HMACTest, TakesSha256WhereNoDigestIsGiven) {
    HMAC code(JEFE);
    code.update(QUESTION);
    EXPECT_EQ(code.final(), JEFE_SHA256);
}

// Python: hmac.new(b"", b"", "sha256").
TEST_F(HMACTest, OfNothingUnderAnEmptyKeyIsNotEmpty) {
    EXPECT_EQ(HMAC(bytes()).final(),
              fromHex("b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad"));
}

// A vector that has had its content may hand out a pointer all the same.
TEST_F(HMACTest, TakesAnEmptyKeyThatHasRoom) {
    bytes key = octets(64);
    key.clear();
    HMAC code(key);
    code.update(QUESTION);
    EXPECT_EQ(code.final(), rawHmac(EVP_sha256(), bytes(), QUESTION));
}

TEST_F(HMACTest, OneShotGivesTheBase64TextOfTheCode) {
    HMAC code(JEFE);
    // "openssl dgst -sha256 -hmac Jefe -binary | base64" of the question.
    EXPECT_EQ(toText(code.hmac(QUESTION)), "W9zBRr9gdU5qBCQmCJV1x1oAPwidJzmDnexYuWTsOEM=");
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(JEFE_SHA256));
    EXPECT_EQ(code.hmac(QUESTION.data(), static_cast<unsigned int>(QUESTION.size())), rawBase64(JEFE_SHA256));

    HMAC fresh(JEFE);
    fresh.update(fromHex("61 62 63"));
    EXPECT_EQ(fresh.final(), rawUnbase64(code.hmac(fromHex("61 62 63"))));
}

TEST_F(HMACTest, OneShotBeginsAnewWhateverWasFed) {
    HMAC code(JEFE);
    code.update(octets(100));
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(JEFE_SHA256));
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(JEFE_SHA256));
}

TEST_F(HMACTest, TakesPointersAndVectorsAlike) {
    HMAC code(JEFE);
    code.update(QUESTION.data(), 10);
    code.update(slice(QUESTION, 10, QUESTION.size() - 10));
    EXPECT_EQ(code.final(), JEFE_SHA256);
}

TEST_F(HMACTest, NoDataLeavesTheCodeAsItIs) {
    HMAC code(JEFE);
    code.update(bytes());
    code.update(QUESTION);
    code.update(nullptr, 0);
    code.update(QUESTION.data(), 0);
    EXPECT_EQ(code.final(), JEFE_SHA256);

    EXPECT_EQ(code.hmac(nullptr, 0), rawBase64(rawHmac(EVP_sha256(), JEFE, bytes())));
    EXPECT_EQ(code.hmac(bytes()), code.hmac(nullptr, 0));
}

TEST_F(HMACTest, AuthenticatesManyMessagesWithItsKey) {
    HMAC code(JEFE);
    for (int round = 0; round < 3; ++round) {
        code.init();
        code.update(QUESTION);
        EXPECT_EQ(code.final(), JEFE_SHA256) << round;
        EXPECT_EQ(code.hmac(octets(99)), rawBase64(rawHmac(EVP_sha256(), JEFE, octets(99)))) << round;
    }
}

TEST_F(HMACTest, InitDiscardsWhatWasFed) {
    HMAC code(JEFE);
    code.update(octets(65));
    code.init();
    code.init();
    code.update(QUESTION);
    EXPECT_EQ(code.final(), JEFE_SHA256);
}

TEST_F(HMACTest, KeepsItsOwnCopyOfTheKey) {
    bytes key = JEFE;
    HMAC code(key);
    key.assign(4, 0x00);
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(JEFE_SHA256));
    key = bytes();
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(JEFE_SHA256));
}

TEST_F(HMACTest, TwoAtOnceDoNotDisturbOneAnother) {
    HMAC first(JEFE);
    HMAC second(octets(20), DigestAlgo::SHA1());
    first.update(slice(QUESTION, 0, 5));
    second.update(octets(70));
    first.update(slice(QUESTION, 5, QUESTION.size() - 5));
    second.update(octets(7));
    EXPECT_EQ(first.final(), JEFE_SHA256);
    EXPECT_EQ(second.final(), rawHmac(EVP_sha1(), octets(20), octets(70) + octets(7)));
}

TEST_F(HMACTest, SharesItsAlgorithmWithTheCaller) {
    std::shared_ptr<const DigestAlgo> algo = DigestAlgo::SHA256();
    const std::weak_ptr<const DigestAlgo> watch = algo;
    {
        HMAC code(JEFE, algo);
        EXPECT_EQ(algo.use_count(), 2);
        algo.reset();
        EXPECT_EQ(code.hmac(QUESTION), rawBase64(JEFE_SHA256));
    }
    EXPECT_TRUE(watch.expired());
}

TEST_F(HMACTest, WorksWithADigestThatTheApplicationChooses) {
    // RFC 2202, section 2.
    EXPECT_EQ(codeOf(std::make_shared<const DigestAlgo>("MD5", NID_md5, EVP_md5()), bytes(16, 0x0b),
                     fromText("Hi There")),
              fromHex("9294727a3638bb1c13f48ef8158bfc9d"));
    // With a block of 136 bytes.
    const auto sha3 = std::make_shared<const DigestAlgo>("SHA3", NID_sha3_256, EVP_sha3_256());
    for (const std::size_t keyBytes : {0U, 135U, 136U, 137U}) {
        EXPECT_EQ(codeOf(sha3, octets(keyBytes), QUESTION),
                  rawHmac(EVP_sha3_256(), octets(keyBytes), QUESTION));
    }
}

TEST_F(HMACTest, CanBeUsedUnderUsingNamespace) {
    EXPECT_EQ(codeByAnApplicationThatUsesTheNamespace(), rawHmac(EVP_sha256(), JEFE, bytes()));
}

void expectNoCode(HMAC& code) {
    code.update(QUESTION);
    EXPECT_EQ(code.final(), bytes());
    code.init();
    code.update(QUESTION.data(), 3);
    EXPECT_EQ(code.final(), bytes());
    EXPECT_EQ(code.hmac(QUESTION), bytes());
    EXPECT_EQ(code.hmac(QUESTION.data(), 3), bytes());
}

TEST_F(HMACTest, HasAnEmptyCodeWithoutAMethod) {
    const unsigned long left = leaveApplicationError();
    {
        HMAC code(JEFE, std::make_shared<const DigestAlgo>("None", NID_undef, nullptr));
        expectNoCode(code);
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// OpenSSL has no HMAC over a digest whose output has any length.
TEST_F(HMACTest, HasAnEmptyCodeWithADigestThatOpenSSLRefuses) {
    const unsigned long left = leaveApplicationError();
    {
        HMAC code(JEFE, std::make_shared<const DigestAlgo>("SHAKE128", NID_shake128, EVP_shake128()));
        expectNoCode(code);
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

TEST_F(HMACTest, HasAnEmptyCodeWhereDataWasRefusedUntilTheNextMessage) {
    ScriptedDigest scripted;
    HMAC code(JEFE, scripted.algo());

    scripted.updateResult = 0;
    code.update(QUESTION);
    scripted.updateResult = 1;
    code.update(QUESTION);
    EXPECT_EQ(code.final(), bytes());

    code.init();
    code.update(QUESTION);
    EXPECT_EQ(code.final(), bytes(16, 0xd1));
}

// Whether of the inner digest or of the outer one, whose length OpenSSL reports all the same.
TEST_F(HMACTest, HasAnEmptyCodeWhereTheEndIsRefused) {
    for (const int goodFinals : {0, 1}) {
        ScriptedDigest scripted;
        HMAC code(JEFE, scripted.algo());

        code.update(QUESTION);
        scripted.finalResult = 0;
        scripted.goodFinals = goodFinals;
        EXPECT_EQ(code.final(), bytes()) << goodFinals;
        scripted.goodFinals = goodFinals;
        EXPECT_EQ(code.hmac(QUESTION), bytes()) << goodFinals;
        scripted.finalResult = 1;
        EXPECT_EQ(code.hmac(QUESTION), rawBase64(bytes(16, 0xd1))) << goodFinals;
    }
}

TEST_F(HMACTest, HasAnEmptyCodeWhereTheKeyIsRefusedUntilItIsTaken) {
    ScriptedDigest scripted;
    scripted.initResult = 0;
    HMAC code(JEFE, scripted.algo());
    expectNoCode(code);

    scripted.initResult = 1;
    code.update(QUESTION);
    EXPECT_EQ(code.final(), bytes());
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(bytes(16, 0xd1)));
}

// Only 0 is a refusal.
TEST_F(HMACTest, TakesAResultOfMinusOneForSuccess) {
    ScriptedDigest scripted;
    scripted.initResult = -1;
    scripted.updateResult = -1;
    scripted.finalResult = -1;
    HMAC code(JEFE, scripted.algo());
    code.update(QUESTION);
    EXPECT_EQ(code.final(), bytes(16, 0xd1));
    EXPECT_EQ(code.hmac(QUESTION), rawBase64(bytes(16, 0xd1)));
}

struct RefusalCase {
    const char* name;
    int ScriptedDigest::*result;
};

const RefusalCase REFUSALS[] = {
    {"OfTheKey", &ScriptedDigest::initResult},
    {"OfData", &ScriptedDigest::updateResult},
    {"OfTheEnd", &ScriptedDigest::finalResult},
};

class HMACRefusal : public ::testing::TestWithParam<RefusalCase> {};

// Which no exception reports, so that its entry must not turn up in a report of something else.
TEST_P(HMACRefusal, LeavesTheErrorQueueAsItWas) {
    ScriptedDigest scripted;
    for (const bool applicationHasErrors : {false, true}) {
        const auto expectTheQueueAfter = [&](const char* what, auto&& action) {
            ERR_clear_error();
            ErrorCodes before;
            if (applicationHasErrors) {
                before.push_back(leaveApplicationError());
            }
            action();
            EXPECT_EQ(takeErrorQueue(), before) << what << applicationHasErrors;
        };
        scripted.*GetParam().result = 1;
        HMAC code(JEFE, scripted.algo());
        scripted.*GetParam().result = 0;

        expectTheQueueAfter("constructor", [&] { HMAC(JEFE, scripted.algo()); });
        expectTheQueueAfter("update", [&] { code.update(QUESTION); });
        expectTheQueueAfter("update of a pointer", [&] { code.update(QUESTION.data(), 3); });
        expectTheQueueAfter("final", [&] { code.final(); });
        expectTheQueueAfter("init", [&] { code.init(); });
        expectTheQueueAfter("update after init", [&] { code.update(QUESTION.data(), 3); });
        expectTheQueueAfter("final after init", [&] { code.final(); });
        expectTheQueueAfter("hmac", [&] { code.hmac(QUESTION); });
        expectTheQueueAfter("hmac of a pointer", [&] { code.hmac(QUESTION.data(), 3); });
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, HMACRefusal, ::testing::ValuesIn(REFUSALS),
                         [](const auto& test) { return test.param.name; });

TEST_F(HMACTest, SuccessLeavesTheErrorQueueAsItWas) {
    const unsigned long left = leaveApplicationError();
    HMAC code(JEFE);
    code.update(QUESTION);
    code.final();
    code.hmac(QUESTION);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace
}  // namespace vorl::test
