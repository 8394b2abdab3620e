#ifndef VORL_TOOL_INSPECT_LEVELS_H
#define VORL_TOOL_INSPECT_LEVELS_H

#include <memory>
#include <string>
#include <vector>

namespace vorl {
class CipherSpec;
class EncryptionType;
}  // namespace vorl

namespace vorl::tool {

/// A level of protection, as the command line names it.
struct Level {
    std::string name;
    std::string description;
    std::shared_ptr<const EncryptionType> type;

    unsigned char version() const;
    const CipherSpec& spec() const;
};

/// full, test, none: the strongest first.
const std::vector<Level>& levels();

/// Null for a version byte that no level has.
const Level* levelOfVersion(unsigned char version);

}  // namespace vorl::tool

#endif
