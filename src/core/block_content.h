#ifndef VORL_CORE_BLOCK_CONTENT_H
#define VORL_CORE_BLOCK_CONTENT_H

#include "vorl/bytes.h"

namespace vorl {

class Buffer;

/// Reads the content of a block of units of `unitSize` bits at the read index of `in`.
/// Throws as ASN1BlockEncodable::decode() does; what was read until then stays read.
bytes readBlockContent(Buffer& in, unsigned int unitSize);

}  // namespace vorl

#endif
