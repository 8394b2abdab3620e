#include "shared/terminal.h"

#include "shared/utf8.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace vorl::tool {

namespace {

bool isColourful() {
    const char* const refused = secure_getenv("NO_COLOR");
    const char* const terminal = secure_getenv("TERM");
    const bool isRefused = refused != nullptr && *refused != '\0';
    const bool isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    return !isRefused && !isDumb && isTerminal(STDOUT_FILENO);
}

}  // namespace

bool isTerminal(int fd) {
    return isatty(fd) == 1;
}

bool isPlainText(const bytes& data) {
    const void* const text = data.data();
    std::string_view rest(static_cast<const char*>(text), data.size());
    while (!rest.empty()) {
        const Character character = firstCharacter(rest);
        const bool isLayout = rest.front() == '\t' || rest.front() == '\n' || rest.front() == '\r';
        if (character.size == 0 || (isControl(character.codePoint) && !isLayout)) {
            return false;
        }
        rest.remove_prefix(character.size);
    }
    return true;
}

Painter::Painter() : enabled_(isColourful()) {}

std::string Painter::operator()(Style style, const std::string& text) const {
    if (!enabled_) {
        return text;
    }
    const char* const code = style == Style::BOLD ? "1" : style == Style::GOOD ? "32" : "1;31";
    return "\033[" + std::string(code) + "m" + text + "\033[0m";
}

}  // namespace vorl::tool
