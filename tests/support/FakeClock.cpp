#include "FakeClock.h"

#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace {

// The Unix epoch itself stands for "the real time".
std::atomic<long long> shownSecond{0};

// Files are named after the second. Programs that run at the same time have seconds of their own, as far as
// 32 bits reach, and so has each clock of a program.
const long long SECONDS_FOR_ONE_CLOCK = 100;
const long long SECONDS_FOR_ONE_PROGRAM = 20'000;
std::atomic<long long> nextStart{1262304000 + ::getpid() % 32'768 * SECONDS_FOR_ONE_PROGRAM};

}  // namespace

// Takes the place of the C library's function in the whole program, the shared library included.
extern "C" int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    if (shownSecond != 0) {
        now->tv_sec = static_cast<time_t>(shownSecond);
        now->tv_usec = 999999;
        return 0;
    }
    timespec real{};
    const int result = ::clock_gettime(CLOCK_REALTIME, &real);
    now->tv_sec = real.tv_sec;
    now->tv_usec = real.tv_nsec / 1000;
    return result;
}

namespace vorl::test {

FakeClock::FakeClock() {
    shownSecond = nextStart.fetch_add(SECONDS_FOR_ONE_CLOCK);
}

FakeClock::~FakeClock() {
    shownSecond = 0;
}

long long FakeClock::now() const {
    return shownSecond;
}

void FakeClock::advance(int seconds) {
    shownSecond += seconds;
}

}  // namespace vorl::test
