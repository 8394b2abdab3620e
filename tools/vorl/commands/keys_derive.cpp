#include "commands/commands.h"
#include "inspect/base64_text.h"
#include "inspect/numbers.h"
#include "shared/CommandOptions.h"
#include "shared/SecretBytes.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/key_formats.h"
#include "shared/output.h"
#include "shared/show_secrets.h"
#include "shared/start_up.h"
#include "vorl/ClientKeys.h"

#include <memory>
#include <optional>

namespace vorl::tool {

namespace {

struct DeriveOptions {
    std::optional<std::string> secret;
    std::optional<std::string> id;
    std::optional<std::string> encryptionKey;
    std::optional<std::string> hmacKey;
    Secrets secrets = Secrets::HIDDEN;
};

// What the library takes at the least.
const std::size_t MIN_SECRET_BYTES = 48;
const std::size_t MIN_ID_CHARACTERS = 9;

[[noreturn]] void refuse(const std::string& path, const std::string& why, const std::string& hint = "") {
    throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + ": " + why, hint);
}

ClientKeys keysOfSecret(const std::string& path) {
    const SecretBytes secret(readSmallInput(path));
    if (secret.size() < MIN_SECRET_BYTES) {
        refuse(path, "the secret has " + bytesText(secret.size()) + ", at least " +
                         std::to_string(MIN_SECRET_BYTES) + " are needed");
    }
    if (isTextOfKey(secret)) {
        refuse(path, "a secret is bytes, and this is a text",
               "the bytes themselves are needed, as 'vorl dh secret' writes them");
    }
    return ClientKeys(secret.get());
}

ClientKeys keysOfId(const std::string& path) {
    const SecretBytes id(readSmallInput(path));
    const std::size_t size = sizeWithoutNewline(id.get());
    if (size < MIN_ID_CHARACTERS) {
        refuse(path, "the identifier has " + std::to_string(size) +
                         (size == 1 ? " character" : " characters") + ", at least " +
                         std::to_string(MIN_ID_CHARACTERS) + " are needed");
    }
    return ClientKeys(id.get().data(), static_cast<unsigned int>(size));
}

void checkFiles(const DeriveOptions& options) {
    for (const auto& path : {options.encryptionKey, options.hmacKey}) {
        if (path == STANDARD_STREAM) {
            throw ToolError(ExitStatus::USAGE, "keys are written to files, not to standard output",
                            "--show-secrets shows them there");
        }
    }
}

ExitStatus derive(const DeriveOptions& options) {
    startLibrary();
    if (!options.secret && !options.id) {
        throw ToolError(ExitStatus::USAGE, "a secret or an identifier is needed",
                        "name its file with --secret or --id-file");
    }
    checkFiles(options);
    const ClientKeys keys = options.secret ? keysOfSecret(*options.secret) : keysOfId(*options.id);
    if (options.encryptionKey) {
        writeBothFiles({*options.encryptionKey, keys.encryptionKey()}, {*options.hmacKey, keys.hmacKey()},
                       Readers::OWNER);
    }
    writeStandardOutput("encryption key: " + secretText(keys.encryptionKey(), options.secrets) +
                        "\nHMAC key: " + secretText(keys.hmacKey(), options.secrets) + "\n");
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareKeysDerive(CommandOptions& command) {
    const auto options = std::make_shared<DeriveOptions>();
    const Option secret = command.value(
        "--secret", "FILE", options->secret,
        "File that holds a shared secret, as 'vorl dh secret' writes it; '-' is standard input");
    command
        .value("--id-file", "FILE", options->id,
               "File that holds the identifier of a shopper or a device; '-' is standard input")
        .excludes(secret);
    const Option encryptionKey =
        command.value("--enc-out", "FILE", options->encryptionKey, "File to write the encryption key to");
    const Option hmacKey =
        command.value("--hmac-out", "FILE", options->hmacKey, "File to write the HMAC key to");
    encryptionKey.needs(hmacKey);
    hmacKey.needs(encryptionKey);
    declareShowSecrets(command, options->secrets);
    return [options] { return derive(*options); };
}

}  // namespace vorl::tool
