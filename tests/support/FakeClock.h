#ifndef VORL_TESTS_FAKECLOCK_H
#define VORL_TESTS_FAKECLOCK_H

namespace vorl::test {

/// While it lives, gettimeofday() tells a time that only moves when it is told to. Each clock starts at a
/// second that no other one in the process has shown, and always shows the last microsecond of a second, so
/// that rounding would be seen.
class FakeClock {
public:
    FakeClock();
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    /// Seconds since the Unix epoch.
    long long now() const;
    void advance(int seconds);
};

}  // namespace vorl::test

#endif
