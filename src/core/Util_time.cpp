#include "vorl/Util.h"

#include <brisclient/Mutex.h>

#include <sys/time.h>

#include <mutex>

namespace vorl {

namespace {

// Made on first use, so that an application's own static objects may already ask for a time; never
// destroyed, so that they still may when the process ends.
Tarvik::BrisClient::Mutex& timeMutex() {
    static auto* const mutex = new Tarvik::BrisClient::Mutex(false);
    return *mutex;
}

}  // namespace

std::string Util::currentTime() {
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return std::to_string(now.tv_sec);
}

std::string Util::uniqueTime() {
    static auto* const last = new std::string;
    static unsigned int repeats = 0;

    const std::lock_guard<Tarvik::BrisClient::Mutex> lock(timeMutex());
    const std::string now = currentTime();
    repeats = now == *last ? repeats + 1 : 0;
    *last = now;
    return now + "." + std::to_string(repeats);
}

}  // namespace vorl
