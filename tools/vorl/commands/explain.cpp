#include "commands/commands.h"
#include "explain/records.h"
#include "inspect/base64_text.h"
#include "inspect/dh_numbers.h"
#include "inspect/dh_record.h"
#include "inspect/inspect_bytes.h"
#include "shared/CommandOptions.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "shared/accepted_levels.h"
#include "shared/dh_files.h"
#include "shared/dh_openssl.h"
#include "shared/explanation_text.h"
#include "shared/input.h"
#include "shared/message_options.h"
#include "shared/messages.h"
#include "shared/output.h"
#include "shared/report_text.h"
#include "shared/signature_keys.h"
#include "shared/start_up.h"
#include "shared/terminal.h"
#include "vorl/CipherSpec.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PubKey.h"
#include "vorl/X509Cert.h"

#include <brisclient/Base64.h>

#include <algorithm>
#include <memory>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

struct ExplainOptions {
    KeyFile key;
    std::string accept = "full";
    std::string level = "full";
    std::string kind;
    std::optional<std::string> params;
    std::optional<std::string> publicKey;
    std::optional<std::string> certificate;
    std::optional<std::string> signedInput;
    std::string input = "-";
    bool isJson = false;
};

[[noreturn]] void refuseTogether(const std::string& one, const std::string& other) {
    throw ToolError(ExitStatus::USAGE, one + " and " + other + " are for records of different kinds",
                    "leave one of them out");
}

// What the options say that the input is; empty where they leave it open.
std::string givenKind(const ExplainOptions& options) {
    std::string kind;
    std::string told;
    const auto tell = [&kind, &told](bool isGiven, const std::string& what, const std::string& its) {
        if (!isGiven) {
            return;
        }
        if (!kind.empty() && kind != its) {
            refuseTogether(told, what);
        }
        kind = its;
        told = what;
    };
    tell(!options.kind.empty(), "--as " + options.kind, options.kind);
    tell(options.params.has_value(), "the group", "dh-record");
    tell(options.publicKey.has_value(), "the public key", "signature");
    tell(options.certificate.has_value(), "the certificate", "signature");
    tell(options.signedInput.has_value(), "the signed input", "signature");
    tell(options.key.isGiven(), "the key", "envelope");
    return kind;
}

// What shows nothing of itself is taken for an envelope; what can be printed, for the text of one.
Report reportOf(const bytes& input, const std::string& given) {
    Report report = inspectBytes(input, Secrets::HIDDEN, given);
    return report.kind == "unknown" && given.empty() ? inspectBytes(input, Secrets::HIDDEN, "envelope")
                                                     : report;
}

// Of a text that does not decode, its first characters may.
std::string kindOfDamagedText(const bytes& text) {
    const std::size_t shown = std::min<std::size_t>(text.size(), 8);
    const bytes start =
        Base64::decode(bytes(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(shown)));
    return beginsAsDhRecord(start) ? "dh-record" : "envelope";
}

// What explain takes an input for.
std::string kindOf(const Report& report, const bytes& input, const std::string& given,
                   const std::string& path) {
    if (report.isPem) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " is PEM text",
                        "an envelope, a Diffie-Hellman record and a signature are explained; 'vorl inspect' "
                        "shows what else there is");
    }
    if (report.kind == "unknown") {
        // Of an unknown version, or no record at all.
        return !given.empty() ? given : kindOfDamagedText(input);
    }
    if (report.kind != "envelope" && report.kind != "dh-record" && report.kind != "signature") {
        throw ToolError(ExitStatus::BAD_INPUT,
                        inputName(path) + " looks like another kind of record: " + report.kind,
                        "'vorl inspect' shows it; if it is none, --as says what it is");
    }
    return report.kind;
}

// Nothing where the input is not Base64 text, of which there is another way to see it.
std::optional<Problem> textFault(const Report& report) {
    return report.recordBytes == 0 ? report.problem : std::nullopt;
}

void checkStreams(const ExplainOptions& options) {
    std::vector<NamedInput> inputs = {{"record", options.input}};
    const auto add = [&inputs](const std::string& what, const std::optional<std::string>& path) {
        if (path) {
            inputs.push_back({what, *path});
        }
    };
    add("group", options.params);
    add("public key", options.publicKey);
    add("certificate", options.certificate);
    add("signed input", options.signedInput);
    refuseSharedStreams(inputs);
}

std::shared_ptr<const PubKey> publicKeyIn(const ExplainOptions& options) {
    if (options.publicKey) {
        return loadPublicKey(*options.publicKey);
    }
    return options.certificate ? publicKeyOf(*loadCertificate(*options.certificate), *options.certificate)
                               : nullptr;
}

std::shared_ptr<PKSignatureProcessor> processorOf(const std::string& path) {
    auto processor = PKSignatureProcessor::create();
    readInPieces(path, [&processor](const bytes& piece) { processor->update(piece); });
    return processor;
}

class Explaining {
public:
    explicit Explaining(const ExplainOptions& options)
        : options_(options),
          given_(givenKind(options)),
          accepted_(acceptedLevels(options.accept)),
          key_(options.key.isGiven() ? options.key.load(levels().front().spec().keySize, options.input)
                                     : SecretBytes()),
          input_(readInput(options.input)),
          report_(reportOf(input_, given_)),
          kind_(kindOf(report_, input_, given_, options.input)),
          record_(report_.isBase64 ? decodeBase64Text(input_).data : input_) {}

    ExitStatus run() {
        const Explanation explanation = explain();
        show(explanation);
        if (!report_.agreesWithLibrary || !explanation.agreesWithLibrary) {
            throw ToolError(ExitStatus::FAULT, "the tool and the library disagree about this input",
                            "please report this, with the input if it is no secret");
        }
        const Step* const refusing = explanation.refusing();
        const Step* const decisive = refusing != nullptr ? refusing : explanation.first(Outcome::WARNS);
        if (decisive == nullptr) {
            return ExitStatus::SUCCESS;
        }
        sayError(inputName(options_.input) + place(*decisive) + ": " + decisive->reason);
        return decisive->refusal;
    }

private:
    std::string place(const Step& step) const {
        return step.offset
                   ? (textFault(report_) ? ", at character " : ", at offset ") + std::to_string(*step.offset)
                   : "";
    }

    Explanation explain() const {
        const Explained explained = {record_, input_, textFault(report_)};
        if (kind_ == "dh-record") {
            if (!options_.params) {
                return explainDhRecord(explained);
            }
            const auto group = loadGroup(*options_.params);
            // Primes of any other size are refused before their faults matter.
            const bool isJudged = isAgreementSize(bitsOf(numbersOf(*group).prime));
            return explainDhRecord(explained, PeerGroup{*group, isJudged && !faultsOf(*group).empty()});
        }
        if (kind_ == "signature") {
            return explainSignature(
                explained,
                {publicKeyIn(options_), options_.signedInput ? processorOf(*options_.signedInput) : nullptr});
        }
        // Not before the input was inspected, which takes a policy that accepts all levels.
        setPolicy(accepted_);
        return explainEnvelope(explained, levelNamed(options_.level),
                               options_.key.isGiven() ? &key_ : nullptr);
    }

    std::optional<Reception> reception() const {
        if (kind_ != "envelope") {
            return std::nullopt;
        }
        Reception reception = {{}, options_.level};
        for (const Level& level : accepted_) {
            reception.accepted.push_back(level.name);
        }
        return reception;
    }

    void show(const Explanation& explanation) const {
        const Painter paint;
        writeStandardOutput(options_.isJson ? explanationJson(report_, explanation, reception())
                                            : reportText(report_, paint) + "\n" +
                                                  explanationText(explanation, reception(), paint));
    }

    const ExplainOptions& options_;
    const std::string given_;
    const std::vector<Level> accepted_;
    const SecretBytes key_;
    const bytes input_;
    const Report report_;
    const std::string kind_;
    const bytes record_;
};

ExitStatus explain(const ExplainOptions& options) {
    checkStreams(options);
    startLibrary();
    return Explaining(options).run();
}

}  // namespace

Run declareExplain(CommandOptions& command) {
    const auto options = std::make_shared<ExplainOptions>();
    options->key.declare(command);
    declareAccept(command, options->accept);
    command
        .value("--level", "LEVEL", options->level,
               "Level of the context that receives it: full (the default), test or none")
        .oneOf(levelNames());
    command.value(
        "-p,--params", "FILE", options->params,
        "Diffie-Hellman parameters of the group that a record is for: PEM text, DER or the library's "
        "own encoding");
    const Option publicKey =
        command.value("--public-key", "FILE", options->publicKey,
                      "File that holds the public key that a signature is verified with, as PEM text");
    command
        .value(
            "--cert", "FILE", options->certificate,
            "File that holds a certificate for that key, as PEM or Base64 text or DER; neither its time nor "
            "its chain of trust is judged")
        .excludes(publicKey);
    command.value("--signed", "FILE", options->signedInput, "What was signed");
    command
        .value("--as", "KIND", options->kind,
               "What the input is, if it does not show: envelope, dh-record, signature")
        .oneOf({"envelope", "dh-record", "signature"});
    command.flag("--json", options->isJson, "Write JSON");
    command.input("INPUT", options->input,
                  "What to explain, as Base64 text or raw; standard input by default");
    return [options] { return explain(*options); };
}

}  // namespace vorl::tool
