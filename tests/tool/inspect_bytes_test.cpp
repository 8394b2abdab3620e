#include "inspect/inspect_bytes.h"

#include "LibraryState.h"
#include "block_encoder.h"
#include "covered_bytes.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/VORLException.h"

#include <brisclient/Base64.h>

#include <random>

namespace {

using Tarvik::BrisClient::Base64;
using vorl::bytes;
using vorl::test::block;
using vorl::test::coveredBytes;
using vorl::test::fromHex;
using vorl::test::fromText;
using vorl::test::messageOf;
using vorl::test::octets;
using vorl::test::slice;
using vorl::test::operator+;
using vorl::tool::Field;
using vorl::tool::inspectBytes;
using vorl::tool::Report;
using vorl::tool::Secrets;

// An envelope of each level around a body of `bodyBytes`, straight from the format.
std::vector<bytes> envelopes(std::size_t bodyBytes) {
    const bytes body = block(octets(bodyBytes));
    return {fromHex("02") + block(octets(16)) + body, fromHex("01") + body, fromHex("00") + body};
}

// A signature record with a value of `valueBytes`, straight from the format.
bytes signatureRecord(std::size_t valueBytes) {
    return fromHex("01") + block(octets(valueBytes));
}

class InspectBytes : public vorl::test::StartedLibrary {};

TEST_F(InspectBytes, AWellFormedEnvelopeHasNoProblem) {
    for (const std::size_t bodyBytes :
         std::initializer_list<std::size_t>{16, 112, 144, 16368, 16400, 65520, 65552}) {
        for (const bytes& envelope : envelopes(bodyBytes)) {
            const Report report = inspectBytes(envelope);
            EXPECT_EQ(report.kind, "envelope");
            EXPECT_FALSE(report.problem) << bodyBytes << ": " << report.problem->text;
            EXPECT_TRUE(report.agreesWithLibrary);
            EXPECT_EQ(report.libraryVerdict, "");
            EXPECT_EQ(coveredBytes(report), envelope.size());
        }
    }
}

TEST_F(InspectBytes, ASignatureOfAUsualSizeIsTakenForOneUnlessAnEnvelopeIsMeant) {
    for (const std::size_t valueBytes : std::initializer_list<std::size_t>{128, 256, 384, 512}) {
        const bytes record = signatureRecord(valueBytes);
        for (const char* const kind : {"signature", "envelope"}) {
            const Report report = inspectBytes(record, Secrets::HIDDEN, kind);
            EXPECT_EQ(report.kind, kind);
            EXPECT_FALSE(report.problem);
            EXPECT_TRUE(report.agreesWithLibrary);
            EXPECT_EQ(coveredBytes(report), record.size());
        }
        EXPECT_EQ(inspectBytes(record).kind, "signature");
    }
}

TEST_F(InspectBytes, ASignatureOfAnotherSizeIsTakenForOneOnlyIfItIsMeant) {
    for (const std::size_t valueBytes :
         std::initializer_list<std::size_t>{1, 112, 144, 240, 272, 16400, 65537}) {
        const bytes record = signatureRecord(valueBytes);
        EXPECT_NE(inspectBytes(record).kind, "signature") << valueBytes;
        const Report report = inspectBytes(record, Secrets::HIDDEN, "signature");
        EXPECT_EQ(report.kind, "signature");
        EXPECT_FALSE(report.problem) << valueBytes;
        EXPECT_TRUE(report.agreesWithLibrary) << valueBytes;
        EXPECT_EQ(coveredBytes(report), record.size());
    }
}

TEST_F(InspectBytes, EveryTruncationOfASignatureIsMalformed) {
    const bytes record = signatureRecord(128);
    for (std::size_t size = 1; size < record.size(); ++size) {
        const Report report = inspectBytes(slice(record, 0, size), Secrets::HIDDEN, "signature");
        EXPECT_TRUE(report.problem) << size;
        EXPECT_TRUE(report.agreesWithLibrary) << size;
        EXPECT_EQ(coveredBytes(report), size);
    }
}

TEST_F(InspectBytes, WhatIsNoCertificateAndNoKeyIsMalformedWhereOneIsMeant) {
    for (const char* const kind : {"certificate", "public-key", "private-key"}) {
        for (const bytes& input : {fromHex("00"), fromHex("3000"), fromHex("3080"), fromHex("30820102")}) {
            const Report report = inspectBytes(input, Secrets::HIDDEN, kind);
            EXPECT_EQ(report.kind, kind);
            EXPECT_TRUE(report.problem);
            EXPECT_TRUE(report.agreesWithLibrary);
        }
    }
}

TEST_F(InspectBytes, ABodyThatIsNotClosedIsAProblemForTheLibraryToo) {
    for (const std::size_t bodyBytes : std::initializer_list<std::size_t>{16384, 32768, 65536, 131072}) {
        for (const bytes& envelope : envelopes(bodyBytes)) {
            const Report report = inspectBytes(envelope);
            ASSERT_TRUE(report.problem);
            EXPECT_EQ(report.problem->offset, envelope.size());
            EXPECT_TRUE(report.agreesWithLibrary);
            EXPECT_NE(report.libraryVerdict, "");
        }
    }
}

TEST_F(InspectBytes, ATextAndItsBytesGiveTheSameFields) {
    for (const bytes& envelope : envelopes(48)) {
        const Report raw = inspectBytes(envelope);
        const Report text = inspectBytes(Base64::encode(envelope) + fromText("\n"));
        EXPECT_FALSE(raw.isBase64);
        EXPECT_TRUE(text.isBase64);
        EXPECT_EQ(text.recordBytes, envelope.size());
        ASSERT_EQ(text.fields.size(), raw.fields.size());
        for (std::size_t i = 0; i < raw.fields.size(); ++i) {
            EXPECT_EQ(text.fields[i].offset, raw.fields[i].offset);
            EXPECT_EQ(text.fields[i].head, raw.fields[i].head);
        }
    }
}

TEST_F(InspectBytes, EveryTruncationIsMalformedAndShownToItsEnd) {
    for (const bytes& envelope : envelopes(16)) {
        for (std::size_t size = 0; size < envelope.size(); ++size) {
            const Report report = inspectBytes(slice(envelope, 0, size));
            EXPECT_TRUE(report.problem) << size;
            EXPECT_TRUE(report.agreesWithLibrary) << size;
            EXPECT_EQ(coveredBytes(report), size);
        }
    }
}

TEST_F(InspectBytes, AgreesWithTheLibraryOnEveryFlippedBit) {
    for (const bytes& envelope : envelopes(16)) {
        for (std::size_t bit = 0; bit < envelope.size() * 8; ++bit) {
            bytes flipped = envelope;
            flipped[bit / 8] = static_cast<unsigned char>(flipped[bit / 8] ^ 1U << bit % 8);
            const Report report = inspectBytes(flipped);
            EXPECT_TRUE(report.agreesWithLibrary) << bit;
            EXPECT_EQ(coveredBytes(report), flipped.size()) << bit;
        }
    }
}

TEST_F(InspectBytes, AgreesWithTheLibraryOnAnything) {
    std::mt19937 random(1);  // always the same inputs
    for (int round = 0; round < 20000; ++round) {
        bytes input(random() % 40);
        for (unsigned char& octet : input) {
            octet = static_cast<unsigned char>(random() % 4 == 0 ? random() : random() % 18);
        }
        if (!input.empty()) {
            input.front() %= 4;
        }
        const Report report = inspectBytes(input);
        EXPECT_TRUE(report.agreesWithLibrary) << round;
        EXPECT_EQ(coveredBytes(report), input.size()) << round;
    }
}

TEST_F(InspectBytes, AProblemOfTheTextIsNoRecord) {
    const Report report = inspectBytes(fromText("AhA AhA="));
    EXPECT_EQ(report.kind, "unknown");
    EXPECT_TRUE(report.isBase64);
    EXPECT_EQ(report.recordBytes, 0U);
    ASSERT_TRUE(report.problem);
    EXPECT_EQ(report.problem->offset, 3U);
}

TEST_F(InspectBytes, NeedsTheLibraryToBeInitialised) {
    vorl::VORLLib::cleanup();
    EXPECT_EQ(messageOf<vorl::VORLException>([] { inspectBytes(bytes{0x00}); }),
              "VORLLib must be initialized before use");
}

}  // namespace
