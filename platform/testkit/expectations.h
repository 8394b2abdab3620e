#ifndef VORL_TESTKIT_EXPECTATIONS_H
#define VORL_TESTKIT_EXPECTATIONS_H

#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

namespace vorl::testkit {

/// A requirement that does not hold, in one sentence.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A check that says nothing about this platform, and why.
class LeftOut : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline void require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw Failure(otherwise);
    }
}

/// "std::runtime_error: what it says".
std::string describe(const std::exception& fault);

/// Calls what must not throw; `subject` begins the sentence that says it did.
template <typename Action>
auto doing(const std::string& subject, Action&& action) {
    try {
        return std::forward<Action>(action)();
    } catch (const Failure&) {
        throw;
    } catch (const LeftOut&) {
        throw;
    } catch (const std::exception& fault) {
        throw Failure(subject + " throws " + describe(fault));
    } catch (...) {
        throw Failure(subject + " throws something that is no std::exception");
    }
}

/// Calls what may be refused, and describes the exception that refuses it, which derives from std::exception.
template <typename Action>
std::optional<std::string> refusalOf(const std::string& subject, Action&& action) {
    try {
        std::forward<Action>(action)();
        return std::nullopt;
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& fault) {
        return describe(fault);
    } catch (...) {
        throw Failure(subject + " throws something that is no std::exception");
    }
}

template <typename Action>
bool accepts(const std::string& subject, Action&& action) {
    return !refusalOf(subject, std::forward<Action>(action));
}

/// Calls what must be refused.
template <typename Action>
void refusing(const std::string& subject, Action&& action) {
    require(!accepts(subject, std::forward<Action>(action)), subject + " is not refused");
}

}  // namespace vorl::testkit

#endif
