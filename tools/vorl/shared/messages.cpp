#include "shared/messages.h"

#include "shared/Descriptor.h"

#include <algorithm>

#include <unistd.h>

namespace vorl::tool {

namespace {

void sayLine(const std::string& line) {
    std::string safe = line;
    std::replace_if(
        safe.begin(), safe.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
    safe += '\n';
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
