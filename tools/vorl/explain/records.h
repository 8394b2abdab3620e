#ifndef VORL_TOOL_EXPLAIN_RECORDS_H
#define VORL_TOOL_EXPLAIN_RECORDS_H

#include "explain/Explanation.h"
#include "inspect/levels.h"

#include <memory>

namespace vorl {
class DiffieHellmanParams;
class PKSignatureProcessor;
class PubKey;
}  // namespace vorl

namespace vorl::tool {

class SecretBytes;

/// What is explained: a record, or the text that should be one and is no Base64.
struct Explained {
    const bytes& record;
    /// The input as it was given: the text, or the record itself.
    const bytes& text;
    /// Why there is no record in the text.
    std::optional<Problem> fault;
};

/// The remark on the check that the text has passed: the library refuses one with a newline behind it, which
/// whoever hands over a whole file finds out. Empty where the text has none, or the platform's codec takes
/// it.
std::string newlineRemark(const Explained& input);

/// What a context of a level does with an envelope, under the policy of VORLLib as it stands. Without a key,
/// the last check is left open; with one, it is made, and how a decryption failed is not told.
Explanation explainEnvelope(const Explained& envelope, const Level& context, const SecretBytes* key);

/// The group that a record is for.
struct PeerGroup {
    const DiffieHellmanParams& params;
    /// Any that 'vorl dh params check' finds.
    bool hasFaults;
};

/// What DiffieHellman::computeSharedSecret() does with the record of a peer. Without a group, as far as it
/// does not depend on that. The library takes numbers that fix the secret and groups that have faults, and is
/// not said to refuse them: such a check warns. What a number does in a group that has faults is left open.
Explanation explainDhRecord(const Explained& record, const std::optional<PeerGroup>& group = std::nullopt);

/// What a signature is verified with, as far as it is there.
struct Verification {
    std::shared_ptr<const PubKey> key;
    /// Has been given what was signed, and nothing else.
    std::shared_ptr<PKSignatureProcessor> processor;
};

/// What is done with a signature record. What there is nothing for in `verification` is left open.
Explanation explainSignature(const Explained& record, const Verification& verification = {});

}  // namespace vorl::tool

#endif
