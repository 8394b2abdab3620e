#include "commands/commands.h"
#include "inspect/base64_text.h"
#include "inspect/levels.h"
#include "inspect/structure.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "shared/accepted_levels.h"
#include "shared/input.h"
#include "shared/message_options.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "shared/terminal.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>

#include <memory>
#include <new>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

struct UnprotectOptions {
    KeyFile key;
    std::string accept = "full";
    MessageOptions message;
};

bytes readEnvelope(const MessageOptions& options) {
    bytes input = readInput(options.input);
    if (input.empty()) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(options.input) + " is empty");
    }
    if (options.isRaw) {
        return input;
    }
    DecodedText text = decodeBase64Text(input);
    if (text.problem) {
        const bool isRaw = levelOfVersion(input.front()) != nullptr;
        throw ToolError(ExitStatus::BAD_INPUT,
                        inputName(options.input) + " is not Base64 text: at character " +
                            std::to_string(text.problem->offset) + ": " + text.problem->text,
                        isRaw ? "it begins like an envelope itself: --raw reads one" : "");
    }
    return std::move(text.data);
}

void checkAccepted(const Level& level, const std::string& accept) {
    if (!VORLLib::isAllowedEncryptionType(level.type)) {
        throw ToolError(ExitStatus::REFUSED,
                        "the message is protected at the level " + level.name + ", which is not accepted",
                        "if that is what the sender was meant to use: --accept " + accept + "," + level.name);
    }
}

// The library reads the structure without a key, so that a malformed input is told from one that the key
// does not open.
void checkStructure(const bytes& envelope, const Level* level, const MessageOptions& options) {
    const std::optional<std::string> fault =
        level != nullptr ? openingFault(envelope, level->spec()) : structureFault(envelope);
    if (fault) {
        const bool isBase64 = options.isRaw && !decodeBase64Text(envelope).problem;
        throw ToolError(ExitStatus::BAD_INPUT,
                        inputName(options.input) + " is not a whole envelope: " + *fault,
                        isBase64 ? "it is Base64 text, which is read without --raw"
                                 : "'vorl inspect' shows where it goes wrong");
    }
}

// The level of an envelope that holds together and is accepted.
const Level& judge(const bytes& envelope, const UnprotectOptions& options) {
    const Level* const level = levelOfVersion(envelope.front());
    if (level != nullptr) {
        checkAccepted(*level, options.accept);
    }
    checkStructure(envelope, level, options.message);
    if (level == nullptr) {
        throw ToolError(ExitStatus::FAULT, "the library knows a version that the tool does not");
    }
    return *level;
}

bytes openEnvelope(const bytes& envelope, const Level& level, const SecretBytes& key) {
    VORLLib::type_ = level.type;
    VorlContext context(key.get());
    const bytes text = Base64::encode(envelope);
    try {
        return context.decrypt(text);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        // How a decryption fails would help to find the message without the key, so it is not told.
        throw ToolError(ExitStatus::CANNOT_OPEN, "the message cannot be opened: wrong key or damaged data");
    }
}

ExitStatus unprotect(const UnprotectOptions& options) {
    startLibrary();
    options.key.refuseAsOutput(options.message.output);
    const std::vector<Level> accepted = acceptedLevels(options.accept);
    const SecretBytes key = loadMessageKey(options.key, accepted, options.message.input);
    setPolicy(accepted);
    const bytes envelope = readEnvelope(options.message);
    const bytes message = openEnvelope(envelope, judge(envelope, options), key);
    if (!isPlainText(message)) {
        refuseBinaryOnTerminal(options.message.output);
    }
    writeOutput(options.message.output, message, Readers::OWNER);
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareUnprotect(CommandOptions& command) {
    const auto options = std::make_shared<UnprotectOptions>();
    options->key.declare(command);
    declareAccept(command, options->accept);
    options->message.declare(command, "Read the envelope itself instead of its Base64 text",
                             "The protected message; standard input by default");
    return [options] { return unprotect(*options); };
}

}  // namespace vorl::tool
