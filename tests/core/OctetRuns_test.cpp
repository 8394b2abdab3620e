#include "core/OctetRuns.h"

#include "block_encoder.h"
#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace vorl::test {
namespace {

bytes copied(const OctetRuns& runs, const Buffer& in) {
    bytes all(runs.octets());
    runs.copyFrom(in, all.data());
    return all;
}

TEST(OctetRuns, OfNoBlockHaveNoOctets) {
    const OctetRuns runs;
    EXPECT_EQ(runs.octets(), 0U);
    EXPECT_EQ(copied(runs, Buffer()), bytes());
    EXPECT_EQ(runs.joinIn(octets(5)), bytes());
}

class OctetRunsOf : public ::testing::TestWithParam<unsigned int> {};

TEST_P(OctetRunsOf, AreTheOctetsOfTheBlockWhereTheyLie) {
    const bytes content = octets(GetParam());
    const bytes before = fromHex("ff 02aabb");
    // A closing zero, which a block of a multiple of 16384 octets is read with.
    const bytes close = content.size() % 16384 == 0 ? bytes{0x00} : bytes();
    const bytes record = before + block(content) + close + bytes{0x55};
    Buffer in(record);
    in.skip(4);
    const OctetRuns runs(in);

    EXPECT_EQ(runs.octets(), content.size());
    EXPECT_EQ(in.toByteArrayRemain(), bytes{0x55});
    EXPECT_EQ(copied(runs, in), content);
    EXPECT_EQ(in.toByteArray(), record) << "the buffer is as it was";

    bytes visited;
    runs.forEach([&](const OctetRun& run) { visited = visited + slice(record, run.offset, run.octets); });
    EXPECT_EQ(visited, content);
    EXPECT_EQ(runs.joinIn(std::move(in).toByteArray()), content);
}

INSTANTIATE_TEST_SUITE_P(Sizes, OctetRunsOf,
                         ::testing::Values(0, 1, 127, 128, 16383, 16384, 16385, 32768, 65535, 65536, 65537,
                                           81920, 131073, 200000));

// What the reader that copies says, and where it stops, is what this one has to say, too.
TEST(OctetRuns, AreRefusedAsAnOctetStringIs) {
    const bytes fragment = bytes{0xc1} + octets(16384);
    for (const bytes& input :
         {bytes(), bytes{0x80}, bytes{0x05, 0xaa, 0xbb}, bytes{0xbf, 0xff, 0xaa}, bytes{0xc4, 0xaa},
          bytes{0xc0}, bytes{0xc5, 0xaa}, bytes{0xff}, fragment, fragment + bytes{0x03, 0xaa},
          fragment + bytes{0xc2} + octets(100), fragment + bytes{0xc0}}) {
        Buffer copying(input);
        Buffer finding(input);
        const std::string expected = messageOf<ASN1Exception>([&] { copying.nextOctetString(); });

        ASSERT_NE(expected, "<no exception>");
        EXPECT_EQ(messageOf<ASN1Exception>([&] { OctetRuns runs(finding); }), expected);
        EXPECT_EQ(finding.toString(), copying.toString());
    }
}

TEST(OctetRuns, AreRefusedWithTheirOwnText) {
    Buffer in(bytes{0x05, 0xaa, 0xbb});
    EXPECT_EQ(messageOf<ASN1Exception>([&] { OctetRuns runs(in); }),
              "Unable to read 5 bytes from buffer, only 2 available");
    EXPECT_EQ(in.ridx(), 3U);
}

}  // namespace
}  // namespace vorl::test
