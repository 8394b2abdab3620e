#include "shared/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

const std::size_t MAX_STEP_BYTES = std::size_t{1} << 30;

// Whether a call that failed is worth another try: it was disturbed, or the descriptor, which someone else
// has made non-blocking, was not ready and is now.
bool mayTryAgain(int fd, short event) {
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
        pollfd ready = {fd, event, 0};
        return poll(&ready, 1, -1) > 0 || errno == EINTR;
    }
    return errno == EINTR;
}

}  // namespace

Descriptor::~Descriptor() {
    close();
}

bool Descriptor::close() {
    const int fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
}

bool operator==(const FileId& a, const FileId& b) {
    return a.device == b.device && a.inode == b.inode;
}

std::optional<FileId> fileOf(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 ? std::optional<FileId>({status.st_dev, status.st_ino}) : std::nullopt;
}

std::optional<FileId> fileOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? std::optional<FileId>({status.st_dev, status.st_ino})
                                            : std::nullopt;
}

bool writeAll(int fd, const void* data, std::size_t size) {
    const auto* at = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const ssize_t written = write(fd, at, std::min(size, MAX_STEP_BYTES));
        if (written >= 0) {
            at += written;
            size -= static_cast<std::size_t>(written);
        } else if (!mayTryAgain(fd, POLLOUT)) {
            return false;
        }
    }
    return true;
}

std::ptrdiff_t readSome(int fd, void* data, std::size_t size) {
    for (;;) {
        const ssize_t received = read(fd, data, std::min(size, MAX_STEP_BYTES));
        if (received >= 0 || !mayTryAgain(fd, POLLIN)) {
            return received;
        }
    }
}

std::string systemText(int error) {
    return error == EBADF ? "it is not open" : std::generic_category().message(error);
}

}  // namespace vorl::tool
