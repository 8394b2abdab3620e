#include "inspect/inspect_bytes.h"

#include "inspect/base64_text.h"
#include "inspect/envelope.h"
#include "vorl/VORLLib.h"

#include <utility>

namespace vorl::tool {

Report inspectBytes(const bytes& input) {
    VORLLib::checkInit();
    Report report;
    report.inputBytes = input.size();
    if (input.empty()) {
        report.problem = Problem{0, "the input is empty"};
        return report;
    }
    DecodedText text = decodeBase64Text(input);
    // Records begin with a byte below 0x20, so a text that decodes, or nearly does, was meant as a text.
    report.isBase64 = !text.problem || resemblesBase64(input);
    if (report.isBase64 && text.problem) {
        report.problem = std::move(text.problem);
        return report;
    }
    const bytes& record = report.isBase64 ? text.data : input;
    report.recordBytes = record.size();
    inspectEnvelope(record, report);
    return report;
}

}  // namespace vorl::tool
