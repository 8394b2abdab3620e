#include "shared/messages.h"

#include "shared/Descriptor.h"
#include "shared/utf8.h"

#include <string_view>

#include <unistd.h>

namespace vorl::tool {

namespace {

// Terminals take the controls above DEL in either form, as a byte of its own and as UTF-8.
std::string withoutControls(std::string_view text) {
    std::string safe;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const bool isUtf8 = character.size > 0;
        const std::size_t size = isUtf8 ? character.size : 1;
        const unsigned long code = isUtf8 ? character.codePoint : static_cast<unsigned char>(text.front());
        safe += isControl(code) ? "?" : text.substr(0, size);
        text.remove_prefix(size);
    }
    return safe;
}

void sayLine(const std::string& line) {
    const std::string safe = withoutControls(line) + '\n';
    writeAll(STDERR_FILENO, safe.data(), safe.size());
}

}  // namespace

void sayError(const std::string& text) {
    sayLine("vorl: error: " + text);
}

void sayHint(const std::string& text) {
    if (!text.empty()) {
        sayLine("vorl: hint: " + text);
    }
}

}  // namespace vorl::tool
