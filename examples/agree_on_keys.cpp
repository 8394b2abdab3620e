// Two parties that share nothing but a group agree on keys, and exchange a message under them.
//
// The service and the device run in one process here, so that the program is a whole; in the field, only the
// two texts travel, and something proves who sent them: see docs/security.md.

#include <vorl/vorl.h>

#include <openssl/crypto.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace {

// The group of RFC 2409, section 6.2. The service chooses one for all of its devices.
const char GROUP[] = R"(-----BEGIN DH PARAMETERS-----
MIGHAoGBAP//////////yQ/aoiFowjTExmKLgNwc0SkCTgiKZ8x0Agu+pjsTmyJR
Sgh5jjQE3e+VGbPNOkMbMCsKbfJfFDdP4TVtbVHCReSFtXZiXn7G9ExC6aY37WsL
/1y29Aa37e44a/taiZ+lrp8kEXxLH+ZJKGZR7OZTgf//////////AgEC
-----END DH PARAMETERS-----
)";

// A peer who sends a number such as 0 or 1 fixes the secret at zero bytes, which anybody knows.
bool isFixed(const vorl::bytes& secret) {
    return std::all_of(secret.begin(), secret.end(), [](unsigned char octet) { return octet == 0; });
}

// In a time that does not tell how much of a forged code was right. An empty code is that of no message.
bool isSame(const vorl::bytes& a, const vorl::bytes& b) {
    return !a.empty() && a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace

int main() {
    vorl::Random::init_ = true;
    vorl::VORLLib::init();

    const vorl::DiffieHellmanParams group{std::string(GROUP)};
    const auto device = vorl::DiffieHellman::generate(group);
    const auto service = vorl::DiffieHellman::generate(group);
    const vorl::bytes fromDevice = device->getPubKey();
    const vorl::bytes fromService = service->getPubKey();

    const vorl::bytes secret = device->computeSharedSecret(fromService);
    if (isFixed(secret)) {
        std::cerr << "the service sent a number that fixes the secret\n";
        return 1;
    }
    const vorl::ClientKeys deviceKeys(secret);
    const vorl::ClientKeys serviceKeys(service->computeSharedSecret(fromDevice));

    const std::string message = "hello";
    vorl::VorlContext deviceContext(deviceKeys.encryptionKey());
    vorl::VorlContext serviceContext(serviceKeys.encryptionKey());
    const vorl::bytes text = deviceContext.encrypt(vorl::bytes(message.begin(), message.end()));
    const vorl::bytes opened = serviceContext.decrypt(text);
    std::cout << "the service reads: " << std::string(opened.begin(), opened.end()) << '\n';

    // Encryption hides the message; the code, made with the other key, shows that it was not changed.
    const vorl::bytes sent = vorl::HMAC(deviceKeys.hmacKey()).hmac(text);
    const bool isGenuine = isSame(sent, vorl::HMAC(serviceKeys.hmacKey()).hmac(text));
    std::cout << (isGenuine ? "and its code is right\n" : "but its code is wrong\n");

    vorl::VORLLib::cleanup();
    return isGenuine ? 0 : 1;
}
