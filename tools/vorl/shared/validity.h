#ifndef VORL_TOOL_SHARED_VALIDITY_H
#define VORL_TOOL_SHARED_VALIDITY_H

#include "inspect/asn1_time.h"

#include <optional>
#include <string>

namespace vorl {
class X509Cert;
}

namespace vorl::tool {

class CommandOptions;
class Option;

/// The option --at: the moment for which the validity of a certificate is judged.
class ValidityOption {
public:
    /// Adds the option to a command. The object must outlive the parsing.
    Option declare(CommandOptions& command);

    /// Why the certificate is not valid then, or now where no moment was named; nothing where it is. Both
    /// are judged as the library does it: the last second of the period is no longer part of it. Throws
    /// ToolError where the period cannot be compared with.
    std::optional<std::string> fault(const X509Cert& certificate) const;
    /// "now", or for example "at 2026-11-21T12:00:00Z".
    std::string text() const;

private:
    Moment at_;
};

}  // namespace vorl::tool

#endif
