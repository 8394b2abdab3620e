#include "vorl/NullParamException.h"

namespace vorl {

NullParamException::NullParamException(const std::string& paramName)
    : VORLException(NULL_PARAMETER, "parameter is null"), paramName_(paramName) {}

NullParamException::~NullParamException() = default;

}  // namespace vorl
