// Stands between a device and its service and tampers with one thing, to show that it does not go unnoticed.
//
//     proxy URL TAMPERING
//
// Prints its port; without arguments, the names of all tamperings. Where there is nothing to tamper with, it
// ends without an answer.

#include "protocol.h"

#include <brisclient/Base64.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <mutex>

namespace example {

namespace {

using Tarvik::BrisClient::Base64;

struct Exchange {
    httplib::Request request;
    httplib::Response response;
};

using Change = std::function<void(Exchange&)>;

void replaceOnce(std::string& text, const std::string& what, const std::string& by) {
    const auto at = text.find(what);
    if (at == std::string::npos) {
        refuse("there is no " + what);
    }
    text.replace(at, what.size(), by);
}

std::string& field(httplib::Headers& headers, const std::string& name) {
    const auto found = headers.find(name);
    if (found == headers.end()) {
        refuse("there is no field " + name);
    }
    return found->second;
}

// Another one of the same alphabet, for hex digits and Base64 alike.
void swap(char& digit) {
    digit = digit == '0' ? '1' : '0';
}

// A change of the `number`th line of a body.
void changeLine(std::string& body, std::size_t number, const std::function<void(std::string&)>& change) {
    std::vector<std::string> lines =
        linesOf(body, static_cast<std::size_t>(std::count(body.begin(), body.end(), '\n')));
    change(lines.at(number));
    body.clear();
    for (const std::string& line : lines) {
        body += line + '\n';
    }
}

void swapMiddle(std::string& text) {
    swap(text.at(text.size() / 2));
}

void exchangeRecord(std::string& record) {
    const auto own = vorl::DiffieHellman::generate(vorl::DiffieHellmanParams{std::string(GROUP)});
    record = textOf(own->getPubKey());
}

// The secret that comes of it is zero, whatever the other side's number.
void zeroRecord(std::string& record) {
    vorl::Buffer buffer;
    vorl::DHPubKey::create(vorl::bytes(128))->encode(buffer);
    record = textOf(Base64::encode(buffer.toByteArray()));
}

Change requestField(const std::string& name, const std::string& what, const std::string& by) {
    return [=](Exchange& one) { replaceOnce(field(one.request.headers, name), what, by); };
}

Change responseField(const std::string& name, const std::string& what, const std::string& by) {
    return [=](Exchange& one) { replaceOnce(field(one.response.headers, name), what, by); };
}

Change requestLine(std::size_t number, const std::function<void(std::string&)>& change) {
    return [=](Exchange& one) { changeLine(one.request.body, number, change); };
}

Change responseLine(std::size_t number, const std::function<void(std::string&)>& change) {
    return [=](Exchange& one) { changeLine(one.response.body, number, change); };
}

std::string digestOf(const std::string& body) {
    vorl::Digester digester(vorl::DigestAlgo::SHA256());
    digester.init();
    digester.update(octetsOf(body));
    return "sha-256=:" + textOf(Base64::encode(digester.final())) + ":";
}

void unsign(httplib::Headers& headers) {
    headers.erase("Signature-Input");
    headers.erase("Signature");
    headers.erase("Content-Digest");
}

enum Side { REQUEST, RESPONSE };

struct Tampering {
    std::string name;
    std::string path;
    Side side;
    Change change;
};

const char INPUT[] = "Signature-Input";

std::vector<Tampering> ofAgreement() {
    return {
        {"device-record", AGREE, REQUEST, requestLine(0, exchangeRecord)},
        {"device-record-zero", AGREE, REQUEST, requestLine(0, zeroRecord)},
        {"device-record-no-base64", AGREE, REQUEST, requestLine(0, [](std::string& line) { line[0] = '!'; })},
        {"device-record-two-lines", AGREE, REQUEST, [](Exchange& one) { one.request.body += '\n'; }},
        {"session-name", AGREE, RESPONSE, responseLine(0, swapMiddle)},
        {"service-record", AGREE, RESPONSE, responseLine(1, exchangeRecord)},
        {"service-record-zero", AGREE, RESPONSE, responseLine(1, zeroRecord)},
        {"agreement-signature", AGREE, RESPONSE, responseLine(2, swapMiddle)},
        {"agreement-line-missing", AGREE, RESPONSE,
         [](Exchange& one) { one.response.body.erase(0, one.response.body.find('\n') + 1); }},
    };
}

std::vector<Tampering> ofRequest() {
    return {
        {"request-method", MESSAGES, REQUEST, [](Exchange& one) { one.request.method = "PUT"; }},
        {"request-host", MESSAGES, REQUEST, requestField("Host", "127.0.0.1", "localhost")},
        {"request-path", MESSAGES, REQUEST,
         [](Exchange& one) { replaceOnce(one.request.path, "messages", "receipts"); }},
        {"request-path-spelling", MESSAGES, REQUEST,
         [](Exchange& one) { replaceOnce(one.request.path, "messages", "%6dessages"); }},
        {"request-query", MESSAGES, REQUEST, [](Exchange& one) { one.request.path += "?a=b"; }},
        {"request-content-type", MESSAGES, REQUEST, requestField("Content-Type", "octet-stream", "json")},
        {"request-content-digest", MESSAGES, REQUEST,
         [](Exchange& one) { swapMiddle(field(one.request.headers, "Content-Digest")); }},
        {"request-body", MESSAGES, REQUEST, requestLine(0, swapMiddle)},
        {"request-body-and-digest", MESSAGES, REQUEST,
         [](Exchange& one) {
             changeLine(one.request.body, 0, swapMiddle);
             field(one.request.headers, "Content-Digest") = digestOf(one.request.body);
         }},
        {"request-too-long", MESSAGES, REQUEST, [](Exchange& one) { one.request.body.resize(65537, 'A'); }},
        {"request-signature", MESSAGES, REQUEST,
         [](Exchange& one) { swapMiddle(field(one.request.headers, "Signature")); }},
        {"request-label", MESSAGES, REQUEST, requestField(INPUT, "vorl=", "other=")},
        {"request-covered", MESSAGES, REQUEST, requestField(INPUT, " \"content-type\"", "")},
        {"request-created", MESSAGES, REQUEST, requestField(INPUT, "created=", "created=1")},
        {"request-expires", MESSAGES, REQUEST, requestField(INPUT, "expires=", "expires=1")},
        {"request-nonce", MESSAGES, REQUEST, requestField(INPUT, "nonce=\"", "nonce=\"AAAA")},
        {"request-keyid", MESSAGES, REQUEST, requestField(INPUT, "keyid=\"", "keyid=\"0")},
        {"request-alg", MESSAGES, REQUEST, requestField(INPUT, "hmac-sha256", "hmac-sha512")},
        {"request-tag", MESSAGES, REQUEST, requestField(INPUT, "vorl-1", "vorl-2")},
        {"request-signed-twice", MESSAGES, REQUEST,
         [](Exchange& one) {
             one.request.headers.emplace("Signature", field(one.request.headers, "Signature"));
         }},
        {"request-unsigned", MESSAGES, REQUEST, [](Exchange& one) { unsign(one.request.headers); }},
    };
}

std::vector<Tampering> ofResponse() {
    return {
        {"response-status", MESSAGES, RESPONSE, [](Exchange& one) { one.response.status = 202; }},
        {"response-content-digest", MESSAGES, RESPONSE,
         [](Exchange& one) { swapMiddle(field(one.response.headers, "Content-Digest")); }},
        {"response-signature", MESSAGES, RESPONSE,
         [](Exchange& one) { swapMiddle(field(one.response.headers, "Signature")); }},
        {"response-covered", MESSAGES, RESPONSE, responseField(INPUT, " \"content-digest\"", "")},
        {"response-created", MESSAGES, RESPONSE, responseField(INPUT, "created=", "created=1")},
        {"response-nonce", MESSAGES, RESPONSE, responseField(INPUT, "nonce=\"", "nonce=\"AAAA")},
        {"response-keyid", MESSAGES, RESPONSE, responseField(INPUT, "keyid=\"", "keyid=\"0")},
        {"response-unsigned", MESSAGES, RESPONSE, [](Exchange& one) { unsign(one.response.headers); }},
        {"response-body", MESSAGES, RESPONSE, responseLine(0, swapMiddle)},
        {"receipt-signature", MESSAGES, RESPONSE, responseLine(1, swapMiddle)},
        {"receipt-signature-and-digest", MESSAGES, RESPONSE,
         [](Exchange& one) {
             changeLine(one.response.body, 1, swapMiddle);
             field(one.response.headers, "Content-Digest") = digestOf(one.response.body);
         }},
    };
}

std::vector<Tampering> tamperings() {
    std::vector<Tampering> all = ofAgreement();
    for (const auto& more : {ofRequest(), ofResponse()}) {
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

// These need what went before.
const char REQUEST_REPLAYED[] = "request-replayed";
const char RESPONSE_REPLAYED[] = "response-replayed";
const char RECEIPT_REPLAYED[] = "receipt-replayed";

class Proxy {
public:
    Proxy(const std::string& url, std::string tampering) : client_(url), tampering_(std::move(tampering)) {
        client_.set_decompress(false);
        client_.set_url_encode(false);
    }

    void pass(const httplib::Request& request, httplib::Response& response) {
        const std::lock_guard lock(mutex_);
        Exchange one;
        one.request.method = request.method;
        one.request.path = request.target;
        one.request.body = request.body;
        one.request.headers = endToEnd(request.headers);
        change(one, REQUEST);
        forward(one);
        if (tampering_ == REQUEST_REPLAYED && request.path == MESSAGES) {
            forward(one);
        }
        change(one, RESPONSE);
        replay(one);
        response.status = one.response.status;
        response.headers = endToEnd(one.response.headers);
        response.body = one.response.body;
    }

private:
    // Without what each of the two connections has for itself.
    static httplib::Headers endToEnd(httplib::Headers headers) {
        for (const char* name : {"Connection", "Keep-Alive", "Content-Length", "REMOTE_ADDR", "REMOTE_PORT",
                                 "LOCAL_ADDR", "LOCAL_PORT"}) {
            headers.erase(name);
        }
        return headers;
    }

    void change(Exchange& one, Side side) const {
        for (const Tampering& tampering : tamperings()) {
            if (tampering.name == tampering_ && tampering.side == side &&
                tampering.path == one.request.path) {
                tampering.change(one);
            }
        }
    }

    void forward(Exchange& one) {
        const httplib::Result result = client_.send(one.request);
        if (!result) {
            refuse("no answer: " + httplib::to_string(result.error()));
        }
        one.response = *result;
    }

    // In the place of the second answer, the first one, or its body.
    void replay(Exchange& one) {
        if (one.request.path == MESSAGES) {
            if (first_.empty()) {
                first_.push_back(one.response);
            } else if (tampering_ == RESPONSE_REPLAYED) {
                one.response = first_.front();
            } else if (tampering_ == RECEIPT_REPLAYED) {
                one.response.body = first_.front().body;
            }
        }
    }

    std::mutex mutex_;
    httplib::Client client_;
    std::string tampering_;
    std::vector<httplib::Response> first_;
};

std::vector<std::string> names() {
    std::vector<std::string> all = {"none", REQUEST_REPLAYED, RESPONSE_REPLAYED, RECEIPT_REPLAYED};
    for (const Tampering& tampering : tamperings()) {
        all.push_back(tampering.name);
    }
    return all;
}

}  // namespace

}  // namespace example

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const std::vector<std::string> all = example::names();
    if (arguments.empty()) {
        for (const std::string& name : all) {
            std::cout << name << '\n';
        }
        return 0;
    }
    if (arguments.size() != 2 || std::find(all.begin(), all.end(), arguments[1]) == all.end()) {
        std::cerr << "usage: proxy [URL TAMPERING]\n";
        return 2;
    }
    example::startLibrary();
    example::Proxy proxy(arguments[0], arguments[1]);
    httplib::Server server;
    server.Post(".*", [&](const httplib::Request& request, httplib::Response& response) {
        try {
            proxy.pass(request, response);
        } catch (const std::exception& fault) {
            std::cerr << "proxy: " << fault.what() << std::endl;
            std::_Exit(1);
        }
    });
    std::cout << "listening on http://127.0.0.1:" << server.bind_to_any_port("127.0.0.1") << std::endl;
    return server.listen_after_bind() ? 0 : 1;
}
