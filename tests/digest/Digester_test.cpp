#include "vorl/Digester.h"

#include "ScriptedDigest.h"
#include "digest_algos.h"
#include "errorStackOf.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_digest.h"
#include "test_vectors.h"
#include "vorl/DigestAlgo.h"
#include "vorl/OpenSSLException.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<Digester>);
static_assert(!std::is_copy_constructible_v<Digester>);
static_assert(!std::is_copy_assignable_v<Digester>);

// FIPS 180-4: "abc" under SHA-256.
const bytes ABC = fromText("abc");
const bytes ABC_SHA256 = fromHex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");

class DigesterTest : public ::testing::Test {
protected:
    void SetUp() override { ERR_clear_error(); }
    void TearDown() override { ERR_clear_error(); }
};

bytes digestOf(Digester& digester, const bytes& data) {
    digester.init();
    digester.update(data);
    return digester.final();
}

bytes digestOf(const std::shared_ptr<const DigestAlgo>& algo, const bytes& data) {
    Digester digester(algo);
    return digestOf(digester, data);
}

class DigesterOf : public ::testing::TestWithParam<DigestAlgoCase> {
protected:
    // How many vectors of the file are of this algorithm, each of which has been compared.
    static int compareWith(const std::string& file) {
        int compared = 0;
        forEachVector(VORL_TEST_VECTORS "/" + file, [&](TestVector& vector) {
            const bytes message = vector.octets("Msg");
            const bytes digest = vector.octets("MD");
            if (vector.text("Algorithm") != GetParam().name) {
                return;
            }
            EXPECT_EQ(digestOf(GetParam().factory(), message), digest) << vector.place();
            ++compared;
        });
        return compared;
    }
};

TEST_P(DigesterOf, AgreesWithThePublishedMessages) {
    EXPECT_GE(compareWith("sha_messages.txt"), 13);
}

TEST_P(DigesterOf, AgreesWithAnotherProgramWherePaddingTakesAnotherBlock) {
    EXPECT_EQ(compareWith("sha_block_boundaries.txt"), 25);
}

TEST_P(DigesterOf, GivesAsManyBytesAsTheAlgorithm) {
    EXPECT_EQ(digestOf(GetParam().factory(), bytes()).size(), GetParam().digestBytes);
    EXPECT_EQ(digestOf(GetParam().factory(), octets(1000)).size(), GetParam().digestBytes);
}

TEST_P(DigesterOf, DoesNotMindWhereTheDataIsCut) {
    const bytes message = octets(300);
    const bytes whole = rawDigest(GetParam().md(), message);
    Digester digester(GetParam().factory());

    for (std::size_t cut = 0; cut <= message.size(); ++cut) {
        digester.init();
        digester.update(slice(message, 0, cut));
        digester.update(slice(message, cut, message.size() - cut));
        EXPECT_EQ(digester.final(), whole) << cut;
    }
}

TEST_P(DigesterOf, DoesNotMindHowSmallThePiecesAre) {
    Digester digester(GetParam().factory());
    for (const std::size_t size :
         {1U, 54U, 55U, 56U, 63U, 64U, 65U, 111U, 112U, 127U, 128U, 129U, 191U, 192U, 193U, 257U}) {
        const bytes message = octets(size);
        const bytes whole = rawDigest(GetParam().md(), message);
        for (const std::size_t piece : {1U, 3U, 55U, 56U, 63U, 64U, 65U, 111U, 112U, 127U, 128U, 129U}) {
            digester.init();
            for (std::size_t at = 0; at < size; at += piece) {
                digester.update(slice(message, at, std::min(piece, size - at)));
            }
            EXPECT_EQ(digester.final(), whole) << size << " in pieces of " << piece;
        }
    }
}

TEST_P(DigesterOf, TakesAMillionLettersInPieces) {
    const std::string some(1000, 'a');
    Digester digester(GetParam().factory());
    digester.init();
    for (int i = 0; i < 1000; ++i) {
        digester.update(some);
    }
    EXPECT_EQ(digester.final(), rawDigest(GetParam().md(), bytes(1000000, 'a')));
}

INSTANTIATE_TEST_SUITE_P(All, DigesterOf, ::testing::ValuesIn(DIGEST_ALGOS),
                         [](const auto& test) { return test.param.name; });

TEST_F(DigesterTest, TakesPointersStringsAndVectorsAlike) {
    // With octets that end a text in C, or are negative as a char.
    const bytes data = fromHex("00 61 00 80 ff 00");
    const bytes expected = rawDigest(EVP_sha256(), data);
    Digester digester(DigestAlgo::SHA256());

    digester.init();
    digester.update(data.data(), static_cast<unsigned int>(data.size()));
    EXPECT_EQ(digester.final(), expected);
    digester.init();
    digester.update(toText(data));
    EXPECT_EQ(digester.final(), expected);
    digester.init();
    digester.update(data);
    EXPECT_EQ(digester.final(), expected);

    digester.init();
    digester.update(data.data(), 1);
    digester.update(toText(slice(data, 1, 2)));
    digester.update(slice(data, 3, 3));
    EXPECT_EQ(digester.final(), expected);
}

TEST_F(DigesterTest, ReadsNoMoreThanItIsGiven) {
    Digester digester(DigestAlgo::SHA256());
    digester.init();
    digester.update(octets(100).data(), 64);
    EXPECT_EQ(digester.final(), rawDigest(EVP_sha256(), slice(octets(100), 0, 64)));
}

TEST_F(DigesterTest, NoDataLeavesTheDigestAsItIs) {
    Digester digester(DigestAlgo::SHA256());
    const auto updateWithNothing = [&] {
        digester.update(std::string());
        digester.update(bytes());
        digester.update(ABC.data(), 0);
        digester.update(nullptr, 0);
    };

    digester.init();
    updateWithNothing();
    digester.update(fromText("ab"));
    updateWithNothing();
    digester.update(fromText("c"));
    updateWithNothing();
    EXPECT_EQ(digester.final(), ABC_SHA256);
}

TEST_F(DigesterTest, NoDataAtAllIsTheEmptyMessage) {
    Digester digester(DigestAlgo::SHA256());
    digester.init();
    EXPECT_EQ(digester.final(), fromHex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
}

TEST_F(DigesterTest, DigestsAgainAfterAnotherInit) {
    Digester digester(DigestAlgo::SHA256());
    EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256);
    EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256);
    EXPECT_EQ(digestOf(digester, octets(200)), rawDigest(EVP_sha256(), octets(200)));
    EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256);
}

TEST_F(DigesterTest, InitDiscardsWhatWasFed) {
    Digester digester(DigestAlgo::SHA256());
    for (const std::size_t discarded : {1U, 63U, 64U, 65U, 1000U}) {
        digester.init();
        digester.update(octets(discarded));
        EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256) << discarded;
    }
}

TEST_F(DigesterTest, TwoAtOnceDoNotDisturbOneAnother) {
    const std::shared_ptr<const DigestAlgo> shared = DigestAlgo::SHA256();
    Digester first(shared);
    Digester second(shared);
    Digester other(DigestAlgo::SHA512());

    first.init();
    first.update(octets(100));
    second.init();
    other.init();
    second.update(fromText("ab"));
    other.update(octets(70));
    first.update(octets(30));
    second.update(fromText("c"));
    EXPECT_EQ(second.final(), ABC_SHA256);
    other.update(octets(80));
    EXPECT_EQ(first.final(), rawDigest(EVP_sha256(), octets(100) + octets(30)));
    EXPECT_EQ(other.final(), rawDigest(EVP_sha512(), octets(70) + octets(80)));
}

TEST_F(DigesterTest, SharesItsAlgorithmWithTheCaller) {
    std::shared_ptr<const DigestAlgo> algo = DigestAlgo::SHA256();
    const std::weak_ptr<const DigestAlgo> watch = algo;
    {
        Digester digester(algo);
        EXPECT_EQ(algo.use_count(), 2);
        algo.reset();
        EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256);
    }
    EXPECT_TRUE(watch.expired());
}

TEST_F(DigesterTest, WorksWithADigestThatTheApplicationChooses) {
    // RFC 1321 and FIPS 202, for "abc".
    EXPECT_EQ(digestOf(std::make_shared<const DigestAlgo>("MD5", NID_md5, EVP_md5()), ABC),
              fromHex("900150983cd24fb0d6963f7d28e17f72"));
    EXPECT_EQ(digestOf(std::make_shared<const DigestAlgo>("SHA3", NID_sha3_256, EVP_sha3_256()), ABC),
              fromHex("3a985da74fe225b2045c172d6bd390bd855f086e3e9d525b46bfe24511431532"));
}

TEST_F(DigesterTest, GoesByTheMethodAndNotByTheNameOrNumber) {
    const auto misnamed = std::make_shared<const DigestAlgo>("SHA1", NID_sha1, EVP_sha256());
    EXPECT_EQ(digestOf(misnamed, ABC), ABC_SHA256);
}

TEST_F(DigesterTest, RefusesAnAlgorithmWithoutAMethod) {
    Digester digester(std::make_shared<const DigestAlgo>("None", NID_undef, nullptr));

    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.init(); }), "EVP_DigestInit_ex()");
    EXPECT_NE(errorStackOf([&] { digester.init(); }).find("no digest set"), std::string::npos);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(ABC); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.final(); }), "EVP_DigestFinal_ex()");
}

TEST_F(DigesterTest, TakesNoDataBeforeInit) {
    Digester digester(DigestAlgo::SHA256());

    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(ABC); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update("abc"); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(ABC.data(), 3); }), "EVP_DigestUpdate()");
    EXPECT_EQ(errorStackOf([&] { digester.update(ABC); }), "");
    EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256);
}

TEST_F(DigesterTest, HasNoDigestBeforeInit) {
    Digester digester(DigestAlgo::SHA256());

    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.final(); }), "EVP_DigestFinal_ex()");
    EXPECT_EQ(digestOf(digester, ABC), ABC_SHA256);
}

TEST_F(DigesterTest, ReportsEachCallThatFails) {
    ScriptedDigest scripted;
    Digester digester(scripted.algo());

    scripted.initResult = 0;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.init(); }), "EVP_DigestInit_ex()");
    scripted.initResult = 1;
    digester.init();

    scripted.updateResult = 0;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(ABC); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update("abc"); }), "EVP_DigestUpdate()");
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.update(ABC.data(), 3); }), "EVP_DigestUpdate()");
    EXPECT_EQ(scripted.fed, 9U);

    scripted.finalResult = 0;
    EXPECT_EQ(messageOf<OpenSSLException>([&] { digester.final(); }), "EVP_DigestFinal_ex()");

    scripted.updateResult = 1;
    scripted.finalResult = 1;
    EXPECT_EQ(digestOf(digester, ABC), bytes(16, 0xd1));
}

// Only 0 is a failure.
TEST_F(DigesterTest, TakesAResultOfMinusOneForSuccess) {
    ScriptedDigest scripted;
    scripted.initResult = -1;
    scripted.updateResult = -1;
    scripted.finalResult = -1;

    EXPECT_EQ(digestOf(scripted.algo(), ABC), bytes(16, 0xd1));
    EXPECT_EQ(scripted.fed, 3U);
}

TEST_F(DigesterTest, FailureCarriesTheErrorQueueAndEmptiesIt) {
    Digester digester(DigestAlgo::SHA256());
    leaveApplicationError();

    EXPECT_NE(errorStackOf([&] { digester.update(ABC); }), "");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

TEST_F(DigesterTest, FailureCarriesWhatTheDigestSaysOfIt) {
    ScriptedDigest scripted;
    Digester digester(scripted.algo());
    digester.init();
    scripted.initResult = 0;
    scripted.updateResult = 0;
    scripted.finalResult = 0;

    // The reason of the entry, as OpenSSL prints it.
    EXPECT_NE(errorStackOf([&] { digester.update(ABC); }).find("reason(43)"), std::string::npos);
    EXPECT_NE(errorStackOf([&] { digester.final(); }).find("reason(43)"), std::string::npos);
    EXPECT_NE(errorStackOf([&] { digester.init(); }).find("reason(43)"), std::string::npos);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

TEST_F(DigesterTest, SuccessLeavesTheErrorQueueAsItWas) {
    const unsigned long left = leaveApplicationError();
    for (const DigestAlgoCase& algo : DIGEST_ALGOS) {
        digestOf(algo.factory(), ABC);
    }
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

// What the library keeps of an algorithm is made by whoever comes first, which may be several threads.
TEST_F(DigesterTest, ThreadsMayBeginAtTheSameTime) {
    const int THREADS = 8;
    struct Outcome {
        std::vector<bytes> digests;
        bool leftErrors = false;
    };
    std::vector<Outcome> outcomes(THREADS);
    std::mutex mutex;
    std::condition_variable allThere;
    int waiting = 0;

    std::vector<std::thread> threads;
    for (Outcome& outcome : outcomes) {
        threads.emplace_back([&] {
            {
                std::unique_lock<std::mutex> lock(mutex);
                ++waiting;
                allThere.notify_all();
                allThere.wait(lock, [&] { return waiting == THREADS; });
            }
            for (const DigestAlgoCase& algo : DIGEST_ALGOS) {
                outcome.digests.push_back(digestOf(algo.factory(), octets(100)));
            }
            outcome.leftErrors = ERR_peek_error() != 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::vector<bytes> expected;
    for (const DigestAlgoCase& algo : DIGEST_ALGOS) {
        expected.push_back(rawDigest(algo.md(), octets(100)));
    }
    for (const Outcome& outcome : outcomes) {
        EXPECT_EQ(outcome.digests, expected);
        EXPECT_FALSE(outcome.leftErrors);
    }
}

}  // namespace
}  // namespace vorl::test
