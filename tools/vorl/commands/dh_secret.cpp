#include "commands/commands.h"
#include "inspect/dh_numbers.h"
#include "shared/CommandOptions.h"
#include "shared/SecretBytes.h"
#include "shared/ToolError.h"
#include "shared/dh_files.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/VORLException.h"

#include <memory>

namespace vorl::tool {

namespace {

struct SecretOptions {
    std::string state;
    std::string peer;
    std::string output;
};

bool isZero(const bytes& secret) {
    const bytes zeros(secret.size());
    return CRYPTO_memcmp(secret.data(), zeros.data(), zeros.size()) == 0;
}

SecretBytes agree(const DiffieHellman& pair, const bytes& peerText) {
    try {
        return SecretBytes(pair.computeSharedSecret(peerText));
    } catch (const VORLException& fault) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        std::string("the peer's text is no public key: ") + fault.what(),
                        "'vorl inspect' shows what it is made of");
    }
}

ExitStatus makeSecret(const SecretOptions& options) {
    startLibrary();
    if (isPeerFile(options.peer)) {
        refuseSharedStreams({{"key pair", options.state}, {"peer's text", options.peer}});
    }
    refuseBinaryOnTerminal(options.output);
    const KeyPair keys = loadKeyPair(options.state);
    if (!isAgreementSize(keys.primeBits)) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        inputName(options.state) + ": " + wrongSizeText(keys.primeBits));
    }
    const SecretBytes secret = agree(*keys.pair, loadPeerText(options.peer));
    // The library hands out zeros where OpenSSL computes nothing. Whoever sent such a number would know the
    // keys that come of them, and so would everybody else.
    if (isZero(secret.get())) {
        throw ToolError(ExitStatus::CANNOT_OPEN,
                        "OpenSSL refuses the peer's number, so that there is no secret",
                        "no honest peer sends such a number: it may have been exchanged on its way");
    }
    writeOutput(options.output, secret.get(), Readers::OWNER);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDhSecret(CommandOptions& command) {
    const auto options = std::make_shared<SecretOptions>();
    command.input("STATE", options->state, "Key pair, as 'vorl dh new' writes it; '-' is standard input")
        .required();
    command
        .input("PEERTEXT", options->peer,
               "What the peer's 'vorl dh pub' wrote: the text itself, or a file; '-' is standard input")
        .required();
    command
        .value("-o,--output", "SECRET", options->output,
               "File to write the shared secret to; '-' is standard output")
        .required();
    return [options] { return makeSecret(*options); };
}

}  // namespace vorl::tool
