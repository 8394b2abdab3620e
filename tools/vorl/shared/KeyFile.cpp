#include "shared/KeyFile.h"

#include "shared/CommandOptions.h"
#include "shared/Descriptor.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/key_formats.h"

#include <cerrno>
#include <charconv>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

// Far more than any form of a key takes.
const std::size_t MAX_KEY_FILE_BYTES = std::size_t{64} * 1024;

[[noreturn]] void refuse(const std::string& source, const std::string& why) {
    throw ToolError(ExitStatus::BAD_INPUT, "cannot read the key from " + source + ": " + why);
}

// Into storage that does not move, so that no copy stays behind.
SecretBytes readSecret(int fd, const std::string& source) {
    bytes content(MAX_KEY_FILE_BYTES + 1);
    std::size_t size = 0;
    std::ptrdiff_t received = 0;
    do {
        received = readSome(fd, content.data() + size, content.size() - size);
        size += received > 0 ? static_cast<std::size_t>(received) : 0;
    } while (received > 0 && size < content.size());
    const int error = errno;
    const bool isTooLong = size == content.size();
    content.resize(size);
    SecretBytes secret(std::move(content));
    if (received < 0) {
        refuse(source, error == EISDIR ? "it is a directory" : systemText(error));
    }
    if (isTooLong) {
        refuse(source, "it has more than " + std::to_string(MAX_KEY_FILE_BYTES) + " bytes");
    }
    return secret;
}

[[noreturn]] void refuseSameFile(const std::string& source) {
    throw ToolError(ExitStatus::USAGE, source + " cannot be both the key and the input",
                    "name a file for one of them, or pass the key with --key-fd");
}

// What the key must not be. It is looked at before the key is opened, which would take the place of a
// standard input that is closed.
class OtherInput {
public:
    explicit OtherInput(const std::string& path)
        : standardInput_(fileOf(STDIN_FILENO)),
          input_(path == STANDARD_STREAM ? standardInput_ : fileOf(path)) {}

    // Names do not tell: "-", "/dev/stdin" and "/dev/fd/0" are one stream, and so is a descriptor made of it.
    void refuseIfKey(int keyFd, const std::string& source) const {
        const std::optional<FileId> key = fileOf(keyFd);
        if (key && key == input_) {
            refuseSameFile(key == standardInput_ ? "standard input" : source);
        }
    }

private:
    const std::optional<FileId> standardInput_;
    const std::optional<FileId> input_;
};

// The parser would take 010 for octal, and 0x3 for a number.
int descriptorFrom(const std::string& text) {
    int number = -1;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number < 0) {
        throw BadValue("'" + text + "' is not the number of a descriptor");
    }
    return number;
}

}  // namespace

void KeyFile::declare(CommandOptions& command) {
    declareFile(command, "File that holds the key, as raw bytes, hex or Base64");
    command
        .value("--key-format", "FORMAT", format_,
               "How the key is written, if it does not show: raw, hex, base64")
        .oneOf({"raw", "hex", "base64"});
}

void KeyFile::declareFile(CommandOptions& command, const std::string& help) {
    const Option path = command.value("-k,--key", "FILE", path_, help);
    command
        .value(
            "--key-fd", "N", [this](const std::string& text) { descriptor_ = descriptorFrom(text); },
            "Read the key from this open file descriptor")
        .excludes(path);
}

SecretBytes KeyFile::load(std::size_t neededBytes, const std::string& inputPath) const {
    return keyFrom(content(inputPath), format_, neededBytes, source());
}

SecretBytes KeyFile::loadAnySize(const std::string& inputPath) const {
    return keyOfAnySizeFrom(content(inputPath), format_, source());
}

SecretBytes KeyFile::content(const std::string& inputPath) const {
    if (isStandardInput() && inputPath == STANDARD_STREAM) {
        refuseSameFile("standard input");
    }
    const OtherInput other(inputPath);
    if (descriptor_ || isStandardInput()) {
        const int fd = descriptor_.value_or(STDIN_FILENO);
        other.refuseIfKey(fd, source());
        return readSecret(fd, source());
    }
    const Descriptor file(open(path_->c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        refuse(source(), systemText(errno));
    }
    other.refuseIfKey(file.get(), source());
    return readSecret(file.get(), source());
}

void KeyFile::refuseAsOutput(const std::optional<std::string>& outputPath) const {
    if (!path_ || !outputPath || isStandardInput() || *outputPath == STANDARD_STREAM) {
        return;
    }
    const std::optional<FileId> key = fileOf(*path_);
    const std::optional<FileId> output = fileOf(*outputPath);
    if (key && output && *key == *output) {
        throw ToolError(ExitStatus::USAGE, "the key and the output are one file: '" + *outputPath + "'",
                        "name another file with -o: the key would be lost");
    }
}

std::string KeyFile::source() const {
    return descriptor_ ? "descriptor " + std::to_string(*descriptor_) : inputName(*path_);
}

bool KeyFile::isStandardInput() const {
    return path_ == STANDARD_STREAM || descriptor_ == STDIN_FILENO;
}

}  // namespace vorl::tool
