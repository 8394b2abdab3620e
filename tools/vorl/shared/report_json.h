#ifndef VORL_TOOL_SHARED_REPORT_JSON_H
#define VORL_TOOL_SHARED_REPORT_JSON_H

#include "inspect/Report.h"

namespace vorl::tool {

/// A report as JSON, ended by a newline. docs/tool.md describes its members.
std::string reportJson(const Report& report);

}  // namespace vorl::tool

#endif
