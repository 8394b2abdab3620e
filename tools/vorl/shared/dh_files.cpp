#include "shared/dh_files.h"

#include "inspect/base64_text.h"
#include "inspect/dh_group.h"
#include "inspect/dh_numbers.h"
#include "inspect/number_blocks.h"
#include "shared/SecretBuffer.h"
#include "shared/ToolError.h"
#include "shared/input.h"

namespace vorl::tool {

namespace {

// The least that the text of a record has. No name is as long by chance, and a dot, as in "./", tells one.
const std::size_t MIN_PEER_TEXT_CHARACTERS = 160;

bytes bytesOf(const std::string& text) {
    return bytes(text.begin(), text.end());
}

}  // namespace

std::unique_ptr<DiffieHellmanParams> loadGroup(const std::string& path) {
    ReadGroup read = readGroup(readSmallInput(path));
    if (!read.group) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        inputName(path) + " holds no Diffie-Hellman parameters: " + read.fault);
    }
    return std::move(read.group);
}

KeyPair loadKeyPair(const std::string& path) {
    const SecretBytes content(readSmallInput(path));
    if (numberBlocksIn(content.get()) != 4) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(path) + " holds no key pair",
                        "'vorl dh new' makes one; 'vorl inspect --as dh-state' shows where it goes wrong");
    }
    SecretBuffer in(content.get());
    const std::uint64_t primeBits = bitsOf(in.get().nextOctetString().takeBytes());
    SecretBuffer again(content.get());
    return {DiffieHellman::decode(again.get()), primeBits};
}

bool isPeerFile(const std::string& text) {
    return text.size() < MIN_PEER_TEXT_CHARACTERS || decodeBase64Text(bytesOf(text)).problem.has_value();
}

bytes loadPeerText(const std::string& text) {
    const bytes content = isPeerFile(text) ? readSmallInput(text) : bytesOf(text);
    const std::optional<Problem> problem = decodeBase64Text(content).problem;
    if (problem) {
        throw ToolError(ExitStatus::BAD_INPUT, inputName(text) + " is not Base64 text: at character " +
                                                   std::to_string(problem->offset) + ": " + problem->text);
    }
    return bytes(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(sizeWithoutNewline(content)));
}

}  // namespace vorl::tool
