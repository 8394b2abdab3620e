#include "SlowIo.h"

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace {

thread_local std::size_t most = SIZE_MAX;
thread_local int calls = 0;
thread_local int interrupted = 0;

bool isInterrupted() {
    if (most == SIZE_MAX || calls++ % 2 != 0) {
        return false;
    }
    ++interrupted;
    errno = EINTR;
    return true;
}

}  // namespace

// Both take the place of the C library's function in the whole program, the shared library included.

extern "C" ssize_t read(int fd, void* dst, size_t n) {
    return isInterrupted() ? -1 : ::syscall(SYS_read, fd, dst, std::min(n, most));
}

extern "C" ssize_t write(int fd, const void* src, size_t n) {
    return isInterrupted() ? -1 : ::syscall(SYS_write, fd, src, std::min(n, most));
}

namespace vorl::test {

SlowIo::SlowIo(std::size_t bytesAtOnce) {
    most = bytesAtOnce;
    calls = 0;
    interrupted = 0;
}

SlowIo::~SlowIo() {
    most = SIZE_MAX;
}

int SlowIo::interruptions() const {
    return interrupted;
}

}  // namespace vorl::test
