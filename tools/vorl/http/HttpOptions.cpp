#include "http/HttpOptions.h"

#include "shared/ToolError.h"

#include <CLI/CLI.hpp>

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
        throw CLI::ValidationError("--cover", "a name is missing in '" + list + "'");
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
        throw CLI::ValidationError("--at", "'" + text + "' is no number of seconds");
    }
    return seconds;
}

}  // namespace

void HttpOptions::declareMessage(CLI::App& command) {
    command
        .add_option("--scheme", scheme,
                    "What a target that is a path is a path of: http (the default) or https")
        ->check(CLI::IsMember({"http", "https"}).description(""))
        ->type_name("SCHEME");
    command.add_option("--request", request, "File that holds the request that a response answers")
        ->type_name("FILE");
    command
        .add_option("MESSAGE", input,
                    "The text of a request or a response, HTTP/1.1; standard input by default")
        ->type_name("");
}

void HttpOptions::declareKey(CLI::App& command) {
    key.declare(command);
    command.add_flag("--context-key", isContextKey,
                     "The key is that of a message context, and the signing key is derived from it");
}

void HttpOptions::declareSignature(CLI::App& command, const std::string& keyidHelp) {
    command.add_option("--keyid", keyid, keyidHelp)->type_name("TEXT");
    command.add_option("--label", label, "Name of the signature in its fields; vorl by default")
        ->type_name("NAME");
    command.add_option("--tag", tag, "Value of the parameter tag; vorl-1 by default")->type_name("TEXT");
    command
        .add_option_function<std::string>(
            "--cover", [this](const std::string& list) { components = componentsIn(list); },
            "Components that are covered, separated by commas, such as @method,date; those of an answered "
            "request with ;req behind them")
        ->type_name("LIST");
    command
        .add_option_function<std::string>(
            "--parameters", [this](const std::string& list) { parameters = parametersIn(list); },
            "Parameters of the signature, separated by commas: created, expires, nonce, keyid, alg, tag; all "
            "by default")
        ->type_name("LIST");
    command
        .add_option_function<std::string>(
            "--at", [this](const std::string& text) { at = secondsFrom(text); },
            "Sign or judge at this time instead of now")
        ->type_name("SECONDS");
}

}  // namespace vorl::tool
