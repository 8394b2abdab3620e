#include "commands/commands.h"
#include "shared/CommandOptions.h"
#include "shared/digests.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/Util.h"

#include <memory>

namespace vorl::tool {

namespace {

struct DigestOptions {
    std::string algorithm;
    std::string input = "-";
};

ExitStatus digest(const DigestOptions& options) {
    startLibrary();
    Digester digester(digestNamed(options.algorithm));
    digester.init();
    readInPieces(options.input, [&digester](const bytes& piece) { digester.update(piece); });
    writeStandardOutput(Util::toHexString(digester.final(), "") + "\n");
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDigest(CommandOptions& command) {
    const auto options = std::make_shared<DigestOptions>();
    declareDigestName(command, options->algorithm, "SHA1, SHA224, SHA256, SHA384 or SHA512").required();
    command.input("INPUT", options->input, "What to digest; standard input by default");
    return [options] { return digest(*options); };
}

}  // namespace vorl::tool
