#ifndef VORL_TESTS_TOOL_REFERENCE_VECTORS_H
#define VORL_TESTS_TOOL_REFERENCE_VECTORS_H

#include "json_fields.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_digest.h"
#include "vorl/ASN1Exception.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>

namespace vorl::test {

// What the tests of the files share that `vorl vectors` wrote on an x86-64 machine.

/// Calls `use` with one of these files, beyond what they all begin with.
template <typename Use>
void inReferenceFile(const std::string& name, Use&& use) {
    inJsonFile(std::string(VORL_REFERENCE_VECTORS) + "/" + name, [&](JsonFields& file) {
        EXPECT_EQ(file.text("about"),
                  "Samples for testing other implementations. Whatever is called a key, a secret or a "
                  "private number here is known to everybody and protects nothing.");
        EXPECT_EQ(file.text("messages"), "Byte i of a message of N bytes is i mod 251.");
        use(file);
    });
}

inline bytes sampleMessage(std::size_t size) {
    bytes message(size);
    for (std::size_t i = 0; i < size; ++i) {
        message[i] = static_cast<unsigned char>(i % 251);
    }
    return message;
}

/// Up to 16 blocks of SHA-256, one for each number behind the label.
inline bytes sampleBytes(const std::string& label, std::size_t size) {
    bytes all;
    for (unsigned char n = 0; all.size() < size; ++n) {
        all = all + rawDigest(EVP_sha256(), fromText(label) + bytes{0, 0, 0, n});
    }
    return slice(all, 0, size);
}

/// Expects a member to be these bytes, or where it is missing, `nameSha256` to be their digest.
inline void expectOctets(JsonFields& fields, const std::string& name, const bytes& expected) {
    if (fields.has(name)) {
        EXPECT_EQ(fields.octets(name), expected) << fields.place();
    } else {
        EXPECT_EQ(fields.octets(name + "Sha256"), rawDigest(EVP_sha256(), expected)) << fields.place();
    }
}

/// The same for a text as it is.
inline void expectText(JsonFields& fields, const std::string& name, const bytes& expected) {
    if (fields.has(name)) {
        EXPECT_EQ(fields.text(name), toText(expected)) << fields.place();
    } else {
        EXPECT_EQ(fields.octets(name + "Sha256"), rawDigest(EVP_sha256(), expected)) << fields.place();
    }
}

/// The class of an exception, and its text.
struct Refusal {
    std::string exception;
    std::string text;
};

template <typename Action>
std::string messageOfNamed(const std::string& exception, Action&& action) {
    if (exception == "ASN1Exception") {
        return messageOf<ASN1Exception>(action);
    }
    if (exception == "OpenSSLException") {
        return messageOf<OpenSSLException>(action);
    }
    return messageOf<VORLException>(action);
}

/// Expects both the file and the library to refuse `action` in these words.
template <typename Action>
void expectRefusal(JsonFields& fields, const Refusal& expected, Action&& action) {
    fields.in("refusal", [&](JsonFields& refusal) {
        EXPECT_EQ(refusal.text("exception"), expected.exception) << fields.place();
        EXPECT_EQ(refusal.text("text"), expected.text) << fields.place();
        EXPECT_EQ(messageOfNamed(expected.exception, action), expected.text) << fields.place();
    });
}

}  // namespace vorl::test

#endif
