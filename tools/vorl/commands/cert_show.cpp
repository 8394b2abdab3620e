#include "commands/commands.h"
#include "inspect/inspect_bytes.h"
#include "shared/CommandOptions.h"
#include "shared/SecretBytes.h"
#include "shared/input.h"
#include "shared/show_report.h"
#include "shared/signature_keys.h"
#include "shared/start_up.h"

#include <memory>

namespace vorl::tool {

namespace {

struct ShowOptions {
    std::string certificate;
    bool isJson = false;
};

ExitStatus showCertificate(const ShowOptions& options) {
    startLibrary();
    // The private key may stand in the same text.
    const SecretBytes input(readSmallInput(options.certificate));
    certificateFrom(input.get(), options.certificate);
    return showReport(inspectBytes(input.get(), Secrets::HIDDEN, "certificate"), options.certificate,
                      options.isJson);
}

}  // namespace

Run declareCertShow(CommandOptions& command) {
    const auto options = std::make_shared<ShowOptions>();
    command.flag("--json", options->isJson, "Write JSON");
    command
        .input("CERT", options->certificate,
               "The certificate, as PEM or Base64 text or DER; '-' is standard input")
        .required();
    return [options] { return showCertificate(*options); };
}

}  // namespace vorl::tool
