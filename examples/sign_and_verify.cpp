// A service signs, a device verifies with the public key it was made with.
//
//     sign_and_verify PRIVATE.pem PUBLIC.pem

#include <vorl/vorl.h>

#include <iostream>
#include <string>

namespace {

bool isRefused(const vorl::bytes& record, const std::shared_ptr<const vorl::PubKey>& key,
               const vorl::bytes& data) {
    return !vorl::PKSignatureProcessor::verify(vorl::PKSignature::decode(record), key, data);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: sign_and_verify PRIVATE.pem PUBLIC.pem\n";
        return 2;
    }
    const std::string text = "firmware 1.2, build 7";
    const vorl::bytes data(text.begin(), text.end());

    try {
        // The service: a record to send with the data.
        const auto privateKey = vorl::PrivKey::loadFromPEMFile(argv[1]);
        const vorl::bytes record = vorl::PKSignatureProcessor::sign(privateKey, data)->encode();

        // The device: false for any signature that does not match, an exception for what is no record at all.
        const auto publicKey = vorl::PubKey::loadFromPEMFile(argv[2]);
        if (isRefused(record, publicKey, data)) {
            std::cout << "does not match\n";
            return 1;
        }
        std::cout << "matches: " << vorl::PKSignature::decode(record)->toString() << '\n';

        vorl::bytes tampered = data;
        tampered.back() ^= 1;
        if (!isRefused(record, publicKey, tampered)) {
            return 1;
        }
        std::cout << "and refuses other data\n";
        return 0;
    } catch (const std::runtime_error& e) {
        std::cerr << "refused: " << e.what() << '\n';
        return 1;
    }
}
