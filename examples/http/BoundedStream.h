#ifndef EXAMPLES_HTTP_BOUNDEDSTREAM_H
#define EXAMPLES_HTTP_BOUNDEDSTREAM_H

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace example {

/// A socket as cpp-httplib sees it, of which no more is read than was allowed and for no longer.
///
/// cpp-httplib itself bounds the wait for a single octet alone: a head that goes on and on, it would keep in
/// memory without end.
class BoundedStream : public httplib::Stream {
public:
    /// Waiting ends early where `isEnding` says so.
    explicit BoundedStream(
        socket_t socket, std::function<bool()> isEnding = [] { return false; })
        : socket_(socket), isEnding_(std::move(isEnding)) {}

    /// Returns -1 at the end, too, where cpp-httplib would take 0 for the end of a whole answer.
    ssize_t read(char* data, std::size_t size) override;

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
    void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
    socket_t socket() const override { return socket_; }

protected:
    using Clock = std::chrono::steady_clock;

    /// How much may be read from now on.
    void allowBytes(std::size_t most) { left_ = most; }
    /// How long reading and sending may take from now on.
    void allowTime(std::chrono::milliseconds most) { deadline_ = Clock::now() + most; }

    bool isEnding() const { return isEnding_(); }
    /// Waits until there is something to be read. Whether there is.
    bool hasMore() { return at_ < filled_ || fill(); }
    /// Drops what is there to be read, and waits for more.
    bool fill();
    bool sendAll(const std::string& data);

private:
    bool await(short event) const;

    socket_t socket_;
    std::function<bool()> isEnding_;
    Clock::time_point deadline_;
    std::size_t left_ = 0;
    std::array<char, 16384> buffer_{};
    std::size_t at_ = 0;
    std::size_t filled_ = 0;
};

}  // namespace example

#endif
