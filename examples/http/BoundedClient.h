#ifndef EXAMPLES_HTTP_BOUNDEDCLIENT_H
#define EXAMPLES_HTTP_BOUNDEDCLIENT_H

#include <httplib.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace example {

/// An HTTP client that bounds what an answer may take, head and all: whoever answers may be anybody.
///
/// An answer that ends with the connection alone, without having said how long it is or that it comes in
/// chunks, is refused: one that was cut off on the way would look the same.
class BoundedClient : public httplib::ClientImpl {
public:
    /// `url` is http://HOST or http://HOST:PORT; throws std::runtime_error for another one. `mostTime` is for
    /// a request and its answer together.
    BoundedClient(const std::string& url, std::size_t mostBytes, std::chrono::milliseconds mostTime);

private:
    struct Address {
        std::string host;
        int port;
    };

    BoundedClient(const Address& service, std::size_t mostBytes, std::chrono::milliseconds mostTime);

    static Address addressOf(const std::string& url);
    bool process_socket(const Socket& socket, std::function<bool(httplib::Stream&)> exchange) override;

    const std::size_t mostBytes_;
    const std::chrono::milliseconds mostTime_;
};

}  // namespace example

#endif
