#include "shared/start_up.h"

#include "shared/ToolError.h"
#include "vorl/Random.h"
#include "vorl/VORLLib.h"

#include <openssl/rand.h>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace vorl::tool {

namespace {

// Opened the wrong way round, so that using the stream fails as it would without one.
void occupyIfClosed(int fd, int flags) {
    if (fcntl(fd, F_GETFD) < 0) {
        // The lowest number that is free, which is `fd`.
        static_cast<void>(open("/dev/null", flags));
    }
}

}  // namespace

void prepareProcess() {
    occupyIfClosed(STDIN_FILENO, O_WRONLY);
    occupyIfClosed(STDOUT_FILENO, O_RDONLY);
    occupyIfClosed(STDERR_FILENO, O_RDONLY);
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

void startLibrary() {
    Random::init_ = RAND_status() == 1;
    if (!Random::init_) {
        throw ToolError(ExitStatus::FAULT, "OpenSSL's random generator is not ready",
                        "'vorl doctor' looks for the reason");
    }
    VORLLib::init();
}

}  // namespace vorl::tool
