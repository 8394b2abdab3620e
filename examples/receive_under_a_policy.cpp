// A receiver that takes fully encrypted messages only, and tells apart what may go wrong with one.
//
// After VORLLib::init() all three levels are allowed; a device in the field narrows that at once.

#include <vorl/vorl.h>

#include <iostream>
#include <string>

namespace {

vorl::bytes fromText(const std::string& text) {
    return vorl::bytes(text.begin(), text.end());
}

// Nothing of why a message does not open goes back to its sender: the difference between a wrong key and
// damaged padding would let them decrypt messages of others, one question at a time.
bool receive(vorl::VorlContext& context, const vorl::bytes& text) {
    try {
        const vorl::bytes message = context.decrypt(text);
        std::cout << "received " << message.size() << " bytes\n";
        return true;
    } catch (const vorl::VORLException& e) {
        std::cout << "refused: " << e.what() << '\n';
    } catch (const vorl::OpenSSLException& e) {
        std::cout << "does not open: " << e.what() << '\n';
    }
    return false;
}

}  // namespace

int main() {
    vorl::Random::init_ = true;
    vorl::VORLLib::init();
    const vorl::bytes key = vorl::Random::next(16);
    vorl::VorlContext full(key);

    vorl::VORLLib::type_ = vorl::EncryptionType::NULL_CIPHER();
    vorl::VorlContext plain(key);
    vorl::VORLLib::type_ = vorl::EncryptionType::FULL_CIPHER();

    vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::NULL_CIPHER(), false);
    vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::TEST_CIPHER(), false);

    const bool fullTaken = receive(full, full.encrypt(fromText("for your eyes only")));
    const bool plainTaken = receive(full, plain.encrypt(fromText("for everybody's eyes")));
    const bool junkTaken = receive(full, fromText("no message at all"));

    vorl::VORLLib::cleanup();
    return fullTaken && !plainTaken && !junkTaken ? 0 : 1;
}
