#include "commands/commands.h"
#include "inspect/certificate.h"
#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/signature_keys.h"
#include "shared/start_up.h"
#include "shared/terminal.h"
#include "shared/validity.h"
#include "vorl/PubKey.h"
#include "vorl/X509Cert.h"

#include <memory>

namespace vorl::tool {

namespace {

struct CheckOptions {
    std::string certificate;
    ValidityOption validity;
};

std::string findingText(const std::string& subject, const std::optional<std::string>& fault,
                        const std::string& good, const Painter& paint) {
    return (fault ? paint(Style::BAD, "FAULT") : paint(Style::GOOD, "ok   ")) + "  " + subject + ": " +
           fault.value_or(good) + "\n";
}

ExitStatus checkCertificate(const CheckOptions& options) {
    startLibrary();
    const std::shared_ptr<const X509Cert> certificate = loadCertificate(options.certificate);
    const std::optional<std::string> timeFault = options.validity.fault(*certificate);
    const std::optional<std::string> faultOfKey = keyFault(*certificate);

    const Painter paint;
    writeStandardOutput(
        "subject: " + subjectText(*certificate) + "\n" +
        findingText("time", timeFault, "it is within its validity period " + options.validity.text(), paint) +
        findingText("key", faultOfKey, faultOfKey ? "" : keyText(*certificate->getPubKey()), paint) +
        CHAIN_NOT_CHECKED + "not checked: revocation, names, and what the key may be used for\n");
    if (timeFault || faultOfKey) {
        throw ToolError(ExitStatus::REFUSED,
                        "the certificate in " + inputName(options.certificate) + " is not to be used");
    }
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareCertCheck(CommandOptions& command) {
    const auto options = std::make_shared<CheckOptions>();
    options->validity.declare(command);
    command
        .input("CERT", options->certificate,
               "The certificate, as PEM or Base64 text or DER; '-' is standard input")
        .required();
    return [options] { return checkCertificate(*options); };
}

}  // namespace vorl::tool
