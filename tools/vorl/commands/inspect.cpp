#include "inspect/inspect_bytes.h"

#include "commands/commands.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/messages.h"
#include "shared/output.h"
#include "shared/report_json.h"
#include "shared/report_text.h"
#include "shared/start_up.h"
#include "shared/terminal.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace vorl::tool {

namespace {

struct InspectOptions {
    std::string input = "-";
    bool isJson = false;
};

std::string problemText(const Report& report, const std::string& input) {
    const std::string place =
        (report.isBase64 && report.recordBytes == 0 ? ", at character " : ", at offset ");
    return inputName(input) + place + std::to_string(report.problem->offset) + ": " + report.problem->text;
}

ExitStatus inspect(const InspectOptions& options) {
    startLibrary();
    const Report report = inspectBytes(readInput(options.input));
    writeStandardOutput(options.isJson ? reportJson(report) : reportText(report, Painter()));
    if (!report.agreesWithLibrary) {
        throw ToolError(ExitStatus::FAULT, "the tool and the library disagree about this input",
                        "please report this, with the input if it is no secret");
    }
    if (report.problem) {
        sayError(problemText(report, options.input));
        return ExitStatus::BAD_INPUT;
    }
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareInspect(CLI::App& command) {
    const auto options = std::make_shared<InspectOptions>();
    command.add_flag("--json", options->isJson, "Write JSON");
    command
        .add_option("INPUT", options->input,
                    "A protected message, as Base64 text or raw; standard input by default")
        ->type_name("");
    return [options] { return inspect(*options); };
}

}  // namespace vorl::tool
