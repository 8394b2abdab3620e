#ifndef VORL_PADDINGTYPE_H
#define VORL_PADDINGTYPE_H

#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

/// A way of filling the last block, by name.
///
/// The named objects are made on first use and kept until the process ends; they are compared by identity.
class VORL_API PaddingType {
public:
    explicit PaddingType(const std::string& theName);

    static std::shared_ptr<const PaddingType> PKCS5Padding();
    static std::shared_ptr<const PaddingType> NONE();

    const std::string name;
};

}  // namespace vorl

#endif
