#include "vorl/Util.h"

#include "vorl/Env.h"
#include "vorl/VORLException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace vorl {

namespace {

// A file descriptor that is closed with the scope.
class File {
public:
    File(const std::string& path, int flags, mode_t mode = 0)
        : fd_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}
    ~File() {
        if (isOpen()) {
            ::close(fd_);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return fd_ >= 0; }
    int fd() const { return fd_; }

private:
    int fd_;
};

// 0 for what has no size to tell: a pipe, a terminal, and a directory, whose end is a meaningless number.
// Throws std::length_error for more than memory can hold.
std::size_t sizeOf(const File& file) {
    struct stat status {};
    if (::fstat(file.fd(), &status) != 0 || S_ISDIR(status.st_mode)) {
        return 0;
    }
    const off_t end = ::lseek(file.fd(), 0, SEEK_END);
    if (end <= 0 || ::lseek(file.fd(), 0, SEEK_SET) != 0) {
        return 0;
    }
    if (static_cast<std::uint64_t>(end) > bytes().max_size()) {
        throw std::length_error("Util: a file that does not fit in memory");
    }
    return static_cast<std::size_t>(end);
}

std::size_t readUpTo(const File& file, unsigned char* dst, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::read(file.fd(), dst + done, size - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void writeAll(const File& file, const bytes& data) {
    std::size_t done = 0;
    while (done < data.size()) {
        const ssize_t put = ::write(file.fd(), data.data() + done, data.size() - done);
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            return;
        }
        done += static_cast<std::size_t>(put);
    }
}

// How often another process may have been first with a name before we give up.
const int NAME_ATTEMPTS = 16;

}  // namespace

bytes Util::load(const std::string& path) {
    // Not blocking, so that a pipe without a writer is nothing to wait for.
    const File file(path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen()) {
        return bytes();
    }
    bytes content(sizeOf(file));
    // Files of the kernel can be shorter than the size they announce.
    content.resize(readUpTo(file, content.data(), content.size()));
    return content;
}

void Util::save(const std::string& path, const bytes& data) {
    const File file(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file.isOpen()) {
        writeAll(file, data);
    }
}

void Util::removeFile(const std::string& path) {
    if (::unlink(path.c_str()) != 0) {
        throw VORLException("Unable to unlink file '" + path + "'");
    }
}

std::string Util::saveInstrumentationFile(const std::string& root, const bytes& data) {
    if (root.empty()) {
        throw VORLException("Cannot save instrumentation file without a filename root");
    }
    std::string path;
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        // The directory ends in a slash already; the doubled one is part of the names that tools look for.
        path = std::string(Env::insDir_) + "/" + root + "." + uniqueTime();
        // The directory is everybody's: a file or a link that waits there under our name is not ours.
        const File file(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
        if (file.isOpen()) {
            // The owner can read it under any umask.
            ::fchmod(file.fd(), 0600);
            writeAll(file, data);
            break;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return path;
}

}  // namespace vorl
