#ifndef VORL_CIPHERSPEC_H
#define VORL_CIPHERSPEC_H

#include "vorl/export.h"

#include <tarvik/crypto/ICipherContext.h>

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

class CipherAlgo;
class CipherMode;
class PaddingType;

/// A symmetric cipher configuration: algorithm, chaining mode and padding, with their sizes.
///
/// The named objects are made on first use and kept until the process ends. Their parts are the named
/// objects of CipherAlgo, CipherMode and PaddingType, which equality compares by identity.
class VORL_API CipherSpec {
public:
    /// Sizes in bytes; `evpCipher` is OpenSSL's description of the cipher, null for none.
    CipherSpec(tarvik::crypto::ICipherContext::Spec theSpec, std::shared_ptr<const CipherAlgo> theAlgo,
               std::shared_ptr<const CipherMode> theMode, std::shared_ptr<const PaddingType> thePadding,
               unsigned int keyBytes, unsigned int blockBytes, unsigned int ivBytes,
               const EVP_CIPHER* theEvpCipher);

    static std::shared_ptr<const CipherSpec> NULL_CIPHER();
    static std::shared_ptr<const CipherSpec> AES_128_ECB_PKCS5();
    static std::shared_ptr<const CipherSpec> AES_128_CBC_PKCS5();

    /// Same parts and same sizes. The identifier and OpenSSL's description are not compared: they follow
    /// from the rest.
    bool operator==(const CipherSpec& other) const;
    bool operator!=(const CipherSpec& other) const { return !(*this == other); }

    /// For example "[CipherSpec:AES_128_[CipherMode:CBC]_PKCS5Padding]".
    std::string toString() const;
    /// One line for each part, all of them behind `level` times `indentSize` blanks.
    std::string toFormatString(unsigned int width, unsigned int level, const std::string& separator,
                               unsigned int indentSize) const;
    std::string toFormatString(unsigned int width, unsigned int level) const;

    /// The platform's number for this configuration.
    const tarvik::crypto::ICipherContext::Spec spec;
    const std::shared_ptr<const CipherAlgo> algo;
    const std::shared_ptr<const CipherMode> mode;
    const std::shared_ptr<const PaddingType> padding;
    const unsigned int keySize;
    const unsigned int blockSize;
    /// 0 where the configuration takes no IV.
    const unsigned int ivSize;
    const EVP_CIPHER* const evpCipher;
};

}  // namespace vorl

#endif
