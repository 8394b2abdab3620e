#include "commands/commands.h"
#include "inspect/dh_numbers.h"
#include "shared/CommandOptions.h"
#include "shared/SecretBuffer.h"
#include "shared/ToolError.h"
#include "shared/dh_files.h"
#include "shared/input.h"
#include "shared/messages.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/OpenSSLException.h"

#include <memory>

namespace vorl::tool {

namespace {

struct NewPairOptions {
    std::string params;
    std::string state;
};

// The largest group that OpenSSL makes keys for has numbers of 1250 bytes.
const unsigned int STATE_ROOM_BYTES = 8192;

std::unique_ptr<DiffieHellman> generate(const DiffieHellmanParams& group, const std::string& path) {
    try {
        return DiffieHellman::generate(group);
    } catch (const OpenSSLException&) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        "OpenSSL makes no key pair for the group in " + inputName(path),
                        "'vorl dh params check' says what is wrong with a group");
    }
}

ExitStatus makePair(const NewPairOptions& options) {
    startLibrary();
    requireRandom();
    refuseBinaryOnTerminal(options.state);
    const auto group = loadGroup(options.params);
    SecretBuffer encoded(STATE_ROOM_BYTES);
    generate(*group, options.params)->encode(encoded.get());
    const SecretBytes state = encoded.takeBytes();
    writeOutput(options.state, state.get(), Readers::OWNER);
    const std::uint64_t primeBits = bitsOf(numbersOf(*group).prime);
    if (!isAgreementSize(primeBits)) {
        sayHint(wrongSizeText(primeBits));
    }
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDhNew(CommandOptions& command) {
    const auto options = std::make_shared<NewPairOptions>();
    command
        .value("-p,--params", "FILE", options->params,
               "Diffie-Hellman parameters: PEM text, DER or the library's own encoding; '-' is standard "
               "input")
        .required();
    command
        .value("-o,--output", "STATE", options->state,
               "File to write the key pair to, which is secret; '-' is standard output")
        .required();
    return [options] { return makePair(*options); };
}

}  // namespace vorl::tool
