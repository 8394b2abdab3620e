#include "shared/output.h"

#include "shared/Descriptor.h"
#include "shared/TemporaryFile.h"
#include "shared/ToolError.h"
#include "shared/input.h"
#include "shared/terminal.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

const mode_t ANY_MODE = 0777;

[[noreturn]] void refuseOutput(const std::string& name, const std::string& why) {
    throw ToolError(ExitStatus::FAULT, "cannot write " + name + ": " + why);
}

void writeStandardOutput(const void* data, std::size_t size) {
    if (!writeAll(STDOUT_FILENO, data, size)) {
        refuseOutput("standard output", systemText(errno));
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

void writeDirectly(const std::string& path, const bytes& data) {
    Descriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!device.isOpen() || !writeAll(device.get(), data.data(), data.size()) || !device.close()) {
        refuseOutput("'" + path + "'", systemText(errno));
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

// A result on its way to the file of its name: everything that can be refused is refused before any of it is
// seen there.
class PendingFile {
public:
    PendingFile(const std::string& path, const bytes& data, Readers readers) : path_(path), data_(data) {
        struct stat status {};
        const bool exists = stat(path.c_str(), &status) == 0;
        if (!exists && errno != ENOENT) {
            refuseOutput(name(), systemText(errno));
        }
        // What such a link is for is not known, so that it is neither replaced nor brought to life.
        if (!exists && isDanglingLink(path)) {
            refuseOutput(name(), "it is a link to something that is not there");
        }
        orRefuse([&] {
            if (!exists) {
                prepareFile(readers, ANY_MODE);
            } else {
                prepareExisting(status, readers);
            }
        });
    }

    void complete() {
        orRefuse([this] {
            if (file_) {
                file_->replaceTarget();
            } else {
                writeAsItIs();
            }
        });
    }
    // The same, so that takeBack() can undo it, but for what went to a device.
    void completeForNow() {
        orRefuse([this] {
            if (file_) {
                file_->replaceTargetForNow();
            } else {
                writeAsItIs();
            }
        });
    }
    void takeBack() {
        orRefuse([this] {
            if (file_) {
                file_->takeBack();
            }
        });
    }

private:
    std::string name() const { return "'" + path_ + "'"; }

    template <class Step>
    void orRefuse(const Step& step) const {
        try {
            step();
        } catch (const std::system_error& error) {
            refuseOutput(name(), systemText(error.code().value()));
        }
    }

    void prepareExisting(const struct stat& status, Readers readers) {
        if (S_ISDIR(status.st_mode)) {
            refuseOutput(name(), "it is a directory");
        }
        isStandardOutput_ = isStandardOutput(status);
        if (!isStandardOutput_ && S_ISREG(status.st_mode)) {
            // The folder alone decides on a renaming, which would let it pass over a file that is protected.
            if (faccessat(AT_FDCWD, path_.c_str(), W_OK, AT_EACCESS) != 0) {
                refuseOutput(name(), systemText(errno));
            }
            prepareFile(readers, status.st_mode);
        }
    }

    // `existing` is the mode of the file that is replaced: nobody gets to read the new one who could not read
    // it.
    void prepareFile(Readers readers, mode_t existing) {
        file_.emplace(behindLinks(path_));
        file_->write(data_);
        file_->setMode(modeFor(readers) & existing);
    }

    void writeAsItIs() const {
        if (isStandardOutput_) {
            writeStandardOutput(data_.data(), data_.size());
        } else {
            writeDirectly(path_, data_);
        }
    }

    const std::string& path_;
    const bytes& data_;
    bool isStandardOutput_ = false;
    std::optional<TemporaryFile> file_;
};

// Whether two paths lead to one file, which may not be there yet.
bool isOneFile(const std::string& a, const std::string& b) {
    const std::optional<FileId> fileA = fileOf(a);
    const std::optional<FileId> fileB = fileOf(b);
    if (fileA || fileB) {
        return fileA && fileB && *fileA == *fileB;
    }
    const std::filesystem::path pathA(a);
    const std::filesystem::path pathB(b);
    const auto folderOf = [](const std::filesystem::path& path) {
        return fileOf(path.has_parent_path() ? path.parent_path().string() : std::string("."));
    };
    const std::optional<FileId> folder = folderOf(pathA);
    return pathA.filename() == pathB.filename() && folder && folder == folderOf(pathB);
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
        PendingFile(*path, data, readers).complete();
    }
}

void writeBothFiles(const FileContent& first, const FileContent& second, Readers readers) {
    if (isOneFile(first.path, second.path)) {
        throw ToolError(ExitStatus::USAGE, "'" + first.path + "' and '" + second.path + "' are one file");
    }
    PendingFile firstFile(first.path, first.data, readers);
    PendingFile secondFile(second.path, second.data, readers);
    firstFile.completeForNow();
    try {
        secondFile.complete();
    } catch (...) {
        firstFile.takeBack();
        throw;
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
