#ifndef VORL_TOOL_SHARED_DESCRIPTOR_H
#define VORL_TOOL_SHARED_DESCRIPTOR_H

#include <cstddef>
#include <optional>
#include <string>

#include <sys/types.h>

namespace vorl::tool {

/// An open file descriptor, closed when it goes.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }
    /// False where the system reports only now that something could not be written; errno says what.
    bool close();

private:
    int fd_;
};

/// Which file it is, whatever its name.
struct FileId {
    dev_t device;
    ino_t inode;
};

bool operator==(const FileId& a, const FileId& b);

/// What an open descriptor, or a path, leads to; nothing where that cannot be told.
std::optional<FileId> fileOf(int fd);
std::optional<FileId> fileOf(const std::string& path);

/// False, and errno, where not everything could be written.
bool writeAll(int fd, const void* data, std::size_t size);

/// Up to `size` bytes; 0 at the end, negative and errno on failure. Signals do not disturb it.
std::ptrdiff_t readSome(int fd, void* data, std::size_t size);

/// The words for an errno, for example "No such file or directory".
std::string systemText(int error);

}  // namespace vorl::tool

#endif
