#include "shared/input.h"

#include "shared/Descriptor.h"
#include "shared/ToolError.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

const std::size_t SMALLEST_STEP_BYTES = std::size_t{64} * 1024;
// The formats count in 32 bits.
const std::uint64_t MAX_INPUT_BYTES = std::numeric_limits<std::uint32_t>::max();

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw ToolError(ExitStatus::BAD_INPUT, "cannot read " + inputName(path) + ": " + why);
}

[[noreturn]] void refuseSize(const std::string& path) {
    refuse(path, "it is larger than " + std::to_string(MAX_INPUT_BYTES) +
                     " bytes, which is more than the formats can hold");
}

// What is expected to be read: a guess for anything but a regular file.
std::size_t expectedBytes(int fd, const std::string& path) {
    struct stat status {};
    if (fstat(fd, &status) != 0) {
        refuse(path, systemText(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        refuse(path, "it is a directory");
    }
    if (!S_ISREG(status.st_mode) || status.st_size <= 0) {
        return SMALLEST_STEP_BYTES;
    }
    if (static_cast<std::uint64_t>(status.st_size) > MAX_INPUT_BYTES) {
        refuseSize(path);
    }
    return static_cast<std::size_t>(status.st_size);
}

bytes readAll(int fd, const std::string& path) {
    // One byte more than expected, so that the end shows without another round.
    bytes content(expectedBytes(fd, path) + 1);
    std::size_t size = 0;
    for (;;) {
        const std::ptrdiff_t received = readSome(fd, content.data() + size, content.size() - size);
        if (received < 0) {
            refuse(path, systemText(errno));
        }
        if (received == 0) {
            content.resize(size);
            return content;
        }
        size += static_cast<std::size_t>(received);
        if (size > MAX_INPUT_BYTES) {
            refuseSize(path);
        }
        if (size == content.size()) {
            content.resize(std::max(2 * size, SMALLEST_STEP_BYTES));
        }
    }
}

}  // namespace

std::string inputName(const std::string& path) {
    return path == STANDARD_STREAM ? "standard input" : "'" + path + "'";
}

bytes readInput(const std::string& path) {
    try {
        if (path == STANDARD_STREAM) {
            return readAll(STDIN_FILENO, path);
        }
        const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file.isOpen()) {
            refuse(path, systemText(errno));
        }
        return readAll(file.get(), path);
    } catch (const std::bad_alloc&) {
        refuse(path, "it does not fit in memory");
    }
}

}  // namespace vorl::tool
