#ifndef VORL_CORE_OCTET_RUNS_H
#define VORL_CORE_OCTET_RUNS_H

#include "vorl/bytes.h"

#include <vector>

namespace vorl {

class Buffer;

/// Octets of a block that lie together in the buffer's store: those of one fragment.
struct OctetRun {
    unsigned int offset;
    unsigned int octets;
};

/// Reads an OctetString at the read index of `in`, as Buffer::nextOctetString() does and with its exceptions,
/// but leaves the octets where they are.
std::vector<OctetRun> readOctetRuns(Buffer& in);

/// The octets of all runs, moved together in the storage that holds them.
bytes joinOctetRuns(bytes store, const std::vector<OctetRun>& runs);

}  // namespace vorl

#endif
