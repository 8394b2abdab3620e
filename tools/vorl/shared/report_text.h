#ifndef VORL_TOOL_SHARED_REPORT_TEXT_H
#define VORL_TOOL_SHARED_REPORT_TEXT_H

#include "inspect/Report.h"

namespace vorl::tool {

class Painter;

/// A report for people, as a table of the fields and what follows from them.
std::string reportText(const Report& report, const Painter& paint);

}  // namespace vorl::tool

#endif
