#ifndef VORL_VORLLIB_H
#define VORL_VORLLIB_H

#include "vorl/export.h"

#include <memory>

namespace vorl {

class CipherWrapper;
class EncryptionType;

/// The library's start-up and shutdown, and the policy of encryption types.
///
/// The policy says which types a received message may use; what a VorlContext sends is type_. All of it is
/// process-wide and unsynchronised: it is set while no other thread encrypts or decrypts.
class VORL_API VORLLib {
public:
    VORLLib() = delete;

    /// Allows all three types, makes the platform's crypto factory and the registry of envelopes ready, and
    /// makes Full the current type. Calling it again does the same again: a type that was forbidden is
    /// allowed. Throws OpenSSLException where OpenSSL does not start, and whatever the factory throws.
    static void init();
    /// Empties the registry and cleans up the factory. The policy and the current type stay as they are.
    static void cleanup();
    /// Throws VORLException before init() and after cleanup().
    static void checkInit();

    /// Whether received messages may use `type`: false for any but the three named types.
    /// Throws VORLException before init() and after cleanup().
    static bool isAllowedEncryptionType(const std::shared_ptr<const EncryptionType>& type);
    /// Throws VORLException before init(), after cleanup() and for any but the three named types. `type` must
    /// not be null.
    static void setAllowedEncryptionType(const std::shared_ptr<const EncryptionType>& type, bool allowed);
    /// Whether received messages may use the envelope `wrapper`.
    /// Throws VORLException before init() and after cleanup().
    static bool isAllowedCipherWrapper(const std::shared_ptr<const CipherWrapper>& wrapper);

    /// What contexts made from now on send. Empty until init().
    static std::shared_ptr<const EncryptionType> type_;

private:
    static bool init_;
};

}  // namespace vorl

#endif
