#include "shared/signature_keys.h"

#include "inspect/certificate.h"
#include "inspect/key.h"
#include "inspect/openssl_key.h"
#include "inspect/pem_content.h"
#include "inspect/pem_text.h"
#include "shared/KeyFile.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>

namespace vorl::tool {

namespace {

// The digest and its name (35 bytes for SHA-1) behind at least 11 bytes of padding (RFC 8017, section 9.2).
const int MIN_MODULUS_BYTES = 46;

[[noreturn]] void refuse(const std::string& what, const std::string& source, const std::string& why,
                         const std::string& hint = "") {
    throw ToolError(ExitStatus::BAD_INPUT, "cannot read the " + what + " from " + source + ": " + why, hint);
}

// Why a key of OpenSSL's neither signs nor verifies; nothing where it does.
std::optional<std::string> faultOf(const EVP_PKEY* key) {
    if (EVP_PKEY_base_id(key) != EVP_PKEY_RSA) {
        return "its algorithm is " + algorithmName(key) + "; signatures take RSA";
    }
    const std::string size = "it has " + std::to_string(EVP_PKEY_bits(key)) + " bits; ";
    if (EVP_PKEY_size(key) < MIN_MODULUS_BYTES) {
        return size + "a signature does not fit into fewer than " + std::to_string(MIN_MODULUS_BYTES * 8 - 7);
    }
    if (EVP_PKEY_bits(key) > OPENSSL_RSA_MAX_MODULUS_BITS) {
        return size + "OpenSSL takes " + std::to_string(OPENSSL_RSA_MAX_MODULUS_BITS) + " at most";
    }
    return std::nullopt;
}

void requireUsable(const OpenSSLPKey& key, const std::string& what, const std::string& source) {
    if (const std::optional<std::string> fault = faultOf(key.getEVP_PKEY())) {
        refuse(what, source, *fault);
    }
}

// A kind of key that is in PEM text, and what the messages about it say.
struct KeyKind {
    std::string what;
    bool (*isLabel)(const std::string& label);
    OpenSSLKey (*inDer)(const bytes& der);
    // Where the text holds something else.
    std::string (*hint)(const std::string& label);
};

std::string privateKeyHint(const std::string& label) {
    return isPublicKeyLabel(label) ? "a public key verifies; the private key of the pair signs" : "";
}

std::string publicKeyHint(const std::string& label) {
    if (isCertificateLabel(label)) {
        return "--cert reads a certificate";
    }
    return isPrivateKeyLabel(label) ? "'openssl pkey -in FILE -pubout' makes the public key of it" : "";
}

const KeyKind PRIVATE_KEY = {"private key", isPrivateKeyLabel, privateKeyInDer, privateKeyHint};
const KeyKind PUBLIC_KEY = {"public key", isPublicKeyLabel, publicKeyInDer, publicKeyHint};

// The library has found no key: the reason that a reader would look for.
[[noreturn]] void explain(const bytes& text, const KeyKind& kind, const std::string& source) {
    const std::vector<PemBlock> blocks = pemBlocksIn(text);
    if (blocks.empty()) {
        refuse(kind.what, source, "it is no PEM text");
    }
    if (std::none_of(blocks.begin(), blocks.end(),
                     [&kind](const PemBlock& block) { return kind.isLabel(block.label); })) {
        const std::string& label = blocks.front().label;
        refuse(kind.what, source, "it is PEM text of another kind: " + label, kind.hint(label));
    }
    const PemContent content = pemContentIn(text, kind.isLabel);
    if (content.isEncrypted) {
        refuse(kind.what, source, "it is encrypted with a password, which vorl does not ask for",
               "--key-fd 3 3< <(openssl pkey -in FILE) decrypts it without a file");
    }
    const OpenSSLKey key = kind.inDer(content.data.get());
    const std::optional<std::string> fault = key ? faultOf(key.get()) : std::nullopt;
    refuse(kind.what, source, fault.value_or("its content is malformed"));
}

template <class Key>
std::shared_ptr<const Key> loadKey(const bytes& text, const KeyKind& kind, const std::string& source) {
    std::shared_ptr<const Key> key;
    try {
        key = Key::loadFromPEMBIO(bioOver(text));
    } catch (const VORLException&) {
        explain(text, kind, source);
    } catch (const OpenSSLException&) {
        explain(text, kind, source);
    }
    requireUsable(*key, kind.what, source);
    return key;
}

}  // namespace

std::shared_ptr<const PrivKey> loadPrivateKey(const KeyFile& file, const std::string& inputPath) {
    if (!file.isGiven()) {
        throw ToolError(ExitStatus::USAGE, "a key is needed",
                        "name its file with -k, or pass it with --key-fd");
    }
    const SecretBytes text = file.content(inputPath);
    return loadKey<PrivKey>(text.get(), PRIVATE_KEY, file.source());
}

std::shared_ptr<const PubKey> loadPublicKey(const std::string& path) {
    const SecretBytes text(readSmallInput(path));
    return loadKey<PubKey>(text.get(), PUBLIC_KEY, inputName(path));
}

std::shared_ptr<const X509Cert> loadCertificate(const std::string& path) {
    const SecretBytes input(readSmallInput(path));
    return certificateFrom(input.get(), path);
}

std::shared_ptr<const X509Cert> certificateFrom(const bytes& input, const std::string& path) {
    const ReadCertificate read = readCertificate(input);
    if (!read.certificate) {
        refuse("certificate", inputName(path), read.fault);
    }
    return read.certificate;
}

std::optional<std::string> keyFault(const X509Cert& certificate) {
    const EVP_PKEY* const key = X509_get0_pubkey(certificate.getX509());
    ERR_clear_error();
    return key != nullptr ? faultOf(key) : "OpenSSL cannot make it out";
}

std::shared_ptr<const PubKey> publicKeyOf(const X509Cert& certificate, const std::string& path) {
    if (const std::optional<std::string> fault = keyFault(certificate)) {
        throw ToolError(ExitStatus::BAD_INPUT,
                        "the key of the certificate in " + inputName(path) + " is of no use: " + *fault);
    }
    return certificate.getPubKey();
}

std::string keyText(const OpenSSLPKey& key) {
    return key.algo()->name + ", " + std::to_string(EVP_PKEY_bits(key.getEVP_PKEY())) + " bits";
}

}  // namespace vorl::tool
