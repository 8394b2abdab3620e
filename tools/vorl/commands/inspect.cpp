#include "inspect/inspect_bytes.h"

#include "commands/commands.h"
#include "shared/SecretBytes.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/messages.h"
#include "shared/output.h"
#include "shared/report_json.h"
#include "shared/report_text.h"
#include "shared/show_secrets.h"
#include "shared/start_up.h"
#include "shared/terminal.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace vorl::tool {

namespace {

struct InspectOptions {
    std::string input = "-";
    std::string kind;
    Secrets secrets = Secrets::HIDDEN;
    bool isJson = false;
};

std::string problemText(const Report& report, const std::string& input) {
    const std::string place =
        (report.isBase64 && report.recordBytes == 0 ? ", at character " : ", at offset ");
    return inputName(input) + place + std::to_string(report.problem->offset) + ": " + report.problem->text;
}

std::string kindNames() {
    std::string names;
    for (const std::string& kind : recordKinds()) {
        names += (names.empty() ? "" : ", ") + kind;
    }
    return names;
}

ExitStatus inspect(const InspectOptions& options) {
    startLibrary();
    const SecretBytes input(readInput(options.input));
    const Report report = inspectBytes(input.get(), options.secrets, options.kind);
    if (report.isPem && !options.kind.empty() && report.kind != options.kind) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(options.input) + " is PEM text of another kind",
                        "PEM text says itself what it is: leave out --as");
    }
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
    command.add_option("--as", options->kind, "What the input is, if it does not show: " + kindNames())
        ->check(CLI::IsMember(recordKinds()).description(""))
        ->type_name("KIND");
    declareShowSecrets(command, options->secrets);
    command
        .add_option("INPUT", options->input,
                    "What to look into, as PEM or Base64 text or raw; standard input by default")
        ->type_name("");
    return [options] { return inspect(*options); };
}

}  // namespace vorl::tool
