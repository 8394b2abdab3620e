#ifndef VORL_ENCRYPTIONTYPE_H
#define VORL_ENCRYPTIONTYPE_H

#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

class CipherWrapper;

/// A level of protection, and the envelope that gives it.
///
/// The named objects are made on first use and kept until the process ends. The policy of VORLLib knows them
/// by identity, so an object that an application makes is allowed nothing.
class VORL_API EncryptionType {
public:
    EncryptionType(const std::string& theName, std::shared_ptr<const CipherWrapper> theWrapper);

    /// "Full": AES-128-CBC with a random IV.
    static std::shared_ptr<const EncryptionType> FULL_CIPHER();
    /// "Test": AES-128-ECB.
    static std::shared_ptr<const EncryptionType> TEST_CIPHER();
    /// "None": the message as it is. Its wrapper is named "Null"; both spellings are in use.
    static std::shared_ptr<const EncryptionType> NULL_CIPHER();

    /// For example "EncryptionType[Full:CipherWrapper[Full:0x02]]".
    std::string toString() const;

    const std::string name;
    const std::shared_ptr<const CipherWrapper> wrapper;
};

}  // namespace vorl

#endif
