// consumer PRIVATE.pem PUBLIC.pem: what a program does with the library, once each. Exits with 0 when all of
// it went well.

#include <vorl/vorl.h>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

// The group of RFC 2409, section 6.2.
const char GROUP[] = R"(-----BEGIN DH PARAMETERS-----
MIGHAoGBAP//////////yQ/aoiFowjTExmKLgNwc0SkCTgiKZ8x0Agu+pjsTmyJR
Sgh5jjQE3e+VGbPNOkMbMCsKbfJfFDdP4TVtbVHCReSFtXZiXn7G9ExC6aY37WsL
/1y29Aa37e44a/taiZ+lrp8kEXxLH+ZJKGZR7OZTgf//////////AgEC
-----END DH PARAMETERS-----
)";

void require(bool holds, const char* what) {
    if (!holds) {
        throw std::logic_error(what);
    }
}

vorl::bytes agreeOnKey() {
    const vorl::DiffieHellmanParams group{std::string(GROUP)};
    const auto device = vorl::DiffieHellman::generate(group);
    const auto service = vorl::DiffieHellman::generate(group);
    const vorl::ClientKeys deviceKeys(device->computeSharedSecret(service->getPubKey()));
    const vorl::ClientKeys serviceKeys(service->computeSharedSecret(device->getPubKey()));
    require(deviceKeys == serviceKeys, "both sides have the same keys");
    return deviceKeys.encryptionKey();
}

void exchangeMessage(const vorl::bytes& key) {
    const vorl::bytes message{'h', 'e', 'l', 'l', 'o'};
    const vorl::bytes text = vorl::VorlContext(key).encrypt(message);
    vorl::VorlContext receiver(key);
    require(receiver.decrypt(text) == message, "a message is opened");

    // An exception of the library is caught as what it is, and as its base, on this side of a shared object
    // too.
    bool isRefused = false;
    try {
        receiver.decrypt({'A', 'g', '=', '='});
    } catch (const vorl::ASN1Exception& e) {
        isRefused =
            dynamic_cast<const vorl::VORLException*>(static_cast<const std::exception*>(&e)) != nullptr;
    }
    require(isRefused, "an envelope that ends after its version is refused");
}

void signAndVerify(const std::string& privateFile, const std::string& publicFile) {
    const vorl::bytes data{1, 2, 3};
    const auto record =
        vorl::PKSignatureProcessor::sign(vorl::PrivKey::loadFromPEMFile(privateFile), data)->encode();
    const auto key = vorl::PubKey::loadFromPEMFile(publicFile);
    require(vorl::PKSignatureProcessor::verify(vorl::PKSignature::decode(record), key, data),
            "a signature matches");
    require(!vorl::PKSignatureProcessor::verify(vorl::PKSignature::decode(record), key, {1, 2, 4}),
            "a signature of other data does not");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: consumer PRIVATE.pem PUBLIC.pem\n";
        return 2;
    }
    try {
        vorl::Random::init_ = true;
        vorl::VORLLib::init();
        exchangeMessage(agreeOnKey());
        signAndVerify(argv[1], argv[2]);
        vorl::VORLLib::cleanup();
        std::cout << "all went well\n";
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "failed: " << e.what() << '\n';
        return 1;
    }
}
