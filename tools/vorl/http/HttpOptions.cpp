#include "http/HttpOptions.h"

#include "shared/CommandOptions.h"
#include "shared/ToolError.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

namespace vorl::tool {

namespace {

const char* const PARAMETERS[] = {"created", "expires", "nonce", "keyid", "alg", "tag"};

std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream in(list + ",");
    for (std::string name; std::getline(in, name, ',');) {
        names.push_back(name);
    }
    return names;
}

std::vector<std::string> componentsIn(const std::string& list) {
    std::vector<std::string> names = namesIn(list);
    if (std::find(names.begin(), names.end(), "") != names.end()) {
        throw BadValue("a name is missing in '" + list + "'");
    }
    return names;
}

std::vector<std::string> parametersIn(const std::string& list) {
    std::vector<std::string> names = namesIn(list);
    for (const std::string& name : names) {
        if (std::find(std::begin(PARAMETERS), std::end(PARAMETERS), name) == std::end(PARAMETERS)) {
            throw ToolError(ExitStatus::USAGE, "--parameters: there is no parameter '" + name + "'",
                            "give a list of created, expires, nonce, keyid, alg and tag, for example "
                            "--parameters created,keyid");
        }
    }
    return names;
}

// The parser would take 010 for octal.
std::int64_t secondsFrom(const std::string& text) {
    std::int64_t seconds = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || rest != end) {
        throw BadValue("'" + text + "' is no number of seconds");
    }
    return seconds;
}

}  // namespace

void HttpOptions::declareMessage(CommandOptions& command) {
    command
        .value("--scheme", "SCHEME", scheme,
               "What a target that is a path is a path of: http (the default) or https")
        .oneOf({"http", "https"});
    command.value("--request", "FILE", request, "File that holds the request that a response answers");
    command.input("MESSAGE", input,
                  "The text of a request or a response, HTTP/1.1; standard input by default");
}

void HttpOptions::declareKey(CommandOptions& command) {
    key.declare(command);
    command.flag("--context-key", isContextKey,
                 "The key is that of a message context, and the signing key is derived from it");
}

void HttpOptions::declareSignature(CommandOptions& command, const std::string& keyidHelp) {
    command.value("--keyid", "TEXT", keyid, keyidHelp);
    command.value("--label", "NAME", label, "Name of the signature in its fields; vorl by default");
    command.value("--tag", "TEXT", tag, "Value of the parameter tag; vorl-1 by default");
    command.value(
        "--cover", "LIST", [this](const std::string& list) { components = componentsIn(list); },
        "Components that are covered, separated by commas, such as @method,date; those of an answered "
        "request with ;req behind them");
    command.value(
        "--parameters", "LIST", [this](const std::string& list) { parameters = parametersIn(list); },
        "Parameters of the signature, separated by commas: created, expires, nonce, keyid, alg, tag; all "
        "by default");
    command.value(
        "--at", "SECONDS", [this](const std::string& text) { at = secondsFrom(text); },
        "Sign or judge at this time instead of now");
}

}  // namespace vorl::tool
