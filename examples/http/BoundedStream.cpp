#include "BoundedStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace example {

namespace {

const std::chrono::milliseconds LOOK_FOR_THE_END(100);

}  // namespace

ssize_t BoundedStream::read(char* data, std::size_t size) {
    if (left_ == 0 || !hasMore()) {
        return -1;
    }
    const std::size_t taken = std::min({size, filled_ - at_, left_});
    std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(at_), taken, data);
    at_ += taken;
    left_ -= taken;
    return static_cast<ssize_t>(taken);
}

bool BoundedStream::fill() {
    const ssize_t count = await(POLLIN) ? recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT) : 0;
    at_ = 0;
    filled_ = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count > 0;
}

bool BoundedStream::sendAll(const std::string& data) {
    std::size_t sent = 0;
    while (sent < data.size()) {
        const ssize_t count = await(POLLOUT) ? send(socket_, data.data() + sent, data.size() - sent,
                                                    MSG_DONTWAIT | MSG_NOSIGNAL)
                                             : -1;
        if (count < 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool BoundedStream::await(short event) const {
    pollfd one{socket_, event, 0};
    int ready = 0;
    while (ready == 0 && Clock::now() < deadline_ && (event == POLLOUT || !isEnding_())) {
        ready = poll(&one, 1, static_cast<int>(LOOK_FOR_THE_END.count()));
        ready = ready < 0 && errno == EINTR ? 0 : ready;
    }
    return ready > 0;
}

}  // namespace example
