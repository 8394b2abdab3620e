#ifndef VORL_TOOL_SHARED_DIGESTS_H
#define VORL_TOOL_SHARED_DIGESTS_H

#include <memory>
#include <string>

namespace vorl {
class DigestAlgo;
}

namespace vorl::tool {

class CommandOptions;
class Option;

/// Adds -a, which takes the name of a digest, to a command. What is given becomes one of the library's names,
/// for example "SHA256" for "sha-256". `name` must outlive the parsing.
Option declareDigestName(CommandOptions& command, std::string& name, const std::string& help);

/// The digest of one of the library's names; null for any other.
std::shared_ptr<const DigestAlgo> digestNamed(const std::string& name);

}  // namespace vorl::tool

#endif
