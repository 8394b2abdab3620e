#include "protocol.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace example {

// RFC 2409, section 6.2.
const char GROUP[] = R"(-----BEGIN DH PARAMETERS-----
MIGHAoGBAP//////////yQ/aoiFowjTExmKLgNwc0SkCTgiKZ8x0Agu+pjsTmyJR
Sgh5jjQE3e+VGbPNOkMbMCsKbfJfFDdP4TVtbVHCReSFtXZiXn7G9ExC6aY37WsL
/1y29Aa37e44a/taiZ+lrp8kEXxLH+ZJKGZR7OZTgf//////////AgEC
-----END DH PARAMETERS-----
)";

void startLibrary() {
    vorl::Random::init_ = RAND_status() == 1;
    vorl::VORLLib::init();
    vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::NULL_CIPHER(), false);
    vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::TEST_CIPHER(), false);
}

void refuse(const std::string& reason) {
    throw std::runtime_error(reason);
}

vorl::bytes octetsOf(const std::string& text) {
    return vorl::bytes(text.begin(), text.end());
}

std::string textOf(const vorl::bytes& octets) {
    return std::string(octets.begin(), octets.end());
}

std::vector<std::string> linesOf(const std::string& text, std::size_t count) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    if (lines.size() != count) {
        refuse("a text of " + std::to_string(lines.size()) + " lines, not " + std::to_string(count));
    }
    return lines;
}

vorl::bytes agreementOf(const std::string& session, const std::string& deviceRecord,
                        const std::string& serviceRecord) {
    return octetsOf(session + '\n' + deviceRecord + '\n' + serviceRecord + '\n');
}

vorl::ClientKeys keysOf(const vorl::DiffieHellman& own, const std::string& peerRecord) {
    const Secret secret(own.computeSharedSecret(octetsOf(peerRecord)));
    const vorl::bytes& octets = secret.octets();
    if (std::all_of(octets.begin(), octets.end(), [](unsigned char octet) { return octet == 0; })) {
        refuse("the peer sent a number that fixes the secret");
    }
    return vorl::ClientKeys(octets);
}

std::string receiptFor(const vorl::bytes& message) {
    vorl::Digester digester(vorl::DigestAlgo::SHA256());
    digester.init();
    digester.update(message);
    return "received " + std::to_string(message.size()) + " bytes, SHA-256 " +
           vorl::Util::toHexString(digester.final(), "");
}

vorl::bytes signedReceiptOf(const std::string& session, const std::string& receipt) {
    return octetsOf(session + '\n' + receipt);
}

Secret::~Secret() {
    OPENSSL_cleanse(octets_.data(), octets_.size());
}

tarvik::http::IHttpStream::Fields fieldsOf(const httplib::Headers& headers) {
    return tarvik::http::IHttpStream::Fields(headers.begin(), headers.end());
}

httplib::Headers headersOf(const tarvik::http::IHttpStream::Fields& fields) {
    return httplib::Headers(fields.begin(), fields.end());
}

}  // namespace example
