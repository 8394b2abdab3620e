#include "BoundedServer.h"

#include "BoundedStream.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <csignal>
#include <future>
#include <stdexcept>

namespace example {

namespace {

using Clock = std::chrono::steady_clock;

const char REFUSAL[] = "HTTP/1.1 403 Forbidden\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
const char OF_AN_AUTHORITY[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-._~:[]";
// RFC 9110, 5.6.2.
const char OF_A_NAME[] = "!#$%&'*+-.^_`|~0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
const char SUCCESS[] = "HTTP/1.1 200 ";
const std::size_t MOST_HEAD_BYTES = 16384;
const std::chrono::seconds MOST_TIME_OF_A_REQUEST(10);
const std::chrono::seconds MOST_IDLE_TIME(5);
// There are only so many threads, and others wait for one.
const std::chrono::seconds MOST_TIME_OF_A_CONNECTION(60);
const std::chrono::seconds MOST_TIME_TO_CLOSE(1);
const std::chrono::milliseconds LOOK_FOR_THE_BEGINNING(10);

// Whether cpp-httplib takes a request line as others do: it looks for three parts between any blanks, and
// drops what follows a # in the target.
bool isRequestLine(const std::string& line) {
    return std::count(line.begin(), line.end(), ' ') == 2 && line.find_first_of("#\t") == std::string::npos;
}

// Whether cpp-httplib takes a field as others do: it passes over a line that it does not understand, and over
// an empty field, which would go uncounted beside another of its name; and it decodes %2f and its like, so
// that others than those on the wire would be verified and obeyed.
bool isField(const std::string& line) {
    const std::size_t end = line.find_first_not_of(OF_A_NAME);
    return end != 0 && end != std::string::npos && line[end] == ':' &&
           line.find_first_not_of(" \t", end + 1) != std::string::npos && line.find('%') == std::string::npos;
}

bool isControl(char octet) {
    return octet != '\t' && std::iscntrl(static_cast<unsigned char>(octet)) != 0;
}

// The head of a request as it comes in. Only one that can be read in one way is let through: whatever stands
// in front may have read another, and taken the rest of the body for the next request of somebody else.
class Head {
public:
    // Whether the octet may follow those before it, the body's included.
    bool take(char octet) {
        if (isRead_) {
            return true;
        }
        line_.push_back(octet);
        return octet != '\n' || endLine();
    }

private:
    bool endLine() {
        if (line_.size() < 2 || line_.compare(line_.size() - 2, 2, "\r\n") != 0) {
            return false;
        }
        const std::string line = line_.substr(0, line_.size() - 2);
        line_.clear();
        if (std::any_of(line.begin(), line.end(), isControl)) {
            return false;
        }
        if (!hasRequestLine_) {
            hasRequestLine_ = true;
            return isRequestLine(line);
        }
        isRead_ = line.empty();
        return isRead_ || isField(line);
    }

    bool hasRequestLine_ = false;
    bool isRead_ = false;
    std::string line_;
};

// A connection, of which cpp-httplib sees one request at a time. The answer goes out as a whole: in pieces,
// it would wait for the client's acknowledgements.
class Connection : public BoundedStream {
public:
    using BoundedStream::BoundedStream;

    // Whether the next request begins.
    bool begin() {
        allowBytes(MOST_HEAD_BYTES + BoundedServer::MOST_BODY_BYTES);
        allowTime(MOST_IDLE_TIME);
        head_ = Head();
        answer_.clear();
        if (isEnding() || !hasMore()) {
            return false;
        }
        allowTime(MOST_TIME_OF_A_REQUEST);
        return true;
    }

    // Sends the answer. Whether there may be another request.
    bool end() {
        const bool isSuccess = answer_.compare(0, sizeof SUCCESS - 1, SUCCESS) == 0;
        allowTime(MOST_TIME_OF_A_REQUEST);
        return sendAll(isSuccess ? answer_ : REFUSAL) && isSuccess;
    }

    // An answer is lost where the connection is closed while something sent to it was not read.
    void close() {
        shutdown(socket(), SHUT_WR);
        allowTime(MOST_TIME_TO_CLOSE);
        while (fill()) {
        }
        ::close(socket());
    }

    ssize_t read(char* data, std::size_t size) override {
        const ssize_t count = BoundedStream::read(data, size);
        return std::all_of(data, data + std::max<ssize_t>(count, 0),
                           [this](char octet) { return head_.take(octet); })
                   ? count
                   : -1;
    }

    ssize_t write(const char* data, std::size_t size) override {
        answer_.append(data, size);
        return static_cast<ssize_t>(size);
    }

private:
    Head head_;
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
    while (!is_running() && listener.wait_for(LOOK_FOR_THE_BEGINNING) != std::future_status::ready) {
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
