#include "envelope.h"

#include "block_encoder.h"
#include "octets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace vorl::test {

namespace {

const std::uint64_t LARGEST_SIZE = 0xffffffff;

// The determinants of the largest bodies: one for each full fragment of 65536 octets, and what the rest
// needs.
TEST(BodyWriter, TakesABodyUpToTheLargestEnvelope) {
    bytes envelope(1);
    const std::uint64_t fullFragments = 65534;
    const std::uint64_t octets = LARGEST_SIZE - 1 - fullFragments - 4;
    ASSERT_EQ(octets / 65536, fullFragments);
    EXPECT_NO_THROW(BodyWriter(envelope, octets));
    EXPECT_THROW(BodyWriter(envelope, octets + 4), std::length_error);
    EXPECT_THROW(BodyWriter(envelope, LARGEST_SIZE), std::length_error);
    EXPECT_THROW(BodyWriter(envelope, LARGEST_SIZE + 1), std::length_error);
    EXPECT_EQ(envelope, bytes(1));
}

TEST(BodyWriter, CutsPiecesAtTheFragments) {
    const bytes body = octets(70000);
    for (const std::size_t piece : {1000U, 16384U, 65536U, 70000U}) {
        bytes envelope;
        BodyWriter writer(envelope, body.size());
        for (std::size_t done = 0; done < body.size(); done += piece) {
            writer.append(slice(body, done, std::min(piece, body.size() - done)));
        }
        EXPECT_EQ(writer.rest(), 0U);
        EXPECT_TRUE(envelope == block(body)) << piece;
    }
}

TEST(BeginEnvelope, ReservesRoomAsAHintOnly) {
    bytes envelope = beginEnvelope(0x02, octets(16), 100);
    EXPECT_EQ(envelope, bytes{0x02} + block(octets(16)));
    EXPECT_GE(envelope.capacity(), envelope.size() + 101);
    EXPECT_EQ(beginEnvelope(0x00, bytes(), 0), bytes{0x00});
}

}  // namespace

}  // namespace vorl::test
