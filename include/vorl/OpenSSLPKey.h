#ifndef VORL_OPENSSLPKEY_H
#define VORL_OPENSSLPKEY_H

#include "vorl/FormatPrintable.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

class PKAlgo;

/// An RSA key of OpenSSL's, or one half of it.
///
/// Every object has an EVP_PKEY of its own, and whoever passes one in keeps it; the RSA key inside is shared
/// by reference, so that what OpenSSL has worked out for it is worked out once. Keys of other algorithms are
/// refused.
class VORL_API OpenSSLPKey : public FormatPrintable {
public:
    /// Throw VORLException for a key that is not RSA, OpenSSLException where OpenSSL fails.
    explicit OpenSSLPKey(const EVP_PKEY* pkey);
    explicit OpenSSLPKey(const std::shared_ptr<const EVP_PKEY>& pkey);
    OpenSSLPKey(const OpenSSLPKey& other);
    OpenSSLPKey& operator=(const OpenSSLPKey& other);

    /// One line: the name and toString(), without key material.
    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const override;
    /// For example "OpenSSL-PKEY (RSA)".
    std::string toString() const override;
    ~OpenSSLPKey() override;

    /// Throws VORLException "Unknown EVP_PKEY type value: ..." for a key that is not RSA; 0 is the type of an
    /// empty one, and stands for null too.
    static std::shared_ptr<const PKAlgo> algo(const EVP_PKEY* pkey);
    std::shared_ptr<const PKAlgo> algo() const;

    /// A new EVP_PKEY around the same RSA key, with the exceptions of the constructors.
    static std::shared_ptr<EVP_PKEY> duplicate(const EVP_PKEY* pkey);

    /// The RSA key inside. Throws OpenSSLException where there is none.
    std::shared_ptr<RSA> toRSA() const;

    /// The EVP_PKEY itself, still owned by the object.
    const EVP_PKEY* getEVP_PKEY() const { return pkey_.get(); }

    /// Whether the public parts are equal, so that the two halves of a pair are.
    bool operator==(const OpenSSLPKey& other) const;
    bool operator!=(const OpenSSLPKey& other) const { return !(*this == other); }

    /// OpenSSL's description behind `indent` blanks, with all numbers: a private key is printed in full.
    /// Throws as algo(), and OpenSSLException where OpenSSL cannot print.
    static std::string print(const EVP_PKEY* pkey, unsigned int indent);

private:
    std::shared_ptr<const EVP_PKEY> pkey_;
};

}  // namespace vorl

#endif
