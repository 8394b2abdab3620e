#ifndef VORL_CIPHERMODE_H
#define VORL_CIPHERMODE_H

#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

/// A chaining mode, by name.
///
/// The named objects are made on first use and kept until the process ends; they are compared by identity.
class VORL_API CipherMode {
public:
    explicit CipherMode(const std::string& theName);

    static std::shared_ptr<const CipherMode> CBC();
    static std::shared_ptr<const CipherMode> ECB();
    static std::shared_ptr<const CipherMode> NONE();

    const std::string name;
};

}  // namespace vorl

#endif
