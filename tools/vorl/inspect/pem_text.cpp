#include "inspect/pem_text.h"

#include <algorithm>
#include <cstddef>

namespace vorl::tool {

namespace {

const std::string BEGIN = "-----BEGIN ";
const std::string END_OF_LABEL = "-----";

// Labels go into reports, and a terminal is to show them as they are.
bool isPrintable(unsigned char c) {
    return c >= 0x20 && c < 0x7f;
}

}  // namespace

std::vector<PemBlock> pemBlocksIn(const bytes& text) {
    std::vector<PemBlock> blocks;
    auto line = text.begin();
    while (line != text.end()) {
        const auto end = std::find(line, text.end(), static_cast<unsigned char>('\n'));
        const auto label =
            line + std::min<std::ptrdiff_t>(end - line, static_cast<std::ptrdiff_t>(BEGIN.size()));
        const auto dashes = std::search(label, end, END_OF_LABEL.begin(), END_OF_LABEL.end());
        if (std::equal(line, label, BEGIN.begin(), BEGIN.end()) && dashes != end &&
            std::all_of(label, dashes, isPrintable)) {
            blocks.push_back({static_cast<std::size_t>(line - text.begin()), std::string(label, dashes)});
        }
        line = end == text.end() ? end : end + 1;
    }
    return blocks;
}

}  // namespace vorl::tool
