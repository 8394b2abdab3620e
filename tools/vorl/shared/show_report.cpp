#include "shared/show_report.h"

#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/messages.h"
#include "shared/output.h"
#include "shared/report_json.h"
#include "shared/report_text.h"
#include "shared/terminal.h"

namespace vorl::tool {

namespace {

std::string problemText(const Report& report, const std::string& path) {
    const std::string place =
        (report.isBase64 && report.recordBytes == 0 ? ", at character " : ", at offset ");
    return inputName(path) + place + std::to_string(report.problem->offset) + ": " + report.problem->text;
}

}  // namespace

ExitStatus showReport(const Report& report, const std::string& path, bool isJson) {
    writeStandardOutput(isJson ? reportJson(report) : reportText(report, Painter()));
    if (!report.agreesWithLibrary) {
        throw ToolError(ExitStatus::FAULT, "the tool and the library disagree about this input",
                        "please report this, with the input if it is no secret");
    }
    if (report.problem) {
        sayError(problemText(report, path));
        return ExitStatus::BAD_INPUT;
    }
    return ExitStatus::SUCCESS;
}

}  // namespace vorl::tool
