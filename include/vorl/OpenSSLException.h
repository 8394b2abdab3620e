#ifndef VORL_OPENSSLEXCEPTION_H
#define VORL_OPENSSLEXCEPTION_H

#include "vorl/export.h"

#include <stdexcept>
#include <string>

namespace vorl {

/// A call of OpenSSL that failed. what() names the call, errorStack() is OpenSSL's own account of it.
///
/// Deliberately not a VORLException: a handler for the library's own checks does not swallow a fault of
/// the cryptography beneath. std::runtime_error catches both.
class VORL_API OpenSSLException : public std::runtime_error {
public:
    /// For a precondition that failed before OpenSSL was called; the error stack is empty.
    explicit OpenSSLException(const std::string& msg);
    OpenSSLException(const std::string& msg, const std::string& errorStack);

    OpenSSLException(const OpenSSLException&) = default;
    OpenSSLException& operator=(const OpenSSLException&) = default;
    ~OpenSSLException() override;

    /// One line for each error that was queued in the calling thread, in OpenSSL's format; may be empty.
    const std::string& errorStack() const { return errorStack_; }

    /// Throws an OpenSSLException whose message is `context`, the call that failed, and whose error stack
    /// is the calling thread's error queue, which is empty afterwards.
    /// `file`, `line` and `function` tell where the call stands, for a debugger that stops here.
    [[noreturn]] static void throw_message(const char* context, const char* file, int line,
                                           const char* function);

private:
    std::string errorStack_;
};

}  // namespace vorl

#endif
