#ifndef VORL_CIPHERALGO_H
#define VORL_CIPHERALGO_H

#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

/// A symmetric algorithm, by name.
///
/// The named objects are made on first use and kept until the process ends; they are compared by identity.
class VORL_API CipherAlgo {
public:
    explicit CipherAlgo(const std::string& theName);

    static std::shared_ptr<const CipherAlgo> AES();
    static std::shared_ptr<const CipherAlgo> NULL_CIPHER();

    const std::string name;
};

}  // namespace vorl

#endif
