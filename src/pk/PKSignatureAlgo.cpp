#include "vorl/PKSignatureAlgo.h"

#include "vorl/DigestAlgo.h"
#include "vorl/PKAlgo.h"

#include <utility>

namespace vorl {

PKSignatureAlgo::PKSignatureAlgo(std::shared_ptr<const DigestAlgo> digestAlgo,
                                 std::shared_ptr<const PKAlgo> pkAlgo)
    : digestAlgo_(std::move(digestAlgo)), pkAlgo_(std::move(pkAlgo)) {}

std::shared_ptr<const PKSignatureAlgo> PKSignatureAlgo::SHA1withRSA() {
    static const auto& instance =
        *new auto(std::make_shared<const PKSignatureAlgo>(DigestAlgo::SHA1(), PKAlgo::RSA()));
    return instance;
}

std::string PKSignatureAlgo::initName() const {
    return digestAlgo_->name + "with" + pkAlgo_->name;
}

std::string PKSignatureAlgo::toString() const {
    // Deliberately one name for the whole process, that of whoever comes first.
    static const std::string& name = *new std::string(initName());
    return name;
}

}  // namespace vorl
