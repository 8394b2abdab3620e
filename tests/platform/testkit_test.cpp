#include "vorl/testkit/gtest.h"

#include "faulty_platforms.h"
#include "octets.h"
#include "platform_under_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>

// The kit finds what is wrong.

namespace vorl::test {

namespace {

using testkit::Check;
using testkit::Finding;

struct Fault {
    const char* name;
    Platform (*make)();
    // What must find it, and what it must say.
    const char* check;
    const char* sentence;
};

const Fault FAULTS[] = {
    {"StartsByItself", startsByItself, "refuses-before-init",
     "cryptContext() with the spec 0 before init() is not refused"},
    {"NeverStops", neverStops, "refuses-after-cleanup",
     "cryptContext() with the spec 0 after cleanup() is not refused"},
    {"RefusesASecondInit", refusesASecondInit, "init-may-be-repeated",
     "init() throws std::logic_error: it is started already"},
    {"CountsItsInits", countsItsInits, "init-may-be-repeated",
     "cryptContext() with the spec 0 after two init() and one cleanup() is not refused"},
    {"FailsToStart", failsToStart, "init-may-be-repeated",
     "init() throws std::runtime_error: no token in the slot"},
    {"RefusesASecondCleanup", refusesASecondCleanup, "cleanup-may-be-repeated",
     "A second cleanup() throws std::logic_error: it was not started"},
    {"FailsToStop", failsToStop, "base64-encodes-every-size", "cleanup() throws std::runtime_error: busy"},
    {"WithoutSigner", withoutSigner, "makes-both-objects",
     "cryptContext() with the spec 0 returns a null request signer"},
    {"WithoutCipher", withoutCipher, "makes-both-objects",
     "cryptContext() with the spec 0 returns a null cipher context"},
    {"WrongId", contextsOf<WrongId>, "id-is-the-spec",
     "cryptContext() with the spec 1 returns a context whose id() is 2"},
    {"TakesAnyOtherSpecForCbc", takesAnyOtherSpecForCbc, "refuses-unknown-specs",
     "cryptContext() with the spec 3 is not refused"},
    {"LooksAtTheLowestByteOfASpec", looksAtTheLowestByteOfASpec, "refuses-unknown-specs",
     "cryptContext() with the spec 256 is not refused"},
    {"NeedsAKeyForNothing", needsAKeyForNothing, "spec-0-needs-no-key",
     "cryptContext() with the spec 0 throws std::invalid_argument: no key"},
    {"HasADefaultKey", hasADefaultKey, "encrypts-nothing-without-a-key",
     "AES-128-ECB: encrypting 20 bytes under an empty key is not refused"},
    {"ForgetsItsContexts", forgetsItsContexts, "contexts-outlive-a-restart",
     "AES-128-CBC: encrypting 20 bytes by a context from before a cleanup() and an init() throws "
     "std::runtime_error: the session is closed"},
    {"LosesAByteOfNothing", losesAByteOfNothing, "spec-0-is-the-identity",
     "No cipher: passing 1 bytes on changes them"},
    {"TurnsKeysRound", turnsKeysRound, "agrees-with-published-vectors",
     "NIST SP 800-38A, F.1.1: the ciphertext is another"},
    {"LosesTheLastBlock", contextsOf<LosesTheLastBlock>, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes yields 0 bytes"},
    {"LosesTheLastBlockUnderKeysOfItsOwn", losesTheLastBlockUnderKeysOfItsOwn, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes yields 0 bytes"},
    {"EncryptsNothing", contextsOf<EncryptsNothing>, "encrypts-short-messages",
     "AES-128-ECB: encrypting 1 bytes yields 17 bytes"},
    {"IgnoresTheKey", ignoresTheKey, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes yields a wrong ciphertext"},
    {"ThrowsAlways", contextsOf<ThrowsAlways>, "encrypts-short-messages",
     "AES-128-ECB: encrypting 0 bytes throws std::domain_error: no engine"},
    {"LosesTheEndOfAMessage", contextsOf<LosesTheEndOfAMessage>, "decrypts-short-messages",
     "AES-128-ECB: decrypting 16 bytes does not yield the message of 1 bytes"},
    {"HasASmallBufferToEncrypt", contextsOf<HasASmallBufferIn>, "encrypts-long-messages",
     "AES-128-ECB: encrypting 1048576 bytes yields 65552 bytes"},
    {"HasASmallBufferToDecrypt", contextsOf<HasASmallBufferOut>, "decrypts-long-messages",
     "AES-128-ECB: decrypting 1048592 bytes does not yield the message of 1048576 bytes"},
    {"KeepsTheLastPieceOnly", contextsOf<KeepsTheLastPieceOnly>, "takes-a-message-in-pieces",
     "AES-128-ECB: encrypting 100 bytes in pieces of 1 yields 16 bytes"},
    {"KeepsItsFirstIv", contextsOf<KeepsItsFirstIv>, "each-init-takes-its-iv",
     "AES-128-CBC: encrypting under another IV than before yields a wrong ciphertext"},
    {"EndsAtAnEmptyPiece", contextsOf<EndsAtAnEmptyPiece>, "takes-a-message-in-pieces",
     "AES-128-ECB: encrypting 100 bytes in pieces of 1 yields 16 bytes"},
    {"TakesCbcForEcbUnderKeysOfItsOwn", takesCbcForEcbUnderKeysOfItsOwn, "ecb-encrypts-each-block-alone",
     "AES-128-ECB: encrypting 128 bytes yields different blocks for equal ones"},
    {"TakesCbcForEcbUnderKeysOfItsOwn", takesCbcForEcbUnderKeysOfItsOwn, "encrypts-long-messages",
     "AES-128-ECB: encrypting 16367 bytes yields different blocks for equal ones"},
    {"EncryptsABlockOfZeros", contextsOf<EncryptsABlockOfZeros>, "ecb-encrypts-each-block-alone",
     "AES-128-ECB: encrypting 128 bytes yields equal blocks for different ones"},
    {"TakesEcbForCbcUnderKeysOfItsOwn", takesEcbForCbcUnderKeysOfItsOwn, "cbc-chains-its-blocks",
     "AES-128-CBC: encrypting 128 bytes yields blocks that are not chained, the first one to the IV"},
    {"TakesEcbForCbcUnderKeysOfItsOwn", takesEcbForCbcUnderKeysOfItsOwn, "encrypts-short-messages",
     "AES-128-CBC: encrypting 0 bytes yields blocks that are not chained, the first one to the IV"},
    {"IgnoresTheIvUnderKeysOfItsOwn", ignoresTheIvUnderKeysOfItsOwn, "cbc-chains-its-blocks",
     "AES-128-CBC: encrypting 128 bytes yields blocks that are not chained, the first one to the IV"},
    {"IgnoresTheIvUnderKeysOfItsOwn", ignoresTheIvUnderKeysOfItsOwn, "each-init-takes-its-iv",
     "AES-128-CBC: encrypting under another IV than before yields blocks that are not chained, the first one "
     "to the IV"},
    {"AddsItsKeys", addsItsKeys, "a-bit-changes-its-block",
     "AES-128-ECB: changing a bit of a block changes 1 of the 64 bits in the first half of its encryption"},
    {"EnciphersHalvesOfBlocks", enciphersHalvesOfBlocks, "a-bit-changes-its-block",
     "AES-128-ECB: changing a bit of a block changes 0 of the 64 bits in the second half of its encryption"},
    {"AcceptsAnyPadding", contextsOf<AcceptsAnyPadding>, "refuses-wrong-padding",
     "AES-128-ECB: a wrong padding is not refused"},
    {"ThrowsANumber", contextsOf<ThrowsANumber>, "refuses-wrong-padding",
     "AES-128-ECB: a wrong padding throws something that is no std::exception"},
    {"TakesNothingForACiphertext", contextsOf<TakesNothingForACiphertext>, "refuses-parts-of-blocks",
     "AES-128-ECB: decrypting 0 bytes is not refused"},
    {"IgnoresTheKey", ignoresTheKey, "another-key-does-not-open",
     "AES-128-ECB: decrypting under another key yields the message"},
    {"KeepsItsDirection", contextsOf<KeepsItsDirection>, "works-in-both-directions",
     "AES-128-ECB: decrypting 48 bytes in turn yields another message"},
    {"KeepsWhatWasUnfinished", contextsOf<KeepsWhatWasUnfinished>,
     "starts-afresh-after-an-unfinished-operation",
     "AES-128-ECB: encrypting 37 bytes after an operation that was left unfinished yields a wrong "
     "ciphertext"},
    {"DoesNotRecover", contextsOf<DoesNotRecover>, "starts-afresh-after-a-failure",
     "AES-128-ECB: encrypting 37 bytes after a decryption that failed throws std::runtime_error: the engine "
     "has "
     "stopped"},
    {"SharesAnEngine", contextsOf<SharesAnEngine>, "contexts-of-two-keys-are-apart",
     "AES-128-ECB: an operation beside one under another key yields a wrong result"},
    {"HandsOutContextsTwice", handsOutContextsTwice, "contexts-of-one-key-are-apart",
     "AES-128-ECB: an operation beside others under the same key yields a wrong result"},
    {"BelongsToOneThread", belongsToOneThread, "threads-have-contexts-of-their-own",
     "cryptContext() for AES-128-ECB throws std::runtime_error: it is another thread's"},
    {"WritesNoPadding", writesNoPadding, "base64-agrees-with-published-vectors",
     "encode() does not write \"f\" as \"Zg==\""},
    {"BreaksLines", breaksLines, "base64-encodes-every-size", "encode() of 3071 bytes yields a wrong text"},
    {"DecodesShortTextsOnly", decodesShortTextsOnly, "base64-decodes-every-size",
     "decode() of the text of 3073 bytes yields other bytes"},
    {"CompletesThePadding", completesThePadding, "base64-refuses-wrong-lengths",
     "decode() takes \"Zg=\" for Base64"},
    {"ReadsTheOtherAlphabet", readsTheOtherAlphabet, "base64-refuses-foreign-characters",
     "decode() takes \"-m9vYmFy\" for Base64"},
    {"ThrowsForBadText", throwsForBadText, "base64-refuses-foreign-characters",
     "decode() of \"<0>m9vYmFy\" throws std::invalid_argument: not Base64"},
    {"PassesOverWhiteSpace", passesOverWhiteSpace, "base64-refuses-white-space",
     "decode() takes \" Zm9v\" for Base64"},
    {"LeavesPaddingToOpenSSL", leavesBase64ToOpenSSL, "base64-refuses-misplaced-padding",
     "decode() takes \"=AAA\" for Base64"},
    {"LeavesBitsToOpenSSL", leavesBase64ToOpenSSL, "base64-refuses-bits-under-padding",
     "decode() takes \"AB==\" for Base64"},
    {"LooksAtTheLowestBitUnderPadding", looksAtTheLowestBitUnderPadding, "base64-refuses-bits-under-padding",
     "decode() takes \"AC==\" for Base64"},
    {"HasPlainMutexesThatDoNothing", hasMutexesThatDoNothing, "plain-mutex-excludes",
     "A plain mutex leaves two threads in the section that it guards"},
    {"HasRecursiveMutexesThatDoNothing", hasMutexesThatDoNothing, "recursive-mutex-excludes",
     "A recursive mutex leaves two threads in the section that it guards"},
    {"HasPlainMutexesOnly", hasPlainMutexesOnly, "recursive-mutex-may-be-locked-again",
     "Locking a recursive mutex again in the thread that holds it waits for ever"},
    {"HasMutexesThatSayTheyAreHeld", hasMutexesThatSayTheyAreHeld, "recursive-mutex-may-be-locked-again",
     "Locking a recursive mutex again in the thread that holds it throws std::logic_error: this thread holds "
     "it"},
    {"HasMutexesThatDoNotCount", hasMutexesThatDoNotCount, "recursive-mutex-counts-its-locks",
     "A recursive mutex that was locked three times and unlocked twice leaves two threads in the section "
     "that it "
     "guards"},
    {"HasMutexesThatStayLocked", hasMutexesThatStayLocked, "mutex-is-free-after-unlock",
     "Locking a mutex that is free waits for ever"},
    {"HasMutexesThatGiveUp", hasMutexesThatGiveUp, "lock-waits-until-the-mutex-is-free",
     "Waiting for a mutex that is held for long ends before it is free"},
    {"HasOneMutexForAll", hasOneMutexForAll, "mutexes-are-independent",
     "Locking a mutex while another is held waits for ever"},
    {"SignsNothing", signsNothing, "signs-or-refuses",
     "sign() returns and leaves the request as it was, unsigned"},
    {"SignsAndThrows", signsAndThrows, "signs-or-refuses", "sign() throws and leaves the request changed"},
    {"VerifiesWithoutSigning", verifiesWithoutSigning, "signs-or-refuses",
     "sign() throws std::runtime_error: no signing here, but verify() does not throw"},
    {"SaysThatItSigns", saysThatItSigns, "signs-or-refuses",
     "sign() throws std::runtime_error: no signing here, although the platform is said to sign"},
    {"SaysThatItDoesNotSign", saysThatItDoesNotSign, "signs-or-refuses",
     "sign() does not throw, although the platform is said not to sign"},
    {"SignsAlikeUnderAnyKey", signsAlikeUnderAnyKey, "another-key-signs-differently",
     "sign() leaves the same under two keys"},
    {"SignsWithAConstantOfTheKey", signsWithAConstantOfTheKey, "each-request-is-signed-differently",
     "sign() leaves the same in a request with another method"},
    {"SignsAllButTheMethod", signsAllButTheMethod, "each-request-is-signed-differently",
     "sign() leaves the same in a request with another method"},
    {"SignsAllButTheTarget", signsAllButTheTarget, "each-request-is-signed-differently",
     "sign() leaves the same in a request with another target"},
    {"SignsAllButTheBody", signsAllButTheBody, "each-request-is-signed-differently",
     "sign() leaves the same in a request with another body"},
    {"SignsWithANumber", signsWithANumber, "a-service-takes-its-requests",
     "The service refuses a request as sign() leaves it"},
    {"SignsItsNumberAlone", signsItsNumberAlone, "a-service-takes-its-requests",
     "The service takes a request whose method is not what was signed"},
    {"TakesAnyRequest", takesAnyRequest, "a-service-takes-its-requests",
     "The service takes a request that was not signed"},
    {"TakesAnySignatureOfARequest", takesAnySignatureOfARequest, "a-service-takes-its-requests",
     "The service takes a request that was signed under another key"},
    {"SignsWithANumber", signsWithANumber, "verifies-what-a-service-signs",
     "The service refuses a request as sign() leaves it"},
    {"RespondsWithNothing", respondsWithNothing, "verifies-what-a-service-signs",
     "respond() returns a response without a body"},
    {"VerifiesNoResponse", verifiesNoResponse, "verifies-what-a-service-signs",
     "verify() answers false for a response as the service has signed it"},
    {"VerifiesByTheNameOfAField", verifiesByTheNameOfAField, "verifies-what-a-service-signs",
     "verify() answers true for a response whose body is not what was signed"},
    {"VerifiesWithoutTheKey", verifiesWithoutTheKey, "verifies-what-a-service-signs",
     "verify() answers true for a response that was signed under another key"},
    {"VerifiesByTheBodyAlone", verifiesByTheBodyAlone, "verifies-what-a-service-signs",
     "verify() answers true for a response whichever of its fields is changed"},
    {"FailsToVerify", failsToVerify, "never-verifies-the-unsigned",
     "verify() of a response of nothing throws std::runtime_error: no signing here"},
    {"VerifiesEverything", verifiesEverything, "never-verifies-the-unsigned",
     "verify() answers true for a response of nothing"},
    {"VerifiesWhatItHasSignedItself", verifiesWhatItHasSignedItself, "never-verifies-the-unsigned",
     "verify() answers true for a response that sends the request's own signature back"},
    {"IsDescribedWithoutKeys", isDescribedWithoutKeys, "makes-both-objects",
     "The platform is described without a way to provision keys and without two keys of its own"},
};

const Check& checkNamed(const std::string& name) {
    const auto& all = testkit::checks();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Check& check) { return check.name == name; });
    if (found == all.end()) {
        throw std::logic_error("there is no check " + name);
    }
    return *found;
}

// The faults leave the factory as it happens to be.
class Testkit : public ::testing::Test {
protected:
    void SetUp() override { soundPlatform().cleanup(); }
    void TearDown() override {
        soundPlatform().cleanup();
        SharesAnEngine::engine.reset();
    }

    static void expectAllHold(const Platform& platform) {
        for (const Check& check : testkit::checks()) {
            const Finding finding = run(check, platform);
            EXPECT_EQ(finding.outcome, Finding::HOLDS) << check.name << ": " << finding.sentence;
            EXPECT_EQ(finding.sentence, "");
        }
    }

    // And all others hold.
    static void expectLeftOut(const Platform& platform, const std::set<std::string>& names,
                              const std::string& sentence) {
        for (const Check& check : testkit::checks()) {
            const bool isLeftOut = names.count(check.name) != 0;
            const Finding finding = run(check, platform);
            EXPECT_EQ(finding.outcome, isLeftOut ? Finding::LEFT_OUT : Finding::HOLDS) << check.name;
            EXPECT_EQ(finding.sentence, isLeftOut ? sentence : "") << check.name;
        }
    }
};

class FaultyPlatform : public Testkit, public ::testing::WithParamInterface<Fault> {};

}  // namespace

TEST_P(FaultyPlatform, IsFoundOut) {
    const Finding finding = run(checkNamed(GetParam().check), GetParam().make());
    EXPECT_EQ(finding.outcome, Finding::FAILS);
    EXPECT_EQ(finding.sentence, GetParam().sentence);
}

INSTANTIATE_TEST_SUITE_P(Of, FaultyPlatform, ::testing::ValuesIn(FAULTS), [](const auto& test) {
    return test.param.name + ("_" + std::to_string(test.index));
});

TEST_F(Testkit, HasAFaultForEachCheck) {
    std::set<std::string> found;
    for (const Fault& fault : FAULTS) {
        found.insert(fault.check);
    }
    for (const Check& check : testkit::checks()) {
        EXPECT_EQ(found.count(check.name), 1U) << check.name;
    }
}

TEST_F(Testkit, NamesEachCheckOnce) {
    std::set<std::string> names;
    for (const Check& check : testkit::checks()) {
        EXPECT_TRUE(names.insert(testName(check)).second) << check.name;
        EXPECT_NE(std::string(check.requirement), "") << check.name;
    }
    EXPECT_EQ(testName(checkNamed("refuses-wrong-padding")), "RefusesWrongPadding");
}

TEST_F(Testkit, AllowsOutputToBeDelayed) {
    expectAllHold(withContexts(make<DelaysItsOutput>, false, signsByHmac()));
}

TEST_F(Testkit, AllowsToSign) {
    expectAllHold(signsByHmac());
}

TEST_F(Testkit, AllowsNotToSign) {
    Platform platform = withSigner(refuseToSign, refuseToVerify);
    platform.signs = false;
    expectLeftOut(platform,
                  {"another-key-signs-differently", "each-request-is-signed-differently",
                   "a-service-takes-its-requests", "verifies-what-a-service-signs"},
                  "The platform does not sign");
}

TEST_F(Testkit, LeavesOutWhatNeedsAServiceAndNothingElse) {
    Platform platform = signsByHmac();
    platform.respond = nullptr;
    expectLeftOut(platform, {"a-service-takes-its-requests", "verifies-what-a-service-signs"},
                  "The platform is described without what the service at the other end does");
}

TEST_F(Testkit, LeavesOutWhatNeedsAKnownKeyAndNothingElse) {
    expectLeftOut(withKeysOfItsOwn(signsByHmac()), {"agrees-with-published-vectors"},
                  "The platform has only keys of its own, and this takes one of known value");
}

TEST_F(Testkit, TellsTheFaultOfACheckBeforeThatOfTidyingUp) {
    Platform platform = failsToStop();
    platform.provision = nullptr;
    EXPECT_EQ(run(checkNamed("makes-both-objects"), platform).sentence,
              "The platform is described without a way to provision keys and without two keys of its own");
}

TEST_F(Testkit, StopsThePlatformAfterEachCheck) {
    for (const Check& check : testkit::checks()) {
        run(check, soundPlatform());
        EXPECT_EQ(run(checkNamed("refuses-before-init"), soundPlatform()).sentence, "") << check.name;
    }
}

}  // namespace vorl::test
