// A device that agrees keys with its service, sends it a file in protected messages and checks each receipt.
//
//     device URL CERT.pem FILE [FOLDER]
//
// The certificate is the service's; whoever else answers is refused. What went over the wire is kept in
// FOLDER, a file for each record, for "vorl inspect" to show.

#include "protocol.h"

#include <brisclient/Base64.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

using namespace example;
using tarvik::http::HttpResponse;
using Request = tarvik::http::IHttpStream::Request;

const std::size_t PIECE_BYTES = 8000;

void refuse(const std::string& reason) {
    throw std::runtime_error(reason);
}

// The HTTP client of the device: knows nothing of keys.
class Wire {
public:
    Wire(const std::string& url, std::string folder) : url_(url), client_(url), folder_(std::move(folder)) {
        client_.set_keep_alive(true);
    }

    Request request(const std::string& path, const std::string& body) const {
        return {"POST", url_ + path, {{"Content-Type", CONTENT_TYPE}}, octetsOf(body + '\n')};
    }

    HttpResponse send(const Request& request) {
        const std::string path = request.targetUri.substr(url_.size());
        httplib::Headers headers = headersOf(request.fields);
        headers.erase("Content-Type");  // which the client adds itself
        const httplib::Result result = client_.Post(path, headers, textOf(request.body), CONTENT_TYPE);
        if (!result) {
            refuse("no answer: " + httplib::to_string(result.error()));
        }
        if (result->status != 200) {
            refuse("the service refuses: status " + std::to_string(result->status));
        }
        HttpResponse response;
        response.statusCode = static_cast<unsigned int>(result->status);
        response.headerFields = fieldsOf(result->headers);
        response.content = octetsOf(result->body);
        response.answered = request;
        return response;
    }

    void keep(const std::string& name, const std::string& record) const {
        if (!folder_.empty()) {
            std::ofstream(folder_ + "/" + name) << record << '\n';
        }
    }

private:
    std::string url_;
    httplib::Client client_;
    std::string folder_;
};

class Device {
public:
    Device(Wire& wire, const std::string& certificate)
        : wire_(wire), certificate_(vorl::X509Cert::loadFromPEMFile(certificate)) {}

    void agree() {
        const auto own = vorl::DiffieHellman::generate(vorl::DiffieHellmanParams{std::string(GROUP)});
        const std::string ours = textOf(own->getPubKey());
        wire_.keep("1-device.dh", ours);
        const HttpResponse response = wire_.send(wire_.request(AGREE, ours));
        const std::vector<std::string> lines = linesOf(textOf(response.body()), 3);
        wire_.keep("2-service.dh", lines[1]);
        wire_.keep("3-agreement.sig", lines[2]);
        // The secret would be as good with anybody; the signature says with whom.
        if (!isSigned(agreementOf(lines[0], ours, lines[1]), lines[2])) {
            refuse("the agreement is not signed by the service");
        }
        session_ = lines[0];
        context_ = std::make_unique<vorl::VorlContext>(keysOf(*own, lines[1]).encryptionKey());
        std::cout << "agreed on keys, session " << session_ << std::endl;
    }

    void send(const vorl::bytes& message) {
        const std::string text = textOf(context_->encrypt(message));
        wire_.keep("4-message", text);
        Request request = wire_.request(MESSAGES, text);
        context_->sign(session_, request);
        HttpResponse response = wire_.send(request);
        if (!context_->verify(session_, response)) {
            refuse("the signature of the response does not hold");
        }
        const std::vector<std::string> lines = linesOf(textOf(response.body()), 2);
        wire_.keep("5-receipt", lines[0]);
        wire_.keep("6-receipt.sig", lines[1]);
        const std::string receipt = textOf(context_->decrypt(octetsOf(lines[0])));
        if (!isSigned(octetsOf(receipt), lines[1])) {
            refuse("the receipt is not signed by the service");
        }
        if (receipt != receiptFor(message)) {
            refuse("the receipt is for another message");
        }
        std::cout << "receipt: " << receipt << std::endl;
    }

private:
    bool isSigned(const vorl::bytes& data, const std::string& signature) const {
        const auto record =
            vorl::PKSignature::decode(Tarvik::BrisClient::Base64::decode(octetsOf(signature)));
        return vorl::PKSignatureProcessor::verify(record, certificate_->getPubKey(), data);
    }

    Wire& wire_;
    std::shared_ptr<const vorl::X509Cert> certificate_;
    std::string session_;
    std::unique_ptr<vorl::VorlContext> context_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 && argc != 5) {
        std::cerr << "usage: device URL CERT.pem FILE [FOLDER]\n";
        return 2;
    }
    try {
        vorl::Random::init_ = true;
        vorl::VORLLib::init();
        vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::NULL_CIPHER(), false);
        vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::TEST_CIPHER(), false);

        const vorl::bytes file = vorl::Util::load(argv[3]);
        Wire wire(argv[1], argc == 5 ? argv[4] : "");
        Device device(wire, argv[2]);
        device.agree();
        for (std::size_t at = 0; at < file.size(); at += PIECE_BYTES) {
            const std::size_t size = std::min(PIECE_BYTES, file.size() - at);
            const auto piece = file.begin() + static_cast<std::ptrdiff_t>(at);
            device.send(vorl::bytes(piece, piece + static_cast<std::ptrdiff_t>(size)));
        }
        return 0;
    } catch (const std::exception& fault) {
        std::cerr << "device: " << fault.what() << '\n';
        return 1;
    }
}
