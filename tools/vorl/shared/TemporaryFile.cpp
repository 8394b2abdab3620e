#include "shared/TemporaryFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

void check(bool succeeded) {
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category());
    }
}

// A pattern for mkostemp(), which replaces the last six characters.
std::string besides(const std::string& target) {
    const std::size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    return folder + ".vorl-XXXXXX";
}

}  // namespace

TemporaryFile::HeldSignals::HeldSignals() : before_() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
}

TemporaryFile::HeldSignals::~HeldSignals() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

TemporaryFile::TemporaryFile(const std::string& target)
    : target_(target), path_(besides(target)), file_(mkostemp(path_.data(), O_CLOEXEC)) {
    check(file_.isOpen());
}

TemporaryFile::~TemporaryFile() {
    for (const std::string& left : {path_, kept_}) {
        if (!left.empty()) {
            unlink(left.c_str());
        }
    }
}

void TemporaryFile::write(const bytes& data) {
    check(writeAll(file_.get(), data.data(), data.size()));
}

void TemporaryFile::setMode(mode_t mode) {
    check(fchmod(file_.get(), mode) == 0);
}

void TemporaryFile::replaceTarget() {
    check(fsync(file_.get()) == 0);
    check(file_.close());
    check(rename(path_.c_str(), target_.c_str()) == 0);
    path_.clear();
}

void TemporaryFile::replaceTargetForNow() {
    const std::string second = path_ + "-";
    if (link(target_.c_str(), second.c_str()) == 0) {
        kept_ = second;
    } else {
        check(errno == ENOENT);
    }
    replaceTarget();
}

void TemporaryFile::takeBack() {
    if (kept_.empty()) {
        check(unlink(target_.c_str()) == 0);
    } else {
        check(rename(kept_.c_str(), target_.c_str()) == 0);
        kept_.clear();
    }
}

}  // namespace vorl::tool
