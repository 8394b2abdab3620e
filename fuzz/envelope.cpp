// CipherWrapper::decrypt() on any bytes: only the library's exceptions, and the same outcome whether the
// library takes its short cut for the cipher of its own or drives a context through the platform's interface.

#include "require.h"

#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/NullCipher.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Random.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vorl::fuzz {

namespace {

using tarvik::crypto::ICipherContext;

const bytes KEY(16, 0x4b);

// Not exactly a SoftwareKeyCipher, so that the library does not know it.
class ForeignCipher : public SoftwareKeyCipher {
    using SoftwareKeyCipher::SoftwareKeyCipher;
};

template <typename C>
std::unique_ptr<ICipherContext> contextFor(unsigned char version) {
    switch (version) {
        case 0x00:
            return std::make_unique<NullCipher>();
        case 0x01:
            return std::make_unique<C>(CipherSpec::AES_128_ECB_PKCS5(), KEY);
        default:
            return std::make_unique<C>(CipherSpec::AES_128_CBC_PKCS5(), KEY);
    }
}

// The message, or the text of the failure. Any other exception ends the run.
std::string outcome(const bytes& envelope, ICipherContext& ctx) {
    try {
        const bytes message = CipherWrapper::decrypt(envelope, ctx);
        require(message.size() < envelope.size(), "a message is shorter than its envelope");
        return "opened: " + std::string(message.begin(), message.end());
    } catch (const VORLException& e) {
        return std::string("refused: ") + e.what();
    } catch (const OpenSSLException& e) {
        return std::string("OpenSSL: ") + e.what();
    }
}

bool start() {
    Random::init_ = true;
    VORLLib::init();
    return true;
}

}  // namespace

void openBothWays(const bytes& envelope) {
    static const bool started = start();
    require(started, "the library starts");

    const unsigned char version = envelope.empty() ? 0xff : envelope[0];
    require(outcome(envelope, *contextFor<SoftwareKeyCipher>(version)) ==
                outcome(envelope, *contextFor<ForeignCipher>(version)),
            "the short cut changes nothing");
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::openBothWays(vorl::bytes(data, data + size));
    return 0;
}
