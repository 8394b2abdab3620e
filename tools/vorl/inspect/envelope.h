#ifndef VORL_TOOL_INSPECT_ENVELOPE_H
#define VORL_TOOL_INSPECT_ENVELOPE_H

#include "inspect/Report.h"

namespace vorl::tool {

/// Enters the fields of an envelope into the report, as far as they can be read.
void inspectEnvelope(const bytes& envelope, Report& report);

}  // namespace vorl::tool

#endif
