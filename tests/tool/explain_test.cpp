#include "explain/records.h"

#include "LibraryState.h"
#include "block_encoder.h"
#include "dh_record.h"
#include "octets.h"
#include "raw_cipher.h"
#include "raw_keys.h"
#include "raw_signature.h"

#include "inspect/base64_text.h"
#include "shared/SecretBytes.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PubKey.h"
#include "vorl/VORLLib.h"

#include <brisclient/Base64.h>

namespace vorl::test {

namespace {

using Tarvik::BrisClient::Base64;
using tool::ExitStatus;
using tool::Explained;
using tool::Explanation;
using tool::Level;
using tool::levels;
using tool::Outcome;
using tool::Problem;
using tool::SecretBytes;
using tool::Step;

const Level& levelCalled(const std::string& name) {
    for (const Level& level : levels()) {
        if (level.name == name) {
            return level;
        }
    }
    throw std::invalid_argument(name);
}

// "policy 0 the level none is not accepted", with "warns" in front where it only does, or what is needed:
// "needs the key".
std::string summary(const Explanation& explanation) {
    EXPECT_TRUE(explanation.agreesWithLibrary);
    std::string needs;
    bool hasRefused = false;
    std::string text = "passes";
    for (const Step& step : explanation.steps) {
        if (hasRefused) {
            EXPECT_EQ(step.outcome, Outcome::NOT_REACHED) << step.name;
        } else if (step.outcome == Outcome::REFUSES) {
            hasRefused = true;
            text = step.name + " " + (step.offset ? std::to_string(*step.offset) + " " : "") + step.reason;
        } else if (step.outcome == Outcome::WARNS) {
            text = "warns: " + step.name + " " + (step.offset ? std::to_string(*step.offset) + " " : "") +
                   step.reason;
        } else if (step.outcome == Outcome::NEEDS) {
            text = "needs " + step.needed;
        } else {
            EXPECT_EQ(step.outcome, Outcome::PASSES) << step.name;
        }
    }
    EXPECT_EQ(explanation.refusing() != nullptr, hasRefused);
    return text;
}

std::string libraryText(const Explanation& explanation) {
    return explanation.refusing() == nullptr ? "" : explanation.refusing()->libraryText;
}

class ExplainEnvelope : public StartedLibrary {
protected:
    static Explanation explain(const bytes& envelope, const std::string& context,
                               const SecretBytes* key = nullptr) {
        return explainEnvelope({envelope, envelope, std::nullopt}, levelCalled(context), key);
    }
    static void forbid(const std::string& level) {
        VORLLib::setAllowedEncryptionType(levelCalled(level).type, false);
    }
};

bytes full(std::size_t bodyBytes) {
    return fromHex("02") + block(octets(16)) + block(octets(bodyBytes));
}

bytes testLevel(std::size_t bodyBytes) {
    return fromHex("01") + block(octets(bodyBytes));
}

bytes none(const bytes& message) {
    return fromHex("00") + block(message);
}

}  // namespace

TEST_F(ExplainEnvelope, OfAWholeEnvelopeOnlyTheKeyIsOpen) {
    EXPECT_EQ(summary(explain(full(32), "full")), "needs the key");
    EXPECT_EQ(summary(explain(testLevel(16400), "test")), "needs the key");
}

TEST_F(ExplainEnvelope, OfTheLevelNoneNothingIsOpen) {
    EXPECT_EQ(summary(explain(none(octets(5)), "none")), "passes");
}

TEST_F(ExplainEnvelope, OfAnUnknownVersionIsRefusedThere) {
    const Explanation explanation = explain(fromHex("7f 01 02"), "full");
    EXPECT_EQ(summary(explanation), "known-version 0 no level has the version 0x7f");
    EXPECT_EQ(libraryText(explanation), "Unknown CipherWrapper version: 0x7f");
    EXPECT_EQ(explanation.refusing()->refusal, ExitStatus::BAD_INPUT);
}

TEST_F(ExplainEnvelope, ThePolicyIsAskedBeforeTheContextAndTheRest) {
    forbid("none");
    // Wrong in three more ways: another level than the context, a body that is cut short.
    const Explanation explanation = explain(fromHex("00 05 61"), "full");
    EXPECT_EQ(summary(explanation), "policy 0 the level none is not accepted");
    EXPECT_EQ(libraryText(explanation), "CipherWrapper CipherWrapper[Null:0x00] not allowed");
    EXPECT_EQ(explanation.refusing()->refusal, ExitStatus::REFUSED);
}

TEST_F(ExplainEnvelope, TheContextIsAskedBeforeTheRest) {
    const Explanation explanation = explain(fromHex("01 20 61"), "full");
    EXPECT_EQ(summary(explanation), "context 0 the context is of the level full");
    EXPECT_EQ(libraryText(explanation), "Cipher spec mismatch between cipher and wrapper");
    EXPECT_EQ(explanation.refusing()->refusal, ExitStatus::REFUSED);
}

TEST_F(ExplainEnvelope, AnIvOfAnotherLengthIsRefusedWhereItBegins) {
    const Explanation explanation = explain(fromHex("02") + block(octets(8)) + block(octets(16)), "full");
    EXPECT_EQ(summary(explanation), "iv-length 1 it has 8 bytes, 16 are needed");
    EXPECT_EQ(libraryText(explanation), "Parsed IV length(8) != CipherSpec iv size(16");
}

TEST_F(ExplainEnvelope, WhatIsCutShortIsRefusedWhereItBegins) {
    EXPECT_EQ(summary(explain(fromHex("02"), "full")),
              "iv 1 the input ends where the length of the iv is expected");
    EXPECT_EQ(summary(explain(slice(full(16), 0, 17), "full")),
              "iv 2 the iv is cut short: 16 bytes announced, 15 there");
    EXPECT_EQ(summary(explain(slice(full(16), 0, 18), "full")),
              "body 18 the input ends where the length of the body is expected");
    EXPECT_EQ(summary(explain(slice(full(16), 0, 34), "full")),
              "body 19 the body is cut short: 16 bytes announced, 15 there");
    EXPECT_EQ(summary(explain(fromHex("00"), "none")),
              "body 1 the input ends where the length of the body is expected");
}

TEST_F(ExplainEnvelope, WhatFollowsTheBodyIsRefusedWhereItBegins) {
    const Explanation encrypted = explain(full(16) + fromHex("00"), "full");
    EXPECT_EQ(summary(encrypted), "end 35 1 more byte follows");
    EXPECT_EQ(libraryText(encrypted), "Buffer is not empty after parsing decrypted data; 1 bytes remain");
    const Explanation plain = explain(none(octets(3)) + fromHex("0000"), "none");
    EXPECT_EQ(summary(plain), "end 5 2 more bytes follow");
    EXPECT_EQ(libraryText(plain),
              "Buffer is not empty after parsing NULL_CIPHER decrypted data; 2 bytes remain");
}

TEST_F(ExplainEnvelope, ABodyOfBrokenBlocksIsRefusedWithoutAKey) {
    EXPECT_EQ(summary(explain(testLevel(15), "test")),
              "blocks 1 the body has 15 bytes; what a key opens has a multiple of 16, and at least that");
}

TEST_F(ExplainEnvelope, ATextThatIsNotBase64IsAnEnvelopeWithoutAByte) {
    const bytes text = fromText("!");
    const Explanation explanation =
        explainEnvelope({bytes(), text, Problem{0, "no Base64"}}, levelCalled("full"), nullptr);
    EXPECT_EQ(summary(explanation), "version 0 no Base64, which leaves an envelope without a byte");
    EXPECT_EQ(libraryText(explanation).find("index out of bounds: read index("), 0U);
}

TEST_F(ExplainEnvelope, EveryBeginningOfAnEnvelopeIsRefused) {
    for (const bytes& envelope : {full(16400), none(octets(200)), testLevel(144)}) {
        const std::string context = levels()[2U - envelope[0]].name;
        for (std::size_t size = 1; size < envelope.size(); size += size < 40 ? 1 : 97) {
            const Explanation explanation = explain(slice(envelope, 0, size), context);
            EXPECT_TRUE(explanation.agreesWithLibrary) << size;
            ASSERT_NE(explanation.refusing(), nullptr) << size;
            EXPECT_EQ(explanation.refusing()->refusal, ExitStatus::BAD_INPUT) << size;
        }
    }
}

TEST_F(ExplainEnvelope, TheKeyIsTriedWhereAllElseHolds) {
    // The key and the IV of SP 800-38A, F.2.1.
    const SecretBytes key(fromHex("2b7e151628aed2a6abf7158809cf4f3c"));
    const SecretBytes wrong(fromHex("00000000000000000000000000000000"));
    const bytes iv = fromHex("000102030405060708090a0b0c0d0e0f");
    const bytes envelope = fromHex("02") + block(iv) +
                           block(rawCipher(EVP_aes_128_cbc(), true, key.get(), iv, fromText("hello")));
    EXPECT_EQ(summary(explain(envelope, "full", &key)), "passes");
    const Explanation refused = explain(envelope, "full", &wrong);
    EXPECT_EQ(summary(refused), "decryption 18 wrong key or damaged data");
    EXPECT_EQ(libraryText(refused), "");
    EXPECT_EQ(refused.refusing()->refusal, ExitStatus::CANNOT_OPEN);
    EXPECT_EQ(summary(explain(envelope, "test", &key)), "context 0 the context is of the level test");
}

namespace {

class ExplainDhRecord : public StartedLibrary {
protected:
    static Explanation explain(const bytes& record) {
        return tool::explainDhRecord({record, record, std::nullopt});
    }
    static Explanation explainIn(const Group& group, const bytes& record) {
        const DiffieHellmanParams params(rawDh(group));
        return tool::explainDhRecord({record, record, std::nullopt}, tool::PeerGroup{params, false});
    }
    static Explanation explainInFaulty(const Group& group, const bytes& record) {
        const DiffieHellmanParams params(rawDh(group));
        return tool::explainDhRecord({record, record, std::nullopt}, tool::PeerGroup{params, true});
    }
};

bytes recordWith(std::size_t keyBytes) {
    return dhRecord(octets(keyBytes));
}

bytes recordOf(const Number& number) {
    return dhRecord(paddedTo(129, bytesOf(number)));
}

std::string fixes(const std::string& what) {
    return "warns: number 4 " + what +
           ": OpenSSL computes nothing with it, and the library gives out 128 zero bytes as the secret, "
           "which anybody knows";
}

}  // namespace

TEST_F(ExplainDhRecord, OfAWholeRecordOnlyTheGroupIsOpen) {
    for (const std::size_t size : {128U, 129U}) {
        EXPECT_EQ(summary(explain(recordWith(size))), "needs the group") << size;
        EXPECT_EQ(summary(explain(octets(size))), "needs the group") << size;
    }
}

TEST_F(ExplainDhRecord, AShortRecordIsRefusedWhereItEnds) {
    const Explanation explanation = explain(octets(124));
    EXPECT_EQ(summary(explanation), "length 124 it ends here, with 124 bytes");
    EXPECT_EQ(libraryText(explanation), "DH PubKey length (124) out of range");
    EXPECT_EQ(summary(explain(octets(125))), "needs the group");
}

TEST_F(ExplainDhRecord, AnUnknownVersionIsRefused) {
    const Explanation explanation = explain(fromHex("00000003") + octets(126));
    EXPECT_EQ(summary(explanation), "version 0 it begins with another number");
    EXPECT_EQ(libraryText(explanation), "Unknown DHPubKey version: 3");
}

TEST_F(ExplainDhRecord, AKeyThatIsCutShortIsRefusedWhereItBegins) {
    const Explanation explanation = explain(slice(recordWith(128), 0, 133));
    EXPECT_EQ(summary(explanation), "key 6 the key is cut short: 128 bytes announced, 127 there");
    EXPECT_EQ(libraryText(explanation), "Unable to read 128 bytes from buffer, only 127 available");
}

TEST_F(ExplainDhRecord, AKeyOfAnotherSizeIsRefusedByTheAgreement) {
    const Explanation shortKey = explain(recordWith(119) + octets(8));
    EXPECT_EQ(summary(shortKey), "key-length 4 it has 119 bytes");
    EXPECT_EQ(libraryText(shortKey), "DH public key from server is 119bytes, expected 120-129");
    EXPECT_EQ(summary(explain(recordWith(120) + octets(8))), "needs the group");
    EXPECT_EQ(summary(explain(recordWith(130))), "key-length 4 it has 130 bytes");
}

TEST_F(ExplainDhRecord, WithTheGroupNothingIsOpen) {
    const Number honest = RFC_2409_GROUP.raise(numberOf(1234567).get());
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(honest))), "passes");
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, paddedTo(128, bytesOf(honest)))), "passes");
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(minus(RFC_2409_GROUP.p().get(), 2)))), "passes");
}

TEST_F(ExplainDhRecord, AGroupOfAnotherSizeIsRefusedAndNoFaultOfTheRecord) {
    const Explanation small = explainIn(GROUP_512_2, recordWith(128));
    EXPECT_EQ(summary(small), "group the group has 512 bits, and a secret is agreed in one of 1024");
    EXPECT_EQ(libraryText(small), "DH shared secret size (64) != 128");
    EXPECT_EQ(small.refusing()->refusal, ExitStatus::BAD_INPUT);
    const Explanation large = explainIn(RFC_3526_GROUP_14, recordWith(128));
    EXPECT_EQ(summary(large), "group the group has 2048 bits, and a secret is agreed in one of 1024");
    EXPECT_EQ(libraryText(large), "DH shared secret size (256) != 128");
    const Explanation none = explainIn(Group{"0", 0}, recordWith(128));
    EXPECT_EQ(summary(none), "group the group has 0 bits, and a secret is agreed in one of 1024");
    EXPECT_EQ(libraryText(none), "DH shared secret size (0) != 128");
}

TEST_F(ExplainDhRecord, TheRecordIsLookedAtBeforeTheGroup) {
    EXPECT_EQ(summary(explainIn(GROUP_512_2, recordWith(119) + octets(8))), "key-length 4 it has 119 bytes");
}

TEST_F(ExplainDhRecord, NumbersThatFixTheSecretAreWarnedOf) {
    const Number p = RFC_2409_GROUP.p();
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(numberOf(0)))), fixes("it is 0"));
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(numberOf(1)))), fixes("it is 1"));
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(minus(p.get(), 1)))),
              fixes("it is the prime less 1"));
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(p))), fixes("it is the prime"));
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(plus(p.get(), 1)))), fixes("it is the prime and 1"));
    const Number twice = plus(p.get(), 0);
    ASSERT_EQ(BN_lshift1(twice.get(), twice.get()), 1);
    EXPECT_EQ(summary(explainIn(RFC_2409_GROUP, recordOf(twice))), fixes("it has no place in the group"));
    EXPECT_EQ(explain(recordOf(numberOf(0))).first(Outcome::WARNS)->refusal, ExitStatus::CANNOT_OPEN);
}

TEST_F(ExplainDhRecord, TheNumbersZeroAndOneAreWarnedOfWithoutAGroup) {
    EXPECT_EQ(summary(explain(recordOf(numberOf(0)))), fixes("it is 0"));
    EXPECT_EQ(summary(explain(recordOf(numberOf(1)))), fixes("it is 1"));
    EXPECT_EQ(explain(bytes(128)).first(Outcome::WARNS)->offset, 0U);
    EXPECT_EQ(summary(explain(recordOf(numberOf(2)))), "needs the group");
    EXPECT_EQ(summary(explain(recordOf(minus(RFC_2409_GROUP.p().get(), 1)))), "needs the group");
}

namespace {

// 131074 * (2^1006 + 231) + 1, a prime that is no safe one: it has a subgroup of 65537 numbers.
const Group GROUP_WITH_SMALL_SUBGROUP = {
    "8000800000000000000000000000000000000000000000000000000000000000"
    "0000000000000000000000000000000000000000000000000000000000000000"
    "0000000000000000000000000000000000000000000000000000000000000000"
    "0000000000000000000000000000000000000000000000000000000001CE01CF",
    2};

// 2^1023 + 2.
const Group GROUP_OF_EVEN_MODULUS = {
    "8000000000000000000000000000000000000000000000000000000000000000"
    "0000000000000000000000000000000000000000000000000000000000000000"
    "0000000000000000000000000000000000000000000000000000000000000000"
    "0000000000000000000000000000000000000000000000000000000000000002",
    2};

// What there is of a kind in a list of checks, by their names.
std::string stepsThat(const Explanation& explanation, Outcome outcome) {
    EXPECT_TRUE(explanation.agreesWithLibrary);
    std::string names;
    for (const Step& step : explanation.steps) {
        names += step.outcome == outcome ? (names.empty() ? "" : " ") + step.name : "";
    }
    return names;
}

}  // namespace

TEST_F(ExplainDhRecord, AGroupWithFaultsIsWarnedOfAndTheNumberLeftOpen) {
    const Explanation explanation = explainInFaulty(RFC_2409_GROUP, recordOf(numberOf(5)));
    EXPECT_EQ(stepsThat(explanation, Outcome::WARNS), "group");
    EXPECT_EQ(explanation.first(Outcome::WARNS)->reason,
              "the group has faults, which 'vorl dh params check' tells; the library does not look for them");
    EXPECT_EQ(explanation.first(Outcome::WARNS)->offset, std::nullopt);
    EXPECT_EQ(explanation.first(Outcome::WARNS)->refusal, ExitStatus::REFUSED);
    EXPECT_EQ(summary(explanation), "needs a group without faults");
}

TEST_F(ExplainDhRecord, WhatTheGroupDoesIsNotSaidOfTheNumber) {
    const Number prime = GROUP_WITH_SMALL_SUBGROUP.p();
    const Number cofactor = minus(prime.get(), 1);
    ASSERT_EQ(BN_div_word(cofactor.get(), 65537), 0U);
    const Number ofSubgroup = GROUP_WITH_SMALL_SUBGROUP.raise(cofactor.get());
    ASSERT_EQ(BN_is_one(power(ofSubgroup.get(), numberOf(65537).get(), prime.get()).get()), 1);
    ASSERT_EQ(BN_is_one(ofSubgroup.get()), 0);
    EXPECT_EQ(summary(explainInFaulty(GROUP_WITH_SMALL_SUBGROUP, recordOf(ofSubgroup))),
              "needs a group without faults");
    EXPECT_EQ(summary(explainInFaulty(GROUP_OF_EVEN_MODULUS, recordOf(numberOf(5)))),
              "needs a group without faults");
}

TEST_F(ExplainDhRecord, NumbersThatFixTheSecretInAnyGroupAreWarnedOfInAFaultyOneToo) {
    for (const Group& group : {GROUP_WITH_SMALL_SUBGROUP, GROUP_OF_EVEN_MODULUS}) {
        EXPECT_EQ(summary(explainInFaulty(group, recordOf(numberOf(0)))), fixes("it is 0"));
        EXPECT_EQ(summary(explainInFaulty(group, recordOf(numberOf(1)))), fixes("it is 1"));
        EXPECT_EQ(summary(explainInFaulty(group, recordOf(minus(group.p().get(), 1)))),
                  fixes("it is the prime less 1"));
        EXPECT_EQ(stepsThat(explainInFaulty(group, recordOf(numberOf(1))), Outcome::WARNS), "group number");
    }
}

TEST_F(ExplainDhRecord, TheSizeOfAGroupIsLookedAtBeforeItsFaults) {
    EXPECT_EQ(summary(explainInFaulty(GROUP_512_2, recordWith(128))),
              "group the group has 512 bits, and a secret is agreed in one of 1024");
}

TEST_F(ExplainDhRecord, ANewlineThatTheLibraryRefusesIsRemarkedOn) {
    const bytes record = recordWith(128);
    const auto remark = [&record](const std::string& end) {
        const bytes text = Base64::encode(record) + fromText(end);
        const Explanation explanation = tool::explainDhRecord({record, text, std::nullopt});
        EXPECT_EQ(summary(explanation), "needs the group");
        return explanation.steps.front().reason;
    };
    EXPECT_EQ(remark(""), "");
    EXPECT_EQ(remark("\n"), "without the newline at its end, with which the library would refuse it");
    EXPECT_EQ(remark("\r\n"), "without the newline at its end, with which the library would refuse it");
    // No text, though it ends as one.
    const bytes raw = octets(127) + fromText("\n");
    EXPECT_EQ(explain(raw).steps.front().reason, "");
}

TEST_F(ExplainDhRecord, ATextThatIsNotBase64IsRefusedFirst) {
    const bytes text = fromText("!");
    const Explanation explanation = tool::explainDhRecord({bytes(), text, Problem{0, "no Base64"}});
    EXPECT_EQ(summary(explanation), "base64 0 no Base64");
    EXPECT_EQ(libraryText(explanation).find("Unable to Base64 decode input:\n"), 0U);
}

namespace {

class ExplainSignature : public StartedLibrary {
protected:
    static Explanation explain(const bytes& record, const tool::Verification& verification = {}) {
        return tool::explainSignature({record, record, std::nullopt}, verification);
    }
    static std::shared_ptr<const PubKey> publicKey(const RawKey& key) {
        return std::make_shared<const PubKey>(key.get());
    }
    static std::shared_ptr<PKSignatureProcessor> given(const bytes& input) {
        auto processor = PKSignatureProcessor::create();
        processor->update(input);
        return processor;
    }
    static bytes signatureOver(const bytes& input) {
        return fromHex("01") + block(rawRsaSign(rsa1024(), EVP_sha1(), input));
    }
};

const bytes SIGNED = fromText("what was signed");

}  // namespace

TEST_F(ExplainSignature, WithKeyAndInputItIsVerified) {
    EXPECT_EQ(summary(explain(signatureOver(SIGNED), {publicKey(rsa1024()), given(SIGNED)})), "passes");
}

TEST_F(ExplainSignature, ASignatureOfAnotherKeyOrOverAnotherInputIsRefused) {
    const std::string refusal = "match 1 the key has not made it over this input";
    const Explanation other = explain(signatureOver(SIGNED), {publicKey(otherRsa1024()), given(SIGNED)});
    EXPECT_EQ(summary(other), refusal);
    EXPECT_EQ(libraryText(other), "");
    EXPECT_EQ(other.refusing()->refusal, ExitStatus::REFUSED);
    EXPECT_EQ(summary(explain(signatureOver(SIGNED), {publicKey(rsa1024()), given(fromText("else"))})),
              refusal);
}

TEST_F(ExplainSignature, AValueOfAnotherLengthThanTheModulusIsRefusedWithoutTheInput) {
    const std::string refusal = "value-length 1 it has 128 bytes, and the modulus 256 bytes";
    EXPECT_EQ(summary(explain(signatureOver(SIGNED), {publicKey(rsa2048()), nullptr})), refusal);
    EXPECT_EQ(summary(explain(signatureOver(SIGNED), {publicKey(rsa2048()), given(SIGNED)})), refusal);
    EXPECT_EQ(summary(explain(fromHex("0100"), {publicKey(rsa1024()), given(SIGNED)})),
              "value-length 1 it has 0 bytes, and the modulus 128 bytes");
}

TEST_F(ExplainSignature, WhatIsNotThereIsNeeded) {
    EXPECT_EQ(summary(explain(signatureOver(SIGNED), {publicKey(rsa1024()), nullptr})), "needs the input");
    EXPECT_EQ(summary(explain(signatureOver(SIGNED), {nullptr, given(SIGNED)})), "needs the public key");
}

TEST_F(ExplainSignature, TheFormIsLookedAtBeforeTheKey) {
    EXPECT_EQ(
        summary(explain(signatureOver(SIGNED) + fromHex("00"), {publicKey(rsa1024()), given(SIGNED)})),
        "end 131 1 more byte follows; the library does not look at them, and 'vorl verify' refuses them");
}

TEST_F(ExplainSignature, OfAWholeRecordOnlyTheKeyIsOpen) {
    EXPECT_EQ(summary(explain(fromHex("01") + block(octets(128)))), "needs the public key and the input");
    EXPECT_EQ(summary(explain(fromHex("0100"))), "needs the public key and the input");
}

TEST_F(ExplainSignature, AnUnknownVersionIsRefused) {
    const Explanation explanation = explain(fromHex("0200"));
    EXPECT_EQ(summary(explanation), "known-version 0 no signature record has the version 0x02");
    EXPECT_EQ(libraryText(explanation), "Unknown PKSignature version: [UInt8: 0x 02]");
}

TEST_F(ExplainSignature, AValueThatIsCutShortIsRefusedWhereItBegins) {
    EXPECT_EQ(summary(explain(fromHex("01 80 80 00"))),
              "value 3 the value is cut short: 128 bytes announced, 1 there");
}

TEST_F(ExplainSignature, WhatFollowsIsRefusedByTheToolAlone) {
    const Explanation explanation = explain(fromHex("01 01 aa bb"));
    EXPECT_EQ(summary(explanation),
              "end 3 1 more byte follows; the library does not look at them, and 'vorl verify' refuses them");
    EXPECT_EQ(libraryText(explanation), "");
}

TEST_F(ExplainSignature, ATextThatIsNotBase64IsARecordWithoutAByte) {
    const bytes text = fromText("!");
    const Explanation explanation = tool::explainSignature({bytes(), text, Problem{0, "no Base64"}});
    EXPECT_EQ(summary(explanation), "version 0 no Base64, which leaves a record without a byte");
}

}  // namespace vorl::test
