#ifndef EXAMPLES_CHECKS_H
#define EXAMPLES_CHECKS_H

#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>

/// For the examples' own tests, which do without a test framework as their readers may.
namespace example {

inline int faults = 0;

inline void check(bool holds, const std::string& what) {
    if (!holds) {
        std::cout << "FAILED: " << what << '\n';
        ++faults;
    }
}

/// Why a step is refused; nothing where it is not.
inline std::string refusalOf(const std::function<void()>& step) {
    try {
        step();
    } catch (const std::runtime_error& fault) {
        return fault.what();
    }
    return "";
}

/// The exit status of a test that makes these checks.
inline int statusOf(const std::function<void()>& checks) {
    try {
        checks();
    } catch (const std::exception& fault) {
        check(false, fault.what());
    }
    return faults == 0 ? 0 : 1;
}

}  // namespace example

#endif
