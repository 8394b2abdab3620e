#ifndef VORL_TESTKIT_SUBJECT_H
#define VORL_TESTKIT_SUBJECT_H

#include "vorl/testkit/Conformance.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vorl::testkit {

/// A cipher with a key and padding, by its number.
struct Mode {
    tarvik::crypto::ICipherContext::Spec spec;
    const char* name;
    bool hasIv;
};

inline constexpr Mode AES_MODES[] = {
    {tarvik::crypto::ICipherContext::SPEC_AES_128_ECB, "AES-128-ECB", false},
    {tarvik::crypto::ICipherContext::SPEC_AES_128_CBC, "AES-128-CBC", true},
};

inline constexpr std::size_t BLOCK_BYTES = 16;

/// The names of two keys, which the platform holds or is given.
enum KeyName { FIRST_KEY, SECOND_KEY };

enum class Direction { ENCRYPT, DECRYPT };

/// A platform that has been started, and its keys.
class Subject {
public:
    /// Starts it. Throws Failure where that fails, or where the platform is described without keys.
    explicit Subject(const Platform& platform);

    /// Throws LeftOut where the platform has only keys of its own.
    void needsKnownKeys() const;

    /// As cryptContext() takes them.
    const bytes& key(KeyName name) const { return keys_[name]; }
    bytes provisioned(const bytes& value) const;
    /// What is known of a key's value.
    std::optional<bytes> valueOf(KeyName name) const;

    std::shared_ptr<tarvik::crypto::ICipherContext> context(const Mode& mode, KeyName name = FIRST_KEY) const;
    std::shared_ptr<tarvik::crypto::ICipherContext> contextFor(const Mode& mode, const bytes& key) const;

    /// What a right platform makes of `plain`: by OpenSSL where the key's value is known, otherwise by a
    /// context of the platform's that was made for this alone.
    bytes sealed(const Mode& mode, KeyName name, const bytes& iv, const bytes& plain) const;

    /// Throws Failure where `ciphertext` is not what sealed() answers or, where nobody knows that, has a
    /// wrong size, does not open, or is not of the mode.
    void expectSealed(const std::string& subject, const Mode& mode, KeyName name, const bytes& iv,
                      const bytes& plain, const bytes& ciphertext) const;

    /// Throws Failure where `ciphertext`, of AES-128-CBC, is not what the platform's own AES-128-ECB makes of
    /// the same blocks. No key needs to be known for that.
    void expectChained(const std::string& subject, KeyName name, const bytes& iv, const bytes& plain,
                       const bytes& ciphertext) const;

private:
    const Platform& platform_;
    std::vector<bytes> keys_;
};

/// `n` octets in which neighbours, and the same places of neighbouring blocks, differ.
bytes octets(std::size_t n);

/// Throws Failure where `ciphertext`, of AES-128-ECB, has different blocks for equal ones of the padded
/// `plain`, or equal ones for different ones.
void expectCodebook(const std::string& subject, const bytes& plain, const bytes& ciphertext);

/// One of 256 IVs; none for a mode without.
bytes ivOf(const Mode& mode, unsigned char first);

/// AES-128 by OpenSSL, padded.
bytes rawSealed(const Mode& mode, const bytes& key, const bytes& iv, const bytes& plain);

void init(tarvik::crypto::ICipherContext& context, Direction direction, const bytes& iv);

/// One update with all of `data` and one final: their outputs put together.
bytes finish(tarvik::crypto::ICipherContext& context, const bytes& data);

/// A whole operation.
bytes operate(tarvik::crypto::ICipherContext& context, Direction direction, const bytes& iv,
              const bytes& data);

/// "AES-128-CBC: decrypting 17 bytes".
std::string operation(const Mode& mode, Direction direction, std::size_t size);

}  // namespace vorl::testkit

#endif
