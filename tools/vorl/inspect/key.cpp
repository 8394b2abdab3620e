#include "inspect/key.h"

#include "inspect/numbers.h"
#include "inspect/openssl_key.h"
#include "inspect/pem_content.h"
#include "shared/SecretBytes.h"

#include <algorithm>
#include <iterator>

namespace vorl::tool {

namespace {

const char PASSWORD[] = "encrypted with a password";
const char NO_PASSWORD[] = "not encrypted";

void inspectPublicKey(const OpenSSLKey& key, Report& report) {
    report.kind = "public-key";
    report.title = "public key";
    if (!key) {
        report.problem = Problem{0, "no public key can be read from this"};
        return;
    }
    addKeyFacts(key.get(), report);
    report.libraryVerdict = libraryVerdictOn(key.get());
    report.unknown = {"whose it is: a public key carries no name",
                      "whether its numbers were made as they should be"};
}

void inspectEncryptedKey(Report& report) {
    report.facts = {{"protection", "protection", PASSWORD}};
    report.unknown = {"anything about the key: that takes the password, which vorl never asks for"};
}

void inspectPlainKey(const OpenSSLKey& key, Secrets secrets, Report& report) {
    if (!key) {
        report.problem = Problem{0, "no private key can be read from this"};
        return;
    }
    report.facts = {{"protection", "protection", NO_PASSWORD}};
    addKeyFacts(key.get(), report);
    addPrivateFacts(key.get(), secrets, report);
    report.libraryVerdict = libraryVerdictOn(key.get());
    report.unknown = {"whether its numbers belong together: 'openssl pkey -check' tells"};
}

void inspectPrivateKey(const bytes& der, bool isEncrypted, Secrets secrets, Report& report) {
    report.kind = "private-key";
    report.title = "private key";
    if (isEncrypted) {
        inspectEncryptedKey(report);
    } else {
        inspectPlainKey(privateKeyInDer(der), secrets, report);
    }
}

}  // namespace

bool isPublicKeyLabel(const std::string& label) {
    return label == "PUBLIC KEY" || label == "RSA PUBLIC KEY";
}

bool isPrivateKeyLabel(const std::string& label) {
    static const char* const LABELS[] = {"PRIVATE KEY", "ENCRYPTED PRIVATE KEY", "RSA PRIVATE KEY",
                                         "EC PRIVATE KEY", "DSA PRIVATE KEY"};
    return std::find(std::begin(LABELS), std::end(LABELS), label) != std::end(LABELS);
}

bool isPublicKeyInDer(const bytes& record) {
    return publicKeyInDer(record) != nullptr;
}

// A newline behind a key does not make it less of a secret.
bool isPrivateKeyInDer(const bytes& record) {
    const SecretBytes key(firstElement(record));
    return isEncryptedInDer(key.get()) || privateKeyInDer(key.get()) != nullptr;
}

void inspectPublicKeyInPem(const bytes& text, Report& report) {
    inspectPublicKey(publicKeyInDer(pemContentIn(text, isPublicKeyLabel).data.get()), report);
}

void inspectPublicKeyInDer(const bytes& record, Report& report) {
    inspectPublicKey(publicKeyInDer(record), report);
}

void inspectPrivateKeyInPem(const bytes& text, Report& report, Secrets secrets) {
    const PemContent content = pemContentIn(text, isPrivateKeyLabel);
    inspectPrivateKey(content.data.get(), content.isEncrypted, secrets, report);
}

void inspectPrivateKeyInDer(const bytes& record, Report& report, Secrets secrets) {
    const SecretBytes key(firstElement(record));
    inspectPrivateKey(key.get(), isEncryptedInDer(key.get()), secrets, report);
    const std::size_t trailing = record.size() - key.get().size();
    if (trailing > 0 && !report.problem) {
        report.problem = Problem{key.get().size(), "the key ends here, but " + moreText(trailing)};
    }
}

}  // namespace vorl::tool
