#include "vorl/HMAC.h"
#include "commands/commands.h"
#include "inspect/base64_text.h"
#include "inspect/numbers.h"
#include "shared/CommandOptions.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "shared/digests.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/DigestAlgo.h"

#include <brisclient/Base64.h>

#include <memory>
#include <optional>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

struct HmacOptions {
    KeyFile key;
    std::string algorithm = "SHA256";
    std::optional<std::string> expected;
    std::string input = "-";
};

bytes expectedCode(const std::string& text) {
    const DecodedText decoded = decodeBase64Text(bytes(text.begin(), text.end()));
    if (decoded.problem) {
        throw ToolError(ExitStatus::BAD_INPUT, "the code to verify is not Base64 text: at character " +
                                                   std::to_string(decoded.problem->offset) + ": " +
                                                   decoded.problem->text);
    }
    return decoded.data;
}

bytes codeOf(const HmacOptions& options) {
    const SecretBytes key = options.key.loadAnySize(options.input);
    HMAC hmac(key.get(), digestNamed(options.algorithm));
    readInPieces(options.input, [&hmac](const bytes& piece) { hmac.update(piece); });
    bytes code = hmac.final();
    // Which the library says by that alone, and which would equal another code that could not be computed.
    if (code.empty()) {
        throw ToolError(ExitStatus::FAULT, "OpenSSL cannot compute the code",
                        "'vorl doctor' checks what the tool depends on");
    }
    return code;
}

void compare(const bytes& code, const bytes& expected, const std::string& algorithm) {
    if (code.size() != expected.size()) {
        throw ToolError(ExitStatus::REFUSED, "the code does not match",
                        "it has " + bytesText(expected.size()) + ", and one with " + algorithm + " has " +
                            std::to_string(code.size()));
    }
    if (CRYPTO_memcmp(code.data(), expected.data(), code.size()) != 0) {
        throw ToolError(ExitStatus::REFUSED, "the code does not match");
    }
}

ExitStatus authenticate(const HmacOptions& options) {
    startLibrary();
    if (!options.key.isGiven()) {
        throw ToolError(ExitStatus::USAGE, "a key is needed",
                        "name its file with -k, or pass it with --key-fd");
    }
    if (options.expected) {
        const bytes expected = expectedCode(*options.expected);
        compare(codeOf(options), expected, options.algorithm);
        return ExitStatus::SUCCESS;
    }
    bytes text = Base64::encode(codeOf(options));
    text.push_back('\n');
    writeOutput(std::nullopt, text, Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareHmac(CommandOptions& command) {
    const auto options = std::make_shared<HmacOptions>();
    options->key.declare(command);
    declareDigestName(command, options->algorithm, "SHA1, SHA224, SHA256 (the default), SHA384 or SHA512");
    command.value("--verify", "TEXT", options->expected,
                  "Write nothing, but compare the code with this one: status 1 where it differs");
    command.input("INPUT", options->input, "What to authenticate; standard input by default");
    return [options] { return authenticate(*options); };
}

}  // namespace vorl::tool
