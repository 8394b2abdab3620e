// What no tampering on the way reaches: what a device refuses of a service that has the keys of its session,
// and of one that is gone; and how a service ends that loses its port.
//
//     other_refusals_test PRIVATE.pem CERT.pem OTHER-PRIVATE.pem

#include "BoundedClient.h"
#include "BoundedServer.h"
#include "DeviceSession.h"

#include "../checks.h"

#include <brisclient/Base64.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <tarvik/crypto/HttpRequestSigner.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <optional>
#include <stdexcept>
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

std::string urlOf(int port) {
    if (port < 0) {
        throw std::runtime_error("no port is to be had");
    }
    return "http://127.0.0.1:" + std::to_string(port);
}

// Runs a server as long as it is there itself.
class Listener {
public:
    explicit Listener(httplib::Server& server)
        : server_(server), url_(urlOf(server.bind_to_any_port("127.0.0.1"))) {
        listening_ = std::async(std::launch::async, [this] { server_.listen_after_bind(); });
        while (!server_.is_running()) {
            std::this_thread::yield();
        }
    }
    ~Listener() {
        server_.stop();
        listening_.get();
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const std::string& url() const { return url_; }

private:
    httplib::Server& server_;
    const std::string url_;
    std::future<void> listening_;
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
        listener_.emplace(server_);
    }

    const std::string& url() const { return listener_->url(); }

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
        answer.answered = {request.method, "http://" + request.get_header_value("Host") + request.target,
                           fieldsOf(request.headers), octetsOf(request.body)};
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
    std::optional<Listener> listener_;
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
    check(refusalBy(conduct) == "no answer: Read", "an answer is not read without end");
}

// A service that answers by a beginning, and then by a piece again and again, as long as somebody listens.
class EndlessServer : public httplib::Server {
public:
    EndlessServer(std::string beginning, std::string piece, std::size_t pieces,
                  std::chrono::milliseconds pause = {})
        : beginning_(std::move(beginning)), piece_(std::move(piece)), pieces_(pieces), pause_(pause) {}

    // Whether the other side was gone before all pieces were sent.
    bool isLeft() const { return isLeft_; }

private:
    bool process_and_close_socket(socket_t socket) override {
        bool isLeft = !isSent(socket, beginning_);
        for (std::size_t piece = 0; piece < pieces_ && !isLeft; ++piece) {
            std::this_thread::sleep_for(pause_);
            isLeft = !isSent(socket, piece_);
        }
        isLeft_ = isLeft;
        close(socket);
        return true;
    }

    static bool isSent(socket_t socket, const std::string& text) {
        std::size_t sent = 0;
        while (sent < text.size()) {
            const ssize_t count = send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (count < 0) {
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
        return true;
    }

    const std::string beginning_;
    const std::string piece_;
    const std::size_t pieces_;
    const std::chrono::milliseconds pause_;
    std::atomic<bool> isLeft_ = false;
};

struct Flood {
    const char* what;
    const char* beginning;
    const char* piece;
};
const Flood FLOODS[] = {
    {"endless fields", "HTTP/1.1 200 OK\r\n", "A: b\r\n"},
    {"an endless field", "HTTP/1.1 200 OK\r\nA: ", "b"},
    {"an endless status line", "HTTP/1.1 200 ", "b"},
    {"an endless first word", "", "b"},
    {"answers without end before the answer", "", "HTTP/1.1 100 Continue\r\n\r\n"},
    {"an endless body", "HTTP/1.1 200 OK\r\n\r\n", "b"},
    {"an endless size of a chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "0"},
    {"endless fields behind the chunks", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n",
     "A: b\r\n"},
};

// More than the system takes for a device that does not read it.
const std::size_t FLOOD_BYTES = 67108864;

void checkFlood(const Flood& flood, const std::string& certificate) {
    std::string piece;
    while (piece.size() < 65536) {
        piece += flood.piece;
    }
    EndlessServer server(flood.beginning, piece, FLOOD_BYTES / piece.size());
    std::string refusal;
    {
        const Listener listener(server);
        refusal = refusalOf([&] { DeviceSession(listener.url(), certificate).agree(); });
    }
    check(refusal == "no answer: Read" && server.isLeft(),
          std::string(flood.what) + ": refused by the device, not by its end: " + refusal);
}

void checkFloods(const Keys& keys) {
    for (const Flood& flood : FLOODS) {
        checkFlood(flood, keys.certificate);
    }
}

// Each field comes in time.
void checkTrickle() {
    EndlessServer server("HTTP/1.1 200 OK\r\n", "A: b\r\n", 3000, std::chrono::milliseconds(10));
    {
        const Listener listener(server);
        // The time is for sending the request as well, which a busy machine may keep waiting.
        BoundedClient client(listener.url(), 65536, std::chrono::seconds(2));
        check(client.Get("/").error() == httplib::Error::Read, "an answer is not waited for without end");
    }
    check(server.isLeft(), "who sends bit by bit is left alone");
}

// Two answers, of which one says how long it is.
void checkEnds() {
    httplib::Server server;
    server.Get("/told", [](const httplib::Request& /*request*/, httplib::Response& response) {
        response.set_content("whole", CONTENT_TYPE);
    });
    server.Get("/untold", [](const httplib::Request& /*request*/, httplib::Response& response) {
        response.set_content_provider(CONTENT_TYPE, [](std::size_t /*offset*/, httplib::DataSink& sink) {
            sink.write("whole", 5);
            sink.done();
            return true;
        });
    });
    const Listener listener(server);
    const auto ask = [&listener](const std::string& path) {
        return BoundedClient(listener.url(), 65536, std::chrono::seconds(30)).Get(path);
    };
    const httplib::Result told = ask("/told");
    check(told && told->body == "whole", "an answer that says how long it is is read");
    check(ask("/untold").error() == httplib::Error::Read,
          "an answer that ends with the connection alone is refused");
}

void checkUrls() {
    const auto refusalOfUrl = [](const std::string& url) {
        return refusalOf([&] { BoundedClient(url, 1, std::chrono::seconds(1)); });
    };
    for (const std::string url : {"http://127.0.0.1", "http://127.0.0.1:1", "http://127.0.0.1:80",
                                  "http://[::1]:65535", "http://service.example"}) {
        check(refusalOfUrl(url).empty(), url + " is a service's");
    }
    for (const std::string url :
         {"", "127.0.0.1:80", "https://127.0.0.1", "http://", "http://:80",
          "http://127.0.0.1:", "http://127.0.0.1:x", "http://127.0.0.1:0", "http://127.0.0.1:65536",
          "http://127.0.0.1:99999", "http://127.0.0.1:655360", "http://127.0.0.1/", "http://127.0.0.1?q",
          "http://127.0.0.1#f", "http://user@127.0.0.1", "http://::1", "http://[::1", "http://a b"}) {
        check(refusalOfUrl(url) == "this is no http URL of a service without a path: " + url,
              url + " is refused");
    }
}

// A port at which nobody listens, nor can as long as it is there.
class SilentPort {
public:
    SilentPort() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in own{};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        sockaddr address{};
        std::memcpy(&address, &own, sizeof own);
        socklen_t size = sizeof address;
        if (bind(socket_, &address, size) == 0 && getsockname(socket_, &address, &size) == 0) {
            std::memcpy(&own, &address, sizeof own);
            port_ = ntohs(own.sin_port);
        }
    }
    ~SilentPort() { close(socket_); }

    SilentPort(const SilentPort&) = delete;
    SilentPort& operator=(const SilentPort&) = delete;

    // -1 where none was to be had.
    int port() const { return port_; }

private:
    const int socket_;
    int port_ = -1;
};

void checkDeviceAlone(const Keys& keys) {
    const SilentPort nobody;
    const std::string url = urlOf(nobody.port());
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
        example::checkFloods(keys);
        example::checkTrickle();
        example::checkEnds();
        example::checkUrls();
        example::checkDeviceAlone(keys);
        example::checkLostPort();
    });
}
