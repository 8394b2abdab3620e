#ifndef VORL_PKALGO_H
#define VORL_PKALGO_H

#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

/// A public-key algorithm, by name.
///
/// The named object is made on first use and kept until the process ends; algorithms are compared by
/// identity.
class VORL_API PKAlgo {
public:
    explicit PKAlgo(const std::string& theName);

    static std::shared_ptr<const PKAlgo> RSA();

    const std::string name;
};

}  // namespace vorl

#endif
