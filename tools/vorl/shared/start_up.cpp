#include "shared/start_up.h"

#include "shared/ToolError.h"
#include "vorl/Random.h"
#include "vorl/VORLLib.h"

#include <openssl/rand.h>

#include <csignal>

namespace vorl::tool {

void prepareProcess() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

void startLibrary() {
    Random::init_ = RAND_status() == 1;
    VORLLib::init();
}

void requireRandom() {
    if (!Random::init_) {
        throw ToolError(ExitStatus::FAULT, "OpenSSL's random generator is not ready",
                        "'vorl doctor' looks for the reason");
    }
}

}  // namespace vorl::tool
