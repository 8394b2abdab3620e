#include "http/signatures.h"
#include "shared/ToolError.h"

// For a library without the software platform's signer.

namespace vorl::tool {

namespace {

[[noreturn]] void refuse() {
    throw ToolError(ExitStatus::FAULT, "this build has no signer of HTTP messages",
                    "the library was built with VORL_HTTP_SIGNER=OFF, or with another platform");
}

}  // namespace

ExitStatus writeSignatureBase(const HttpOptions& /*options*/) {
    refuse();
}

ExitStatus signHttpMessage(const HttpOptions& /*options*/) {
    refuse();
}

ExitStatus verifyHttpMessage(const HttpOptions& /*options*/) {
    refuse();
}

}  // namespace vorl::tool
