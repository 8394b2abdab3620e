#ifndef SOFTTOKEN_TOKEN_H
#define SOFTTOKEN_TOKEN_H

#include <p11-kit/pkcs11.h>

#include <memory>
#include <string>
#include <vector>

namespace tarvik::softtoken {

using Octets = std::vector<unsigned char>;

/// Throws Fault, with the name of the call and its result, unless it succeeded.
void check(CK_RV result, const char* call);

/// The module, started, with the user logged in at the token. The factory, each context and each key share
/// it, so that it ends with the last of them; a later one starts it anew.
class Token {
public:
    /// The one of this process, which is opened where nobody has it.
    static std::shared_ptr<Token> shared();

    ~Token();
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;

    CK_FUNCTION_LIST& calls() const { return *calls_; }
    CK_SLOT_ID slot() const { return slot_; }

private:
    Token();
    void logIn();
    CK_SLOT_ID findSlot() const;

    CK_FUNCTION_LIST* calls_ = nullptr;
    CK_SLOT_ID slot_ = 0;
    // The login lasts for as long as there is a session.
    CK_SESSION_HANDLE session_ = CK_INVALID_HANDLE;
};

/// A session carries one operation at a time, so that each context has one. Used by one thread at a time.
class Session {
public:
    explicit Session(std::shared_ptr<Token> token);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// The AES key whose CKA_ID is `handle`. Throws Fault unless there is exactly one.
    CK_OBJECT_HANDLE keyOf(const Octets& handle) const;
    CK_OBJECT_HANDLE createKey(const Octets& handle, Octets value) const;
    CK_OBJECT_HANDLE generateKey(const Octets& handle) const;
    Octets random(std::size_t size) const;

    /// A whole operation.
    Octets encrypt(CK_MECHANISM mechanism, CK_OBJECT_HANDLE key, Octets data) const;
    Octets decrypt(CK_MECHANISM mechanism, CK_OBJECT_HANDLE key, Octets data) const;

private:
    const std::shared_ptr<Token> token_;
    CK_FUNCTION_LIST& calls_;
    CK_SESSION_HANDLE session_ = CK_INVALID_HANDLE;
};

}  // namespace tarvik::softtoken

#endif
