#ifndef VORL_TOOL_HTTP_HTTPOPTIONS_H
#define VORL_TOOL_HTTP_HTTPOPTIONS_H

#include "shared/KeyFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorl::tool {

class CommandOptions;

/// What the commands about signed HTTP messages are told. An object must outlive the parsing of its options.
struct HttpOptions {
    /// MESSAGE, and how it is to be read.
    void declareMessage(CommandOptions& command);
    /// The key, and whose it is.
    void declareKey(CommandOptions& command);
    /// What signatures look like.
    void declareSignature(CommandOptions& command, const std::string& keyidHelp);

    std::string input = "-";
    std::string scheme = "http";
    std::optional<std::string> request;

    KeyFile key;
    bool isContextKey = false;

    /// What is not given is left to the library.
    std::optional<std::string> keyid;
    std::optional<std::string> label;
    std::optional<std::string> tag;
    std::vector<std::string> components;
    std::optional<std::vector<std::string>> parameters;
    std::optional<std::int64_t> at;

    /// Of sign.
    std::optional<std::string> output;
    /// Of base.
    bool isRaw = false;
};

}  // namespace vorl::tool

#endif
