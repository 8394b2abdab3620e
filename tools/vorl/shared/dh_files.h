#ifndef VORL_TOOL_SHARED_DH_FILES_H
#define VORL_TOOL_SHARED_DH_FILES_H

#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vorl::tool {

/// The group in a file, or on standard input. Throws ToolError.
std::unique_ptr<DiffieHellmanParams> loadGroup(const std::string& path);

/// A key pair, and the size of its group.
struct KeyPair {
    std::unique_ptr<DiffieHellman> pair;
    std::uint64_t primeBits;
};

/// The key pair in a state file, which holds what DiffieHellman::encode() writes. Throws ToolError.
KeyPair loadKeyPair(const std::string& path);

/// The text of a peer: `text` itself where it is the Base64 of a record, else what the file of that name
/// holds, or standard input. Throws ToolError for what is not Base64.
bytes loadPeerText(const std::string& text);
/// Whether loadPeerText() takes `text` for the name of a file.
bool isPeerFile(const std::string& text);

}  // namespace vorl::tool

#endif
