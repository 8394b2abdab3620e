#ifndef VORL_TOOL_EXPLAIN_RECORDS_H
#define VORL_TOOL_EXPLAIN_RECORDS_H

#include "explain/Explanation.h"
#include "inspect/levels.h"

namespace vorl::tool {

class SecretBytes;

/// What is explained: a record, or the text that should be one and is no Base64.
struct Explained {
    const bytes& record;
    /// The input, where `fault` says why there is no record in it.
    const bytes& text;
    std::optional<Problem> fault;
};

/// What a context of a level does with an envelope, under the policy of VORLLib as it stands. Without a key,
/// the last check is left open; with one, it is made, and how a decryption failed is not told.
Explanation explainEnvelope(const Explained& envelope, const Level& context, const SecretBytes* key);

/// What DiffieHellman::computeSharedSecret() does with the record of a peer, as far as that does not depend
/// on the group.
Explanation explainDhRecord(const Explained& record);

/// What is done with a signature record, as far as that does not depend on the key.
Explanation explainSignature(const Explained& record);

}  // namespace vorl::tool

#endif
