#include "commands/commands.h"
#include "inspect/levels.h"
#include "inspect/numbers.h"
#include "inspect/structure.h"
#include "shared/CommandOptions.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/message_options.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "vorl/CipherSpec.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>

#include <cstdint>
#include <memory>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

struct ProtectOptions {
    KeyFile key;
    std::string level = "full";
    MessageOptions message;
};

// A body of an exact multiple of this size is written without its end.
const std::uint64_t FRAGMENT_UNIT = 16384;

bool hasReadableBody(std::uint64_t messageBytes, const CipherSpec& spec) {
    const std::uint64_t bodyBytes =
        spec.blockSize == 0 ? messageBytes : (messageBytes / spec.blockSize + 1) * spec.blockSize;
    return bodyBytes % FRAGMENT_UNIT != 0;
}

// How many bytes have to be added, or removed with a `step` of -1, until a message can be opened again.
std::uint64_t distanceToReadable(std::uint64_t messageBytes, std::uint64_t step, const CipherSpec& spec) {
    std::uint64_t distance = 1;
    while (!hasReadableBody(messageBytes + step * distance, spec)) {
        ++distance;
    }
    return distance;
}

[[noreturn]] void refuseMessage(std::uint64_t messageBytes, const Level& level) {
    const std::string end = " cannot be opened again in this format; ";
    if (messageBytes == 0) {
        throw ToolError(ExitStatus::BAD_INPUT, "an empty message" + end + "add at least 1 byte",
                        "the levels full and test take an empty message");
    }
    const std::uint64_t added = distanceToReadable(messageBytes, 1, level.spec());
    const std::uint64_t removed = distanceToReadable(messageBytes, ~std::uint64_t{0}, level.spec());
    const std::string both = added == removed
                                 ? "add or remove " + bytesText(added)
                                 : "add " + bytesText(added) + " or remove " + bytesText(removed);
    throw ToolError(ExitStatus::BAD_INPUT, "a message of " + bytesText(messageBytes) + end + both);
}

ExitStatus protect(const ProtectOptions& options) {
    startLibrary();
    options.key.refuseAsOutput(options.message.output);
    const Level& level = levelNamed(options.level);
    if (level.spec().ivSize > 0) {
        requireRandom();
    }
    const SecretBytes key = loadMessageKey(options.key, {level}, options.message.input);
    if (options.message.isRaw) {
        refuseBinaryOnTerminal(options.message.output);
    }
    const bytes message = readInput(options.message.input);

    VORLLib::type_ = level.type;
    bytes text = VorlContext(key.get()).encrypt(message);
    bytes envelope = Base64::decode(text);
    // Better no result than one in which the message is lost.
    if (structureFault(envelope)) {
        refuseMessage(message.size(), level);
    }
    text.push_back('\n');
    const bool isReadable = level.spec().keySize == 0;
    writeOutput(options.message.output, options.message.isRaw ? envelope : text,
                isReadable ? Readers::OWNER : Readers::ANYBODY);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareProtect(CommandOptions& command) {
    const auto options = std::make_shared<ProtectOptions>();
    options->key.declare(command);
    command.value("--level", "LEVEL", options->level, "Level of protection: full (the default), test or none")
        .oneOf(levelNames());
    options->message.declare(command, "Write the envelope itself instead of its Base64 text",
                             "The message; standard input by default");
    return [options] { return protect(*options); };
}

}  // namespace vorl::tool
