#include "doctor/checks.h"

#include "inspect/levels.h"
#include "vorl/Buffer.h"
#include "vorl/CipherSpec.h"
#include "vorl/Random.h"
#include "vorl/UInt32.h"
#include "vorl/VORLLib.h"

#include <brisclient/Base64.h>
#include <openssl/crypto.h>
#include <openssl/opensslv.h>
#include <openssl/rand.h>
#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/VorlCryptoFactory.h>

#include <climits>
#include <cstring>
#include <ctime>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;
using tarvik::crypto::VorlCryptoFactory;

namespace {

struct Check {
    const char* name;
    std::string (*run)();
    const char* advice;
};

const char CIPHER_ADVICE[] =
    "if a check above found a fault, begin there; then look at the providers in OpenSSL's configuration "
    "(openssl list -providers; OPENSSL_CONF), and at a device's own ciphers (docs/porting.md)";

const Check CHECKS[] = {
    {"openssl", checkOpenSSL, "install the OpenSSL that vorl was built with, or build vorl anew"},
    {"random", checkRandom,
     "look for a [random] section in OpenSSL's configuration (openssl version -d; OPENSSL_CONF), and at "
     "/dev/urandom"},
    {"start-up", checkStartUp, "the library does not start; the platform's factory may need its device"},
    {"platform", checkPlatform,
     "the platform's factory does not return what was asked for; see docs/porting.md"},
    {"base64", checkBase64, "the platform's Base64 codec is not strict; see docs/porting.md"},
    {"machine", checkMachine, "the library was built for another machine; build it anew"},
    {"round-trip", checkRoundTrips, CIPHER_ADVICE},
    {"known-envelopes", checkKnownEnvelopes, CIPHER_ADVICE},
    {"wrong-key", checkWrongKey, CIPHER_ADVICE},
    {"damage", checkDamage, CIPHER_ADVICE},
};

Finding run(const Check& check) {
    try {
        return {check.name, false, check.run(), ""};
    } catch (const std::exception& fault) {
        return {check.name, true, fault.what(), check.advice};
    }
}

std::string textOf(const bytes& v) {
    return std::string(v.begin(), v.end());
}

bytes bytesOf(const std::string& text) {
    return bytes(text.begin(), text.end());
}

}  // namespace

std::vector<Finding> runChecks() {
    std::vector<Finding> findings;
    for (const Check& check : CHECKS) {
        findings.push_back(run(check));
    }
    return findings;
}

std::string checkOpenSSL() {
    std::string versions =
        std::string("built with ") + OPENSSL_VERSION_TEXT + ", runs with " + OpenSSL_version(OPENSSL_VERSION);
    // The first four bits are the major version.
    const unsigned long built = OPENSSL_VERSION_NUMBER;
    const unsigned long running = OpenSSL_version_num();
    expect(running >> 28 == built >> 28, "another major version: " + versions);
    expect(running >= built, "older than its headers: " + versions);
    return versions;
}

std::string checkRandom() {
    const unsigned int DRAWN_BYTES = 32;
    Random::init_ = RAND_status() == 1;
    expect(Random::init_, "OpenSSL's random generator is not ready");
    const bytes first = Random::next(DRAWN_BYTES);
    expect(first != Random::next(DRAWN_BYTES), "OpenSSL's random generator repeats itself");
    expect(first != bytes(DRAWN_BYTES), "OpenSSL's random generator gives nothing but zeros");
    return "ready, and two draws differ";
}

std::string checkStartUp() {
    VORLLib::init();
    VORLLib::checkInit();
    return "the library starts";
}

std::string checkPlatform() {
    for (const Level& level : levels()) {
        const auto contexts = VorlCryptoFactory::cryptContext(level.spec().spec, bytes(level.spec().keySize));
        expect(contexts.first && contexts.second, "no context for the level " + level.name);
        expect(contexts.first->id() == level.spec().spec,
               "the context for the level " + level.name + " is of another cipher");
    }
    return "a context for each level";
}

std::string checkBase64() {
    // RFC 4648, section 10.
    for (const auto& [data, text] :
         {std::pair("f", "Zg=="), std::pair("fo", "Zm8="), std::pair("foo", "Zm9v"),
          std::pair("foob", "Zm9vYg=="), std::pair("foobar", "Zm9vYmFy")}) {
        expect(textOf(Base64::encode(bytesOf(data))) == text, std::string(data) + " is not written " + text);
        expect(textOf(Base64::decode(bytesOf(text))) == data, std::string(text) + " is not read " + data);
    }
    for (const char* const text :
         {"Zg", "Zg=", "Zg==Zg==", "Zh==", "Zm9=", "=Zm8", "Zm9v\n", " Zm9v", "Zm-_", "Zm9v="}) {
        expect(Base64::decode(bytesOf(text)).empty(), "\"" + std::string(text) + "\" is taken for Base64");
    }
    return "the test vectors hold, and malformed texts are refused";
}

std::string checkMachine() {
    const std::uint32_t number = 0x01020304;
    unsigned char lowest = 0;
    std::memcpy(&lowest, &number, sizeof lowest);
    Buffer out;
    out.put(UInt32(number));
    expect(out.toByteArray() == bytes{1, 2, 3, 4}, "numbers are not written with their high byte first");
    expect(CHAR_BIT == 8 && sizeof(std::time_t) >= 4, "bytes or time stamps have an unknown size");
    return std::to_string(sizeof(void*) * CHAR_BIT) + "-bit words, " + (lowest == 0x04 ? "low" : "high") +
           " byte first; time stamps of " + std::to_string(sizeof(std::time_t) * CHAR_BIT) + " bits" +
           (sizeof(std::time_t) > 4 ? "" : ", which end in January 2038");
}

}  // namespace vorl::tool
