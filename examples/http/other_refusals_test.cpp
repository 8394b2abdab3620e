// What no tampering on the way reaches: what a device refuses of a service that has the keys of its session,
// and of one that is gone; and how a service ends that loses its port.
//
//     other_refusals_test PRIVATE.pem CERT.pem OTHER-PRIVATE.pem

#include "../checks.h"
#include "BoundedServer.h"
#include "DeviceSession.h"

#include <brisclient/Base64.h>
#include <sys/socket.h>
#include <tarvik/crypto/HttpRequestSigner.h>

#include <future>
#include <thread>

namespace example {

namespace {

using Tarvik::BrisClient::Base64;
using tarvik::crypto::HttpRequestSigner;

const char SESSION[] = "00";
const vorl::bytes MESSAGE = {1, 2, 3};

struct Keys {
    std::string certificate;
    std::shared_ptr<const vorl::PrivKey> service;
    std::shared_ptr<const vorl::PrivKey> other;
};

// What a service does, as it should be unless something else is set.
struct Conduct {
    bool sendsZero = false;
    std::size_t excessBytes = 0;
    std::string session = SESSION;
    vorl::bytes received = MESSAGE;
    bool hasOthersKey = false;
};

// A service of one device.
class Service {
public:
    Service(const Keys& keys, Conduct conduct) : keys_(keys), conduct_(std::move(conduct)) {
        server_.Post(AGREE, [this](const httplib::Request& request, httplib::Response& response) {
            response.set_content(agree(linesOf(request.body, 1).front()), CONTENT_TYPE);
        });
        server_.Post(MESSAGES, [this](const httplib::Request& request, httplib::Response& response) {
            answer(request, response);
        });
        url_ = "http://127.0.0.1:" + std::to_string(server_.bind_to_any_port("127.0.0.1"));
        listener_ = std::async(std::launch::async, [this] { server_.listen_after_bind(); });
        while (!server_.is_running()) {
            std::this_thread::yield();
        }
    }
    ~Service() {
        server_.stop();
        listener_.get();
    }

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    const std::string& url() const { return url_; }

private:
    static std::string signatureOver(const vorl::bytes& data,
                                     const std::shared_ptr<const vorl::PrivKey>& key) {
        return textOf(Base64::encode(vorl::PKSignatureProcessor::sign(key, data)->encode()));
    }

    std::string recordOf(const vorl::DiffieHellman& own) const {
        if (!conduct_.sendsZero) {
            return textOf(own.getPubKey());
        }
        vorl::Buffer zero;
        vorl::DHPubKey::create(vorl::bytes(128))->encode(zero);
        return textOf(Base64::encode(zero.toByteArray()));
    }

    std::string agree(const std::string& theirs) {
        const auto own = vorl::DiffieHellman::generate(vorl::DiffieHellmanParams{std::string(GROUP)});
        key_ = keysOf(*own, theirs).encryptionKey();
        const std::string ours = recordOf(*own);
        return std::string(SESSION) + '\n' + ours + '\n' +
               signatureOver(agreementOf(SESSION, theirs, ours), keys_.service) + '\n' +
               std::string(conduct_.excessBytes, 'A');
    }

    void answer(const httplib::Request& request, httplib::Response& response) {
        tarvik::http::HttpResponse answer;
        answer.answered = {request.method, url_ + request.target, fieldsOf(request.headers),
                           octetsOf(request.body)};
        const std::string receipt = receiptFor(conduct_.received);
        answer.content = octetsOf(textOf(vorl::VorlContext(key_).encrypt(octetsOf(receipt))) + '\n' +
                                  signatureOver(signedReceiptOf(conduct_.session, receipt),
                                                conduct_.hasOthersKey ? keys_.other : keys_.service) +
                                  '\n');
        answer.headerFields = {{"Content-Type", CONTENT_TYPE}};
        HttpRequestSigner(HttpRequestSigner::keyOfContext(key_)).signResponse(SESSION, answer);
        response.headers = headersOf(answer.headerFields);
        response.body = textOf(answer.content);
    }

    const Keys& keys_;
    const Conduct conduct_;
    vorl::bytes key_;
    httplib::Server server_;
    std::string url_;
    std::future<void> listener_;
};

void checkDevice(const Keys& keys) {
    const auto refusalBy = [&keys](const Conduct& conduct) {
        const Service service(keys, conduct);
        DeviceSession device(service.url(), keys.certificate);
        return refusalOf([&] {
            device.agree();
            device.send(MESSAGE);
        });
    };
    check(refusalBy({}).empty(), "what is as it should be is not refused");

    Conduct conduct;
    conduct.received = {1, 2};
    check(refusalBy(conduct) == "the receipt is for another message",
          "a receipt for another message is refused");
    conduct = {};
    conduct.session = "01";
    check(refusalBy(conduct) == "the receipt is not signed by the service",
          "a receipt of another session is refused");
    conduct = {};
    conduct.hasOthersKey = true;
    check(refusalBy(conduct) == "the receipt is not signed by the service",
          "a receipt that another one has signed is refused");
    conduct = {};
    conduct.sendsZero = true;
    check(refusalBy(conduct) == "the peer sent a number that fixes the secret",
          "not even the service fixes the secret");
    conduct = {};
    conduct.excessBytes = 65536;
    check(refusalBy(conduct) == "no answer: Canceled", "an answer is not read without end");
}

void checkDeviceAlone(const Keys& keys) {
    std::string url;
    {
        const Service service(keys, {});
        url = service.url();
    }
    check(refusalOf([&] { DeviceSession(url, keys.certificate).agree(); }) == "no answer: Connection",
          "without a service, there is no answer");
}

class LosingServer : public BoundedServer {
public:
    void losePort() { shutdown(svr_sock_, SHUT_RDWR); }
};

void checkLostPort() {
    BoundedServer::blockSignals();
    LosingServer server;
    server.bind(0);
    server.losePort();
    check(refusalOf([&] { server.serveUntilSignal(); }) == "no more connections are to be had",
          "a service without a port does not go on");
}

}  // namespace

}  // namespace example

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 3) {
        std::cerr << "usage: other_refusals_test PRIVATE.pem CERT.pem OTHER-PRIVATE.pem\n";
        return 2;
    }
    return example::statusOf([&] {
        example::startLibrary();
        const example::Keys keys = {arguments[1], vorl::PrivKey::loadFromPEMFile(arguments[0]),
                                    vorl::PrivKey::loadFromPEMFile(arguments[2])};
        example::checkDevice(keys);
        example::checkDeviceAlone(keys);
        example::checkLostPort();
    });
}
