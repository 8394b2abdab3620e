#ifndef VORL_TOOL_INSPECT_INSPECT_BYTES_H
#define VORL_TOOL_INSPECT_INSPECT_BYTES_H

#include "inspect/Report.h"

namespace vorl::tool {

/// Takes an input apart, Base64 text or raw bytes, as far as it can be read.
///
/// Nothing in the input makes it throw: what is wrong with it stands in the report. The library has to be
/// initialised, with every level allowed, as VORLLib::init() leaves it; otherwise VORLException is thrown.
Report inspectBytes(const bytes& input);

}  // namespace vorl::tool

#endif
