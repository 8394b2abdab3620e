#include "inspect/inspect_bytes.h"

#include "LibraryState.h"
#include "block_encoder.h"
#include "covered_bytes.h"
#include "octets.h"

#include <algorithm>
#include <random>

namespace {

using vorl::bytes;
using vorl::test::block;
using vorl::test::coveredBytes;
using vorl::test::fromHex;
using vorl::test::octets;
using vorl::test::slice;
using vorl::test::operator+;
using vorl::tool::Field;
using vorl::tool::inspectBytes;
using vorl::tool::Report;
using vorl::tool::Secrets;

const char* const KINDS[] = {"dh-record", "dh-params", "dh-state"};

// Bytes that occur nowhere else in a record.
const bytes PRIVATE_KEY(40, 0xee);

bytes group() {
    return block(bytes(64, 0x11)) + block(fromHex("05"));
}

bytes state() {
    return group() + block(bytes(64, 0x22)) + block(PRIVATE_KEY);
}

bytes record(std::size_t keyBytes) {
    return fromHex("00000002") + block(octets(keyBytes));
}

class InspectDh : public vorl::test::StartedLibrary {};

TEST_F(InspectDh, EachFormIsTakenForWhatItIs) {
    const std::pair<bytes, const char*> forms[] = {
        {record(128), "dh-record"},      {record(129), "dh-record"}, {bytes(125, 0x40), "dh-record"},
        {bytes(129, 0x40), "dh-record"}, {group(), "dh-params"},     {state(), "dh-state"},
    };
    for (const auto& [form, kind] : forms) {
        const Report report = inspectBytes(form);
        EXPECT_EQ(report.kind, kind);
        EXPECT_FALSE(report.problem);
        EXPECT_EQ(coveredBytes(report), form.size());
    }
}

TEST_F(InspectDh, NumbersThatAreNotWrittenSoAreNoGroupUnasked) {
    const bytes others[] = {
        block(bytes(7, 0x11)) + block(fromHex("05")),              // too small a prime
        block(fromHex("00") + bytes(64, 0x11)) + fromHex("0105"),  // a leading zero byte
        group() + fromHex("00"),                                   // an empty block
        group() + block(fromHex("07")),                            // three numbers
        state() + block(fromHex("07")),                            // five
    };
    for (const bytes& other : others) {
        const Report report = inspectBytes(other);
        EXPECT_EQ(report.kind == "dh-params" || report.kind == "dh-state", false) << report.kind;
    }
}

TEST_F(InspectDh, TheKeyOfARecordIsHeldToTheBoundsOfAnAgreement) {
    for (const std::size_t keyBytes : {120U, 124U, 129U}) {
        EXPECT_FALSE(inspectBytes(record(keyBytes) + bytes(8)).problem) << keyBytes;
    }
    for (const std::size_t keyBytes : {119U, 130U}) {
        const Report report = inspectBytes(record(keyBytes) + bytes(8));
        ASSERT_TRUE(report.problem) << keyBytes;
        EXPECT_EQ(report.libraryVerdict, "") << keyBytes;
    }
}

TEST_F(InspectDh, EveryTruncationIsMalformedAndShownToItsEnd) {
    for (const auto& [whole, kind] : {std::pair<bytes, const char*>(record(128), "dh-record"),
                                      std::pair<bytes, const char*>(group(), "dh-params"),
                                      std::pair<bytes, const char*>(state(), "dh-state")}) {
        for (std::size_t size = 1; size < whole.size(); ++size) {
            const Report report = inspectBytes(slice(whole, 0, size), Secrets::HIDDEN, kind);
            const bool isBareKey = report.kind == "dh-record" && size >= 125 && size <= 129;
            EXPECT_EQ(report.problem.has_value(), !isBareKey) << kind << size;
            EXPECT_TRUE(report.agreesWithLibrary) << kind << size;
            EXPECT_EQ(coveredBytes(report), size) << kind;
        }
    }
}

TEST_F(InspectDh, NoPartOfAPrivateKeyIsShownOfAnyTruncation) {
    const bytes whole = state();
    const std::size_t begin = whole.size() - PRIVATE_KEY.size();
    for (std::size_t size = begin + 1; size <= whole.size(); ++size) {
        const Report report = inspectBytes(slice(whole, 0, size), Secrets::HIDDEN, "dh-state");
        const Field& key = report.fields.back();
        EXPECT_EQ(key.offset, begin);
        EXPECT_EQ(key.head, bytes{});
        EXPECT_EQ(key.fingerprint, vorl::tool::fingerprint(slice(whole, begin, size - begin)));
    }
}

TEST_F(InspectDh, APrivateKeyIsShownWhereSecretsAre) {
    const Report report = inspectBytes(state(), Secrets::SHOWN);
    EXPECT_EQ(report.fields.back().head, slice(PRIVATE_KEY, 0, vorl::tool::MAX_SHOWN_BYTES));
    EXPECT_EQ(report.fields.back().fingerprint, "");
    EXPECT_EQ(std::get<std::string>(report.facts.back().value), [] {
        std::string hex;
        for (std::size_t i = 0; i < PRIVATE_KEY.size(); ++i) {
            hex += "ee";
        }
        return hex;
    }());
}

TEST_F(InspectDh, AgreesWithTheLibraryOnAnything) {
    std::mt19937 random(1);  // always the same inputs
    for (int round = 0; round < 20000; ++round) {
        bytes input(random() % 150 + 1);
        for (unsigned char& octet : input) {
            octet = static_cast<unsigned char>(random() % 4 == 0 ? random() : random() % 40);
        }
        // Of what is not Base64, of which there would be no record.
        input.back() = 0xff;
        const char* const kind = KINDS[random() % 3];
        const Report report = inspectBytes(input, Secrets::HIDDEN, kind);
        EXPECT_EQ(report.kind, kind);
        EXPECT_TRUE(report.agreesWithLibrary) << kind << round;
        EXPECT_EQ(coveredBytes(report), input.size()) << kind << round;
    }
}

}  // namespace
