#include "DeviceSession.h"

#include <brisclient/Base64.h>

#include <chrono>

namespace example {

using tarvik::http::HttpResponse;

const std::size_t MOST_ANSWER_BYTES = 65536;
const std::chrono::seconds MOST_TIME_OF_AN_ANSWER(30);

DeviceSession::DeviceSession(std::string url, const std::string& certificate, Keep keep)
    : url_(std::move(url)),
      client_(url_, MOST_ANSWER_BYTES, MOST_TIME_OF_AN_ANSWER),
      certificate_(vorl::X509Cert::loadFromPEMFile(certificate)),
      keep_(keep ? std::move(keep) : [](const std::string&, const std::string&) {}) {
    client_.set_keep_alive(true);
    client_.set_tcp_nodelay(true);  // head and body of a request are sent one after the other
    client_.set_decompress(false);  // what was signed is what comes over the wire
    client_.set_url_encode(false);
    client_.set_connection_timeout(std::chrono::seconds(5));
}

std::string DeviceSession::agree() {
    const auto own = vorl::DiffieHellman::generate(vorl::DiffieHellmanParams{std::string(GROUP)});
    const std::string ours = textOf(own->getPubKey());
    keep_("1-device.dh", ours);
    const HttpResponse response = exchange(requestFor(AGREE, ours));
    const std::vector<std::string> lines = linesOf(textOf(response.body()), 3);
    keep_("2-service.dh", lines[1]);
    keep_("3-agreement.sig", lines[2]);
    // The secret would be as good with anybody; the signature says with whom.
    if (!isSigned(agreementOf(lines[0], ours, lines[1]), lines[2])) {
        refuse("the agreement is not signed by the service");
    }
    session_ = lines[0];
    context_ = std::make_unique<vorl::VorlContext>(keysOf(*own, lines[1]).encryptionKey());
    return session_;
}

std::string DeviceSession::send(const vorl::bytes& message) {
    const std::string text = textOf(context_->encrypt(message));
    keep_("4-message", text);
    Request request = requestFor(MESSAGES, text);
    context_->sign(session_, request);
    HttpResponse response = exchange(request);
    // Before anything in it is looked at: until then, it may come from anybody.
    if (!context_->verify(session_, response)) {
        refuse("the signature of the response does not hold");
    }
    const std::vector<std::string> lines = linesOf(textOf(response.body()), 2);
    keep_("5-receipt", lines[0]);
    keep_("6-receipt.sig", lines[1]);
    std::string receipt = textOf(context_->decrypt(octetsOf(lines[0])));
    if (!isSigned(signedReceiptOf(session_, receipt), lines[1])) {
        refuse("the receipt is not signed by the service");
    }
    if (receipt != receiptFor(message)) {
        refuse("the receipt is for another message");
    }
    return receipt;
}

DeviceSession::Request DeviceSession::requestFor(const std::string& path, const std::string& line) const {
    return {"POST", url_ + path, {{"Content-Type", CONTENT_TYPE}}, octetsOf(line + '\n')};
}

HttpResponse DeviceSession::exchange(const Request& request) {
    HttpResponse response;
    httplib::Request wire;
    wire.method = request.method;
    wire.path = request.targetUri.substr(url_.size());
    wire.headers = headersOf(request.fields);
    wire.body = textOf(request.body);
    wire.content_receiver = [&](const char* data, std::size_t size, std::uint64_t, std::uint64_t) {
        response.content.insert(response.content.end(), data, data + size);
        return true;
    };
    const httplib::Result result = client_.send(wire);
    if (!result) {
        refuse("no answer: " + httplib::to_string(result.error()));
    }
    if (result->status != 200) {
        refuse("the service refuses: status " + std::to_string(result->status));
    }
    response.statusCode = static_cast<unsigned int>(result->status);
    response.headerFields = fieldsOf(result->headers);
    response.answered = request;
    return response;
}

bool DeviceSession::isSigned(const vorl::bytes& data, const std::string& signature) const {
    const auto record = vorl::PKSignature::decode(Tarvik::BrisClient::Base64::decode(octetsOf(signature)));
    return vorl::PKSignatureProcessor::verify(record, certificate_->getPubKey(), data);
}

}  // namespace example
