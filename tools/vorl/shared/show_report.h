#ifndef VORL_TOOL_SHARED_SHOW_REPORT_H
#define VORL_TOOL_SHARED_SHOW_REPORT_H

#include "inspect/Report.h"
#include "shared/exit_status.h"

namespace vorl::tool {

/// Writes a report on the input `path` to standard output, as JSON or as text, and its problem to standard
/// error too. Throws ToolError where the tool and the library disagree.
ExitStatus showReport(const Report& report, const std::string& path, bool isJson);

}  // namespace vorl::tool

#endif
