#include "inspect/inspect_bytes.h"

#include "commands/commands.h"
#include "shared/SecretBytes.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/show_report.h"
#include "shared/show_secrets.h"
#include "shared/start_up.h"

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
    return showReport(report, options.input, options.isJson);
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
