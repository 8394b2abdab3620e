#include "commands/commands.h"
#include "shared/CommandOptions.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/signature_keys.h"
#include "shared/start_up.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"

#include <memory>

namespace vorl::tool {

namespace {

struct SignOptions {
    KeyFile key;
    std::string input = "-";
    std::optional<std::string> output;
};

// A damaged key can sign, too, what nobody can verify.
std::shared_ptr<const PKSignature> signatureBy(PKSignatureProcessor& processor) {
    try {
        return processor.sign();
    } catch (const OpenSSLException&) {
        return nullptr;
    }
}

ExitStatus sign(const SignOptions& options) {
    startLibrary();
    options.key.refuseAsOutput(options.output);
    // What hides the key from a clock is random, although the signature is not.
    requireRandom();
    const std::shared_ptr<const PrivKey> key = loadPrivateKey(options.key, options.input);

    const auto processor = PKSignatureProcessor::create();
    const auto check = PKSignatureProcessor::create();
    processor->initSign(key);
    check->initVerify(std::make_shared<const PubKey>(key->getEVP_PKEY()));
    readInPieces(options.input, [&](const bytes& piece) {
        processor->update(piece);
        check->update(piece);
    });
    const std::shared_ptr<const PKSignature> signature = signatureBy(*processor);
    if (!signature || !check->verify(signature)) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        "the private key from " + options.key.source() +
                            " is damaged: its numbers do not belong together",
                        "'openssl pkey -check' tells more");
    }
    bytes text = signature->encodeB64();
    text.push_back('\n');
    writeOutput(options.output, text, Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareSign(CommandOptions& command) {
    const auto options = std::make_shared<SignOptions>();
    options->key.declareFile(command, "File that holds the private key, as PEM text");
    command.value("-o,--output", "FILE", options->output,
                  "File to write; '-' is standard output, the default");
    command.input("INPUT", options->input, "What to sign; standard input by default");
    return [options] { return sign(*options); };
}

}  // namespace vorl::tool
