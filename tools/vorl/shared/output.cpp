#include "shared/output.h"

#include "shared/Descriptor.h"
#include "shared/TemporaryFile.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/terminal.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

const mode_t ANY_MODE = 0777;

[[noreturn]] void refuse(const std::string& name, const std::string& why) {
    throw ToolError(ExitStatus::FAULT, "cannot write " + name + ": " + why);
}

void writeStandardOutput(const void* data, std::size_t size) {
    if (!writeAll(STDOUT_FILENO, data, size)) {
        refuse("standard output", systemText(errno));
    }
}

// Where the file itself lies, if `path` is a link to one.
std::string behindLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : path;
}

mode_t modeFor(Readers readers) {
    if (readers == Readers::OWNER) {
        return S_IRUSR | S_IWUSR;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// `existing` is the mode of the file that is replaced: nobody gets to read the new one who could not read it.
void replaceFile(const std::string& path, const bytes& data, Readers readers, mode_t existing) {
    TemporaryFile file(behindLinks(path));
    file.write(data);
    file.setMode(modeFor(readers) & existing);
    file.replaceTarget();
}

void writeDirectly(const std::string& path, const bytes& data) {
    Descriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!device.isOpen() || !writeAll(device.get(), data.data(), data.size()) || !device.close()) {
        refuse("'" + path + "'", systemText(errno));
    }
}

bool isDanglingLink(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

// As "/dev/stdout" is, which may be a file that others write to as well.
bool isStandardOutput(const struct stat& status) {
    struct stat standard {};
    return fstat(STDOUT_FILENO, &standard) == 0 && standard.st_dev == status.st_dev &&
           standard.st_ino == status.st_ino;
}

void writeExisting(const std::string& path, const struct stat& status, const bytes& data, Readers readers) {
    if (S_ISDIR(status.st_mode)) {
        refuse("'" + path + "'", "it is a directory");
    }
    if (isStandardOutput(status)) {
        writeStandardOutput(data.data(), data.size());
    } else if (S_ISREG(status.st_mode)) {
        // The folder alone decides on a renaming, which would let it pass over a file that is protected.
        if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
            refuse("'" + path + "'", systemText(errno));
        }
        replaceFile(path, data, readers, status.st_mode);
    } else {
        writeDirectly(path, data);
    }
}

void writeFile(const std::string& path, const bytes& data, Readers readers) {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) {
        refuse("'" + path + "'", systemText(errno));
    }
    // What such a link is for is not known, so that it is neither replaced nor brought to life.
    if (!exists && isDanglingLink(path)) {
        refuse("'" + path + "'", "it is a link to something that is not there");
    }
    try {
        if (exists) {
            writeExisting(path, status, data, readers);
        } else {
            replaceFile(path, data, readers, ANY_MODE);
        }
    } catch (const std::system_error& error) {
        refuse("'" + path + "'", systemText(error.code().value()));
    }
}

bool leadsToTerminal(const std::string& path) {
    struct stat status {};
    // To open anything else might take a reader, or bring it to life.
    if (stat(path.c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) {
        return false;
    }
    const Descriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    return device.isOpen() && isTerminal(device.get());
}

}  // namespace

void writeOutput(const std::optional<std::string>& path, const bytes& data, Readers readers) {
    if (!path || *path == STANDARD_STREAM) {
        writeStandardOutput(data.data(), data.size());
    } else {
        writeFile(*path, data, readers);
    }
}

void writeStandardOutput(const std::string& text) {
    writeStandardOutput(text.data(), text.size());
}

void refuseBinaryOnTerminal(const std::optional<std::string>& path) {
    // Only "-" insists: "/dev/stdout" and "/dev/tty" are a terminal under a name.
    if (path != STANDARD_STREAM && (path ? leadsToTerminal(*path) : isTerminal(STDOUT_FILENO))) {
        throw ToolError(ExitStatus::USAGE, "binary data is not written to a terminal",
                        "name a file with -o FILE, or insist with '-o -'");
    }
}

}  // namespace vorl::tool
