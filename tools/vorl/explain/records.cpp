#include "explain/records.h"

#include "inspect/base64_text.h"

#include <brisclient/Base64.h>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

std::string newlineRemark(const Explained& input) {
    const bool isText = !input.fault && input.record != input.text;
    const bool hasNewline = isText && sizeWithoutNewline(input.text) < input.text.size();
    return hasNewline && Base64::decode(input.text).empty()
               ? "without the newline at its end, with which the library would refuse it"
               : "";
}

}  // namespace vorl::tool
