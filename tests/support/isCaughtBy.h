#ifndef VORL_TESTS_ISCAUGHTBY_H
#define VORL_TESTS_ISCAUGHTBY_H

namespace vorl::test {

/// Whether what `action` throws would be caught by a handler for `Handler`.
template <typename Handler, typename Action>
bool isCaughtBy(Action&& action) {
    try {
        action();
    } catch (const Handler&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

}  // namespace vorl::test

#endif
