#include "core/length_determinant.h"

#include "block_encoder.h"
#include "octets.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vorl::test {
namespace {

TEST(EncodedBlockSize, IsTheSizeOfTheBlockForEachNumberOfOctets) {
    for (unsigned int base : {0U, 128U, 16384U, 32768U, 49152U, 65536U, 81920U, 98304U, 131072U, 327680U}) {
        for (unsigned int octetCount = base < 3 ? 0 : base - 3; octetCount <= base + 3; ++octetCount) {
            EXPECT_EQ(encodedBlockSize(octetCount), block(octets(octetCount)).size()) << octetCount;
        }
    }
}

TEST(EncodedBlockSize, IsExactBeyond32Bits) {
    // 65536 fragments of 65536 octets with a determinant of one byte each, and 5 octets behind another.
    EXPECT_EQ(encodedBlockSize(0x100000000), 0x100000000U + 0x10000U);
    EXPECT_EQ(encodedBlockSize(0x100000005), 0x100000005U + 0x10000U + 1);
}

}  // namespace
}  // namespace vorl::test
