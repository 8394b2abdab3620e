#ifndef VORL_TESTS_TOOL_COVERED_BYTES_H
#define VORL_TESTS_TOOL_COVERED_BYTES_H

#include "inspect/Report.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vorl::test {

/// How many bytes the fields of a report take up, which must follow each other without a gap.
inline std::uint64_t coveredBytes(const tool::Report& report) {
    std::uint64_t end = 0;
    for (const tool::Field& field : report.fields) {
        EXPECT_EQ(field.offset, end);
        end += field.length;
    }
    return end;
}

}  // namespace vorl::test

#endif
