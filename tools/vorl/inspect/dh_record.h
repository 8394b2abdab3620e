#ifndef VORL_TOOL_INSPECT_DH_RECORD_H
#define VORL_TOOL_INSPECT_DH_RECORD_H

#include "inspect/Report.h"

namespace vorl::tool {

/// Whether a record begins as one of version 2 does. No well-formed envelope begins so.
bool beginsAsDhRecord(const bytes& record);

/// Whether a record has the size of a bare key, which is all that version 1 shows of itself.
bool isOfBareKeySize(const bytes& record);

/// Enters the fields of a Diffie-Hellman public key record into the report, as far as they can be read.
void inspectDhRecord(const bytes& record, Report& report);

}  // namespace vorl::tool

#endif
