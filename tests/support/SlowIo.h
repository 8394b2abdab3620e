#ifndef VORL_TESTS_SLOWIO_H
#define VORL_TESTS_SLOWIO_H

#include <cstddef>

namespace vorl::test {

/// While it lives, read() and write() do for this thread what they may do at any time: every other call is
/// interrupted by a signal, and the rest hand over a few bytes only.
class SlowIo {
public:
    explicit SlowIo(std::size_t bytesAtOnce);
    ~SlowIo();
    SlowIo(const SlowIo&) = delete;
    SlowIo& operator=(const SlowIo&) = delete;

    /// Calls that were interrupted.
    int interruptions() const;
};

}  // namespace vorl::test

#endif
