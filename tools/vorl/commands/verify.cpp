#include "commands/commands.h"
#include "inspect/base64_text.h"
#include "inspect/certificate.h"
#include "inspect/numbers.h"
#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/signature_keys.h"
#include "shared/start_up.h"
#include "shared/validity.h"
#include "vorl/Buffer.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <memory>

namespace vorl::tool {

namespace {

struct VerifyOptions {
    std::optional<std::string> key;
    std::optional<std::string> certificate;
    std::string signature;
    std::string input = "-";
    ValidityOption validity;
    bool isTimeIgnored = false;
};

const char INSPECT_HINT[] = "'vorl inspect --as signature' shows where it goes wrong";

[[noreturn]] void refuseSignature(const std::string& path, const std::string& why, const std::string& hint) {
    throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " is not a signature record: " + why, hint);
}

// Records have bytes that Base64 has not, so that a text is told from a record by itself.
bytes recordIn(const std::string& path) {
    bytes input = readSmallInput(path);
    if (input.empty()) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " is empty");
    }
    DecodedText text = decodeBase64Text(input);
    if (!text.problem) {
        return std::move(text.data);
    }
    if (resemblesBase64(input)) {
        refuseSignature(
            path, "at character " + std::to_string(text.problem->offset) + ": " + text.problem->text, "");
    }
    return input;
}

std::shared_ptr<const PKSignature> loadSignature(const std::string& path) {
    Buffer in(recordIn(path));
    std::shared_ptr<const PKSignature> signature;
    try {
        signature = PKSignature::decode(in);
    } catch (const VORLException& fault) {
        refuseSignature(path, fault.what(), INSPECT_HINT);
    }
    // The library leaves them alone; a file that holds more than a signature was not meant as one.
    const std::uint64_t trailingBytes = in.widx() - in.ridx();
    if (trailingBytes > 0) {
        refuseSignature(path, bytesText(trailingBytes) + " behind its end", INSPECT_HINT);
    }
    return signature;
}

void checkUsage(const VerifyOptions& options) {
    if (!options.key && !options.certificate) {
        throw ToolError(ExitStatus::USAGE, "a key is needed",
                        "name the file of the public key with -k, or of a certificate with --cert");
    }
    refuseSharedStreams(
        {options.key ? NamedInput{"key", *options.key} : NamedInput{"certificate", *options.certificate},
         {"signature", options.signature},
         {"input", options.input}});
}

void checkValidity(const X509Cert& certificate, const VerifyOptions& options) {
    const std::optional<std::string> fault =
        options.isTimeIgnored ? std::nullopt : options.validity.fault(certificate);
    if (fault) {
        throw ToolError(
            ExitStatus::REFUSED,
            "the certificate in " + inputName(*options.certificate) + " is out of its time: " + *fault,
            "--at TIME judges it at another time, --ignore-time at none");
    }
}

// Who signed, by name where a certificate gives one.
struct Signer {
    std::shared_ptr<const PubKey> key;
    std::string remarks;
};

Signer loadSigner(const VerifyOptions& options) {
    if (options.key) {
        return {loadPublicKey(*options.key), ""};
    }
    const std::shared_ptr<const X509Cert> certificate = loadCertificate(*options.certificate);
    Signer signer = {publicKeyOf(*certificate, *options.certificate), ""};
    checkValidity(*certificate, options);
    signer.remarks = "signer, by the certificate: " + subjectText(*certificate) + "\n" +
                     (options.isTimeIgnored ? "not checked: the validity period of the certificate\n"
                                            : "the certificate is within its validity period " +
                                                  options.validity.text() + "\n") +
                     CHAIN_NOT_CHECKED;
    return signer;
}

ExitStatus verify(const VerifyOptions& options) {
    checkUsage(options);
    startLibrary();
    const Signer signer = loadSigner(options);
    const std::shared_ptr<const PKSignature> signature = loadSignature(options.signature);

    const auto processor = PKSignatureProcessor::create(signature->algo());
    processor->initVerify(signer.key);
    readInPieces(options.input, [&processor](const bytes& piece) { processor->update(piece); });
    if (!processor->verify(signature)) {
        throw ToolError(ExitStatus::REFUSED, "the signature does not match");
    }
    writeStandardOutput("the signature matches\n" + signer.remarks);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareVerify(CommandOptions& command) {
    const auto options = std::make_shared<VerifyOptions>();
    const Option key =
        command.value("-k,--key", "FILE", options->key, "File that holds the public key, as PEM text");
    const Option certificate =
        command
            .value("--cert", "FILE", options->certificate,
                   "File that holds a certificate for the key, as PEM or Base64 text or DER; its chain of "
                   "trust is not checked")
            .excludes(key);
    command
        .value("-s,--signature", "FILE", options->signature,
               "File that holds the signature record, as Base64 text or raw")
        .required();
    const Option at = options->validity.declare(command).needs(certificate);
    command
        .flag("--ignore-time", options->isTimeIgnored, "Do not check the validity period of the certificate")
        .needs(certificate)
        .excludes(at);
    command.input("INPUT", options->input, "What was signed; standard input by default");
    return [options] { return verify(*options); };
}

}  // namespace vorl::tool
