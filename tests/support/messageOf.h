#ifndef VORL_TESTS_MESSAGEOF_H
#define VORL_TESTS_MESSAGEOF_H

#include <exception>
#include <string>
#include <typeinfo>

namespace vorl::test {

/// The message of the exception that `action` throws, which must be exactly of type E: not of a subclass,
/// since the type of a failure is as much part of the interface as its text. Otherwise a text that no
/// exception has.
template <typename E, typename Action>
std::string messageOf(Action&& action) {
    try {
        action();
    } catch (const std::exception& e) {
        if (typeid(e) == typeid(E)) {
            return e.what();
        }
        return std::string("<another exception: ") + typeid(e).name() + ": " + e.what() + ">";
    } catch (...) {
        return "<something that is no std::exception>";
    }
    return "<no exception>";
}

}  // namespace vorl::test

#endif
