// A service that agrees keys with devices and takes their messages, over HTTP on this machine.
//
//     service PRIVATE.pem [PORT]
//
// Prints the port, which the system chooses where none is given; SIGTERM ends it. What it refuses, it answers
// always alike: whoever asks learns nothing from the answer, not even whether a message could be decrypted.
// The reason stands in its output.

#include "BoundedServer.h"
#include "Sessions.h"
#include "protocol.h"

#include <brisclient/Base64.h>
#include <tarvik/crypto/HttpRequestSigner.h>

#include <charconv>
#include <iostream>
#include <memory>
#include <mutex>

namespace example {

namespace {

using httplib::Request;
using httplib::Response;
using tarvik::crypto::HttpRequestSigner;
using HandlerResponse = httplib::Server::HandlerResponse;

class Service {
public:
    explicit Service(const std::string& privateKey)
        : privateKey_(vorl::PrivKey::loadFromPEMFile(privateKey)) {}

    void answerAt(BoundedServer& server) {
        // In the place of "100 Continue", which would come before the one refusal.
        server.set_expect_100_continue_handler([this](const Request& request, Response& response) {
            isGuarded(response, [&] { admit(request); });
            return response.status;
        });
        server.set_pre_routing_handler([this](const Request& request, Response& response) {
            return isGuarded(response, [&] { admit(request); }) ? HandlerResponse::Unhandled
                                                                : HandlerResponse::Handled;
        });
        server.Post(AGREE, [this](const Request& request, Response& response) {
            isGuarded(response, [&] { agree(request, response); });
        });
        server.Post(MESSAGES, [this](const Request& request, Response& response) {
            isGuarded(response, [&] { receive(request, response); });
        });
    }

private:
    // Before the body is read.
    static void admit(const Request& request) {
        if (request.method != "POST" || (request.path != AGREE && request.path != MESSAGES)) {
            refuse("nothing is served there");
        }
        if (const auto fault = BoundedServer::faultOf(request)) {
            refuse(*fault);
        }
    }

    void agree(const Request& request, Response& response) {
        const std::string theirs = linesOf(request.body, 1).front();
        const auto own = vorl::DiffieHellman::generate(vorl::DiffieHellmanParams{std::string(GROUP)});
        const std::string ours = textOf(own->getPubKey());
        const auto session =
            std::make_shared<Session>(keysOf(*own, theirs).encryptionKey(), Session::Clock::now());
        const std::string name = vorl::Util::toHexString(vorl::Random::next(16), "");
        sessions_.keep(name, session, Session::Clock::now());
        response.set_content(
            name + '\n' + ours + '\n' + signatureOver(agreementOf(name, theirs, ours)) + '\n', CONTENT_TYPE);
        log("agreed on keys, session " + name);
    }

    void receive(const Request& request, Response& response) {
        tarvik::http::HttpResponse answer;
        answer.answered = {request.method, "http://" + request.get_header_value("Host") + request.target,
                           fieldsOf(request.headers), octetsOf(request.body)};
        const auto name = HttpRequestSigner::keyidOf(answer.answered->fields);
        if (!name) {
            refuse("a request is not signed");
        }
        const std::shared_ptr<Session> session = sessions_.find(*name, Session::Clock::now());
        const std::lock_guard lock(session->mutex);
        // Before it is decrypted: an answer to what nobody signed would tell how its decryption went.
        if (!session->signer.verifyRequest(*name, *answer.answered)) {
            refuse("the signature of a request does not hold");
        }
        session->lastUse = Session::Clock::now();
        const std::string receipt =
            receiptFor(session->context.decrypt(octetsOf(linesOf(request.body, 1).front())));
        answer.content = octetsOf(textOf(session->context.encrypt(octetsOf(receipt))) + '\n' +
                                  signatureOver(signedReceiptOf(*name, receipt)) + '\n');
        answer.headerFields = {{"Content-Type", CONTENT_TYPE}};
        session->signer.signResponse(*name, answer);
        response.headers = headersOf(answer.headerFields);
        response.body = textOf(answer.content);
        log(receipt);
    }

    template <typename Step>
    bool isGuarded(Response& response, Step step) {
        try {
            step();
            return true;
        } catch (const std::exception& fault) {
            // The rest of a text shows what was sent.
            const std::string reason = fault.what();
            log("refused: " + reason.substr(0, reason.find('\n')));
            response.status = 403;
            return false;
        }
    }

    std::string signatureOver(const vorl::bytes& data) {
        const std::lock_guard lock(privateKeyMutex_);
        return textOf(Tarvik::BrisClient::Base64::encode(
            vorl::PKSignatureProcessor::sign(privateKey_, data)->encode()));
    }

    void log(const std::string& line) {
        const std::lock_guard lock(logMutex_);
        std::cout << line << std::endl;
    }

    Sessions sessions_;
    std::mutex privateKeyMutex_;
    std::shared_ptr<const vorl::PrivKey> privateKey_;
    std::mutex logMutex_;
};

int portOf(const std::string& text) {
    int port = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), port);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size() || port < 0 || port > 65535) {
        refuse("a port is a number from 0 to 65535, not " + text);
    }
    return port;
}

}  // namespace

}  // namespace example

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty() || arguments.size() > 2) {
        std::cerr << "usage: service PRIVATE.pem [PORT]\n";
        return 2;
    }
    try {
        example::startLibrary();
        example::BoundedServer::blockSignals();
        example::Service service(arguments[0]);
        example::BoundedServer server;
        service.answerAt(server);
        const int port = server.bind(arguments.size() == 2 ? example::portOf(arguments[1]) : 0);
        std::cout << "listening on http://127.0.0.1:" << port << std::endl;
        server.serveUntilSignal();
        std::cout << "ended" << std::endl;
        return 0;
    } catch (const std::exception& fault) {
        std::cerr << "service: " << fault.what() << '\n';
        return 1;
    }
}
