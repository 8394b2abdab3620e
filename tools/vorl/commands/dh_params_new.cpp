#include "commands/commands.h"
#include "shared/CommandOptions.h"
#include "shared/Progress.h"
#include "shared/dh_openssl.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/DiffieHellmanParams.h"

#include <openssl/dh.h>

#include <charconv>
#include <memory>
#include <optional>

namespace vorl::tool {

namespace {

struct NewGroupOptions {
    unsigned int bits = 1024;
    std::string generator = "5";
    std::optional<std::string> output;
};

// OpenSSL refuses others without a word about the size.
const unsigned int MIN_BITS = 512;
const unsigned int MAX_BITS = OPENSSL_DH_MAX_MODULUS_BITS;

unsigned int bitsFrom(const std::string& text) {
    unsigned int bits = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, bits);
    if (error != std::errc() || rest != end || bits < MIN_BITS || bits > MAX_BITS) {
        throw BadValue("'" + text + "' is not a number from " + std::to_string(MIN_BITS) + " to " +
                       std::to_string(MAX_BITS));
    }
    return bits;
}

std::unique_ptr<DiffieHellmanParams> search(unsigned int generator, unsigned int bits) {
    const Progress progress("searching for a safe prime of " + std::to_string(bits) + " bits");
    return DiffieHellmanParams::generate(generator, bits);
}

ExitStatus makeGroup(const NewGroupOptions& options) {
    startLibrary();
    requireRandom();
    const auto group = search(options.generator == "2" ? 2 : 5, options.bits);
    writeOutput(options.output, pemOf(*group), Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDhParamsNew(CommandOptions& command) {
    const auto options = std::make_shared<NewGroupOptions>();
    command.value(
        "--bits", "N", [options](const std::string& text) { options->bits = bitsFrom(text); },
        "Size of the prime: 1024 (the default), the one that secrets are agreed with, or another");
    command.value("--generator", "N", options->generator, "2 or 5 (the default)").oneOf({"2", "5"});
    command.value("-o,--output", "FILE", options->output,
                  "File to write; '-' is standard output, the default");
    return [options] { return makeGroup(*options); };
}

}  // namespace vorl::tool
