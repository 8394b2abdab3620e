#ifndef VORL_VORLEXCEPTION_H
#define VORL_VORLEXCEPTION_H

#include "vorl/export.h"

#include <stdexcept>
#include <string>

namespace vorl {

/// What kind of failure a VORLException reports; the text always comes from the thrower.
enum ErrorCode : unsigned int {
    GENERAL_ERROR = 0,
    NULL_PARAMETER = 1,
};

/// A check of the library that failed: a format, a state, a policy or a size.
///
/// Failures of OpenSSL are OpenSSLException, which is not of this family; std::runtime_error catches both.
class VORL_API VORLException : public std::runtime_error {
public:
    /// An exception with no message cannot be made: both constructors throw std::logic_error.
    VORLException();
    explicit VORLException(ErrorCode code);

    /// An exception of code GENERAL_ERROR.
    explicit VORLException(const std::string& msg);
    VORLException(ErrorCode code, const std::string& msg);

    VORLException(const VORLException&) = default;
    VORLException& operator=(const VORLException&) = default;
    ~VORLException() override;

    ErrorCode code() const { return code_; }

private:
    ErrorCode code_;
};

}  // namespace vorl

#endif
