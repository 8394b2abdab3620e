#ifndef VORL_TOOL_SHARED_EXPLANATION_TEXT_H
#define VORL_TOOL_SHARED_EXPLANATION_TEXT_H

#include "explain/Explanation.h"

namespace vorl::tool {

class Painter;

/// Who receives a record, where that matters.
struct Reception {
    std::vector<std::string> accepted;
    std::string level;
};

/// A list of checks for people.
std::string explanationText(const Explanation& explanation, const std::optional<Reception>& reception,
                            const Painter& paint);

/// What reportJson() says of the record, and the checks. docs/tool.md describes the members.
std::string explanationJson(const Report& report, const Explanation& explanation,
                            const std::optional<Reception>& reception);

}  // namespace vorl::tool

#endif
