#ifndef VORL_TOOL_INSPECT_NUMBER_BLOCKS_H
#define VORL_TOOL_INSPECT_NUMBER_BLOCKS_H

#include "vorl/bytes.h"

#include <cstddef>

namespace vorl::tool {

/// How many numbers a record holds, and nothing else, as the library encodes groups (2) and key pairs (4):
/// blocks without leading zeros, the first of which is a prime of 64 bits or more. 0 for any other record.
std::size_t numberBlocksIn(const bytes& record);

}  // namespace vorl::tool

#endif
