#include "shared/input.h"

#include "shared/Descriptor.h"
#include "shared/ToolError.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

const std::size_t SMALLEST_STEP_BYTES = std::size_t{64} * 1024;
// The formats count in 32 bits.
const std::uint64_t MAX_INPUT_BYTES = std::numeric_limits<std::uint32_t>::max();
const std::uint64_t MAX_SMALL_INPUT_BYTES = std::uint64_t{1} << 20;
const std::size_t PIECE_BYTES = std::size_t{64} * 1024;

[[noreturn]] void refuseInput(const std::string& path, const std::string& why) {
    throw ToolError(ExitStatus::BAD_INPUT, "cannot read " + inputName(path) + ": " + why);
}

[[noreturn]] void refuseSize(const std::string& path, std::uint64_t maxBytes) {
    refuseInput(path, "it is larger than " + std::to_string(maxBytes) + " bytes, which is more than " +
                          (maxBytes == MAX_INPUT_BYTES ? "the formats can hold" : "is ever needed"));
}

struct stat statusOf(int fd, const std::string& path) {
    struct stat status {};
    if (fstat(fd, &status) != 0) {
        refuseInput(path, systemText(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        refuseInput(path, "it is a directory");
    }
    return status;
}

// What is expected to be read: a guess for anything but a regular file.
std::uint64_t expectedBytes(int fd, const std::string& path, std::uint64_t maxBytes) {
    const struct stat status = statusOf(fd, path);
    if (!S_ISREG(status.st_mode) || status.st_size <= 0) {
        return SMALLEST_STEP_BYTES;
    }
    if (static_cast<std::uint64_t>(status.st_size) > maxBytes) {
        refuseSize(path, maxBytes);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

// More than a vector can count, as on a 32-bit machine, is more than fits in memory.
void resize(bytes& content, std::uint64_t size) {
    if (size > content.max_size()) {
        throw std::bad_alloc();
    }
    content.resize(static_cast<std::size_t>(size));
}

std::size_t readPiece(int fd, const std::string& path, void* data, std::size_t size) {
    const std::ptrdiff_t received = readSome(fd, data, size);
    if (received < 0) {
        refuseInput(path, systemText(errno));
    }
    return static_cast<std::size_t>(received);
}

bytes readAll(int fd, const std::string& path, std::uint64_t maxBytes) {
    // One byte more than expected, so that the end shows without another round.
    bytes content;
    resize(content, expectedBytes(fd, path, maxBytes) + 1);
    std::size_t size = 0;
    for (;;) {
        const std::size_t received = readPiece(fd, path, content.data() + size, content.size() - size);
        if (received == 0) {
            content.resize(size);
            return content;
        }
        size += received;
        if (size > maxBytes) {
            refuseSize(path, maxBytes);
        }
        if (size == content.size()) {
            resize(content, std::max<std::uint64_t>(std::uint64_t{2} * size, SMALLEST_STEP_BYTES));
        }
    }
}

// Opens what is not standard input for as long as `read` reads it.
void withDescriptor(const std::string& path, const std::function<void(int fd)>& read) {
    if (path == STANDARD_STREAM) {
        read(STDIN_FILENO);
        return;
    }
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        refuseInput(path, systemText(errno));
    }
    read(file.get());
}

bytes readUpTo(const std::string& path, std::uint64_t maxBytes) {
    try {
        bytes content;
        withDescriptor(path, [&](int fd) { content = readAll(fd, path, maxBytes); });
        return content;
    } catch (const std::bad_alloc&) {
        refuseInput(path, "it does not fit in memory");
    }
}

// What a path leads to, if that gives its bytes only once.
std::optional<FileId> streamOf(const std::string& path) {
    struct stat status {};
    const int failed = path == STANDARD_STREAM ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    return failed == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)
               ? std::optional<FileId>({status.st_dev, status.st_ino})
               : std::nullopt;
}

bool areOneStream(const std::string& a, const std::string& b) {
    const std::optional<FileId> stream = streamOf(a);
    return (a == STANDARD_STREAM && b == STANDARD_STREAM) || (stream && stream == streamOf(b));
}

}  // namespace

std::string inputName(const std::string& path) {
    return path == STANDARD_STREAM ? "standard input" : "'" + path + "'";
}

bytes readInput(const std::string& path) {
    return readUpTo(path, MAX_INPUT_BYTES);
}

bytes readSmallInput(const std::string& path) {
    return readUpTo(path, MAX_SMALL_INPUT_BYTES);
}

void readInPieces(const std::string& path, const std::function<void(const bytes&)>& take) {
    withDescriptor(path, [&](int fd) {
        statusOf(fd, path);
        bytes piece(PIECE_BYTES);
        while (const std::size_t received = readPiece(fd, path, piece.data(), PIECE_BYTES)) {
            piece.resize(received);
            take(piece);
            piece.resize(PIECE_BYTES);
        }
    });
}

void refuseSharedStreams(const std::vector<NamedInput>& inputs) {
    for (auto first = inputs.begin(); first != inputs.end(); ++first) {
        const auto other = std::find_if(first + 1, inputs.end(), [first](const NamedInput& each) {
            return areOneStream(first->path, each.path);
        });
        if (other != inputs.end()) {
            throw ToolError(
                ExitStatus::USAGE,
                inputName(first->path) + " cannot be both the " + first->role + " and the " + other->role,
                "name a file for one of them");
        }
    }
}

}  // namespace vorl::tool
