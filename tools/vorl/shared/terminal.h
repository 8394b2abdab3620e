#ifndef VORL_TOOL_SHARED_TERMINAL_H
#define VORL_TOOL_SHARED_TERMINAL_H

#include "vorl/bytes.h"

#include <string>

namespace vorl::tool {

bool isTerminal(int fd);

/// Whether a terminal shows the bytes as they are: UTF-8 without control characters, but for tabulators and
/// line ends.
bool isPlainText(const bytes& data);

/// What a result is decorated with.
enum class Style { BOLD, GOOD, BAD };

/// Decorates parts of a text that goes to standard output: only where that is a terminal, and the user has
/// not set NO_COLOR.
class Painter {
public:
    Painter();
    std::string operator()(Style style, const std::string& text) const;

private:
    const bool enabled_;
};

}  // namespace vorl::tool

#endif
