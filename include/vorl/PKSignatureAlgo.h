#ifndef VORL_PKSIGNATUREALGO_H
#define VORL_PKSIGNATUREALGO_H

#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

class DigestAlgo;
class PKAlgo;

/// A signature algorithm: a digest, and the public-key algorithm that signs it.
///
/// The named object is made on first use and kept until the process ends; algorithms are compared by
/// identity.
class VORL_API PKSignatureAlgo {
public:
    PKSignatureAlgo(std::shared_ptr<const DigestAlgo> digestAlgo, std::shared_ptr<const PKAlgo> pkAlgo);

    /// RSASSA-PKCS1-v1_5 with SHA-1 (RFC 8017, section 8.2).
    static std::shared_ptr<const PKSignatureAlgo> SHA1withRSA();

    const std::shared_ptr<const DigestAlgo>& digestAlgo() const { return digestAlgo_; }
    const std::shared_ptr<const PKAlgo>& pkAlgo() const { return pkAlgo_; }

    /// For example "SHA1withRSA".
    std::string initName() const;
    /// initName() of the first object in the process that was asked: there is only one that signs.
    std::string toString() const;

private:
    std::shared_ptr<const DigestAlgo> digestAlgo_;
    std::shared_ptr<const PKAlgo> pkAlgo_;
};

}  // namespace vorl

#endif
