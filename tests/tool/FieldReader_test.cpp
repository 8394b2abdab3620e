#include "inspect/FieldReader.h"

#include "block_encoder.h"
#include "octets.h"

#include <gtest/gtest.h>

namespace {

using vorl::bytes;
using vorl::test::block;
using vorl::test::fromHex;
using vorl::test::octets;
using vorl::test::operator+;
using vorl::tool::Field;
using vorl::tool::FieldReader;
using vorl::tool::Report;

TEST(FieldReader, EntersWhereAFieldLiesAndHowItBegins) {
    const bytes record = fromHex("02 aa") + octets(17);
    Report report;
    FieldReader reader(record, report);

    EXPECT_EQ(reader.readByte("first"), 0x02);
    EXPECT_EQ(reader.readByte("second"), 0xaa);
    reader.setMeaning("the second");
    reader.readRest("rest", "all that is left");

    ASSERT_EQ(report.fields.size(), 3U);
    EXPECT_EQ(report.fields[1].offset, 1U);
    EXPECT_EQ(report.fields[1].length, 1U);
    EXPECT_EQ(report.fields[1].name, "second");
    EXPECT_EQ(report.fields[1].meaning, "the second");
    EXPECT_EQ(report.fields[2].offset, 2U);
    EXPECT_EQ(report.fields[2].length, 17U);
    EXPECT_EQ(report.fields[2].head, octets(16));
    EXPECT_TRUE(reader.atEnd());
}

TEST(FieldReader, EntersNothingWhereNothingIsLeft) {
    const bytes record;
    Report report;
    FieldReader(record, report).readRest("rest", "");
    EXPECT_TRUE(report.fields.empty());
}

TEST(FieldReader, KeepsTheFirstProblem) {
    const bytes record;
    Report report;
    FieldReader reader(record, report);
    reader.setProblem(3, "first");
    reader.setProblem(1, "second");
    EXPECT_EQ(report.problem->offset, 3U);
    EXPECT_EQ(report.problem->text, "first");
}

// Sizes on both sides of each bound, but for multiples of 16384, which are not closed.
class BlockOfSize : public ::testing::TestWithParam<std::size_t> {};

TEST_P(BlockOfSize, IsReadToItsEndAndCoveredByFieldsWithoutGap) {
    const bytes record = block(octets(GetParam())) + fromHex("ff");
    Report report;
    FieldReader reader(record, report);

    EXPECT_EQ(reader.readBlock("body", ""), GetParam());

    EXPECT_FALSE(report.problem);
    EXPECT_EQ(reader.offset(), record.size() - 1);
    std::uint64_t end = 0;
    for (const Field& field : report.fields) {
        EXPECT_EQ(field.offset, end);
        end += field.length;
    }
    EXPECT_EQ(end, record.size() - 1);
}

INSTANTIATE_TEST_SUITE_P(Bounds, BlockOfSize,
                         ::testing::Values(1, 127, 128, 16383, 16385, 32767, 32769, 65535, 65537, 131073));

TEST(FieldReader, AByteOfZeroIsAnEmptyBlock) {
    const bytes record = fromHex("00");
    Report report;
    EXPECT_EQ(FieldReader(record, report).readBlock("body", ""), 0U);
    ASSERT_EQ(report.fields.size(), 1U);
    EXPECT_EQ(report.fields[0].meaning, "0 bytes");
}

struct BadBlock {
    const char* name;
    bytes record;
    std::uint64_t offset;
    const char* problem;
};

void PrintTo(const BadBlock& block, std::ostream* out) {
    *out << block.name;
}

const BadBlock BAD_BLOCKS[] = {
    {"NoLength", {}, 0, "the input ends where the length of the body is expected"},
    {"HalfALength", {0xbf}, 0, "the length of the body has two bytes, and the second is missing"},
    {"ZeroFragments", {0xc0, 0x00}, 0, "0xc0 is no length"},
    {"FiveFragments", {0xc5, 0x00}, 0, "0xc5 is no length"},
    {"HighestByte", {0xff, 0x00}, 0, "0xff is no length"},
    {"ContentMissing", {0x01}, 1, "the body is cut short: 1 byte announced, 0 there"},
    {"ContentCut", {0x03, 0xaa, 0xbb}, 1, "the body is cut short: 3 bytes announced, 2 there"},
    {"LongContentCut", {0xbf, 0xff, 0xaa}, 2, "the body is cut short: 16383 bytes announced, 1 there"},
    {"FragmentCut", {0xc4, 0xaa}, 1, "the body is cut short: 65536 bytes announced, 1 there"},
    {"NotClosed", block(octets(16384)), 16385,
     "the body is not closed: a length must follow its 16384 bytes, an exact multiple of 16384"},
    {"NotClosedAfterTwoFragments", block(octets(5 * 16384)), 5 * 16384 + 2,
     "the body is not closed: a length must follow its 81920 bytes, an exact multiple of 16384"},
};

class UnreadableBlock : public ::testing::TestWithParam<BadBlock> {};

TEST_P(UnreadableBlock, IsAProblemAtItsPlace) {
    Report report;
    FieldReader reader(GetParam().record, report);

    EXPECT_EQ(reader.readBlock("body", ""), std::nullopt);

    ASSERT_TRUE(report.problem);
    EXPECT_EQ(report.problem->text, GetParam().problem);
    EXPECT_EQ(report.problem->offset, GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(Reasons, UnreadableBlock, ::testing::ValuesIn(BAD_BLOCKS),
                         [](const auto& test) { return test.param.name; });

TEST(FieldReader, FragmentsAreNumberedFromTheFirst) {
    const bytes record = block(octets(65536 + 16384 + 5));
    Report report;
    FieldReader(record, report).readBlock("body", "");

    std::vector<unsigned int> numbers;
    for (const Field& field : report.fields) {
        numbers.push_back(field.fragment);
    }
    EXPECT_EQ(numbers, (std::vector<unsigned int>{1, 1, 2, 2, 3, 3}));
}

}  // namespace
