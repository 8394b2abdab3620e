#include "BoundedClient.h"

#include "BoundedStream.h"
#include "protocol.h"

#include <regex>

namespace example {

namespace {

class Exchange : public BoundedStream {
public:
    Exchange(socket_t socket, std::size_t mostBytes, std::chrono::milliseconds mostTime)
        : BoundedStream(socket) {
        allowBytes(mostBytes);
        allowTime(mostTime);
    }

    ssize_t write(const char* data, std::size_t size) override {
        return sendAll(std::string(data, size)) ? static_cast<ssize_t>(size) : -1;
    }
};

}  // namespace

BoundedClient::BoundedClient(const std::string& url, std::size_t mostBytes,
                             std::chrono::milliseconds mostTime)
    : BoundedClient(addressOf(url), mostBytes, mostTime) {}

BoundedClient::BoundedClient(const Address& service, std::size_t mostBytes,
                             std::chrono::milliseconds mostTime)
    : ClientImpl(service.host, service.port), mostBytes_(mostBytes), mostTime_(mostTime) {}

BoundedClient::Address BoundedClient::addressOf(const std::string& url) {
    static const std::regex form(R"(http://(?:\[([0-9A-Fa-f:.]+)\]|([^\s:/?#@\[\]]+))(?::([0-9]{1,5}))?)");
    std::smatch parts;
    const bool isUrl = std::regex_match(url, parts, form);
    const int port = isUrl && parts[3].matched ? std::stoi(parts[3]) : 80;
    // The system would take another one for a port that there is not.
    if (!isUrl || port < 1 || port > 65535) {
        refuse("this is no http URL of a service without a path: " + url);
    }
    return {parts[1].str() + parts[2].str(), port};
}

bool BoundedClient::process_socket(const Socket& socket, std::function<bool(httplib::Stream&)> exchange) {
    Exchange stream(socket.sock, mostBytes_, mostTime_);
    return exchange(stream);
}

}  // namespace example
