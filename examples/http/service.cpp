// A service that agrees keys with devices and takes their messages, over HTTP on this machine.
//
//     service PRIVATE.pem [PORT]
//
// Prints the port, which the system chooses where none is given; SIGTERM ends it. What it refuses, it answers
// always alike: whoever asks learns nothing from the answer, not even whether a message could be decrypted.

#include "protocol.h"

#include <brisclient/Base64.h>
#include <tarvik/crypto/HttpRequestSigner.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

using namespace example;
using Clock = std::chrono::steady_clock;
using tarvik::crypto::HttpRequestSigner;

const std::size_t MOST_SESSIONS = 64;
const std::size_t MOST_BODY_BYTES = 65536;
const std::size_t MOST_REQUESTS_OF_A_CONNECTION = 1000;
const std::chrono::minutes MOST_IDLE(10);

void refuse(const std::string& reason) {
    throw std::runtime_error(reason);
}

// What one device shares with us; used by one thread at a time.
struct Session {
    explicit Session(const vorl::bytes& key)
        : context(key), signer(HttpRequestSigner::keyOfContext(key)), lastUse(Clock::now()) {}

    std::mutex mutex;
    vorl::VorlContext context;
    HttpRequestSigner signer;
    Clock::time_point lastUse;
};

class Service {
public:
    explicit Service(const std::string& privateKey)
        : privateKey_(vorl::PrivKey::loadFromPEMFile(privateKey)) {}

    void agree(const httplib::Request& request, httplib::Response& response) {
        const std::string theirs = linesOf(request.body, 1).front();
        const auto own = vorl::DiffieHellman::generate(vorl::DiffieHellmanParams{std::string(GROUP)});
        const std::string ours = textOf(own->getPubKey());
        const auto session = std::make_shared<Session>(keysOf(*own, theirs).encryptionKey());
        const std::string name = vorl::Util::toHexString(vorl::Random::next(16), "");
        keep(name, session);
        response.set_content(
            name + '\n' + ours + '\n' + signatureOver(agreementOf(name, theirs, ours)) + '\n', CONTENT_TYPE);
        log("agreed on keys, session " + name);
    }

    void receive(const httplib::Request& request, httplib::Response& response) {
        tarvik::http::HttpResponse answer;
        answer.answered = {request.method, "http://" + request.get_header_value("Host") + request.target,
                           fieldsOf(request.headers), octetsOf(request.body)};
        const std::string name = HttpRequestSigner::keyidOf(answer.answered->fields).value_or("");
        const std::shared_ptr<Session> session = find(name);
        const std::lock_guard lock(session->mutex);
        // Before it is decrypted: an answer to what nobody signed would tell how its decryption went.
        if (!session->signer.verifyRequest(name, *answer.answered)) {
            refuse("the signature of a request does not hold");
        }
        session->lastUse = Clock::now();
        const std::string receipt =
            receiptFor(session->context.decrypt(octetsOf(linesOf(request.body, 1).front())));
        answer.content = octetsOf(textOf(session->context.encrypt(octetsOf(receipt))) + '\n' +
                                  signatureOver(octetsOf(receipt)) + '\n');
        answer.headerFields = {{"Content-Type", CONTENT_TYPE}};
        session->signer.signResponse(name, answer);
        response.headers = headersOf(answer.headerFields);
        response.body = textOf(answer.content);
        log(receipt);
    }

    // `answer` is one of the two above.
    httplib::Server::Handler handler(void (Service::*answer)(const httplib::Request&, httplib::Response&)) {
        return [this, answer](const httplib::Request& request, httplib::Response& response) {
            try {
                (this->*answer)(request, response);
            } catch (const std::exception& fault) {
                log("refused: " + std::string(fault.what()));
                response.status = 403;
            }
        };
    }

private:
    void keep(const std::string& name, const std::shared_ptr<Session>& session) {
        const std::lock_guard lock(mutex_);
        for (auto at = sessions_.begin(); at != sessions_.end();) {
            at = Clock::now() - at->second->lastUse > MOST_IDLE ? sessions_.erase(at) : std::next(at);
        }
        if (sessions_.size() >= MOST_SESSIONS) {
            refuse("there are as many sessions as there may be");
        }
        sessions_.emplace(name, session);
    }

    std::shared_ptr<Session> find(const std::string& name) {
        const std::lock_guard lock(mutex_);
        const auto found = sessions_.find(name);
        if (found == sessions_.end()) {
            refuse("there is no such session");
        }
        return found->second;
    }

    std::string signatureOver(const vorl::bytes& data) {
        const std::lock_guard lock(mutex_);
        return textOf(Tarvik::BrisClient::Base64::encode(
            vorl::PKSignatureProcessor::sign(privateKey_, data)->encode()));
    }

    void log(const std::string& line) {
        const std::lock_guard lock(mutex_);
        std::cout << line << std::endl;
    }

    std::mutex mutex_;
    std::shared_ptr<const vorl::PrivKey> privateKey_;
    std::map<std::string, std::shared_ptr<Session>> sessions_;
};

void answerRefusal(const httplib::Request& /*request*/, httplib::Response& response) {
    response.status = 403;
    response.headers.clear();
    response.set_content("refused\n", "text/plain");
}

// Until a signal ends it. The signals are blocked in all threads, so that one of them can wait for them.
void serve(httplib::Server& server) {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    std::thread listener([&] { server.listen_after_bind(); });
    int signal = 0;
    sigwait(&ends, &signal);
    server.stop();
    listener.join();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::cerr << "usage: service PRIVATE.pem [PORT]\n";
        return 2;
    }
    try {
        vorl::Random::init_ = true;
        vorl::VORLLib::init();
        vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::NULL_CIPHER(), false);
        vorl::VORLLib::setAllowedEncryptionType(vorl::EncryptionType::TEST_CIPHER(), false);

        Service service(argv[1]);
        httplib::Server server;
        server.set_payload_max_length(MOST_BODY_BYTES);
        server.set_keep_alive_max_count(MOST_REQUESTS_OF_A_CONNECTION);
        server.set_error_handler(answerRefusal);
        server.Post(AGREE, service.handler(&Service::agree));
        server.Post(MESSAGES, service.handler(&Service::receive));
        int port = argc == 3 ? std::stoi(argv[2]) : 0;
        if (port == 0) {
            port = server.bind_to_any_port("127.0.0.1");
        } else if (!server.bind_to_port("127.0.0.1", port)) {
            refuse("port " + std::to_string(port) + " is not to be had");
        }
        std::cout << "listening on http://127.0.0.1:" << port << std::endl;
        serve(server);
        std::cout << "ended" << std::endl;
        return 0;
    } catch (const std::exception& fault) {
        std::cerr << "service: " << fault.what() << '\n';
        return 1;
    }
}
