// PubKey and PrivKey from any PEM text, or from any bytes within the armour that the first of them names.
// Only the library's exceptions, also from what is done with the key; and nobody is ever asked for a
// password.

#include "attempt.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/ui.h>

#include <brisclient/Base64.h>

#include <unistd.h>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>

namespace vorl::fuzz {

namespace {

using Tarvik::BrisClient::Base64;

// '0' to '5' in the seeds; the text itself for the first.
const char* const ARMOURS[] = {
    "", "PUBLIC KEY", "RSA PUBLIC KEY", "PRIVATE KEY", "RSA PRIVATE KEY", "ENCRYPTED PRIVATE KEY",
};

// Larger ones take their time and no other way.
const int MAX_ARITHMETIC_BITS = 2048;

const bytes DATA{'d', 'a', 't', 'a'};

std::string pemFrom(const std::string& armour, const bytes& content) {
    if (armour.empty()) {
        return std::string(content.begin(), content.end());
    }
    const bytes text = Base64::encode(content);
    std::string pem = "-----BEGIN " + armour + "-----\n";
    for (std::size_t at = 0; at < text.size(); at += 64) {
        pem += std::string(text.begin(), text.end()).substr(at, 64) + "\n";
    }
    return pem + "-----END " + armour + "-----\n";
}

// Whatever asks does it through OpenSSL's user interface, which tries the terminal and then standard input.
int nobodyIsAsked(UI* /*ui*/) {
    std::fputs("does not hold: nobody is asked for a password\n", stderr);
    std::abort();
}

bool watchForQuestions() {
    UI_METHOD* const nobody = UI_create_method("nobody");
    UI_method_set_opener(nobody, nobodyIsAsked);
    UI_set_default_method(nobody);

    std::FILE* const input = std::tmpfile();
    return input != nullptr && std::fputs("password\n", input) >= 0 && std::fflush(input) == 0 &&
           dup2(fileno(input), STDIN_FILENO) == STDIN_FILENO && lseek(STDIN_FILENO, 0, SEEK_SET) == 0;
}

template <typename Key>
std::shared_ptr<Key> readKey(const std::string& pem, const std::string& text) {
    std::shared_ptr<Key> key;
    const bool read = attempt([&] { key = Key::loadFromPEMStr(pem); });
    require(lseek(STDIN_FILENO, 0, SEEK_CUR) == 0, "standard input is not read");
    if (!read) {
        return nullptr;
    }
    const bool used = attempt([&] {
        require(key->toString() == text, "a key has a text");
        Key copy(*key);
        require(copy == *key, "a copy is equal");
        copy = Key(key->getEVP_PKEY());
        require(copy == *key, "what was assigned is equal");
    });
    require(used, "what was read can be copied");
    attempt([&] { require(!OpenSSLPKey::print(key->getEVP_PKEY(), 4).empty(), "a key can be printed"); });
    return key;
}

bool isSmall(const OpenSSLPKey& key) {
    return EVP_PKEY_bits(key.getEVP_PKEY()) <= MAX_ARITHMETIC_BITS;
}

// Nothing is required of the result: the numbers of the key may be anything.
void useBoth(const std::shared_ptr<PubKey>& pubKey, const std::shared_ptr<PrivKey>& privKey) {
    std::shared_ptr<const PKSignature> signature =
        PKSignature::decode(bytes{0x01, 0x04, 0x01, 0x02, 0x03, 0x04});
    if (privKey && isSmall(*privKey)) {
        attempt([&] { signature = PKSignatureProcessor::sign(privKey, DATA); });
    }
    if (pubKey && isSmall(*pubKey)) {
        attempt([&] { PKSignatureProcessor::verify(signature, pubKey, DATA); });
    }
    if (pubKey && privKey) {
        attempt([&] { require(*pubKey == *privKey, "both halves of one text are equal"); });
    }
}

}  // namespace

void readAnything(const std::string& armour, const bytes& content) {
    static const bool watched = watchForQuestions();
    require(watched, "standard input can be watched");

    const std::string pem = pemFrom(armour, content);
    const auto pubKey = readKey<PubKey>(pem, "Public-Key (RSA)");
    const auto privKey = readKey<PrivKey>(pem, "Private-Key (RSA)");
    useBoth(pubKey, privKey);
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        const std::size_t armour = data[0] % std::size(vorl::fuzz::ARMOURS);
        vorl::fuzz::readAnything(vorl::fuzz::ARMOURS[armour], vorl::bytes(data + 1, data + size));
    }
    return 0;
}
