// A cipher context of one's own, as a device with a crypto engine would have it, driven by the library's
// envelope.
//
// This one keeps its key to itself and counts what it is asked for; it borrows the arithmetic from the
// library's software cipher, where a device would talk to its engine.

#include <vorl/vorl.h>

#include <iostream>
#include <string>

namespace {

class CountingContext : public tarvik::crypto::ICipherContext {
public:
    explicit CountingContext(const vorl::bytes& key) : engine_(vorl::CipherSpec::AES_128_CBC_PKCS5(), key) {}

    // What VorlCryptoFactory::cryptContext() was asked for.
    Spec id() override { return SPEC_AES_128_CBC; }
    void encryptInit(const vorl::bytes& iv) override { engine_.encryptInit(iv); }
    void decryptInit(const vorl::bytes& iv) override { engine_.decryptInit(iv); }
    // The library feeds a message in one piece.
    vorl::bytes update(const vorl::bytes& data) override {
        ++pieces_;
        return engine_.update(data);
    }
    vorl::bytes final() override { return engine_.final(); }

    int pieces() const { return pieces_; }

private:
    vorl::SoftwareKeyCipher engine_;
    int pieces_ = 0;
};

}  // namespace

int main() {
    vorl::Random::init_ = true;
    vorl::VORLLib::init();

    const std::string text = "through the device's own engine";
    CountingContext context(vorl::Random::next(16));
    const vorl::bytes envelope =
        vorl::CipherWrapper::FULL_CIPHER()->encrypt(vorl::bytes(text.begin(), text.end()), context);
    const vorl::bytes message = vorl::CipherWrapper::decrypt(envelope, context);

    std::cout << vorl::Util::hexAsciiDump(envelope, 16, " ");
    std::cout << std::string(message.begin(), message.end()) << ", in " << context.pieces() << " pieces\n";
    vorl::VORLLib::cleanup();
    return std::string(message.begin(), message.end()) == text && context.pieces() == 2 ? 0 : 1;
}
