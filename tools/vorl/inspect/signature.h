#ifndef VORL_TOOL_INSPECT_SIGNATURE_H
#define VORL_TOOL_INSPECT_SIGNATURE_H

#include "inspect/Report.h"

namespace vorl::tool {

/// Whether a record is a signature to all appearances: version 1, and one value of the size that usual RSA
/// keys have, 1024, 2048, 3072 or 4096 bits. An envelope of the level test may look the same.
bool isSignatureOfUsualSize(const bytes& record);

/// Whether the library reads a record as a signature, whatever it was meant as.
bool canBeReadAsSignature(const bytes& record);

/// Enters the fields of a signature record into the report, as far as they can be read.
void inspectSignature(const bytes& record, Report& report);

}  // namespace vorl::tool

#endif
