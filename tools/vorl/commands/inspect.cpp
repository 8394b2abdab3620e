#include "inspect/inspect_bytes.h"

#include "commands/commands.h"
#include "shared/CommandOptions.h"
#include "shared/SecretBytes.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/show_report.h"
#include "shared/show_secrets.h"
#include "shared/start_up.h"

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

Run declareInspect(CommandOptions& command) {
    const auto options = std::make_shared<InspectOptions>();
    command.flag("--json", options->isJson, "Write JSON");
    command.value("--as", "KIND", options->kind, "What the input is, if it does not show: " + kindNames())
        .oneOf(recordKinds());
    declareShowSecrets(command, options->secrets);
    command.input("INPUT", options->input,
                  "What to look into, as PEM or Base64 text or raw; standard input by default");
    return [options] { return inspect(*options); };
}

}  // namespace vorl::tool
