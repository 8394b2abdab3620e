#ifndef VORL_TOOL_INSPECT_DH_GROUP_H
#define VORL_TOOL_INSPECT_DH_GROUP_H

#include "inspect/Report.h"

#include <memory>

namespace vorl {
class DiffieHellmanParams;
}

namespace vorl::tool {

/// Whether a block of PEM text with that label holds a group.
bool isGroupLabel(const std::string& label);

/// Whether a record is a group in DER (PKCS #3, DHParameter).
bool isGroupInDer(const bytes& record);

/// Enter a group into the report that is PEM text, or DER. These forms have no fields of ours.
void inspectGroupInPem(const bytes& text, Report& report);
void inspectGroupInDer(const bytes& record, Report& report);

/// A group that was read, or why it was not.
struct ReadGroup {
    std::unique_ptr<DiffieHellmanParams> group;
    std::string fault;
};

/// The group in an input: PEM text, DER, or the library's own encoding as raw bytes or Base64 text.
ReadGroup readGroup(const bytes& input);

}  // namespace vorl::tool

#endif
