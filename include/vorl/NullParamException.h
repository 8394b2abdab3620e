#ifndef VORL_NULLPARAMEXCEPTION_H
#define VORL_NULLPARAMEXCEPTION_H

#include "vorl/VORLException.h"

namespace vorl {

/// A parameter that must not be null. For applications: the library itself never throws it.
/// The message is "parameter is null", the code NULL_PARAMETER; the name is kept beside them.
class VORL_API NullParamException : public VORLException {
public:
    explicit NullParamException(const std::string& paramName);

    NullParamException(const NullParamException&) = default;
    NullParamException& operator=(const NullParamException&) = default;
    ~NullParamException() override;

    const std::string& paramName() const { return paramName_; }

private:
    std::string paramName_;
};

}  // namespace vorl

#endif
