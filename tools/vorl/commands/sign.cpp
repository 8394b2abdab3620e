#include "commands/commands.h"
#include "shared/KeyFile.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/signature_keys.h"
#include "shared/start_up.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace vorl::tool {

namespace {

struct SignOptions {
    KeyFile key;
    std::string input = "-";
    std::optional<std::string> output;
};

ExitStatus sign(const SignOptions& options) {
    startLibrary();
    // What hides the key from a clock is random, although the signature is not.
    requireRandom();
    const std::shared_ptr<const PrivKey> key = loadPrivateKey(options.key, options.input);

    const auto processor = PKSignatureProcessor::create();
    processor->initSign(key);
    readInPieces(options.input, [&processor](const bytes& piece) { processor->update(piece); });
    bytes text = processor->sign()->encodeB64();
    text.push_back('\n');
    writeOutput(options.output, text, Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareSign(CLI::App& command) {
    const auto options = std::make_shared<SignOptions>();
    options->key.declareFile(command, "File that holds the private key, as PEM text");
    command.add_option("-o,--output", options->output, "File to write; '-' is standard output, the default")
        ->type_name("FILE");
    command.add_option("INPUT", options->input, "What to sign; standard input by default")->type_name("");
    return [options] { return sign(*options); };
}

}  // namespace vorl::tool
