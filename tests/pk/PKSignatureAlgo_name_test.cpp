#include "raw_keys.h"

#include "vorl/DigestAlgo.h"
#include "vorl/PKAlgo.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

// toString() of a signature algorithm keeps, for the whole process and all of its objects, the name of the
// one that is asked first. Who is first must not depend on the other tests, so that each name is asked for in
// a new process, which begins with the test's own statements.

namespace vorl::test {
namespace {

using AlgoPtr = std::shared_ptr<const PKSignatureAlgo>;

AlgoPtr sha256WithX() {
    return std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA256(), std::make_shared<const PKAlgo>("X"));
}

class PKSignatureAlgoNameDeathTest : public ::testing::Test {
protected:
    void SetUp() override { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
    void TearDown() override { ::testing::FLAGS_gtest_death_test_style = before_; }

    [[noreturn]] static void say(const std::string& text) {
        std::fprintf(stderr, "<%s>", text.c_str());
        std::_Exit(0);
    }

private:
    const std::string before_ = ::testing::FLAGS_gtest_death_test_style;
};

TEST_F(PKSignatureAlgoNameDeathTest, IsSha1WithRsaWhereThatIsAskedFirst) {
    const auto ask = [] {
        const std::string first = PKSignatureAlgo::SHA1withRSA()->toString();
        say(first + " " + sha256WithX()->toString());
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0), "^<SHA1withRSA SHA1withRSA>$");
}

TEST_F(PKSignatureAlgoNameDeathTest, IsThatOfAnotherWhereThatIsAskedFirst) {
    const auto ask = [] {
        const std::string first = sha256WithX()->toString();
        say(first + " " + PKSignatureAlgo::SHA1withRSA()->toString());
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0), "^<SHA256withX SHA256withX>$");
}

TEST_F(PKSignatureAlgoNameDeathTest, OutlivesTheObjectThatWasAskedFirst) {
    const auto ask = [] {
        AlgoPtr first = sha256WithX();
        first->toString();
        first.reset();
        say(PKSignatureAlgo(DigestAlgo::SHA512(), PKAlgo::RSA()).toString());
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0), "^<SHA256withX>$");
}

TEST_F(PKSignatureAlgoNameDeathTest, IsNotSettledByInitName) {
    const auto ask = [] {
        const std::string own = sha256WithX()->initName();
        say(own + " " + PKSignatureAlgo::SHA1withRSA()->toString());
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0), "^<SHA256withX SHA1withRSA>$");
}

TEST_F(PKSignatureAlgoNameDeathTest, IsTheOneThatARecordPrints) {
    const auto ask = [] {
        sha256WithX()->toString();
        say(PKSignature01(bytes{0x11}).toString());
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0),
                "^<Public-Key-Signature \\(Version 0x01, SHA256withX\\)>$");
}

std::string messageFrom(void (*action)()) {
    try {
        action();
    } catch (const VORLException& e) {
        return e.what();
    }
    return "no VORLException";
}

TEST_F(PKSignatureAlgoNameDeathTest, OfARefusedAlgorithmIsItsOwnWhereItIsAskedFirst) {
    const auto ask = [] { say(messageFrom([] { PKSignature::create(bytes{0x11}, sha256WithX()); })); };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0), "^<Unknown signature algorithm: SHA256withX>$");
}

TEST_F(PKSignatureAlgoNameDeathTest, OfAProcessorThatRefusesAKeyIsItsOwnWhereItIsAskedFirst) {
    const auto ask = [] {
        say(messageFrom([] {
            const auto key = std::make_shared<const PrivKey>(rsa512().get());
            PKSignatureProcessor::create(sha256WithX())->initSign(key);
        }));
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0),
                "^<Cannot initialize PKSignatureProcessor\\(SHA256withX\\)with private key:\n"
                "Private-Key \\(RSA\\)>$");
}

TEST_F(PKSignatureAlgoNameDeathTest, OfASignatureThatNoRecordCarriesIsItsOwnWhereItIsAskedFirst) {
    const auto ask = [] {
        say(messageFrom([] {
            const auto processor = PKSignatureProcessor::create(
                std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA256(), PKAlgo::RSA()));
            processor->initSign(std::make_shared<const PrivKey>(rsa512().get()));
            processor->sign();
        }));
    };

    EXPECT_EXIT(ask(), ::testing::ExitedWithCode(0), "^<Unknown signature algorithm: SHA256withRSA>$");
}

}  // namespace
}  // namespace vorl::test
