#ifndef VORL_TOOL_INSPECT_INSPECT_BYTES_H
#define VORL_TOOL_INSPECT_INSPECT_BYTES_H

#include "inspect/Report.h"
#include "shared/fingerprint.h"

namespace vorl::tool {

/// The kinds of record that --as may name, for what does not show itself.
std::vector<std::string> recordKinds();

/// Takes an input apart, PEM text, Base64 text or raw bytes, as far as it can be read.
///
/// `kind` says what a record is, or which block of PEM text is meant; it is one of recordKinds(), or empty to
/// have it told by what the record looks like.
/// Nothing in the input makes it throw: what is wrong with it stands in the report. The library has to be
/// initialised, with every level allowed, as VORLLib::init() leaves it; otherwise VORLException is thrown.
Report inspectBytes(const bytes& input, Secrets secrets = Secrets::HIDDEN, const std::string& kind = "");

}  // namespace vorl::tool

#endif
