#ifndef VORL_TOOL_SHARED_KEYFILE_H
#define VORL_TOOL_SHARED_KEYFILE_H

#include "shared/SecretBytes.h"

#include <optional>
#include <string>

namespace vorl::tool {

class CommandOptions;

/// The options by which a command is told its key: -k, --key-fd and --key-format. A key is never an argument
/// itself, since other users of the machine see those.
class KeyFile {
public:
    /// Adds the options to a command. The object must outlive the parsing.
    void declare(CommandOptions& command);
    /// The same without --key-format, for a key that is not of bytes alone; `help` describes its file.
    void declareFile(CommandOptions& command, const std::string& help);

    bool isGiven() const { return path_.has_value() || descriptor_.has_value(); }
    /// The key that was named. `inputPath` is what the command reads besides: the two cannot be one file,
    /// or one stream, of which the key would take its part. Throws ToolError.
    SecretBytes load(std::size_t neededBytes, const std::string& inputPath) const;
    /// The same for a key that may have any size but none.
    SecretBytes loadAnySize(const std::string& inputPath) const;
    /// What the file holds, as it is.
    SecretBytes content(const std::string& inputPath) const;
    /// Throws ToolError where a result would replace the file of the key.
    void refuseAsOutput(const std::optional<std::string>& outputPath) const;
    /// How messages name the file.
    std::string source() const;

private:
    bool isStandardInput() const;

    std::optional<std::string> path_;
    std::optional<int> descriptor_;
    std::string format_;
};

}  // namespace vorl::tool

#endif
