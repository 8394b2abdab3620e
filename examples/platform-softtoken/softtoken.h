#ifndef TARVIK_SOFTTOKEN_H
#define TARVIK_SOFTTOKEN_H

#include <tarvik/export.h>

#include <memory>
#include <stdexcept>
#include <vector>

// What an application has to know of this platform: how it comes to keys, and what is thrown.
//
// Keys live on a PKCS #11 token and never leave it. Where the library takes key bytes, it is given the
// identifier (CKA_ID) of a key instead: that of a Key below, or that of a key which was put on the token for
// good. Which token it is stands in the environment:
//
//   SOFTTOKEN_PIN_FILE   the file that holds the user's PIN, one line
//   SOFTTOKEN_LABEL      the label of the token; "vorl" by default
//   SOFTTOKEN_MODULE     the PKCS #11 module; SoftHSM's by default
//
// It is in the namespace tarvik, since libvorl shows nothing of a platform outside of it.

namespace tarvik::softtoken {

/// What the token refuses, by the call that failed or in words. All that this platform throws, but for
/// memory.
class TARVIK_API Fault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Session;

/// An AES-128 key that is on the token for as long as this object or a copy of it lives. May be made by any
/// thread, before VORLLib::init() too.
class TARVIK_API Key {
public:
    /// Puts a key of known value on the token. The token takes a copy; wiping `value` is the caller's.
    static Key import(const std::vector<unsigned char>& value);
    /// Has the token make up a key that nobody ever sees.
    static Key generate();

    /// What VorlContext takes for the key: 16 bytes that say nothing about it.
    const std::vector<unsigned char>& handle() const { return handle_; }

private:
    Key(std::shared_ptr<Session> session, std::vector<unsigned char> handle);

    // The key is an object of this session, and ends with it.
    std::shared_ptr<Session> session_;
    std::vector<unsigned char> handle_;
};

}  // namespace tarvik::softtoken

#endif
