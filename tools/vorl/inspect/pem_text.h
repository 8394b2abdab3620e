#ifndef VORL_TOOL_INSPECT_PEM_TEXT_H
#define VORL_TOOL_INSPECT_PEM_TEXT_H

#include "vorl/bytes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vorl::tool {

/// Where a PEM block begins, and what it says that it is, for example "DH PARAMETERS".
struct PemBlock {
    std::size_t offset;
    std::string label;
};

/// The blocks of a text, in their order, whole or not. Other lines may stand around them.
std::vector<PemBlock> pemBlocksIn(const bytes& text);

}  // namespace vorl::tool

#endif
