#include "BoundedServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <future>
#include <stdexcept>

namespace example {

namespace {

using Clock = std::chrono::steady_clock;

const char REFUSAL[] = "HTTP/1.1 403 Forbidden\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
const char OF_AN_AUTHORITY[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-._~:[]";
const char SUCCESS[] = "HTTP/1.1 200 ";
const std::size_t MOST_HEAD_BYTES = 16384;
const std::chrono::seconds MOST_TIME_OF_A_REQUEST(10);
const std::chrono::seconds MOST_IDLE_TIME(5);
// There are only so many threads, and others wait for one.
const std::chrono::seconds MOST_TIME_OF_A_CONNECTION(60);
const std::chrono::seconds MOST_TIME_TO_CLOSE(1);
const std::chrono::milliseconds LOOK_FOR_THE_END(100);

// A connection, of which cpp-httplib sees one request at a time. The answer goes out as a whole: in pieces,
// it would wait for the client's acknowledgements.
class Connection : public httplib::Stream {
public:
    Connection(socket_t socket, std::function<bool()> isEnding)
        : socket_(socket), isEnding_(std::move(isEnding)) {}

    // Whether the next request begins.
    bool begin() {
        deadline_ = Clock::now() + MOST_IDLE_TIME;
        received_ = 0;
        head_ = Head::REQUEST_LINE;
        line_.clear();
        answer_.clear();
        if (isEnding_() || (at_ == filled_ && !fill())) {
            return false;
        }
        deadline_ = Clock::now() + MOST_TIME_OF_A_REQUEST;
        return true;
    }

    // Sends the answer. Whether there may be another request.
    bool end() {
        const bool isSuccess = answer_.compare(0, sizeof SUCCESS - 1, SUCCESS) == 0;
        if (!isSuccess) {
            answer_ = REFUSAL;
        }
        deadline_ = Clock::now() + MOST_TIME_OF_A_REQUEST;
        return flush() && isSuccess;
    }

    // An answer is lost where the connection is closed while something sent to it was not read.
    void close() {
        shutdown(socket_, SHUT_WR);
        deadline_ = Clock::now() + MOST_TIME_TO_CLOSE;
        while (fill()) {
        }
        ::close(socket_);
    }

    ssize_t read(char* data, std::size_t size) override {
        if (at_ == filled_ && !fill()) {
            return -1;
        }
        const std::size_t taken =
            std::min({size, filled_ - at_, MOST_HEAD_BYTES + BoundedServer::MOST_BODY_BYTES - received_});
        std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(at_), taken, data);
        at_ += taken;
        received_ += taken;
        return taken == 0 || !std::all_of(data, data + taken, [this](char octet) { return isPlain(octet); })
                   ? -1
                   : static_cast<ssize_t>(taken);
    }

    ssize_t write(const char* data, std::size_t size) override {
        answer_.append(data, size);
        return static_cast<ssize_t>(size);
    }

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
    void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
    socket_t socket() const override { return socket_; }

private:
    enum class Head { REQUEST_LINE, FIELDS, READ };

    // cpp-httplib drops what follows a # in the target, and decodes %2f and its like in the fields: others
    // than those on the wire would be verified and obeyed.
    bool isPlain(char octet) {
        if (head_ == Head::READ) {
            return true;
        }
        if (octet == (head_ == Head::REQUEST_LINE ? '#' : '%')) {
            return false;
        }
        // A line of LF alone does not end the fields for cpp-httplib.
        line_.push_back(octet);
        if (octet == '\n') {
            head_ = head_ == Head::FIELDS && line_ == "\r\n" ? Head::READ : Head::FIELDS;
            line_.clear();
        }
        return true;
    }

    bool await(short event) const {
        pollfd one{socket_, event, 0};
        int ready = 0;
        while (ready == 0 && Clock::now() < deadline_ && (event == POLLOUT || !isEnding_())) {
            ready = poll(&one, 1, static_cast<int>(LOOK_FOR_THE_END.count()));
            ready = ready < 0 && errno == EINTR ? 0 : ready;
        }
        return ready > 0;
    }

    bool fill() {
        const ssize_t count = await(POLLIN) ? recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT) : 0;
        at_ = 0;
        filled_ = count > 0 ? static_cast<std::size_t>(count) : 0;
        return count > 0;
    }

    bool flush() {
        while (!answer_.empty()) {
            const ssize_t count =
                await(POLLOUT) ? send(socket_, answer_.data(), answer_.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
                               : -1;
            if (count < 0) {
                return false;
            }
            answer_.erase(0, static_cast<std::size_t>(count));
        }
        return true;
    }

    socket_t socket_;
    std::function<bool()> isEnding_;
    Clock::time_point deadline_;
    std::size_t received_ = 0;
    Head head_ = Head::REQUEST_LINE;
    std::string line_;
    std::array<char, 16384> buffer_{};
    std::size_t at_ = 0;
    std::size_t filled_ = 0;
    std::string answer_;
};

sigset_t signalsToEnd() {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    return ends;
}

}  // namespace

BoundedServer::BoundedServer() {
    // cpp-httplib would share the port with whoever else of this user listens there.
    set_socket_options([](socket_t socket) {
        const int on = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    set_payload_max_length(MOST_BODY_BYTES);
}

void BoundedServer::blockSignals() {
    const sigset_t ends = signalsToEnd();
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
}

int BoundedServer::bind(int port) {
    const int bound = port == 0 ? bind_to_any_port("127.0.0.1") : bind_to_port("127.0.0.1", port) ? port : -1;
    // cpp-httplib lets five devices wait, and the system forgets the others' connections without a word.
    if (bound < 0 || ::listen(svr_sock_, SOMAXCONN) != 0) {
        throw std::runtime_error("port " + std::to_string(port) + " is not to be had");
    }
    return bound;
}

void BoundedServer::serveUntilSignal() {
    auto listener = std::async(std::launch::async, [this] {
        const bool isStopped = listen_after_bind();
        kill(getpid(), SIGTERM);  // for the wait below, where it was not what ended us
        return isStopped;
    });
    int signal = 0;
    const sigset_t ends = signalsToEnd();
    sigwait(&ends, &signal);
    // A server that has only begun to run cannot be stopped yet.
    while (!is_running() && listener.wait_for(LOOK_FOR_THE_END / 10) != std::future_status::ready) {
    }
    stop();
    if (!listener.get()) {
        throw std::runtime_error("no more connections are to be had");
    }
}

std::optional<std::string> BoundedServer::faultOf(const httplib::Request& request) {
    if (request.get_header_value_count("Host") != 1) {
        return "a request names no host, or several";
    }
    // Else the two together could be the address of another request, which was signed.
    const std::string host = request.get_header_value("Host");
    if (host.empty() || host.find_first_not_of(OF_AN_AUTHORITY) != std::string::npos ||
        request.target.compare(0, 1, "/") != 0) {
        return "a request is not addressed by host and path";
    }
    if (request.has_header("Expect") || request.has_header("Range")) {
        return "a request asks for more than an answer";
    }
    // Of others, cpp-httplib would read and unpack as much as there is.
    const std::string length = request.get_header_value("Content-Length");
    if (request.get_header_value_count("Content-Length") != 1 || length.empty() || length.size() > 9 ||
        length.find_first_not_of("0123456789") != std::string::npos ||
        request.has_header("Transfer-Encoding") || request.has_header("Content-Encoding")) {
        return "a request does not say plainly how long it is";
    }
    if (std::stoul(length) > MOST_BODY_BYTES) {
        return "a request is longer than it may be";
    }
    return std::nullopt;
}

bool BoundedServer::process_and_close_socket(socket_t socket) {
    Connection connection(socket, [this] { return svr_sock_ == INVALID_SOCKET; });
    const auto end = Clock::now() + MOST_TIME_OF_A_CONNECTION;
    bool goesOn = true;
    while (goesOn && connection.begin()) {
        const bool isLast = Clock::now() >= end;
        bool isClosed = false;
        process_request(connection, isLast, isClosed, nullptr);
        goesOn = connection.end() && !isLast && !isClosed;
    }
    connection.close();
    return true;
}

}  // namespace example
