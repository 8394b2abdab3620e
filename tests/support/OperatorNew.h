#ifndef VORL_TESTS_OPERATORNEW_H
#define VORL_TESTS_OPERATORNEW_H

#include <cstddef>
#include <cstdint>

namespace vorl::test {

/// Watches this thread's operator new, and makes it throw for large requests, from its construction on until
/// it is destroyed. One at a time. Replaces operator new for the whole program.
class OperatorNew {
public:
    /// Requests of `refusedFrom` bytes and more throw std::bad_alloc.
    explicit OperatorNew(std::size_t refusedFrom = SIZE_MAX);
    ~OperatorNew();
    OperatorNew(const OperatorNew&) = delete;
    OperatorNew& operator=(const OperatorNew&) = delete;

    /// Of the requests so far, the refused ones included: how many bytes the largest was for, and all.
    std::size_t largest() const;
    std::size_t total() const;
};

}  // namespace vorl::test

#endif
