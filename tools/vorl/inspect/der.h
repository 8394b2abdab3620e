#ifndef VORL_TOOL_INSPECT_DER_H
#define VORL_TOOL_INSPECT_DER_H

#include "vorl/bytes.h"

namespace vorl::tool {

/// Whether the first byte is the identifier of a SEQUENCE (ITU-T X.690, 8.9), as it is of all records in DER
/// here.
inline bool beginsSequence(const bytes& record) {
    const unsigned char SEQUENCE = 0x30;
    return !record.empty() && record.front() == SEQUENCE;
}

}  // namespace vorl::tool

#endif
